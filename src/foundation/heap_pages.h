// The pages of a heap: their bytes, the notes about the blocks in them, and the index that finds a page from
// an address.
//
// A heap has two lanes, and every page belongs to one of them.
//
// The exact lane hands out bytes exactly as they are asked for: blocks lie side by side without rounding,
// alignment or headers, so that 5 bytes are followed by the next block 5 bytes on. That is fine for texts and
// raw data, and fatal for C++ objects, whose members must be aligned. The aligned lane therefore carves
// blocks in strides of 16 bytes from pages of its own. It cannot share the pages of the exact lane: the gaps
// it would leave there would sooner or later be handed out to exact requests, which would then no longer be
// adjacent.
//
// A block never changes its start or its size once it is carved: nothing is split and nothing merged. So the
// notes about a page need no search. There is one note for each *granule* of 16 bytes:
//
// - Aligned lane: a granule holds the start of one block or none. Its note is the block's life
//   (block_life.h), with its number of granules; 0: no block starts here.
//
// - Exact lane: up to 16 blocks can start in one granule. Its note has one bit per byte for "a block starts
//   here", and the size of the block that starts last in the granule. The sizes of the others need no room:
//   blocks are adjacent, so each ends where the next one starts. Whether a block is in use is one more bit
//   per byte for the short blocks, those of less than a granule. Several of them share a word, which is
//   therefore changed by atomic operations; they have no owners. A block of a granule or more is the last to
//   start in its granule for ever, so its life stands beside the starts, in a word that nobody else writes.
//   Threads free and reuse both without the lock.
//
// The notes lie outside the page, all zero at first, and the system provides their memory only as they are
// touched. A page that was made for one large block has the note of its first granule only, and is as large
// as the block. Other blocks whose size has no room in a life have it in the next granule's note, where no
// block can start.
#pragma once

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "foundation/block_life.h"

namespace brenta {

enum class Lane : std::uint8_t { Exact, Aligned };

inline constexpr std::size_t kGranule = 16;

/// Where in its granule an address lies; pages start at granules.
inline unsigned ByteInGranule(const void* p) {
    return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(p) % kGranule);
}

/// The note about a granule of the exact lane. Written under the heap's lock, except for the bit of a long
/// block.
class ExactNote {
 public:
    /// Notes that a block starts at byte `byte`, behind all others. `size` is in bytes, or kNotedElsewhere.
    ///
    /// Whoever looks without the lock, holding a block of this granule, must not take its short block for the
    /// long one that begins right now. So the start is written before the size, and read after it.
    void AddBlock(unsigned byte, std::uint32_t size, std::uint32_t mark) {
        const bool isLong = size >= kGranule;
        const std::uint32_t bits = 1u << byte | (mark != 0 && !isLong ? kFirstLive << byte : 0u);
        m_starts.fetch_or(bits, std::memory_order_relaxed);
        life.Store(isLong ? size | mark : size);
    }

    /// Size of the long block that starts at byte `byte`, or kNotedElsewhere; 0 if there is none. Any thread.
    std::uint32_t LongSize(unsigned byte) const {
        const std::uint32_t last = BlockLife::SizeOf(life.Load());
        const std::uint32_t starts = m_starts.load(std::memory_order_relaxed) & kStartsMask;
        return last >= kGranule && starts >> byte == 1 ? last : 0;
    }
    bool IsLong(unsigned byte) const { return LongSize(byte) != 0; }

    /// Size of the block that starts at byte `byte`, or kNotedElsewhere. Under the lock.
    std::uint32_t SizeOfBlock(unsigned byte) const {
        const std::uint32_t later =
            m_starts.load(std::memory_order_relaxed) & kStartsMask & (0xFFFEu << byte);
        if (later) return static_cast<unsigned>(std::countr_zero(later)) - byte;
        return BlockLife::SizeOf(life.Load());
    }

