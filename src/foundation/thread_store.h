// Each thread's own store of freed small blocks of the global heap. Blocks come and go through it without a
// lock; the heap is entered only when a stack runs empty or full. What follows is about the aligned lane,
// whose objects and nodes make up most of the traffic; the exact lane has a cache of its own in each store
// (exact_cache.h).
//
// Only the owner touches a store. A block freed by another thread than the one that made it simply moves: it
// goes to the store of the thread that freed it, and from there, when a stack is full, half at a time back to
// the heap. When a thread ends, its blocks go back and the empty store waits for the next thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/exact_cache.h"
#include "foundation/heap_pages.h"

namespace brenta {

class HeapCore;

class ThreadStore {
 public:
    /// Largest block that is kept here.
    static constexpr std::size_t kLargestSize = 512;

    /// The calling thread's store if it has one by now, else null.
    static ThreadStore* Present();
    /// The calling thread's store; null without memory.
    static ThreadStore* Get(HeapCore& core);

    /// A block of at least `size` bytes, 1 to kLargestSize, marked as in use; null if none is kept.
    char* Take(std::size_t size) {
        Stack& stack = StackOf(size);
        if (stack.count == 0) return nullptr;
        const HeapBlock block = stack.blocks[--stack.count];
        SetAlignedLive(block);
        return block.p;
    }
    /// The same, but with blocks from the heap if none is kept. Null without memory.
    char* TakeOrRefill(HeapCore& core, std::size_t size);
    /// Keeps a block that is no longer in use; false if there is no room. `size` is a multiple of kGranule up
    /// to kLargestSize.
    bool Put(std::size_t size, HeapBlock block) {
        Stack& stack = StackOf(size);
        if (stack.count == stack.capacity) return false;
        stack.blocks[stack.count++] = block;
        return true;
    }
    /// Gives the older half of the blocks of this size back to the heap if there is no room for another.
    void MakeRoom(HeapCore& core, std::size_t size);

    /// The blocks of the exact lane.
    ExactCache& Exact() { return m_exact; }
    /// Fills an empty stack of a thread's cache with the blocks of this size that another thread keeps, if
    /// there is one. Under the heap's lock.
    static void TakeFromOthers(ExactCache& cache, std::size_t size);
    /// The blocks of the exact lane that all threads have had from their caches, and those that were carved
    /// because there was none. Under the heap's lock.
    static std::uint32_t CountReuses();
    static std::uint32_t CountCarved();

    /// Prepares for the ends of threads; false if that is impossible. For the global heap's core alone.
    static bool StartAll();
    /// Releases all stores, of every thread. The blocks in them are not given back.
    static void EndAll();
    /// Is told of no more threads that end.
    static void ForgetThreads();

 private:
    static constexpr std::size_t kStacks = kLargestSize / kGranule;
    static constexpr std::uint32_t kLargestDepth = 1024;
    static constexpr std::size_t kKeptBytes = std::size_t{32} * 1024;  // of one size

    struct Stack {
        std::uint32_t count = 0;
        std::uint32_t capacity = 0;
        HeapBlock blocks[kLargestDepth];
    };

    ThreadStore();
    Stack& StackOf(std::size_t size) { return m_stacks[(size - 1) / kGranule]; }
    static ThreadStore* Attach(HeapCore& core);
    static void AtThreadEnd(void* store);

    Stack m_stacks[kStacks];
    ExactCache m_exact;
    ThreadStore* m_pNextOfAll = nullptr;
    ThreadStore* m_pNextIdle = nullptr;
};

/// The calling thread's store.
extern constinit thread_local ThreadStore* t_pThreadStore;

inline ThreadStore* ThreadStore::Present() {
    return t_pThreadStore;
}

inline ThreadStore* ThreadStore::Get(HeapCore& core) {
    ThreadStore* const store = t_pThreadStore;
    return store ? store : Attach(core);
}

}  // namespace brenta
