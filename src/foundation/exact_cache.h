// A thread's own cache of freed blocks of the global heap's exact lane.
//
// The exact lane promises that a request gets a freed block of its size, if there is one anywhere, before
// anything is carved. So what a thread keeps to itself must be within the reach of the others, and yet the
// thread, which is alone with it nearly always, must not pay for that. Its lock is one that only visitors pay
// for (os::OwnersLock). Visitors come when they would otherwise have to carve, and only where they see a
// block; they take all blocks of the size, so that they do not come again soon.
//
// Whoever holds the heap's lock may use a cache too, the owner at once, all others as visitors.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "foundation/heap_pages.h"
#include "os/lock.h"

namespace brenta {

class ExactCache {
 public:
    static constexpr std::uint32_t kDepth = 32;

    /// Whether blocks of this size are kept.
    static bool Keeps(std::size_t size) { return size - kSmallest <= kLargest - kSmallest; }

    /// The block of this size put last, marked as in use; null if there is none, or a visitor. The owner.
    char* Take(std::size_t size) {
        char* p = nullptr;
        if (!m_lock.Enter()) return p;
        if (!IsEmpty(size)) p = Pop(size);
        m_lock.Leave();
        return p;
    }
    /// Keeps a free block; false if there is no room, or a visitor. The owner.
    bool Put(std::size_t size, HeapBlock block) {
        if (!m_lock.Enter()) return false;
        const bool hasRoom = !IsFull(size);
        if (hasRoom) Push(size, block);
        m_lock.Leave();
        return hasRoom;
    }

    // Under the heap's lock, or inside the cache's own.

    bool IsFull(std::size_t size) const { return Count(size) == kDepth; }
    void Push(std::size_t size, HeapBlock block) {
        const std::uint32_t count = Count(size);
        // Word by word: one move of both would wait for the two stores that have just put them side by side.
        HeapBlock& kept = m_blocks[size - kSmallest][count];
        kept.p = block.p;
        kept.pNote = block.pNote;
        SetCount(size, count + 1);
    }
    /// Takes the block put last and marks it as in use; there must be one.
    char* Pop(std::size_t size) {
        const std::uint32_t count = Count(size) - 1;
        const HeapBlock& block = m_blocks[size - kSmallest][count];
        SetCount(size, count);
        static_cast<ExactNote*>(block.pNote)->SetLongLive(size);
        Increment(reuses);
        return block.p;
    }
    /// Moves the older half of the blocks, or those that there are, to `blocks`, and returns how many.
    std::uint32_t RemoveOlder(std::size_t size, HeapBlock* blocks);
    /// Moves all blocks of this size to another cache, which has none. For visitors; false if there is none.
    bool MoveTo(ExactCache& other, std::size_t size);

    /// Whether there is no block of this size; to others than the owner a hint.
    bool IsEmpty(std::size_t size) const { return Count(size) == 0; }

    static void Increment(std::atomic<std::uint32_t>& counter) {
        counter.store(counter.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }

    // By the threads that have owned the cache: blocks taken from it, and blocks carved instead.
    std::atomic<std::uint32_t> reuses{0};
    std::atomic<std::uint32_t> carved{0};

    static constexpr std::size_t kSmallest = kGranule;  // shorter ones are noted under the heap's lock
    static constexpr std::size_t kLargest = 512;

 private:
    std::uint32_t Count(std::size_t size) const {
        return m_counts[size - kSmallest].load(std::memory_order_relaxed);
    }
    void SetCount(std::size_t size, std::uint32_t count) {
        m_counts[size - kSmallest].store(count, std::memory_order_relaxed);
    }

    os::OwnersLock m_lock;
    std::atomic<std::uint32_t> m_counts[kLargest - kSmallest + 1] = {};
    HeapBlock m_blocks[kLargest - kSmallest + 1][kDepth];  // those that count are initialised, no others
};

}  // namespace brenta
