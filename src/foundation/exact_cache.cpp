#include "foundation/exact_cache.h"

#include <algorithm>

namespace brenta {

std::uint32_t ExactCache::RemoveOlder(std::size_t size, HeapBlock* blocks) {
    HeapBlock* const kept = m_blocks[size - kSmallest];
    const std::uint32_t count = Count(size);
    const std::uint32_t removed = std::min(count, kDepth / 2);
    std::copy_n(kept, removed, blocks);
    std::copy(kept + removed, kept + count, kept);
    SetCount(size, count - removed);
    return removed;
}

std::uint32_t ExactCache::MoveTo(ExactCache& other, std::size_t size) {
    HeapBlock* const kept = m_blocks[size - kSmallest];
    const std::uint32_t count = Count(size);
    const std::uint32_t moved = (count + 1) / 2;
    std::copy_n(kept, moved, other.m_blocks[size - kSmallest]);
    std::copy(kept + moved, kept + count, kept);
    other.SetCount(size, moved);
    SetCount(size, count - moved);
    return moved;
}

}  // namespace brenta
