// A process that is killed in the midst of a change leaves the old content or the new one. BRENTA_KILLS says
// how often.
#include <chrono>

#include "reliability/operations.h"

namespace brenta::test {
namespace {

TEST(Kills, LeaveTheOldOrTheNew) {
    using Clock = std::chrono::steady_clock;
    const char* const wanted = std::getenv("BRENTA_KILLS");
    Operations operations;
    std::mt19937 random(3);
    for (const Operation& operation : operations.changes) {
        SCOPED_TRACE(operation.name);
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
            const SharedFlag begins;
            const pid_t child = Fork([&] {
                begins.Set(1);
                return operation.run();
            });
            EXPECT_TRUE(begins.WaitFor(1));
            KillAfter(child, random() % (2 * static_cast<unsigned long>(duration.count()) + 8000));
            const std::string state = operation.state();
            EXPECT_TRUE(state == before || state == after) << state;
            changed += state == after;
        }
        RecordProperty(operation.name, changed);
    }
}

}  // namespace
}  // namespace brenta::test
