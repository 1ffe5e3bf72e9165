// The exact lane's ways beside the usual one (heap.cpp): when a thread's cache has no block or no room, when
// there is no cache, and blocks of less than a granule. All of it happens under the heap's lock.
#include "foundation/exact_cache.h"
#include "foundation/heap_core.h"
#include "foundation/thread_store.h"

namespace brenta {

char* HeapCore::AllocateExact(std::size_t size) {
    if (ExactCache* const cache = CacheFor(size)) return AllocateThrough(*cache, size);
    ExactCache::Increment(m_allocations);
    BlockStack* const stack = Of(Lane::Exact).store.Find(size);
    if (!stack || stack->IsEmpty()) return CarveExact(size);
    ExactCache::Increment(m_reuses);
    const HeapBlock block = stack->Pop();
    SetExactLive(block);
    return block.p;
}

/// From the thread's cache, filled up from the free store or from another thread, before anything is carved.
char* HeapCore::AllocateThrough(ExactCache& cache, std::size_t size) {
    if (cache.IsEmpty(size)) {
        HeapBlock blocks[ExactCache::kDepth / 2];
        const std::uint32_t count = Of(Lane::Exact).store.Find(size)->PopSome(blocks, ExactCache::kDepth / 2);
        for (std::uint32_t i = 0; i < count; ++i)
            cache.Push(size, blocks[i]);
        if (count == 0) ThreadStore::TakeFromOthers(cache, size);
    }
    if (!cache.IsEmpty(size)) return cache.Pop(size);
    ExactCache::Increment(cache.carved);
    return CarveExact(size);
}

/// The calling thread's cache for blocks of this size; null if there is none.
ExactCache* HeapCore::CacheFor(std::size_t size) {
    if (!m_hasExactCaches || !ExactCache::Keeps(size)) return nullptr;
    ThreadStore* const store = ThreadStore::Get(*this);
    return store ? &store->Exact() : nullptr;
}

char* HeapCore::CarveExact(std::size_t size) {
    LaneState& lane = Of(Lane::Exact);
    if ((!lane.pCurrent || lane.pCurrent->Left() < size) && !NewPage(Lane::Exact, size)) return nullptr;
    return lane.pCurrent->Carve(size);
}

void HeapCore::FreeShort(COnePage& page, char* p) {
    const os::LockGuard guard(m_lock);
    ExactNote& note = page.ExactNoteOf(p);
    const unsigned byte = ByteInGranule(p);
    if (!note.IsShortLive(byte)) return;
    note.ClearShortLive(byte);
    AddToFreeStore(page, note.SizeOfBlock(byte), {p, &note});
}

/// The rarer part of FreeExact: into a cache that is full, visited or not there yet, or into the free store.
void HeapCore::KeepExact(COnePage& page, std::size_t size, HeapBlock block) {
    const os::LockGuard guard(m_lock);
    ExactCache* const cache = CacheFor(size);
    if (!cache) return AddToFreeStore(page, size, block);
    if (cache->IsFull(size)) MoveOlder(*cache, size);
    cache->Push(size, block);
}

void HeapCore::MoveOlder(ExactCache& cache, std::size_t size) {
    HeapBlock blocks[ExactCache::kDepth];
    const std::uint32_t count = cache.RemoveOlder(size, blocks);
    for (std::uint32_t i = 0; i < count; ++i)
        Of(Lane::Exact).store.Add(size, blocks[i]);
}

void HeapCore::GiveExact(ExactCache& cache) {
    const os::LockGuard guard(m_lock);
    for (std::size_t size = ExactCache::kSmallest; size <= ExactCache::kLargest; ++size) {
        while (!cache.IsEmpty(size))
            MoveOlder(cache, size);
    }
}

std::uint32_t HeapCore::GetAllocationCount() const {
    const os::LockGuard guard(m_lock);
    const std::uint32_t own = m_allocations.load(std::memory_order_relaxed);
    return m_hasThreadStores ? own + ThreadStore::CountReuses() + ThreadStore::CountCarved() : own;
}

std::uint32_t HeapCore::GetReuseCount() const {
    const os::LockGuard guard(m_lock);
    const std::uint32_t own = m_reuses.load(std::memory_order_relaxed);
    return m_hasThreadStores ? own + ThreadStore::CountReuses() : own;
}

}  // namespace brenta
