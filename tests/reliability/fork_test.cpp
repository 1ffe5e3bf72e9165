// Processes that are copies of this one, made while other threads hold what they hold.
#include <unistd.h>

#include "child_process.h"
#include "reliability/worker.h"

namespace brenta::test {
namespace {

const ChildWork kGoesOn("Threads.GoesOn", [](const Texts&) {
    alarm(10);
    std::vector<std::atomic<std::uintptr_t>> names(kNames);
    Worker worker(9);
    for (int i = 0; i < 5; ++i)
        worker.Work(names);
    return StrId("said by a child") != kNoName;
});

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
    for (int i = 0; i < 50; ++i)
        EXPECT_TRUE(kGoesOn.Start({}).Succeeds()) << i;
    isOver = true;
    for (std::thread& thread : threads)
        thread.join();
}

}  // namespace
}  // namespace brenta::test
