#include "foundation/heap_pages.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

#include "foundation/poison.h"
#include "foundation/region_store.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// COnePage

COnePage* COnePage::Create(Lane lane, std::size_t size, bool forOneBlock) {
    const std::size_t notes = forOneBlock ? 1 : (size + kGranule - 1) / kGranule;
    auto* page = new (std::nothrow) COnePage;
    if (!page) return nullptr;
    page->m_pBytes = static_cast<char*>(std::malloc(size));
    // calloc, because it gets zeroes from the system for nothing.
    void* noteBytes = std::calloc(notes, lane == Lane::Exact ? sizeof(ExactNote) : sizeof(BlockLife));
    if (lane == Lane::Exact) {
        page->m_pExact = static_cast<ExactNote*>(noteBytes);
    } else {
        page->m_pAligned = static_cast<BlockLife*>(noteBytes);
    }
    page->m_size = size;
    page->m_left = size;
    page->m_lane = lane;
    page->m_forOneBlock = forOneBlock;
    if (!page->m_pBytes || !noteBytes) {
        delete page;
        return nullptr;
    }
    if (lane == Lane::Aligned) Poison(page->m_pBytes, size);
    return page;
}

COnePage::~COnePage() {
    if (m_pBytes) Unpoison(m_pBytes, m_size);
    std::free(m_pBytes);
    for (std::size_t i = 0; m_pRegionSets && i < RegionCount() * kSmallSizes; ++i)
        std::free(m_pRegionSets[i]);
    std::free(m_pRegionSets);
    if (m_lane == Lane::Exact) {
        std::free(m_pExact);
    } else {
        std::free(m_pAligned);
    }
}

void* COnePage::NoteBlock(std::size_t offset, std::size_t size, std::uint32_t mark) {
    if (m_lane == Lane::Exact) {
        NoteExact(offset, size, mark);
        return &m_pExact[offset / kGranule];
    }
    BlockLife& life = m_pAligned[offset / kGranule];
    life.Store((m_forOneBlock ? kWholePage : static_cast<std::uint32_t>(size / kGranule)) | mark);
    return &life;
}

void COnePage::NoteExact(std::size_t offset, std::size_t size, std::uint32_t mark) {
    ExactNote& note = m_pExact[offset / kGranule];
    const bool fits = size < ExactNote::kNotedElsewhere;
    if (!fits && !m_forOneBlock) (&note)[1].KeepSize(size);
    note.AddBlock(static_cast<unsigned>(offset % kGranule),
                  fits ? static_cast<std::uint32_t>(size) : ExactNote::kNotedElsewhere, mark);
}

RegionSet* COnePage::RegionSetOf(const char* p, std::size_t size) {
    if (!m_pRegionSets) {
        const std::size_t count = RegionCount() * kSmallSizes;
        m_pRegionSets = static_cast<RegionSet**>(std::calloc(count, sizeof(void*)));
        if (!m_pRegionSets) return nullptr;
    }
    const std::size_t region = static_cast<std::size_t>(p - m_pBytes) / kRegionSize;
    RegionSet*& set = m_pRegionSets[region * kSmallSizes + size / kGranule - 1];
    if (!set) {
        set = static_cast<RegionSet*>(std::calloc(1, sizeof(RegionSet)));
        if (!set) return nullptr;
        set->pPage = this;
        set->pStart = m_pBytes + region * kRegionSize;
        set->size = std::min(kRegionSize, m_size - region * kRegionSize);
    }
    return set;
}

char* COnePage::Carve(std::size_t size, std::uint32_t mark) {
    const std::size_t offset = Used();
    NoteBlock(offset, size, mark);
    m_used.store(offset + size, std::memory_order_relaxed);
    m_left -= size;
    return m_pBytes + offset;
}

HeapBlock COnePage::CarveFree(std::size_t size) {
    const std::size_t offset = Used();
    void* const note = NoteBlock(offset, size, 0);
    m_used.store(offset + size, std::memory_order_relaxed);
    m_left -= size;
    return {m_pBytes + offset, note};
}

