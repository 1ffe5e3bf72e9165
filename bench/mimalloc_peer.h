// mimalloc as a peer of the heap.
#pragma once

#include <cstddef>

namespace brenta::bench {

/// The functions of the library, which is loaded with names of its own: linked to the program it would take
/// the place of malloc everywhere.
struct Mimalloc {
    static void* Allocate(std::size_t size) { return s_pMalloc(size); }
    static void Free(void* p) { s_pFree(p); }

    /// False if the library is not there.
    static bool Load();

 private:
    inline static void* (*s_pMalloc)(std::size_t) = nullptr;
    inline static void (*s_pFree)(void*) = nullptr;
};

}  // namespace brenta::bench
