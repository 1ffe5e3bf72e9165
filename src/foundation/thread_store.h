// Each thread's own store of freed small blocks of the global heap. Blocks come and go through it without a
// lock; the heap is entered only when a stack runs empty or full. What is said here is about the aligned
// lane, whose objects and nodes make up most of the traffic; the exact lane has a cache of its own in each
// store (exact_cache.h).
//
// A thread that ends gives its blocks back, and the empty store waits for the next thread. Blocks that are
// freed by another thread than their owner's, the one that took them, wait in a list with the owner until it
// runs out of blocks or the list is full (block_life.h tells why). A store whose list was full again and
// again gives up owning: from then on its blocks go to whoever frees them.
//
// Others touch a store only under the heap's lock and, unless it waits for a thread, as visitors of a lock
// that costs the owner next to nothing (os::OwnersLock). Whoever holds the heap's lock may use his own store
// without that.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "foundation/exact_cache.h"
#include "foundation/heap_pages.h"
#include "os/lock.h"

namespace brenta {

class HeapCore;
class ThreadStore;

/// The calling thread's store.
extern constinit thread_local ThreadStore* t_pThreadStore;

class ThreadStore {
 public:
    /// Largest block of the aligned lane that is kept here.
    static constexpr std::size_t kLargestSize = 512;

    /// The calling thread's store if it has one by now, else null.
    static ThreadStore* Present();
    /// The calling thread's store; null without memory.
    static ThreadStore* Get(HeapCore& core);

    // The aligned lane.

    /// A block of at least `size` bytes, 1 to kLargestSize, marked as in use; null if none is kept.
    char* Take(std::size_t size) {
        const std::size_t index = IndexOf(size);
        if (m_counts[index] == 0) return nullptr;
        const HeapBlock& block = m_blocks[index][--m_counts[index]];
        static_cast<BlockLife*>(block.pNote)->Start(m_mark.load(std::memory_order_relaxed));
        return block.p;
    }
    /// The same, but with blocks from the heap if none is kept. Null without memory.
    char* TakeOrRefill(HeapCore& core, std::size_t size);
    /// Ends the life of a block and keeps it; false if it is not in use, or this is the heap's affair.
    /// `size` is a multiple of kGranule up to kLargestSize.
    bool Free(std::size_t size, char* p, BlockLife& life) {
        if (!m_lock.Enter()) return false;
        const bool ended = HasRoom(size) && End(life);
        m_lock.Leave();
        if (ended) Put(size, {p, &life});
        return ended;
    }
    /// Keeps a block that is not in use; there must be room.
    void Put(std::size_t size, HeapBlock block) {
        const std::size_t index = IndexOf(size);
        m_blocks[index][m_counts[index]++] = block;
    }
    /// Gives the older half of the blocks of this size back to the heap if there is no room for another.
    void MakeRoom(HeapCore& core, std::size_t size);

    // The exact lane; sizes that ExactCache keeps.

    char* TakeExact(std::size_t size) {
        char* p = nullptr;
        if (!m_lock.Enter()) return p;
        if (!m_exact.IsEmpty(size)) p = m_exact.Pop(size, GetMark());
        m_lock.Leave();
        return p;
    }
    bool FreeExact(std::size_t size, char* p, ExactNote& note) {
        if (!m_lock.Enter()) return false;
        const bool ended =
            !m_exact.IsFull(size) && (size >= kGranule ? End(note.life) : note.EndShort(ByteInGranule(p)));
        if (ended) m_exact.Push(size, {p, &note});
        m_lock.Leave();
        return ended;
    }
    ExactCache& Exact() { return m_exact; }
    /// What blocks that this thread takes are marked with.
    std::uint32_t GetMark() const { return m_mark.load(std::memory_order_relaxed); }

    // Everything below happens under the heap's lock.

