#include "foundation/thread_store.h"

#include <algorithm>
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

/// Blocks taken from the heap at once, no more than any stack holds: freed ones or, for a thread that has
/// neighbours, new ones, so that building something large does not meet them at the lock with every node.
constexpr unsigned kTakenAtOnce = 64;

}  // namespace

ThreadStore::ThreadStore() {
    for (std::size_t i = 0; i < kStacks; ++i) {
        const std::size_t fitting = kKeptBytes / ((i + 1) * kGranule);
        m_stacks[i].capacity = static_cast<std::uint32_t>(std::min<std::size_t>(fitting, kLargestDepth));
    }
}

char* ThreadStore::TakeOrRefill(HeapCore& core, std::size_t size) {
    if (char* p = Take(size)) return p;
    Stack& stack = StackOf(size);
    const std::size_t rounded = (size + kGranule - 1) / kGranule * kGranule;
    stack.count = core.TakeFree(rounded, stack.blocks, kTakenAtOnce, os::SingleThreaded() ? 1 : kTakenAtOnce);
    return Take(size);
}

/// It is the older half that goes: the newest blocks are still in the processor's cache.
void ThreadStore::MakeRoom(HeapCore& core, std::size_t size) {
    Stack& stack = StackOf(size);
    if (stack.count < stack.capacity) return;
    const std::uint32_t half = stack.count / 2;
    core.GiveFree(size, stack.blocks, half);
    std::copy(stack.blocks + half, stack.blocks + stack.count, stack.blocks);
    stack.count -= half;
}

void ThreadStore::TakeFromOthers(ExactCache& cache, std::size_t size) {
    for (ThreadStore* store = g_pAllStores; store; store = store->m_pNextOfAll) {
        if (&store->m_exact != &cache && store->m_exact.MoveTo(cache, size)) return;
    }
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

ThreadStore* ThreadStore::Attach(HeapCore& core) {
    ThreadStore* store;
    {
        const os::LockGuard guard(core.GetLock());
        store = g_pIdleStores;
        if (store) {
            g_pIdleStores = store->m_pNextIdle;
        } else {
            store = new (std::nothrow) ThreadStore;
            if (!store) return nullptr;
            store->m_pNextOfAll = std::exchange(g_pAllStores, store);
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
    t_pThreadStore = nullptr;
    for (std::size_t i = 0; i < kStacks; ++i) {
        Stack& stack = store->m_stacks[i];
        core->GiveFree((i + 1) * kGranule, stack.blocks, std::exchange(stack.count, 0));
    }
    core->GiveExact(store->m_exact);
    const os::LockGuard guard(core->GetLock());
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
    while (g_pAllStores)
        delete std::exchange(g_pAllStores, g_pAllStores->m_pNextOfAll);
}

}  // namespace brenta
