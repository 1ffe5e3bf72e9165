// What stands behind a CHeap.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "foundation/exact_cache.h"
#include "foundation/free_store.h"
#include "foundation/heap_pages.h"
#include "foundation/region_store.h"
#include "os/lock.h"

namespace brenta {

class ThreadStore;

class HeapCore {
 public:
    HeapCore(const char* name, int pageSize);
    /// The same with a lock that outlives the heap.
    HeapCore(const char* name, int pageSize, os::Lock& lock);
    ~HeapCore();
    HeapCore(const HeapCore&) = delete;
    HeapCore& operator=(const HeapCore&) = delete;

    // The operations of CHeap (brenta/heap.h).
    void* Allocate(int size);
    void* AllocateAligned(std::size_t size);
    void Free(void* p);
    void* ReAlloc(void* p, int size);
    int GetBytesUsed() const;
    bool IsValidHeapPtr(const void* p) const;
    const char* GetName() const { return m_name; }
    std::uint32_t GetAllocationCount() const;
    std::uint32_t GetReuseCount() const;
    /// The blocks in use. Takes time in proportion to the pages, and nothing from those who allocate.
    LiveBlocks CountLive();

    // For the threads' own stores (foundation/thread_store.h): blocks of the aligned lane whose size is a
    // multiple of kGranule.

    /// Moves up to `count` freed blocks of this size into `blocks`, the one freed last at the end, and
    /// returns how many. If there are none, carves `toCarve` blocks.
    unsigned TakeFree(std::size_t size, HeapBlock* blocks, unsigned count, unsigned toCarve);
    /// Takes freed blocks, the one freed last at the end.
    void GiveFree(std::size_t size, const HeapBlock* blocks, unsigned count);

    /// Frees a block if it still has this mark, of a block that strayed from its owner. Under the lock.
    void FreeAstray(char* p, std::uint32_t mark);
    /// Takes all blocks from the cache of a thread that ends. Under the lock.
    void GiveExact(ExactCache& cache);

    os::Lock& GetLock() { return m_lock; }
    /// Whether threads keep freed small blocks to themselves; set once, at the start.
    bool m_hasThreadStores = false;
    /// Whether they do so in the exact lane, too: only where one thread can reach what another keeps.
    bool m_hasExactCaches = false;

 private:
    struct LaneState {
        FreeStore store;
        COnePage* pCurrent = nullptr;
    };

    COnePage* AddPage(Lane lane, std::size_t size, bool forOneBlock);
    bool NewPage(Lane lane, std::size_t size);
    char* AllocateExact(std::size_t size);
    char* AllocateThrough(ThreadStore& store, std::size_t size);
    void FillUp(ExactCache& cache, std::size_t size);
    char* CarveExact(std::size_t size, std::uint32_t mark);
    ThreadStore* StoreFor(std::size_t size);
    unsigned TakeKept(std::size_t size, HeapBlock* blocks, unsigned count);
    HeapBlock CarveAligned(std::size_t size);
    void FreeExact(ThreadStore* store, COnePage& page, char* p);
    ThreadStore* CallersStore();
    void FreeInLock(COnePage& page, HeapBlock block, BlockLife& life);
    void FreeShort(ThreadStore* store, COnePage& page, char* p);
    void KeepExact(COnePage& page, std::size_t size, HeapBlock block);
    void MoveOlder(ExactCache& cache, std::size_t size);
    void FreeAligned(ThreadStore* store, COnePage& page, char* p);
    void KeepAligned(std::size_t size, HeapBlock block);
    char* ReAllocExact(COnePage& page, char* p, int size, bool& known);
    char* ReAllocAligned(COnePage& page, char* p, int size, bool& known);

    /// Keeps a free block of a page. Without memory it is lost to the heap until that ends.
    void AddToFreeStore(COnePage& page, std::size_t size, HeapBlock block) {
        const Lane lane = page.GetLane();
        if (lane == Lane::Aligned && size <= RegionStore::kLargestSize) {
            if (RegionSet* set = page.RegionSetOf(block.p, size)) m_smallAligned.Add(*set, size, block.p);
        } else {
            Of(lane).store.Add(size, block);
        }
    }
    LaneState& Of(Lane lane) { return m_lanes[static_cast<int>(lane)]; }

    os::Lock m_ownLock;
    os::Lock& m_lock;
    std::size_t m_pageSize;
    PageIndex m_index;
    LaneState m_lanes[2];
    RegionStore m_smallAligned;
    // In the exact lane, without what threads have from their caches.
    std::atomic<std::uint32_t> m_allocations{0};
    std::atomic<std::uint32_t> m_reuses{0};
    std::atomic<COnePage*> m_pFirstPage{nullptr};
    COnePage* m_pLastPage = nullptr;
    char m_name[260];
};

/// The core of the global heap; null before its first use and after unloading. Defined in library.cpp.
extern constinit std::atomic<HeapCore*> g_pGlobalCore;

}  // namespace brenta
