#include "child_process.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>

namespace brenta::test {

namespace {

std::map<std::string, ChildWork::Function>& KnownWork() {
    static std::map<std::string, ChildWork::Function> known;
    return known;
}

}  // namespace

ChildWork::ChildWork(const char* name, Function function) : m_name(name), m_function(function) {
    KnownWork()[name] = function;
}

bool ChildWork::SucceedsInFour(Texts words) const {
    std::vector<ChildProcess> children;
    words.emplace_back();
    for (const char* number : {"0", "1", "2", "3"}) {
        words.back() = number;
        children.push_back(Start(words));
    }
    return std::ranges::count_if(children, [](ChildProcess& child) { return child.Succeeds(); }) == 4;
}

int ChildWork::RunWork(const Texts& words) {
    if (words.size() < 2 || words[0] != "--child-work") return -1;
    return KnownWork().at(words[1])({words.begin() + 2, words.end()}) ? 0 : 1;
}

bool Signal(const std::string& path) {
    return static_cast<bool>(std::ofstream(path) << "x" << std::flush);
}

bool WaitForSignal(const std::string& path) {
    for (int i = 0; i < 10000 && !std::filesystem::exists(path); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return std::filesystem::exists(path);
}

}  // namespace brenta::test
