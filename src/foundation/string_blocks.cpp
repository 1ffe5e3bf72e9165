// Where CoreString's large blocks come from, and the object that stands for all of them.
//
// The general allocator is safe from any thread and keeps caches and arenas of each thread, so strings on
// different threads need not meet in it; a lock of ours around every call would be the one place where they
// do. So blocks up to kLargestSmallBlock are taken and given back without a lock, inline in the header, which
// is also the place for caches of our own should the allocator of some platform need them. Larger blocks are
// handled under the string heap's lock: writing such a text takes so much longer than the lock that it does
// not show.
#include "foundation/string_blocks.h"

#include <new>

#include "brenta/detail/heap_containers.h"
#include "brenta/string.h"
#include "foundation/library_statics.h"

namespace brenta {

char* AcquireLargeBlock(int size) noexcept {
    const os::LockGuard guard(g_stringHeapLock);
    return static_cast<char*>(std::malloc(static_cast<std::size_t>(size)));
}

char* ResizeLargeBlock(char* pBlock, int newSize) noexcept {
    const os::LockGuard guard(g_stringHeapLock);
    return static_cast<char*>(std::realloc(pBlock, static_cast<std::size_t>(newSize)));
}

void FreeLargeBlock(char* pBlock) noexcept {
    const os::LockGuard guard(g_stringHeapLock);
    std::free(pBlock);
}

// ----------------------------------------------------------------------------------------------------------
// CStringHeap

CStringHeap::CStringHeap() : m_pBlocks(new (std::nothrow) THeapIntMap<void*, int>(1023)) {}

CStringHeap::~CStringHeap() {
    delete m_pBlocks;
}

std::size_t CStringHeap::SizeOf() const {
    return 44;
}
const char* CStringHeap::GetClassName() const {
    return "CStringHeap";
}
const char* CStringHeap::GetBaseClassName() const {
    return "none";
}

}  // namespace brenta
