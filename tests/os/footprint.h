// What a process takes of its system, to be compared before and after.
#pragma once

#include <cstddef>

namespace brenta::test {

struct Footprint {
    static Footprint Now();

    std::ptrdiff_t mappings;  ///< pieces of its address space; on Windows its handles
    std::size_t bytes;        ///< the C library's blocks; 0 where it does not tell
};

/// The open files that have a path: sockets and the like are closed when a server finds the time. On Windows
/// all handles.
long CountOpenFiles();

}  // namespace brenta::test