    /// Whether the size of the block that starts last stands in the next note (KeepSize).
    bool IsSizeElsewhere() const { return BlockLife::SizeOf(life.Load()) == kNotedElsewhere; }
    bool IsAnyInUse() const {
        return m_starts.load(std::memory_order_relaxed) >= kFirstLive || BlockLife::IsInUse(life.Load());
    }
    bool IsInUse(unsigned byte) const {
        return IsLong(byte) ? BlockLife::IsInUse(life.Load()) : IsShortLive(byte);
    }
    bool IsShortLive(unsigned byte) const {
        return (m_starts.load(std::memory_order_relaxed) & kFirstLive << byte) != 0;
    }
    /// Size of the short block in use that starts at byte `byte`; 0 if there is none. Any thread.
    std::uint32_t ShortSize(unsigned byte) const {
        // The last size before the starts, which were written in the other order.
        const std::uint32_t last = BlockLife::SizeOf(life.Load());
        const std::uint32_t starts = m_starts.load(std::memory_order_relaxed);
        if ((starts & kFirstLive << byte) == 0) return 0;
        const std::uint32_t later = starts & kStartsMask & (0xFFFEu << byte);
        return later ? static_cast<unsigned>(std::countr_zero(later)) - byte : last;
    }
    /// For who has taken the block out of a free store.
    void Start(unsigned byte, std::uint32_t mark) {
        if (IsLong(byte)) return life.Start(mark);
        StartShort(byte);
    }
    void StartShort(unsigned byte) { m_starts.fetch_or(kFirstLive << byte, std::memory_order_relaxed); }
    /// False if the block was not in use. Of several threads one gets true.
    bool EndShort(unsigned byte) {
        const std::uint32_t bit = kFirstLive << byte;
        return (m_starts.fetch_and(~bit, std::memory_order_relaxed) & bit) != 0;
    }

    // The size of the block before, as it has no room there. The bits of this note that say "a block in use
    // starts here" stay clear.

    void KeepSize(std::size_t size) {
        m_starts.store(size & kStartsMask, std::memory_order_relaxed);
        life.Store(static_cast<std::uint32_t>(size >> 16) * (BlockLife::kSizeMask + 1));
    }
    std::size_t KeptSize() const {
        const std::size_t upper = life.Load() / (BlockLife::kSizeMask + 1);
        return upper << 16 | (m_starts.load(std::memory_order_relaxed) & kStartsMask);
    }

    static constexpr std::uint32_t kNotedElsewhere = BlockLife::kSizeMask;

 private:
    static constexpr std::uint32_t kStartsMask = 0xFFFF;
    static constexpr std::uint32_t kFirstLive = 0x10000;

    std::atomic<std::uint32_t>
        m_starts;  // bit i: a block starts at byte i; bit 16 + i: it is short and in use

 public:
    BlockLife life;  // of the block that starts last
};

/// In the aligned lane, this many granules mean: the block has its page to itself, and the page's size.
inline constexpr std::uint32_t kWholePage = BlockLife::kSizeMask;
/// Largest block of the aligned lane whose size fits its note.
inline constexpr std::size_t kLargestNotedSize = (kWholePage - 1u) * kGranule;

/// A block in a free store: where it is and where its note is.
struct HeapBlock {
    char* p;
    void* pNote;  // ExactNote* or BlockLife*, by the store's lane
};

/// Sizes of small blocks: kGranule to kSmallSizes times that.
inline constexpr std::size_t kSmallSizes = 32;
/// Bytes of a page whose freed small blocks are kept together (region_store.h).
inline constexpr std::size_t kRegionSize = 0x10000;
struct RegionSet;

/// Blocks in use, and the bytes in them.
struct LiveBlocks {
    void Add(std::size_t size) {
        ++count;
        bytes += size;
    }
    friend bool operator==(const LiveBlocks&, const LiveBlocks&) = default;

    std::size_t count = 0;
    std::size_t bytes = 0;
};

/// A page of a heap. All changes happen under the heap's lock, except to the lives of blocks.
class COnePage {
 public:
    /// A page of `size` bytes (at least 1); null without memory. `forOneBlock`: the page will hold just one
    /// block of this size.
    static COnePage* Create(Lane lane, std::size_t size, bool forOneBlock);
    /// Releases the page's bytes and notes.
    virtual ~COnePage();
    COnePage(const COnePage&) = delete;
    COnePage& operator=(const COnePage&) = delete;

    Lane GetLane() const { return m_lane; }
    char* Start() const { return m_pBytes; }
    std::size_t Size() const { return m_size; }
    bool IsForOneBlock() const { return m_forOneBlock; }

    /// Bytes carved so far. Any thread.
    std::size_t Used() const { return m_used.load(std::memory_order_relaxed); }
    /// Bytes that can still be carved.
    std::size_t Left() const { return m_left; }

    /// Carves a block that is in use from the start, with this mark; there must be as many bytes left.
    char* Carve(std::size_t size, std::uint32_t mark);
    /// The same for a block that starts its life in a free store; the aligned lane.
    HeapBlock CarveFree(std::size_t size);
    /// Makes one free block of all that is left, so that nothing is left. There must be some bytes left. In
    /// the exact lane the block does not count as carved, not even when it is in use. Returns the block and
    /// its size.
    HeapBlock TakeRest(std::size_t& size);

