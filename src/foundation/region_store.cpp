#include "foundation/region_store.h"

#include <algorithm>
#include <bit>

namespace brenta {

unsigned RegionStore::Take(std::size_t size, HeapBlock* blocks, unsigned count) {
    RegionSet*& first = m_pNonEmpty[SizeIndex(size)];
    unsigned taken = 0;
    while (taken < count && first) {
        const auto word = static_cast<std::size_t>(std::countr_zero(first->nonZeroWords));
        std::uint64_t& bits = first->words[word];
        for (; taken < count && bits != 0; bits &= bits - 1) {
            const std::size_t granule =
                word * RegionSet::kWordBits + static_cast<std::size_t>(std::countr_zero(bits));
            char* const p = first->pStart + granule * kGranule;
            blocks[taken++] = {p, &first->pPage->AlignedLifeOf(p)};
        }
        if (bits == 0) first->nonZeroWords &= first->nonZeroWords - 1;
        if (first->nonZeroWords == 0) first = first->pNextNonEmpty;
    }
    std::reverse(blocks, blocks + taken);
    return taken;
}

}  // namespace brenta
