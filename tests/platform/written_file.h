// Files that other programs write.
#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace brenta::test {

/// Writes a file that is whole as soon as it is there.
inline void WriteAtOnce(const std::string& path, const std::string& text) {
    std::ofstream(path + ".new", std::ios::binary) << text;
    std::filesystem::rename(path + ".new", path);
}

/// A text file's content once another program has written it; "" if that takes longer than a minute.
inline std::string Awaited(const std::string& path) {
    std::string text;
    for (int i = 0; i < 6000 && text.empty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        std::getline(std::ifstream(path), text, '\0');
    }
    return text;
}

}  // namespace brenta::test
