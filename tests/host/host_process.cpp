#include "host_process.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

namespace brenta::test {
namespace {

namespace fs = std::filesystem;

std::string Quoted(const std::string& word) {
    std::string quoted = "'";
    for (const char c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

}  // namespace

const fs::path& ScratchFolder() {
    struct Scratch {
        const fs::path path =
            fs::temp_directory_path() / ("brenta_host_tests_" + std::to_string(std::random_device()()));
        Scratch() { fs::create_directories(path); }
        ~Scratch() {
            std::error_code ignored;
            fs::remove_all(path, ignored);
        }
    };
    static const Scratch scratch;
    return scratch.path;
}

std::vector<std::string> SplitLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::string ReadText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

HostResult RunHost(const std::vector<std::string>& words, const std::string& input) {
    const std::string in = (ScratchFolder() / "in").string();
    const std::string out = (ScratchFolder() / "out").string();
    const std::string err = (ScratchFolder() / "err").string();
    std::ofstream(in, std::ios::binary) << input;

    std::string command = "cd " + Quoted(ScratchFolder().string()) + " && " + Quoted(BRENTA_HOST_PROGRAM);
    for (const std::string& word : words)
        command += " " + Quoted(word);
    command += " <" + Quoted(in) + " >" + Quoted(out) + " 2>" + Quoted(err);
    const int status = std::system(command.c_str());

    HostResult result;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.output = SplitLines(ReadText(out));
    result.errors = SplitLines(ReadText(err));
    return result;
}

}  // namespace brenta::test
