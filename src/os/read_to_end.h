// A file's content in one buffer, on every platform.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

#include "os/os.h"

namespace brenta::os {

/// `read(buffer, size)` gives the number of bytes read: 0 at the end, -1 after an error. The file may be
/// shorter or longer by now than its size said, as files under /proc are; more than `limit` bytes cannot be
/// read. Sets `content` only if all is well; throws std::bad_alloc.
template <class Read>
FileStatus ReadToEnd(std::size_t expected, std::string& content, std::size_t limit, Read read) {
    constexpr std::size_t kLeastRoom = 4096;
    std::string bytes;
    std::size_t used = 0;
    for (;;) {
        // The byte more shows the end of a file that kept its size without another buffer.
        if (used == bytes.size()) bytes.resize(used == 0 ? std::max(expected + 1, kLeastRoom) : 2 * used);
        const std::ptrdiff_t count = read(bytes.data() + used, bytes.size() - used);
        if (count < 0) return FileStatus::CannotRead;
        used += static_cast<std::size_t>(count);
        if (used > limit) return FileStatus::CannotRead;
        if (count == 0) break;
    }
    bytes.resize(used);
    content.swap(bytes);
    return FileStatus::Ok;
}

}  // namespace brenta::os
