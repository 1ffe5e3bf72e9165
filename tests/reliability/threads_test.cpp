// Many threads over the heap, the names, strings and engines of their own, while the library comes and goes
// beside them: nothing is lost, and what is counted agrees. BRENTA_SOAK_SECONDS makes it longer.
#include <dlfcn.h>

#include <algorithm>
#include <atomic>
#include <chrono>

#include "brenta/heap.h"
#include "brenta/names.h"
#include "brenta/string.h"
#include "foundation/heap_core.h"
#include "foundation/library_statics.h"
#include "platform/data_folder.h"
#include "script/script_test_support.h"

namespace brenta::test {
namespace {

constexpr unsigned kThreads = 8, kNames = 500;

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

TEST(Threads, LoseNothingWhileTheLibraryComesAndGoes) {
    const char* const wanted = std::getenv("BRENTA_SOAK_SECONDS");
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(wanted ? std::atoi(wanted) : 2);
    std::vector<std::atomic<std::uintptr_t>> names(kNames);
    const auto used = [&] {
        return std::count_if(names.begin(), names.end(), [](auto& id) { return id != 0; });
    };
    Worker(kThreads).Work(names);  // what is built once
    HeapCore& heap = *g_pGlobalCore;
    const std::uint32_t allocations = heap.GetAllocationCount();
    const std::size_t known = GlobalStrings().GetNameCount() - static_cast<std::size_t>(used());
    LiveBlocks live = heap.CountLive();
    const LiveBlocks before = live;
    std::vector<std::optional<Worker>> workers(kThreads);
    OnThreads(kThreads + 1, [&](unsigned thread) {
        Worker* const worker = thread < kThreads ? &workers[thread].emplace(thread) : nullptr;
        while (std::chrono::steady_clock::now() < end) {
            if (worker) {
                worker->Work(names);
            } else {
                void* const library = dlopen(BRENTA_CORE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
                EXPECT_TRUE(library && dlclose(library) == 0);
            }
        }
    });
    std::uint32_t asked = 0;
    for (std::optional<Worker>& worker : workers) {
        const LiveBlocks kept = worker->Keep();
        live.count += kept.count;
        live.bytes += kept.bytes;
        asked += worker->Asked();
    }
    EXPECT_EQ(heap.GetAllocationCount() - allocations, asked);
    EXPECT_EQ(GlobalStrings().GetNameCount(), known + static_cast<std::size_t>(used()));
    EXPECT_EQ(heap.CountLive(), live);
    workers.clear();
    EXPECT_EQ(heap.CountLive(), before);
    const int carved = heap.GetBytesUsed();
    Worker(kThreads).Work(names);
    EXPECT_EQ(heap.GetBytesUsed(), carved) << "what was freed is not found again";
    RecordProperty("rounds", static_cast<int>(asked / 100));
}

// A child has one thread only, and nobody who could give back what the others held.
TEST(Threads, MayForkAtAnyMoment) {
    std::atomic<bool> isOver{false};
    std::vector<std::atomic<std::uintptr_t>> names(kNames);
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < 4; ++i)
        threads.emplace_back([&, i] {
            for (Worker worker(i); !isOver;)
                worker.Work(names);
        });
    for (int i = 0; i < 50; ++i) {
        const pid_t child = Fork([&] {
            alarm(10);
            Worker worker(9);
            for (int k = 0; k < 5; ++k)
                worker.Work(names);
            return StrId("said by a child") != kNoName;
        });
        EXPECT_TRUE(Succeeds(child)) << i;
    }
    isOver = true;
    for (std::thread& thread : threads)
        thread.join();
}

}  // namespace
}  // namespace brenta::test
