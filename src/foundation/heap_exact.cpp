// The exact lane's ways beside the usual one (heap.cpp): when a thread's cache has no block or no room, or
// there is no cache, and blocks of less than a granule.
#include <algorithm>

#include "foundation/exact_cache.h"
#include "foundation/heap_core.h"
#include "foundation/thread_store.h"

namespace brenta {

char* HeapCore::AllocateExact(std::size_t size) {
    if (ThreadStore* const store = StoreFor(size)) return AllocateThrough(*store, size);
    ExactCache::Increment(m_allocations);
    BlockStack* const stack = Of(Lane::Exact).store.Find(size);
    if (!stack || stack->IsEmpty()) return CarveExact(size, BlockLife::Mark(0));
    ExactCache::Increment(m_reuses);
    const HeapBlock block = stack->Pop();
    static_cast<ExactNote*>(block.pNote)->Start(ByteInGranule(block.p), BlockLife::Mark(0));
    return block.p;
}

/// From the thread's cache, filled up from the free store or from other threads, before anything is carved.
char* HeapCore::AllocateThrough(ThreadStore& store, std::size_t size) {
    ExactCache& cache = store.Exact();
    if (cache.IsEmpty(size)) FillUp(cache, size);
    if (cache.IsEmpty(size) && ThreadStore::CollectAllAstray(*this) != 0) FillUp(cache, size);
    if (cache.IsEmpty(size)) ThreadStore::TakeFromOthers(store, size);
    if (!cache.IsEmpty(size)) return cache.Pop(size, store.GetMark());
    ExactCache::Increment(cache.carved);
    return CarveExact(size, store.GetMark());
}

/// Moves blocks from the free store to a thread's empty cache, and leaves half of them to other threads,
/// which would have to visit this one for them.
void HeapCore::FillUp(ExactCache& cache, std::size_t size) {
    HeapBlock blocks[ExactCache::kDepth / 2];
    BlockStack& free = *Of(Lane::Exact).store.Find(size);
    const std::uint32_t half = (free.GetCount() + 1) / 2;
    const std::uint32_t count = free.PopSome(blocks, std::min(half, ExactCache::kDepth / 2));
    for (std::uint32_t i = 0; i < count; ++i)
        cache.Push(size, blocks[i]);
}

/// The calling thread's store if it keeps blocks of this size; null if not.
ThreadStore* HeapCore::StoreFor(std::size_t size) {
    return m_hasExactCaches && ExactCache::Keeps(size) ? ThreadStore::Get(*this) : nullptr;
}

char* HeapCore::CarveExact(std::size_t size, std::uint32_t mark) {
    LaneState& lane = Of(Lane::Exact);
    if ((!lane.pCurrent || lane.pCurrent->Left() < size) && !NewPage(Lane::Exact, size)) return nullptr;
    return lane.pCurrent->Carve(size, mark);
}

void HeapCore::FreeShort(ThreadStore* store, COnePage& page, char* p) {
    ExactNote& note = page.ExactNoteOf(p);
    const std::size_t size = note.ShortSize(ByteInGranule(p));
    if (size == 0) return;
    if (store && m_hasExactCaches && store->FreeExact(size, p, note)) return;
    const os::LockGuard guard(m_lock);
    if (note.EndShort(ByteInGranule(p))) KeepExact(page, size, {p, &note});
}

/// Keeps a block that is not in use: in the thread's cache or, without one, in the free store.
void HeapCore::KeepExact(COnePage& page, std::size_t size, HeapBlock block) {
    ThreadStore* const store = StoreFor(size);
    if (!store) return AddToFreeStore(page, size, block);
    if (store->Exact().IsFull(size)) MoveOlder(store->Exact(), size);
    store->Exact().Push(size, block);
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