HeapBlock COnePage::TakeRest(std::size_t& size) {
    const std::size_t offset = Used();
    size = m_lane == Lane::Exact ? m_left : m_left / kGranule * kGranule;
    m_left = 0;
    if (m_lane == Lane::Aligned) m_used.store(offset + size, std::memory_order_relaxed);
    return {m_pBytes + offset, NoteBlock(offset, size, 0)};
}

void COnePage::CountLive(LiveBlocks& live) const {
    // A rest that was taken lies behind what counts as used.
    const std::size_t noted = m_left == 0 ? m_size : Used();
    const std::size_t granules = m_forOneBlock ? 1 : (noted + kGranule - 1) / kGranule;
    if (m_lane == Lane::Exact) return CountLiveExact(granules, live);
    for (std::size_t i = 0; i < granules; ++i) {
        const std::uint32_t word = m_pAligned[i].Load();
        if (BlockLife::IsInUse(word)) live.Add(AlignedSize(word));
    }
}

void COnePage::CountLiveExact(std::size_t granules, LiveBlocks& live) const {
    for (std::size_t i = 0; i < granules; ++i) {
        const ExactNote& note = m_pExact[i];
        for (unsigned byte = 0; note.IsAnyInUse() && byte < kGranule; ++byte)
            if (note.IsInUse(byte)) live.Add(ExactSize(m_pBytes + i * kGranule + byte));
        if (note.IsSizeElsewhere()) ++i;
    }
}

// ---------------------------------------------------------------------------------------------------------
// PageIndex

namespace {

constexpr unsigned kFirstTableBits = 6;

}  // namespace

PageIndex::PageIndex(std::size_t pageSize)
    : m_shift(static_cast<unsigned>(std::bit_width(std::max(pageSize, kGranule) - 1))) {}

PageIndex::~PageIndex() {
    for (Table* table = m_pTable.load(std::memory_order_relaxed); table;) {
        delete[] table->pSlots;
        delete std::exchange(table, table->pOutgrown);
    }
}

bool PageIndex::Add(COnePage& page) {
    const auto start = reinterpret_cast<std::uintptr_t>(page.Start());
    const std::uintptr_t first = start >> m_shift;
    const std::uintptr_t last = page.IsForOneBlock() ? first : (start + page.Size() - 1) >> m_shift;
    if (!Reserve(last - first + 1)) return false;
    for (std::uintptr_t region = first; region <= last; ++region) {
        Enter(*m_pTable.load(std::memory_order_relaxed), region, page);
        ++m_count;
    }
    return true;
}

/// Makes room for more entries, so that the table is never more than half full.
bool PageIndex::Reserve(std::size_t entries) {
    Table* const old = m_pTable.load(std::memory_order_relaxed);
    if (old && 2 * (m_count + entries) <= old->mask + 1) return true;
    const auto bits =
        std::max(kFirstTableBits, static_cast<unsigned>(std::bit_width(2 * (m_count + entries))));
    const std::size_t size = std::size_t{1} << bits;
    auto* slots = new (std::nothrow) Slot[size]();
    if (!slots) return false;
    auto* table = new (std::nothrow) Table{slots, size - 1, 64 - bits, old};
    if (!table) {
        delete[] slots;
        return false;
    }
    for (std::size_t i = 0; old && i <= old->mask; ++i) {
        const Slot& slot = old->pSlots[i];
        if (COnePage* page = slot.pPage.load(std::memory_order_relaxed)) Enter(*table, slot.region, *page);
    }
    m_pTable.store(table, std::memory_order_release);
    return true;
}

void PageIndex::Enter(Table& table, std::uintptr_t region, COnePage& page) {
    std::size_t i = table.SlotOf(region);
    while (table.pSlots[i].pPage.load(std::memory_order_relaxed))
        i = (i + 1) & table.mask;
    Slot& slot = table.pSlots[i];
    slot.start = reinterpret_cast<std::uintptr_t>(page.Start());
    slot.size = page.IsForOneBlock() ? kGranule : page.Size();
    slot.region = region;
    slot.pPage.store(&page, std::memory_order_release);
}

}  // namespace brenta
