#include <malloc.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "os/footprint.h"

namespace brenta::test {

Footprint Footprint::Now() {
    std::ifstream maps("/proc/self/maps");
    return {std::count(std::istreambuf_iterator<char>(maps), {}, '\n'), mallinfo2().uordblks};
}

long CountOpenFiles() {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return std::count_if(begin(files), end(files), [](const auto& file) {
        std::error_code error;
        return std::filesystem::read_symlink(file.path(), error).is_absolute();
    });
}

}  // namespace brenta::test
