// A thread's own cache of freed blocks of the global heap's exact lane.
//
// The exact lane promises that a request gets a freed block of its size, if there is one anywhere, before
// anything is carved. So what a thread keeps to itself must be within the reach of the others. Visitors come
// when they would otherwise have to carve, and only where they see a block; they take half of the blocks of
// the size: enough not to come again soon, and not so many that the owner has to come for them in turn.
//
// Everything here happens inside the lock of the thread's store (thread_store.h), or under the heap's lock,
// by the owner at once and by others as visitors.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "foundation/heap_pages.h"

namespace brenta {

class ExactCache {
 public:
    /// Blocks of each size. The rows of the table are an odd number of cache lines long, so that the first
    /// blocks of all sizes do not meet in a few sets of the processor's cache.
    static constexpr std::uint32_t kDepth = 100;

    /// Whether blocks of this size are kept.
    static bool Keeps(std::size_t size) { return size - kSmallest <= kLargest - kSmallest; }

    bool IsFull(std::size_t size) const { return Count(size) == kDepth; }
    /// Whether there is no block of this size; to others than the owner a hint.
    bool IsEmpty(std::size_t size) const { return Count(size) == 0; }

    void Push(std::size_t size, HeapBlock block) {
        const std::uint32_t count = Count(size);
        // Word by word: one move of both would wait for the two stores that have just put them side by side.
        HeapBlock& kept = m_blocks[size - kSmallest][count];
        kept.p = block.p;
        kept.pNote = block.pNote;
        SetCount(size, count + 1);
    }
    /// Takes the block put last and marks it as in use; there must be one.
    char* Pop(std::size_t size, std::uint32_t mark) {
        const std::uint32_t count = Count(size) - 1;
        // Read before anything is written: the processor takes a write for one of the same place when the low
        // bits of both addresses agree, and a read would wait for it.
        const HeapBlock block = m_blocks[size - kSmallest][count];
        SetCount(size, count);
        auto* const note = static_cast<ExactNote*>(block.pNote);
        if (size >= kGranule) {
            note->life.Store(static_cast<std::uint32_t>(size) | mark);
        } else {
            note->StartShort(ByteInGranule(block.p));
        }
        Increment(reuses);
        return block.p;
    }
    /// Moves the older half of the blocks, or those that there are, to `blocks`, and returns how many.
    std::uint32_t RemoveOlder(std::size_t size, HeapBlock* blocks);
    /// Moves the older half of the blocks of this size, or the only one, to another cache, which has none,
    /// and returns how many.
    std::uint32_t MoveTo(ExactCache& other, std::size_t size);

    static void Increment(std::atomic<std::uint32_t>& counter) {
        counter.store(counter.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }

    // By the threads that have owned the cache: blocks taken from it, and blocks carved instead.
    std::atomic<std::uint32_t> reuses{0};
    std::atomic<std::uint32_t> carved{0};

    static constexpr std::size_t kSmallest = 1;
    static constexpr std::size_t kLargest = 512;

 private:
    std::uint32_t Count(std::size_t size) const {
        return m_counts[size - kSmallest].load(std::memory_order_relaxed);
    }
    void SetCount(std::size_t size, std::uint32_t count) {
        m_counts[size - kSmallest].store(count, std::memory_order_relaxed);
    }

    std::atomic<std::uint32_t> m_counts[kLargest - kSmallest + 1] = {};
    HeapBlock m_blocks[kLargest - kSmallest + 1][kDepth];  // those that count are initialised, no others
};

}  // namespace brenta
