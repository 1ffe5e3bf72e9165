// What lives in the process, as numbers: for tests that look at what a failure leaves behind.
#pragma once

#include <iosfwd>

#include "foundation/heap_pages.h"

namespace brenta::test {

/// What lives now: in the library's heap, of the statements that this thread has made, and of open files.
struct Living {
    static Living Now();
    friend bool operator==(const Living&, const Living&) = default;
    friend void PrintTo(const Living& living, std::ostream* out);

    LiveBlocks blocks;
    long statements;
    long files;  ///< those with a path: sockets and the like are closed when a server finds the time
};

}  // namespace brenta::test
