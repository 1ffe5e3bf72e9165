// Many threads over the heap, the names, strings and engines of their own, while the library comes and goes
// beside them: nothing is lost, and what is counted agrees. BRENTA_SOAK_SECONDS makes it longer.
#include <chrono>
#include <cstdlib>
#include <optional>

#include "foundation/heap_core.h"
#include "foundation/library_statics.h"
#include "reliability/worker.h"

namespace brenta::test {
namespace {

constexpr unsigned kThreads = 8;

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
                const LoadedLibrary library(BRENTA_CORE_LIBRARY);
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

}  // namespace
}  // namespace brenta::test
