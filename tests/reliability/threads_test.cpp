// Many threads over the heap, the names, strings and engines of their own, while the library comes and goes
// beside them: nothing is lost, and what is counted agrees. BRENTA_SOAK_SECONDS makes it longer.
#include <chrono>
#include <cstdlib>
#include <optional>

#include "foundation/library_statics.h"
#include "reliability/worker.h"

namespace brenta::test {
namespace {

constexpr unsigned kThreads = 8;

TEST(Threads, LoseNothingWhileTheLibraryComesAndGoes) {
    const char* const wanted = std::getenv("BRENTA_SOAK_SECONDS");
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(wanted ? std::atoi(wanted) : 2);
    std::vector<std::atomic<std::uintptr_t>> names(kNames);
    const std::uint32_t allocations = GlobalHeap().GetAllocationCount();
    const std::size_t known = GlobalStrings().GetNameCount();
    std::atomic<std::uint32_t> asked{0};
    OnThreads(kThreads + 1, [&](unsigned thread) {
        std::optional<Worker> worker;
        if (thread < kThreads) worker.emplace(thread);
        while (std::chrono::steady_clock::now() < end) {
            if (worker) {
                worker->Work(names);
            } else {
                const LoadedLibrary library(BRENTA_CORE_LIBRARY);
            }
        }
        if (worker) asked += worker->Asked();
    });
    EXPECT_EQ(GlobalHeap().GetAllocationCount() - allocations, asked);
    const auto used = std::count_if(names.begin(), names.end(), [](const auto& name) { return name != 0; });
    const std::size_t words = GlobalStrings().GetNameCount() - known - static_cast<std::size_t>(used);
    EXPECT_LE(words, 20u) << "those of the script";
    RecordProperty("rounds", static_cast<int>(asked / 100));
}

}  // namespace
}  // namespace brenta::test
