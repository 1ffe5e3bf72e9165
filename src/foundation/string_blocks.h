// The memory of CoreString's texts: blocks of the process's general allocator, and what each thread keeps of
// them.
//
// Freed small blocks stay in a cache of the thread that freed them, a short stack for each size, so that
// texts that come and go do so in a few instructions. Only the owner touches a cache. What a cache does not
// hold, or has no room for, goes to the general allocator, which is safe from any thread by itself; the
// string heap's lock, which could only make threads wait for each other, is held for large blocks alone,
// where writing the text takes so much longer that it does not show.
#pragma once

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstdlib>

#include "foundation/poison.h"

namespace brenta {

/// The longest text that a block can hold; its size is an int, and a multiple of 8.
inline constexpr std::size_t kLongestText = INT_MAX - 8;

inline constexpr int kSmallestBlock = 24;
inline constexpr int kBlockStep = 16;

/// The size to ask for when `bytes` are needed, 1 to kLongestText + 1: what the general allocators of all
/// platforms set aside for such a request anyway. They start blocks at multiples of 16, behind a header of 8
/// bytes, and have none below 24.
inline int BlockSize(std::size_t bytes) {
    constexpr std::size_t kHeader = 8;
    const std::size_t whole = (bytes + kHeader + kBlockStep - 1) / kBlockStep * kBlockStep;
    return static_cast<int>(std::clamp<std::size_t>(whole - kHeader, kSmallestBlock, kLongestText + 1));
}

/// The freed blocks that a thread keeps.
class BlockCache {
 public:
    /// The largest block that is kept.
    static constexpr int kLargest = kSmallestBlock + 31 * kBlockStep;

    /// A block of this size, a result of BlockSize up to kLargest; null if none is kept.
    char* Take(int size) {
        const std::size_t index = IndexOf(size);
        if (m_counts[index] == 0) return nullptr;
        char* const pBlock = m_blocks[index][--m_counts[index]];
        Unpoison(pBlock, static_cast<std::size_t>(size));
        return pBlock;
    }
    /// Keeps a block; false if there is no room for it.
    bool Put(char* pBlock, int size) {
        const std::size_t index = IndexOf(size);
        if (m_counts[index] == kCapacities[index]) return false;
        m_blocks[index][m_counts[index]++] = pBlock;
        Poison(pBlock, static_cast<std::size_t>(size));
        return true;
    }

    /// Gives the calling thread a cache, if there is memory for one and the library is not being unloaded.
    static BlockCache* Attach();
    /// Releases all caches, of every thread, with their blocks. For unloading; there are no caches
    /// afterwards.
    static void EndAll();
    /// Is told of no more threads that end.
    static void ForgetThreads();

 private:
    static constexpr std::size_t kStacks = (kLargest - kSmallestBlock) / kBlockStep + 1;
    static constexpr unsigned int kKeptBytes = 16 * 1024;  // of one size
    static constexpr unsigned int kLargestDepth = 256;
    /// Makes the stacks an odd number of cache lines long, so that their tops are not all in the same sets of
    /// the processor's cache.
    static constexpr unsigned int kSpacing = 8;
    static constexpr auto kCapacities = [] {
        std::array<unsigned int, kStacks> capacities{};
        for (unsigned int i = 0; i < kStacks; ++i)
            capacities[i] = std::min(kKeptBytes / (kSmallestBlock + i * kBlockStep), kLargestDepth);
        return capacities;
    }();

    static std::size_t IndexOf(int size) {
        return static_cast<std::size_t>((size - kSmallestBlock) / kBlockStep);
    }
    void Empty();
    static void AtThreadEnd(void* value);

    unsigned int m_counts[kStacks] = {};
    BlockCache* m_pNextOfAll = nullptr;
    BlockCache* m_pNextIdle = nullptr;
    char* m_blocks[kStacks][kLargestDepth + kSpacing];
};

/// The calling thread's cache; null before it has freed a block.
extern constinit thread_local BlockCache* t_pBlockCache;

/// The largest block that is taken and given back without the string heap's lock.
inline constexpr int kLargestUnlockedBlock = 32 * 1024;

char* AcquireLargeBlock(int size) noexcept;
char* ResizeLargeBlock(char* pBlock, int newSize) noexcept;
void FreeLargeBlock(char* pBlock) noexcept;

/// Whether the thread's strings have been refused a block since this was cleared. A string that finds no
/// memory stays as it was; who makes a path of several, and would go to another place with a part of it, asks
/// here.
inline constinit thread_local bool t_stringsLacked = false;

inline char* NoteLack(void* pBlock) noexcept {
    if (pBlock == nullptr) t_stringsLacked = true;
    return static_cast<char*>(pBlock);
}

/// A block of uninitialised bytes, or null. Sizes here are results of BlockSize. Any thread.
inline char* AcquireBlock(int size) noexcept {
    BlockCache* const cache = t_pBlockCache;
    if (size <= BlockCache::kLargest && cache != nullptr) {
        if (char* pBlock = cache->Take(size)) return pBlock;
    }
    if (size > kLargestUnlockedBlock) return AcquireLargeBlock(size);
    return NoteLack(std::malloc(static_cast<std::size_t>(size)));
}

/// The block with a new size, its content kept up to the smaller one, moved if need be; null, and the block
/// as it was, if there is no memory. Any thread.
inline char* ResizeBlock(char* pBlock, int oldSize, int newSize) noexcept {
    if (std::max(oldSize, newSize) > kLargestUnlockedBlock) return ResizeLargeBlock(pBlock, newSize);
    return NoteLack(std::realloc(pBlock, static_cast<std::size_t>(newSize)));
}

/// Gives a block back. Any thread.
inline void FreeBlock(char* pBlock, int size) noexcept {
    if (size <= BlockCache::kLargest) {
        BlockCache* const cache = t_pBlockCache != nullptr ? t_pBlockCache : BlockCache::Attach();
        if (cache != nullptr && cache->Put(pBlock, size)) return;
    }
    if (size > kLargestUnlockedBlock) return FreeLargeBlock(pBlock);
    std::free(pBlock);
}

}  // namespace brenta
