#include "host_process.h"

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

namespace brenta::test {

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

Lines SplitLines(const std::string& text) {
    Lines lines;
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

HostResult RunHost(const Lines& words, const std::string& input) {
    const std::string in = (ScratchFolder() / "in").string();
    const std::string out = (ScratchFolder() / "out").string();
    const std::string err = (ScratchFolder() / "err").string();
    std::ofstream(in, std::ios::binary) << input;

    HostResult result;
    result.status = RunProgram(BRENTA_HOST_PROGRAM, words, ScratchFolder().string(), {in, out, err});
    result.output = SplitLines(ReadText(out));
    result.errors = SplitLines(ReadText(err));
    return result;
}

}  // namespace brenta::test
