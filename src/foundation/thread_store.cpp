#include "foundation/thread_store.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

#include "foundation/heap_core.h"
#include "os/os.h"

namespace brenta {

constinit thread_local ThreadStore* t_pThreadStore = nullptr;

namespace {

// Under the lock of the global heap.
constinit ThreadStore* g_pAllStores = nullptr;
constinit ThreadStore* g_pIdleStores = nullptr;
constinit os::ThreadEndHook g_threadEnd;

/// Stores by their number as owners. Stores beyond these own nothing.
constexpr std::uint32_t kMostOwners = 4096;
static_assert(kMostOwners <= BlockLife::kOwners);
constinit ThreadStore* g_owners[kMostOwners] = {};
constinit std::uint32_t g_ownerCount = 1;  // number 0 is nobody

/// Blocks taken from the heap at once, no more than any stack holds: freed ones or, for a thread that has
/// neighbours, new ones, so that building something large does not meet them at the lock with every node.
constexpr unsigned kTakenAtOnce = 64;

/// A mark that no block in use has.
constexpr std::uint32_t kNoMark = BlockLife::kAstray;

}  // namespace

ThreadStore::ThreadStore(std::uint32_t owner)
    : m_own(owner != 0 ? BlockLife::Mark(owner) : kNoMark), m_mark(BlockLife::Mark(owner)) {}

char* ThreadStore::TakeOrRefill(HeapCore& core, std::size_t size) {
    if (char* p = Take(size)) return p;
    if (m_astrayCount.load(std::memory_order_relaxed) != 0) {
        const os::LockGuard guard(core.GetLock());
        CollectAstray(core);
    }
    const std::size_t index = IndexOf(size);
    const unsigned toCarve = os::SingleThreaded() ? 1 : kTakenAtOnce;
    m_counts[index] = core.TakeFree((index + 1) * kGranule, m_blocks[index], kTakenAtOnce, toCarve);
    return Take(size);
}

/// It is the older half that goes: the newest blocks are still in the processor's cache.
void ThreadStore::MakeRoom(HeapCore& core, std::size_t size) {
    if (HasRoom(size)) return;
    HeapBlock* const blocks = m_blocks[IndexOf(size)];
    std::uint32_t& count = m_counts[IndexOf(size)];
    const std::uint32_t half = count / 2;
    core.GiveFree(size, blocks, half);
    std::copy(blocks + half, blocks + count, blocks);
    count -= half;
}

ThreadStore* ThreadStore::OtherOwnerOf(std::uint32_t word) {
    ThreadStore* const owner = g_owners[BlockLife::OwnerOf(word)];
    return owner && owner->IsVisited() ? owner : nullptr;
}

bool ThreadStore::WaitOutOwner() {
    if (m_visits >= kMostVisits || !m_lock.Visit()) return false;
    m_lock.EndVisit();
    CountVisit();
    return true;
}

void ThreadStore::CountVisit() {
    if (++m_visits == kMostVisits) m_mark.store(BlockLife::Mark(0), std::memory_order_relaxed);
}

/// Where there is no room, and the system does not let us in all at once, the block is lost to the heap.
void ThreadStore::AddAstray(HeapCore& core, char* p) {
    if (m_astrayCount.load(std::memory_order_relaxed) == kMostAstray && CollectAstray(core) == 0) return;
    const std::uint32_t count = m_astrayCount.load(std::memory_order_relaxed);
    m_astray[count] = p;
    m_astrayCount.store(count + 1, std::memory_order_relaxed);
}

std::uint32_t ThreadStore::CollectAstray(HeapCore& core) {
    const std::uint32_t count = m_astrayCount.load(std::memory_order_relaxed);
    if (count == 0) return 0;
    const bool isVisit = IsVisited();
    if (isVisit && !m_lock.Visit()) return 0;
    for (std::uint32_t i = 0; i < count; ++i)
        core.FreeAstray(m_astray[i], m_own | BlockLife::kAstray);
    m_astrayCount.store(0, std::memory_order_relaxed);
    if (isVisit) {
        m_lock.EndVisit();
        CountVisit();
    }
    return count;
}

std::uint32_t ThreadStore::CollectAllAstray(HeapCore& core) {
    std::uint32_t sum = 0;
    for (ThreadStore* store = g_pAllStores; store; store = store->m_pNextOfAll)
        sum += store->CollectAstray(core);
    return sum;
}

void ThreadStore::TakeFromOthers(ThreadStore& taker, std::size_t size) {
    for (ThreadStore* store = g_pAllStores; store; store = store->m_pNextOfAll) {
        if (store == &taker || store->m_exact.IsEmpty(size)) continue;
        const bool isVisit = store->IsVisited();
        if (isVisit && !store->m_lock.Visit()) return;
        const std::uint32_t moved = store->m_exact.MoveTo(taker.m_exact, size);
        if (isVisit) store->m_lock.EndVisit();
        if (moved != 0) return;
    }
}

void ThreadStore::PauseOthers() {
    for (ThreadStore* store = g_pAllStores; store; store = store->m_pNextOfAll)
        store->m_isPaused = store->IsVisited() && store->m_lock.Visit();
}

void ThreadStore::ResumeOthers() {
    for (ThreadStore* store = g_pAllStores; store; store = store->m_pNextOfAll)
        if (std::exchange(store->m_isPaused, false)) store->m_lock.EndVisit();
}

std::uint32_t ThreadStore::CountReuses() {
    std::uint32_t sum = 0;
    for (const ThreadStore* store = g_pAllStores; store; store = store->m_pNextOfAll)
        sum += store->m_exact.reuses.load(std::memory_order_relaxed);
    return sum;
}

std::uint32_t ThreadStore::CountCarved() {
    std::uint32_t sum = 0;
    for (const ThreadStore* store = g_pAllStores; store; store = store->m_pNextOfAll)
        sum += store->m_exact.carved.load(std::memory_order_relaxed);
    return sum;
}

/// `canOwn`: whether others could visit the store.
ThreadStore* ThreadStore::Create(bool canOwn) {
    canOwn = canOwn && g_ownerCount < kMostOwners;
    auto* const store = new (std::nothrow) ThreadStore(canOwn ? g_ownerCount : 0);
    if (!store) return nullptr;
    if (canOwn) g_owners[g_ownerCount++] = store;
    store->m_pNextOfAll = std::exchange(g_pAllStores, store);
    return store;
}

ThreadStore* ThreadStore::Attach(HeapCore& core) {
    ThreadStore* store;
    {
        const os::LockGuard guard(core.GetLock());
        store = g_pIdleStores;
        if (store) {
            g_pIdleStores = store->m_pNextIdle;
            store->m_isIdle = false;
            store->m_visits = 0;
            if (store->m_own != kNoMark) store->m_mark.store(store->m_own, std::memory_order_relaxed);
        } else {
            store = Create(core.m_hasExactCaches);
            if (!store) return nullptr;
        }
    }
    t_pThreadStore = store;
    g_threadEnd.Set(store);
    if (!os::SingleThreaded()) os::WatchProcessEnd();
    return store;
}

void ThreadStore::AtThreadEnd(void* value) {
    auto* store = static_cast<ThreadStore*>(value);
    HeapCore* const core = g_pGlobalCore.load(std::memory_order_acquire);
    if (!core) return;
    const os::LockGuard guard(core->GetLock());
    store->CollectAstray(*core);
    t_pThreadStore = nullptr;
    for (std::size_t i = 0; i < kStacks; ++i)
        core->GiveFree((i + 1) * kGranule, store->m_blocks[i], std::exchange(store->m_counts[i], 0));
    core->GiveExact(store->m_exact);
    store->m_isIdle = true;
    store->m_pNextIdle = std::exchange(g_pIdleStores, store);
}

bool ThreadStore::StartAll() {
    return g_threadEnd.Open(&ThreadStore::AtThreadEnd);
}

void ThreadStore::ForgetThreads() {
    g_threadEnd.Close();
}

void ThreadStore::EndAll() {
    ForgetThreads();
    t_pThreadStore = nullptr;
    g_pIdleStores = nullptr;
    g_ownerCount = 1;
    std::fill(std::begin(g_owners), std::end(g_owners), nullptr);
    while (g_pAllStores)
        delete std::exchange(g_pAllStores, g_pAllStores->m_pNextOfAll);
}

}  // namespace brenta
