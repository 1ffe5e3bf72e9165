// The operations of CHeap. How pages keep their notes, and why there are two lanes, is told in
// foundation/heap_pages.h.
//
// The exact lane follows one strict rule: a request is served by a freed block of exactly this size, the one
// that the thread freed last, or else from the next bytes of the current page. Threads may keep what they
// freed, but not hold it back from each other (exact_cache.h). The aligned lane has no such promise to keep
// (thread_store.h).
#include "brenta/heap.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>

#include "brenta/failure.h"
#include "foundation/heap_core.h"
#include "foundation/library_statics.h"
#include "foundation/poison.h"
#include "foundation/thread_store.h"

namespace brenta {

namespace {

constexpr int kDefaultPageSize = 1000000;
constexpr std::size_t kLargestRequest = INT_MAX;
/// What is carved at once in the aligned lane ends at a multiple of this, so that hardly any cache line of
/// blocks or notes belongs to two threads.
constexpr std::size_t kCarvedRun = 4096;

std::size_t RoundUp(std::size_t size) {
    return size == 0 ? kGranule : (size + kGranule - 1) / kGranule * kGranule;
}

/// The core of the global heap, built if need be; null after unloading.
HeapCore* GlobalCore() {
    HeapCore* core = g_pGlobalCore.load(std::memory_order_acquire);
    if (core) [[likely]]
        return core;
    GlobalHeap();
    return g_pGlobalCore.load(std::memory_order_acquire);
}

/// Stands apart from the usual way, which then needs no frame.
[[gnu::noinline]] void* AllocateInLock(int size) {
    HeapCore* const core = GlobalCore();
    return core ? core->Allocate(size) : nullptr;
}

/// Copies what fits and clears the rest.
void MoveContent(char* to, std::size_t newSize, const char* from, std::size_t kept) {
    std::memcpy(to, from, kept);
    std::memset(to + kept, 0, newSize - kept);
}

void CrashOnFreeOfNull() {
    ForcedCrash(0x0501B007, "Heap", __LINE__, "Forced crash! \"Attempting to free a NULL ptr.\"");
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------
// HeapCore: life and pages

HeapCore::HeapCore(const char* name, int pageSize) : HeapCore(name, pageSize, m_ownLock) {}

HeapCore::HeapCore(const char* name, int pageSize, os::Lock& lock)
    : m_lock(lock), m_pageSize(pageSize > 0 ? static_cast<std::size_t>(pageSize) : 0), m_index(m_pageSize) {
    const std::size_t length = name ? std::min(std::strlen(name), sizeof m_name - 1) : 0;
    std::copy_n(name, length, m_name);
    m_name[length] = '\0';
    if (m_pageSize > 0) NewPage(Lane::Exact, m_pageSize);
}

HeapCore::~HeapCore() {
    for (COnePage* page = m_pFirstPage.load(std::memory_order_acquire); page;) {
        COnePage* const next = page->Next();
        delete page;
        page = next;
    }
}

/// A page in the list and in the index, or null without memory and everything as it was.
COnePage* HeapCore::AddPage(Lane lane, std::size_t size, bool forOneBlock) {
    COnePage* const page = COnePage::Create(lane, size, forOneBlock);
    if (!page) return nullptr;
    if (!m_index.Add(*page)) {
        delete page;
        return nullptr;
    }
    if (m_pLastPage) {
        m_pLastPage->SetNext(page);
    } else {
        m_pFirstPage.store(page, std::memory_order_release);
    }
    m_pLastPage = page;
    return page;
}

/// Gives the lane a new current page of max(size, page size) bytes; what is left of the former becomes one
/// free block. False without memory, and everything as it was.
bool HeapCore::NewPage(Lane lane, std::size_t size) {
    COnePage* const page = AddPage(lane, std::max(size, m_pageSize), size > m_pageSize);
    if (!page) return false;
    LaneState& state = Of(lane);
    const std::size_t leastRest = lane == Lane::Exact ? 1 : kGranule;
    if (state.pCurrent && state.pCurrent->Left() >= leastRest) {
        std::size_t rest;
        const HeapBlock block = state.pCurrent->TakeRest(rest);
        if (lane == Lane::Exact) {
            // The rest counts as freed last: it lies on top, before what the thread keeps.
            KeepExact(*state.pCurrent, rest, block);
        } else {
            AddToFreeStore(*state.pCurrent, rest, block);
        }
    }
    state.pCurrent = page;
    return true;
}

/// The calling thread's store; null if it or the heap has none.
inline ThreadStore* HeapCore::CallersStore() {
    return m_hasThreadStores ? ThreadStore::Present() : nullptr;
}

// ---------------------------------------------------------------------------------------------------------
// HeapCore: the exact lane

void* HeapCore::Allocate(int size) {
    if (size < 0) return nullptr;
    const os::LockGuard guard(m_lock);
    return AllocateExact(std::max(static_cast<std::size_t>(size), std::size_t{1}));
}

inline void HeapCore::FreeExact(ThreadStore* store, COnePage& page, char* p) {
    ExactNote& note = page.ExactNoteOf(p);
    const std::size_t size = note.LongSize(ByteInGranule(p));
    if (size == 0) return FreeShort(store, page, p);
    const bool isKept = store && m_hasExactCaches && ExactCache::Keeps(size);
    if (isKept && store->FreeExact(size, p, note)) return;
    FreeInLock(page, {p, &note}, note.life);
}

char* HeapCore::ReAllocExact(COnePage& page, char* p, int size, bool& known) {
    const os::LockGuard guard(m_lock);
    known = page.ExactNoteOf(p).IsInUse(ByteInGranule(p));
    if (!known || size < 0) return nullptr;
    const std::size_t oldSize = page.ExactSize(p);
    const std::size_t newSize = std::max(static_cast<std::size_t>(size), std::size_t{1});
    char* const fresh = AllocateExact(newSize);
    if (!fresh) return nullptr;
    MoveContent(fresh, newSize, p, std::min(oldSize, static_cast<std::size_t>(size)));
    FreeExact(CallersStore(), page, p);
    return fresh;
}

// ---------------------------------------------------------------------------------------------------------
// HeapCore: the aligned lane

void* HeapCore::AllocateAligned(std::size_t size) {
    if (size > kLargestRequest) return nullptr;
    size = std::max(size, std::size_t{1});
    char* p = nullptr;
    ThreadStore* store = nullptr;
    if (m_hasThreadStores && size <= ThreadStore::kLargestSize) store = ThreadStore::Get(*this);
    if (store) {
        p = store->TakeOrRefill(*this, size);
    } else {
        HeapBlock block;
        if (TakeFree(RoundUp(size), &block, 1, 1) == 1) {
            static_cast<BlockLife*>(block.pNote)->Start(BlockLife::Mark(0));
            p = block.p;
        }
    }
    if (p) Unpoison(p, size);
    return p;
}

unsigned HeapCore::TakeFree(std::size_t size, HeapBlock* blocks, unsigned count, unsigned toCarve) {
    const os::LockGuard guard(m_lock);
    if (const unsigned taken = TakeKept(size, blocks, count)) return taken;
    unsigned carved = 0;
    while (carved < toCarve) {
        const HeapBlock block = CarveAligned(size);
        if (!block.p) break;
        blocks[carved++] = block;
        const std::size_t used = Of(Lane::Aligned).pCurrent ? Of(Lane::Aligned).pCurrent->Used() : 0;
        if (used / kCarvedRun != (used - size) / kCarvedRun) break;
    }
    // The block to be handed out first is the last one.
    std::reverse(blocks, blocks + carved);
    return carved;
}

/// Takes what the free stores of the aligned lane have.
unsigned HeapCore::TakeKept(std::size_t size, HeapBlock* blocks, unsigned count) {
    if (size <= RegionStore::kLargestSize) return m_smallAligned.Take(size, blocks, count);
    BlockStack* const stack = Of(Lane::Aligned).store.Find(size);
    return stack ? stack->PopSome(blocks, count) : 0;
}

HeapBlock HeapCore::CarveAligned(std::size_t size) {
    if (size > m_pageSize || size > kLargestNotedSize) {
        COnePage* const page = AddPage(Lane::Aligned, size, true);
        return page ? page->CarveFree(size) : HeapBlock{nullptr, nullptr};
    }
    LaneState& lane = Of(Lane::Aligned);
    const bool fits = lane.pCurrent && lane.pCurrent->Left() >= size;
    if (!fits && !NewPage(Lane::Aligned, size)) return {nullptr, nullptr};
    return lane.pCurrent->CarveFree(size);
}

void HeapCore::GiveFree(std::size_t size, const HeapBlock* blocks, unsigned count) {
    const os::LockGuard guard(m_lock);
    if (size > RegionStore::kLargestSize) {
        for (unsigned i = 0; i < count; ++i)
            Of(Lane::Aligned).store.Add(size, blocks[i]);
        return;
    }
    RegionSet* set = nullptr;  // of the block before, as a rule of the next one, too
    for (unsigned i = 0; i < count; ++i) {
        if (!set || !set->Covers(blocks[i].p))
            set = m_index.Find(blocks[i].p)->RegionSetOf(blocks[i].p, size);
        if (set) m_smallAligned.Add(*set, size, blocks[i].p);
    }
}

inline void HeapCore::FreeAligned(ThreadStore* store, COnePage& page, char* p) {
    if (ByteInGranule(p) != 0) return;
    BlockLife& life = page.AlignedLifeOf(p);
    const std::size_t size = page.AlignedSize(life.Load());
    const bool isKept = store && size - 1 < ThreadStore::kLargestSize;
    if (isKept && store->Free(size, p, life)) return Poison(p, size);
    FreeInLock(page, {p, &life}, life);
}

/// Keeps a block that is not in use: in the thread's store or, without one, in the heap.
void HeapCore::KeepAligned(std::size_t size, HeapBlock block) {
    ThreadStore* store = nullptr;
    if (m_hasThreadStores && size <= ThreadStore::kLargestSize) store = ThreadStore::Get(*this);
    if (!store) return GiveFree(size, &block, 1);
    store->MakeRoom(*this, size);
    store->Put(size, block);
}

char* HeapCore::ReAllocAligned(COnePage& page, char* p, int size, bool& known) {
    if (ByteInGranule(p) != 0) return nullptr;
    const std::uint32_t word = page.AlignedLifeOf(p).Load();
    known = BlockLife::IsInUse(word);
    if (!known || size < 0) return nullptr;
    const std::size_t oldSize = page.AlignedSize(word);
    const std::size_t newSize = std::max(static_cast<std::size_t>(size), std::size_t{1});
    char* const fresh = static_cast<char*>(AllocateAligned(newSize));
    if (!fresh) return nullptr;
    Unpoison(p, oldSize);
    MoveContent(fresh, newSize, p, std::min(oldSize, static_cast<std::size_t>(size)));
    FreeAligned(CallersStore(), page, p);
    return fresh;
}

// ---------------------------------------------------------------------------------------------------------
// HeapCore: both lanes

/// Frees what the thread's store did not take: a block of another owner, one too many, a large one - or one
/// that is not in use at all, which is left alone.
void HeapCore::FreeInLock(COnePage& page, HeapBlock block, BlockLife& life) {
    const os::LockGuard guard(m_lock);
    const bool isExact = page.GetLane() == Lane::Exact;
    std::uint32_t word;
    ThreadStore* owner;
    do {
        word = life.Load();
        if (!BlockLife::IsInUse(word)) return;
        owner = ThreadStore::OtherOwnerOf(word);
    } while (!life.Change(word, owner ? word | BlockLife::kAstray : BlockLife::SizeOf(word)));
    const std::size_t size = isExact ? page.ExactSize(block.p) : page.AlignedSize(word);
    if (!isExact) Poison(block.p, size);
    if (owner) {
        if (!isExact || !owner->WaitOutOwner()) return owner->AddAstray(*this, block.p);
        if (life.Load() != (word | BlockLife::kAstray)) return;
        life.End(word);
    }
    isExact ? KeepExact(page, size, block) : KeepAligned(size, block);
}

void HeapCore::FreeAstray(char* p, std::uint32_t mark) {
    COnePage& page = *m_index.Find(p);
    const bool isExact = page.GetLane() == Lane::Exact;
    ExactNote* const note = isExact ? &page.ExactNoteOf(p) : nullptr;
    BlockLife& life = isExact ? note->life : page.AlignedLifeOf(p);
    const std::uint32_t word = life.Load();
    if (BlockLife::MarkOf(word) != mark) return;
    life.End(word);
    if (isExact) {
        AddToFreeStore(page, page.ExactSize(p), {p, note});
    } else {
        AddToFreeStore(page, page.AlignedSize(word), {p, &life});
    }
}

inline void HeapCore::Free(void* p) {
    ThreadStore* const store = CallersStore();
    COnePage* const page = m_index.Find(p);
    if (!page) return;
    char* const bytes = static_cast<char*>(p);
    if (page->GetLane() == Lane::Aligned) {
        FreeAligned(store, *page, bytes);
    } else {
        FreeExact(store, *page, bytes);
    }
}

void* HeapCore::ReAlloc(void* p, int size) {
    COnePage* const page = m_index.Find(p);
    char* const bytes = static_cast<char*>(p);
    bool known = false;
    char* fresh = nullptr;
    if (page) {
        fresh = page->GetLane() == Lane::Exact ? ReAllocExact(*page, bytes, size, known)
                                               : ReAllocAligned(*page, bytes, size, known);
    }
    if (!known) {
        ForcedCrash(0x0501B008, "Heap", __LINE__,
                    "Forced crash! \"Attempting to realloc an unknown pointer.\"");
    }
    return fresh;
}

int HeapCore::GetBytesUsed() const {
    std::uint64_t sum = 0;
    for (COnePage* page = m_pFirstPage.load(std::memory_order_acquire); page; page = page->Next()) {
        sum += page->Used();
    }
    return static_cast<int>(std::min<std::uint64_t>(sum, INT_MAX));
}

LiveBlocks HeapCore::CountLive() {
    const os::LockGuard guard(m_lock);
    LiveBlocks live;
    for (COnePage* page = m_pFirstPage.load(std::memory_order_acquire); page; page = page->Next())
        page->CountLive(live);
    return live;
}

bool HeapCore::IsValidHeapPtr(const void* p) const {
    const auto address = reinterpret_cast<std::uintptr_t>(p);
    for (COnePage* page = m_pFirstPage.load(std::memory_order_acquire); page; page = page->Next()) {
        const auto start = reinterpret_cast<std::uintptr_t>(page->Start());
        // The last carved byte does not count.
        if (address >= start && address - start + 1 < page->Used()) return true;
    }
    return false;
}

// ---------------------------------------------------------------------------------------------------------
// CHeap

CHeap::CHeap() : CHeap("", kDefaultPageSize) {
    ForcedCrash(0x0501B001, "Heap", __LINE__, "Forced crash! \"Use initializing constructor\"");
}

CHeap::CHeap(const char* name, int pageSize) : m_pCore(new (std::nothrow) HeapCore(name, pageSize)) {}

CHeap::~CHeap() {
    delete m_pCore;
}

void* CHeap::Allocate(int size) {
    return m_pCore ? m_pCore->Allocate(size) : nullptr;
}

void* CHeap::AllocateAligned(std::size_t size) {
    return m_pCore ? m_pCore->AllocateAligned(size) : nullptr;
}

void CHeap::Free(void* p) {
    if (!p) return CrashOnFreeOfNull();
    if (m_pCore) m_pCore->Free(p);
}

void* CHeap::ReAlloc(void* p, int size) {
    return m_pCore ? m_pCore->ReAlloc(p, size) : nullptr;
}

int CHeap::GetBytesUsed() const {
    return m_pCore ? m_pCore->GetBytesUsed() : 0;
}

bool CHeap::IsValidHeapPtr(const void* p) const {
    return m_pCore && m_pCore->IsValidHeapPtr(p);
}

const char* CHeap::GetName() const {
    return m_pCore ? m_pCore->GetName() : "";
}

std::uint32_t CHeap::GetAllocationCount() const {
    return m_pCore ? m_pCore->GetAllocationCount() : 0;
}

std::uint32_t CHeap::GetReuseCount() const {
    return m_pCore ? m_pCore->GetReuseCount() : 0;
}

// ---------------------------------------------------------------------------------------------------------
// The global heap

void* CoreAllocate(int size) {
    ThreadStore* const store = ThreadStore::Present();
    if (store && ExactCache::Keeps(static_cast<std::size_t>(size))) [[likely]] {
        if (char* p = store->TakeExact(static_cast<std::size_t>(size))) [[likely]]
            return p;
    }
    return AllocateInLock(size);
}

void CoreFree(void* p) {
    if (!p) return CrashOnFreeOfNull();
    if (HeapCore* core = g_pGlobalCore.load(std::memory_order_acquire)) core->Free(p);
}

void* CoreReAlloc(void* p, int size) {
    return GlobalHeap().ReAlloc(p, size);
}

int CoreHeapUsed() {
    return GlobalHeap().GetBytesUsed();
}

bool IsValidHeapPtr(const void* p) {
    return GlobalHeap().IsValidHeapPtr(p);
}

void* HeapNew(std::size_t size) noexcept {
    ThreadStore* const store = ThreadStore::Present();
    if (store && size - 1 < ThreadStore::kLargestSize) [[likely]] {
        if (char* p = store->Take(size)) [[likely]] {
            Unpoison(p, size);
            return p;
        }
    }
    HeapCore* const core = GlobalCore();
    return core ? core->AllocateAligned(size) : nullptr;
}

void HeapDelete(void* p) noexcept {
    HeapCore* const core = g_pGlobalCore.load(std::memory_order_acquire);
    if (core && p) core->Free(p);
}

}  // namespace brenta
