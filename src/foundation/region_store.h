// Where the aligned lane keeps its freed small blocks: ordered by where they lie.
//
// A stack of all freed blocks would do, and would forget where they came from: nodes dropped in the order of
// a hash table come back in that order, and every list built from them afterwards is scattered over all the
// memory that the table had. So each page is seen as regions of 64 KB, about what the processor keeps at
// hand, and each region has a set of free blocks for each size. Blocks are taken from one region, from its
// start to its end, until it has no more: what is allocated together lies together, whatever the order in
// which it was freed.
//
// A set is a bit for each granule of the region, "a free block starts here", and above them a bit for each
// word of bits that are not all zero, which makes adding and taking a few instructions. The blocks themselves
// are not touched: they may have left the processor's cache long ago.
//
// Everything happens under the heap's lock.
#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/heap_pages.h"

namespace brenta {

/// The free blocks of one size in one region.
struct RegionSet {
    static constexpr std::size_t kWordBits = 64;

    RegionSet* pNextNonEmpty;  // of the same size, in any page
    COnePage* pPage;
    char* pStart;                // of the region
    std::size_t size;            // of the region, whose page may end in it
    std::uint64_t nonZeroWords;  // bit i: words[i] is not 0
    std::uint64_t words[kRegionSize / kGranule / kWordBits];

    bool Covers(const char* p) const { return static_cast<std::size_t>(p - pStart) < size; }
};
static_assert(kRegionSize / kGranule == RegionSet::kWordBits * RegionSet::kWordBits);

class RegionStore {
 public:
    /// The sizes kept here are the multiples of kGranule up to this.
    static constexpr std::size_t kLargestSize = kSmallSizes * kGranule;

    /// Keeps a block, in the set for its size and region.
    void Add(RegionSet& set, std::size_t size, const char* p) {
        if (set.nonZeroWords == 0) {
            set.pNextNonEmpty = m_pNonEmpty[SizeIndex(size)];
            m_pNonEmpty[SizeIndex(size)] = &set;
        }
        const std::size_t granule = static_cast<std::size_t>(p - set.pStart) / kGranule;
        const std::size_t word = granule / RegionSet::kWordBits;
        set.words[word] |= std::uint64_t{1} << granule % RegionSet::kWordBits;
        set.nonZeroWords |= std::uint64_t{1} << word;
    }
    /// Takes up to `count` blocks, that of the lowest address at the end, and returns how many.
    unsigned Take(std::size_t size, HeapBlock* blocks, unsigned count);

 private:
    static constexpr std::size_t SizeIndex(std::size_t size) { return size / kGranule - 1; }

    RegionSet* m_pNonEmpty[kSmallSizes] = {};  // by size: the sets that hold a block
};

}  // namespace brenta
