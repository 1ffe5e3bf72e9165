// CoreString's large blocks, the ends of the threads' caches, and the object that stands for all blocks.
#include "foundation/string_blocks.h"

#include <new>
#include <utility>

#include "brenta/detail/heap_containers.h"
#include "brenta/string.h"
#include "foundation/library_statics.h"
#include "os/os.h"

namespace brenta {

char* AcquireLargeBlock(int size) noexcept {
    const os::LockGuard guard(g_stringHeapLock);
    return NoteLack(std::malloc(static_cast<std::size_t>(size)));
}

char* ResizeLargeBlock(char* pBlock, int newSize) noexcept {
    const os::LockGuard guard(g_stringHeapLock);
    return NoteLack(std::realloc(pBlock, static_cast<std::size_t>(newSize)));
}

void FreeLargeBlock(char* pBlock) noexcept {
    const os::LockGuard guard(g_stringHeapLock);
    std::free(pBlock);
}

// ----------------------------------------------------------------------------------------------------------
// Caches

constinit thread_local BlockCache* t_pBlockCache = nullptr;

namespace {

// Under the string heap's lock.
constinit BlockCache* g_pAllCaches = nullptr;
constinit BlockCache* g_pIdleCaches = nullptr;
constinit os::ThreadEndHook g_cacheThreadEnd;
enum class CacheState { kUnused, kReady, kEnded };
constinit CacheState g_cacheState = CacheState::kUnused;

}  // namespace

BlockCache* BlockCache::Attach() {
    BlockCache* cache;
    {
        const os::LockGuard guard(g_stringHeapLock);
        if (g_cacheState == CacheState::kUnused) {
            g_cacheState = g_cacheThreadEnd.Open(&AtThreadEnd) ? CacheState::kReady : CacheState::kEnded;
        }
        if (g_cacheState == CacheState::kEnded) return nullptr;
        cache = g_pIdleCaches;
        if (cache != nullptr) {
            g_pIdleCaches = cache->m_pNextIdle;
        } else {
            cache = new (std::nothrow) BlockCache;
            if (cache == nullptr) return nullptr;
            cache->m_pNextOfAll = std::exchange(g_pAllCaches, cache);
        }
    }
    g_cacheThreadEnd.Set(cache);
    if (!os::SingleThreaded()) os::WatchProcessEnd();
    return t_pBlockCache = cache;
}

void BlockCache::Empty() {
    for (std::size_t i = 0; i < kStacks; ++i) {
        const int size = kSmallestBlock + static_cast<int>(i) * kBlockStep;
        while (char* pBlock = Take(size))
            std::free(pBlock);
    }
}

// The thread may still free strings after this, in which case it attaches a cache anew and is asked again.
void BlockCache::AtThreadEnd(void* value) {
    auto* const cache = static_cast<BlockCache*>(value);
    t_pBlockCache = nullptr;
    cache->Empty();
    const os::LockGuard guard(g_stringHeapLock);
    cache->m_pNextIdle = std::exchange(g_pIdleCaches, cache);
}

void BlockCache::ForgetThreads() {
    g_cacheThreadEnd.Close();
}

void BlockCache::EndAll() {
    ForgetThreads();
    g_cacheState = CacheState::kEnded;
    t_pBlockCache = nullptr;
    g_pIdleCaches = nullptr;
    while (BlockCache* cache = g_pAllCaches) {
        g_pAllCaches = cache->m_pNextOfAll;
        cache->Empty();
        delete cache;
    }
}

// ----------------------------------------------------------------------------------------------------------
// CStringHeap

CStringHeap::CStringHeap() : m_pBlocks(new (std::nothrow) THeapIntMap<void*, int>(1023)) {}

CStringHeap::~CStringHeap() {
    delete m_pBlocks;
}

std::size_t CStringHeap::SizeOf() const {
    return 44;
}
const char* CStringHeap::GetClassName() const {
    return "CStringHeap";
}
const char* CStringHeap::GetBaseClassName() const {
    return "none";
}

}  // namespace brenta
