// A process that is killed in the midst of a change leaves the old content or the new one. BRENTA_KILLS says
// how often.
#include <chrono>
#include <filesystem>

#include "child_process.h"
#include "reliability/operations.h"

namespace brenta::test {
namespace {

const ChildWork kChanges("Kills.Changes", [](const Texts& words) {
    const Operations operations(words);
    const Operation& operation = operations.changes.at(std::stoul(words.at(3)));
    operation.reset();
    return Signal(words.at(4)) && operation.run();
});

TEST(Kills, LeaveTheOldOrTheNew) {
    using Clock = std::chrono::steady_clock;
    const char* const wanted = std::getenv("BRENTA_KILLS");
    Operations operations;
    std::mt19937 random(3);
    const Scratch scratch;
    for (const Operation& operation : operations.changes) {
        SCOPED_TRACE(operation.name);
        if (kIsWindows && operation.name == std::string("registry"))
            continue;  // the system's own: value by value
        operation.reset();
        const std::string before = operation.state();
        const auto start = Clock::now();
        EXPECT_TRUE(operation.run());
        const auto duration = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
        const std::string after = operation.state();
        int changed = 0;
        for (int i = wanted ? std::atoi(wanted) : 20; i > 0; --i) {
            operation.reset();
            EXPECT_EQ(operation.state(), before);
            const std::string begins = scratch / "begins";
            Texts words = operations.Words();
            words.insert(words.end(), {std::to_string(&operation - operations.changes.data()), begins});
            ChildProcess child = kChanges.Start(words);
            EXPECT_TRUE(WaitForSignal(begins));
            const auto most = 2 * static_cast<unsigned long>(duration.count()) + 8000;
            std::this_thread::sleep_for(std::chrono::microseconds(random() % most));
            child.Kill();
            std::filesystem::remove(begins);
            const std::string state = operation.state();
            EXPECT_TRUE(state == before || state == after) << state;
            changed += state == after;
        }
        RecordProperty(operation.name, changed);
    }
}

}  // namespace
}  // namespace brenta::test
