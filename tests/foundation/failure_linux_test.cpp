#include <csignal>

#include "brenta/failure.h"
#include "brenta/heap.h"
#include "test_support.h"

namespace brenta::test {
namespace {

void Crash() {
    ForcedCrash(0x0501B001, "Heap", 17, "Forced crash! \"x\"");
}

TEST(ForcedCrashDeathTest, EndsTheProcessByDefault) {
    const char* const kReport = "0x0501B001 in Heap, line 17: Forced crash! \"x\"";
    const auto aborted = testing::KilledBySignal(SIGABRT);
    EXPECT_EXIT(Crash(), aborted, kReport);
    EXPECT_EXIT((std::signal(SIGABRT, SIG_IGN), Crash()), aborted, kReport);
    // A crash inside the handler must not call the handler again.
    const auto handler = [](const ForcedCrashRecord&, void*) { CoreFree(nullptr); };
    EXPECT_EXIT((SetForcedCrashHandler(handler, nullptr), Crash()), aborted, "Attempting to free a NULL ptr");
}

}  // namespace
}  // namespace brenta::test
