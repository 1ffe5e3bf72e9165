#include <malloc.h>
#include <sys/stat.h>

#include "xml/xml_service.h"

namespace brenta::test {

const bool kOwnXmlService = true;
const int kDeepestFile = 1'000'000;

std::string Own(std::string_view utf8) {
    return std::string(utf8);
}

std::string Content(std::string text) {
    return text;
}

Texts NoFiles(const Scratch& scratch) {
    const std::string pipe = scratch / "pipe";  // that nobody reads or writes
    EXPECT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    return {scratch / "", pipe, "/dev/zero"};
}

bool SetRights(const std::string& path) {
    return chmod(path.c_str(), 0640) == 0;
}

bool HasRights(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 && (info.st_mode & 07777) == 0640;
}

// Sanitizers answer 0 for the other heap.
std::size_t AllocatedBytes() {
    return mallinfo2().uordblks + mallinfo2().hblkhd;
}

}  // namespace brenta::test
