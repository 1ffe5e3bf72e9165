#include "foundation/free_store.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>

namespace brenta {

BlockStack::~BlockStack() {
    std::free(m_pBlocks);
}

bool BlockStack::Grow() {
    constexpr std::uint32_t kFirstCapacity = 8;
    constexpr std::uint32_t kLargestCapacity = 0x80000000u;
    if (m_capacity == kLargestCapacity) return false;
    const std::uint32_t capacity = std::max(kFirstCapacity, 2 * m_capacity);
    void* blocks = std::realloc(m_pBlocks, std::size_t{capacity} * sizeof(HeapBlock));
    if (!blocks) return false;
    m_pBlocks = static_cast<HeapBlock*>(blocks);
    m_capacity = capacity;
    return true;
}

std::uint32_t BlockStack::PopSome(HeapBlock* blocks, std::uint32_t count) {
    count = std::min(count, m_count);
    m_count -= count;
    std::copy_n(m_pBlocks + m_count, count, blocks);
    return count;
}

FreeStore::~FreeStore() {
    for (THeapMapIter<unsigned int, BlockStack*> iter(m_large); !iter.AtEnd(); iter.Next())
        delete iter.Value();
}

BlockStack* FreeStore::FindLarge(std::size_t size) {
    BlockStack* stack = nullptr;
    m_large.Lookup(static_cast<unsigned int>(size), stack);
    return stack;
}

bool FreeStore::AddLarge(std::size_t size, HeapBlock block) noexcept try {
    BlockStack* stack = FindLarge(size);
    if (!stack) {
        auto fresh = std::make_unique<BlockStack>();
        m_large.Add(static_cast<unsigned int>(size), fresh.get());
        stack = fresh.release();
    }
    return stack->Push(block);
} catch (const std::bad_alloc&) {
    return false;
}

}  // namespace brenta