    /// The store that owns the block with this word; null if that is nobody, the calling thread's or one that
    /// waits for a thread.
    static ThreadStore* OtherOwnerOf(std::uint32_t word);
    /// Waits until what the owner was doing with its blocks is done. False if that has been asked for too
    /// often, or the system cannot.
    bool WaitOutOwner();
    /// Keeps the owners of all other stores out of them, and lets them in again: a process that forks takes
    /// along no store that somebody was in the midst of changing.
    static void PauseOthers();
    static void ResumeOthers();
    /// Leaves a block that was marked as astray with its owner, this store.
    void AddAstray(HeapCore& core, char* p);
    /// Gives all such blocks to the heap's free stores, and returns how many there may be.
    std::uint32_t CollectAstray(HeapCore& core);
    /// The same in all stores.
    static std::uint32_t CollectAllAstray(HeapCore& core);

    /// Fills an empty stack of a thread's cache with half of the blocks of this size that another thread
    /// keeps, if there is one.
    static void TakeFromOthers(ThreadStore& taker, std::size_t size);
    /// The blocks of the exact lane that all threads have had from their caches, and those that were carved
    /// because there was none.
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
    static constexpr std::uint32_t kKeptBytes = 32 * 1024;  // of one size
    static constexpr std::uint32_t kLargestDepth = 1024;
    /// Makes the stacks an odd number of cache lines long, so that their tops are not all in the same sets of
    /// the processor's cache.
    static constexpr std::uint32_t kSpacing = 4;
    static constexpr std::uint32_t kMostAstray = 256;
    /// Visits after which a store owns no more blocks.
    static constexpr std::uint32_t kMostVisits = 64;

    explicit ThreadStore(std::uint32_t owner);
    static std::size_t IndexOf(std::size_t size) { return (size - 1) / kGranule; }
    static constexpr auto kCapacities = [] {
        std::array<std::uint32_t, kStacks> capacities{};
        for (std::uint32_t i = 0; i < kStacks; ++i)
            capacities[i] =
                std::min(kKeptBytes / ((i + 1) * static_cast<std::uint32_t>(kGranule)), kLargestDepth);
        return capacities;
    }();
    bool HasRoom(std::size_t size) const { return m_counts[IndexOf(size)] < kCapacities[IndexOf(size)]; }
    /// Ends the life of a block if this thread may do that alone.
    bool End(BlockLife& life) const {
        const std::uint32_t seen = life.Load();
        const std::uint32_t mark = BlockLife::MarkOf(seen);
        if (mark == m_own) {
            life.End(seen);
            return true;
        }
        return mark == BlockLife::Mark(0) && life.Change(seen, BlockLife::SizeOf(seen));
    }
    void CountVisit();
    bool IsVisited() const { return this != t_pThreadStore && !m_isIdle; }
    static ThreadStore* Create(bool canOwn);
    static ThreadStore* Attach(HeapCore& core);
    static void AtThreadEnd(void* store);

    os::OwnersLock m_lock;
    const std::uint32_t m_own;          // the mark of the blocks it owns
    std::atomic<std::uint32_t> m_mark;  // for those that it takes from now on: m_own, or that of nobody
    std::uint32_t m_counts[kStacks] = {};
    std::uint32_t m_visits = 0;
    std::atomic<std::uint32_t> m_astrayCount{0};
    bool m_isIdle = false;
    bool m_isPaused = false;
    ThreadStore* m_pNextOfAll = nullptr;
    ThreadStore* m_pNextIdle = nullptr;
    char* m_astray[kMostAstray];
    HeapBlock m_blocks[kStacks][kLargestDepth + kSpacing];
    ExactCache m_exact;
};

inline ThreadStore* ThreadStore::Present() {
    return t_pThreadStore;
}

inline ThreadStore* ThreadStore::Get(HeapCore& core) {
    ThreadStore* const store = t_pThreadStore;
    return store ? store : Attach(core);
}

}  // namespace brenta
