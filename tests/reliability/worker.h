// One thread's part of a crowd over the heap, the names, strings and an engine of its own.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <optional>
#include <random>
#include <vector>

#include "brenta/heap.h"
#include "brenta/names.h"
#include "brenta/string.h"
#include "foundation/heap_pages.h"
#include "script/script_test_support.h"

namespace brenta::test {

inline constexpr unsigned kNames = 500;

/// What one thread does over and over, how many blocks it has asked for, and what it holds of them.
class Worker {
 public:
    explicit Worker(unsigned seed) : m_random(seed) {
        m_engine.emplace().engine.InjectScript(
            "m", "function F(n) { if (n < 2) return n; return F(n - 1) + F(n - 2); }");
    }
    ~Worker() {
        for (Block& block : m_blocks)
            Renew(block, -1);
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void Work(std::vector<std::atomic<std::uintptr_t>>& names) {
        for (int i = 0; i < 100; ++i) {
            Renew(m_blocks[m_random() % std::size(m_blocks)], static_cast<int>(m_random() % 300) + 1);
            HeapDelete(HeapNew(m_random() % 200));
        }
        const std::size_t number = m_random() % kNames;
        const CoreString text(("soak name number " + std::to_string(number)).c_str());
        const CoreString copy(text + "");
        std::uintptr_t seen = 0;
        const auto id = static_cast<std::uintptr_t>(StrId(copy));
        EXPECT_TRUE(names[number].compare_exchange_strong(seen, id) || seen == id);
        Var result;
        EXPECT_TRUE(m_engine->engine.Execute("F(8) + 1", result, kUnitsNone));
        EXPECT_EQ(result.GetInt(), 22);
    }
    std::uint32_t Asked() const { return m_asked; }
    /// Leaves only the blocks, and tells them.
    LiveBlocks Keep() {
        m_engine.reset();
        LiveBlocks kept;
        for (const Block& block : m_blocks)
            if (block.bytes) kept.Add(static_cast<std::size_t>(block.size));
        return kept;
    }

 private:
    struct Block {
        char* bytes = nullptr;
        int size = 0;
    };

    /// Frees the block, which must hold what was put into it, and asks for another unless the size is below
    /// 0.
    void Renew(Block& block, int size) {
        if (block.bytes) {
            EXPECT_EQ(std::count(block.bytes, block.bytes + block.size, static_cast<char>(block.size)),
                      block.size);
            CoreFree(block.bytes);
        }
        if (size < 0) return;
        ++m_asked;
        block = {static_cast<char*>(CoreAllocate(size)), size};
        std::fill_n(block.bytes, size, static_cast<char>(size));
    }

    std::mt19937 m_random;
    std::optional<ParserFixture> m_engine;
    Block m_blocks[64];
    std::uint32_t m_asked = 0;
};

}  // namespace brenta::test