    ExactNote& ExactNoteOf(const char* p) const { return m_pExact[GranuleOf(p)]; }
    BlockLife& AlignedLifeOf(const char* p) const { return m_pAligned[GranuleOf(p)]; }
    /// Size in bytes of a block of the aligned lane, from the word of its life.
    std::size_t AlignedSize(std::uint32_t word) const {
        const std::size_t granules = BlockLife::SizeOf(word);
        return granules == kWholePage ? m_size : granules * kGranule;
    }
    /// Size in bytes of a block of the exact lane. Long blocks: any thread; others: under the lock.
    std::size_t ExactSize(const char* p) const {
        const ExactNote& note = ExactNoteOf(p);
        const std::size_t size = note.SizeOfBlock(ByteInGranule(p));
        if (size != ExactNote::kNotedElsewhere) return size;
        return m_forOneBlock ? m_size : (&note)[1].KeptSize();
    }

    /// The set for freed blocks of `size` bytes, a small size, in the region of `p`; null without memory. The
    /// aligned lane.
    RegionSet* RegionSetOf(const char* p, std::size_t size);

    /// Adds the page's blocks in use, by a walk over its notes.
    void CountLive(LiveBlocks& live) const;

    COnePage* Next() const { return m_pNext.load(std::memory_order_acquire); }
    void SetNext(COnePage* next) { m_pNext.store(next, std::memory_order_release); }

 private:
    COnePage() = default;

    std::size_t RegionCount() const { return (m_size + kRegionSize - 1) / kRegionSize; }
    std::size_t GranuleOf(const char* p) const { return static_cast<std::size_t>(p - m_pBytes) / kGranule; }
    void* NoteBlock(std::size_t offset, std::size_t size, std::uint32_t mark);
    void NoteExact(std::size_t offset, std::size_t size, std::uint32_t mark);
    void CountLiveExact(std::size_t granules, LiveBlocks& live) const;

    char* m_pBytes = nullptr;
    std::size_t m_size = 0;
    union {
        ExactNote* m_pExact = nullptr;
        BlockLife* m_pAligned;
    };
    RegionSet** m_pRegionSets = nullptr;  // by region and size, each from the first such block freed on
    std::size_t m_left = 0;
    std::atomic<std::size_t> m_used{0};
    std::atomic<COnePage*> m_pNext{nullptr};
    Lane m_lane = Lane::Exact;
    bool m_forOneBlock = false;
};

/// Finds the page of an address, from any thread without a lock.
///
/// Addresses are divided into regions about as large as a page of the heap, so that only a few pages touch
/// any one region. An open-addressing table holds an entry for each region that a page touches (for a page of
/// one block just the first: only a block's start is ever asked for). Entries are never removed, and a table
/// that was outgrown is kept, since other threads may still be reading it.
class PageIndex {
 public:
    /// For a heap with pages of `pageSize` bytes.
    explicit PageIndex(std::size_t pageSize);
    ~PageIndex();
    PageIndex(const PageIndex&) = delete;
    PageIndex& operator=(const PageIndex&) = delete;

    /// Adds a page; under the heap's lock. False, and nothing added that counts, without memory.
    bool Add(COnePage& page);

    /// The page that has a note for the granule of `p`, that is, in which p lies, or for a page of one block
    /// at whose very start; null if there is none.
    COnePage* Find(const void* p) const {
        const auto address = reinterpret_cast<std::uintptr_t>(p);
        const Table* table = m_pTable.load(std::memory_order_acquire);
        if (!table) return nullptr;
        for (std::size_t i = table->SlotOf(address >> m_shift);; i = (i + 1) & table->mask) {
            const Slot& slot = table->pSlots[i];
            COnePage* page = slot.pPage.load(std::memory_order_acquire);
            if (!page || address - slot.start < slot.size) return page;
        }
    }

 private:
    struct Slot {
        std::uintptr_t start;
        std::size_t size;
        std::uintptr_t region;
        std::atomic<COnePage*> pPage;
    };
    struct Table {
        std::size_t SlotOf(std::uintptr_t region) const { return (region * 0x9E3779B97F4A7C15u) >> shift; }

        Slot* pSlots;
        std::size_t mask;
        unsigned shift;
        Table* pOutgrown;
    };

    bool Reserve(std::size_t entries);
    static void Enter(Table& table, std::uintptr_t region, COnePage& page);

    unsigned m_shift;
    std::size_t m_count = 0;
    std::atomic<Table*> m_pTable{nullptr};
};

}  // namespace brenta
