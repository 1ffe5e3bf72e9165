// Where CoreString's blocks come from, and the object that stands for them.
//
// The general allocator keeps small blocks in caches of each thread, one per size, and serves them without a
// lock of its own; a lock of ours around that would be the only thing that strings on different threads ever
// meet on. So small blocks go straight there, and the string heap's lock is held where the allocator enters
// what all threads share: for large blocks, whose bytes take longer to write than the lock to take. BlockSize
// and AcquireBlock are also the place for caches of our own, should an allocator of some platform need them.
#include "foundation/string_blocks.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <new>
#include <optional>

#include "brenta/detail/heap_containers.h"
#include "brenta/string.h"
#include "foundation/library_statics.h"

namespace brenta {

namespace {

// The largest block that the allocators keep per thread.
constexpr int kLargestSmallBlock = 1024;

// Holds the string heap's lock while a block of this size is taken or given back.
class BlockGuard {
 public:
    explicit BlockGuard(int size) {
        if (size > kLargestSmallBlock) m_guard.emplace(g_stringHeapLock);
    }

 private:
    std::optional<os::LockGuard> m_guard;
};

}  // namespace

// A block of the general allocators starts at a multiple of 16 and has a header of 8 bytes; the smallest
// holds 24.
int BlockSize(std::size_t bytes) {
    constexpr std::size_t kHeader = 8;
    constexpr std::size_t kStep = 16;
    const std::size_t whole = (bytes + kHeader + kStep - 1) / kStep * kStep;
    return static_cast<int>(std::clamp<std::size_t>(whole - kHeader, 3 * kHeader, INT_MAX));
}

char* AcquireBlock(int size) noexcept {
    const BlockGuard guard(size);
    return static_cast<char*>(std::malloc(static_cast<std::size_t>(size)));
}

char* ResizeBlock(char* pBlock, int oldSize, int newSize) noexcept {
    const BlockGuard guard(std::max(oldSize, newSize));
    return static_cast<char*>(std::realloc(pBlock, static_cast<std::size_t>(newSize)));
}

void FreeBlock(char* pBlock, int size) noexcept {
    const BlockGuard guard(size);
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
