// Where a heap keeps its freed blocks: one stack for each size.
#pragma once

#include <cstddef>
#include <cstdint>

#include "brenta/containers.h"
#include "foundation/heap_pages.h"

namespace brenta {

/// Last in, first out: an array that grows, of blocks of one size.
class BlockStack {
 public:
    BlockStack() = default;
    ~BlockStack();
    BlockStack(const BlockStack&) = delete;
    BlockStack& operator=(const BlockStack&) = delete;

    bool IsEmpty() const { return m_count == 0; }
    std::uint32_t GetCount() const { return m_count; }
    /// False without memory; the block is then lost to the heap until it ends.
    bool Push(HeapBlock block) {
        if (m_count == m_capacity && !Grow()) return false;
        m_pBlocks[m_count++] = block;
        return true;
    }
    /// Takes the top off; there must be one.
    HeapBlock Pop() { return m_pBlocks[--m_count]; }
    /// Takes up to `count` blocks off the top, the topmost last, and returns how many.
    std::uint32_t PopSome(HeapBlock* blocks, std::uint32_t count);

 private:
    bool Grow();

    HeapBlock* m_pBlocks = nullptr;
    std::uint32_t m_count = 0;
    std::uint32_t m_capacity = 0;
};

/// The stacks of a lane: an array for the small sizes, a map for the others.
class FreeStore {
 public:
    static constexpr std::size_t kLargestSmall = 4096;

    FreeStore() : m_large(kLargeBuckets) {}
    ~FreeStore();
    FreeStore(const FreeStore&) = delete;
    FreeStore& operator=(const FreeStore&) = delete;

    /// The stack for blocks of `size` bytes; null if there never was one.
    BlockStack* Find(std::size_t size) { return size <= kLargestSmall ? &m_small[size] : FindLarge(size); }
    /// Keeps a block. False without memory; the block is then lost to the heap until it ends.
    bool Add(std::size_t size, HeapBlock block) noexcept {
        return size <= kLargestSmall ? m_small[size].Push(block) : AddLarge(size, block);
    }

 private:
    static constexpr int kLargeBuckets = 1021;

    BlockStack* FindLarge(std::size_t size);
    bool AddLarge(std::size_t size, HeapBlock block) noexcept;

    BlockStack m_small[kLargestSmall + 1];
    THeapIntMap<unsigned int, BlockStack*> m_large;
};

}  // namespace brenta
