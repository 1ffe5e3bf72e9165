#include "script/token_arena.h"

#include <algorithm>
#include <cstring>

namespace brenta {

namespace {

constexpr std::size_t kAlignment = alignof(std::max_align_t);
constexpr std::size_t kFirstBlock = 4096;  // enough for a command
constexpr std::size_t kLargestBlock = 1u << 20;
constexpr std::size_t kLargestKept = 1u << 16;

}  // namespace

void* TokenArena::Allocate(std::size_t size) {
    size = (size + kAlignment - 1) / kAlignment * kAlignment;
    if (m_top.block < m_blocks.size()) {
        const Block& block = m_blocks[m_top.block];
        if (size <= block.size - m_top.used) {
            void* p = block.memory.get() + m_top.used;
            m_top.used += size;
            return p;
        }
    }
    return AllocateFromNext(size);
}

// The next block is either one kept from an earlier use or a new one, of twice the size, at the end.
void* TokenArena::AllocateFromNext(std::size_t size) {
    const std::size_t next = std::min(m_top.block + 1, m_blocks.size());
    if (next == m_blocks.size() || m_blocks[next].size < size) {
        const std::size_t last = m_blocks.empty() ? kFirstBlock / 2 : m_blocks.back().size;
        const std::size_t blockSize = std::max(size, std::min(last * 2, kLargestBlock));
        m_blocks.resize(next);
        m_blocks.push_back({std::make_unique_for_overwrite<std::byte[]>(blockSize), blockSize});
    }
    m_top = {next, size};
    return m_blocks[next].memory.get();
}

const char* TokenArena::CopyText(const char* text, std::size_t length) {
    auto* copy = static_cast<char*>(Allocate(length + 1));
    std::memcpy(copy, text, length);
    copy[length] = 0;
    return copy;
}

TokenArena::Mark TokenArena::Enter() {
    const Mark outer = m_base;
    m_base = m_top;
    return outer;
}

void TokenArena::Leave(Mark outer) {
    CutTo(m_base);
    m_base = outer;
}

// Blocks that a large source left behind are given back; a command's next run finds the others where they
// were.
void TokenArena::CutTo(Mark mark) {
    m_top = mark;
    const std::size_t inUse = mark.used == 0 ? mark.block : mark.block + 1;
    while (m_blocks.size() > inUse && m_blocks.back().size > kLargestKept)
        m_blocks.pop_back();
}

}  // namespace brenta
