#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "brenta/failure.h"
#include "brenta/heap.h"
#include "test_support.h"

namespace brenta::test {
namespace {

constexpr DWORD kForcedCrash = 0xE0BADBAD;

void Crash() {
    ForcedCrash(0x0501B001, "Heap", 17, "Forced crash! \"x\"");
}

constinit std::vector<EXCEPTION_RECORD>* g_pRaised = nullptr;

/// Keeps a forced crash and lets what raised it go on, as the handler of an application may.
LONG CALLBACK Resume(EXCEPTION_POINTERS* exception) {
    if (exception->ExceptionRecord->ExceptionCode != kForcedCrash) return EXCEPTION_CONTINUE_SEARCH;
    g_pRaised->push_back(*exception->ExceptionRecord);
    return EXCEPTION_CONTINUE_EXECUTION;
}

TEST(ForcedCrash, IsAnExceptionThatAHandlerMayResume) {
    std::vector<EXCEPTION_RECORD> raised;
    g_pRaised = &raised;
    void* const handler = AddVectoredExceptionHandler(1, &Resume);
    try {
        Crash();
        CoreFree(nullptr);
    } catch (...) {
        ADD_FAILURE() << "no exception of the language";
    }
    RemoveVectoredExceptionHandler(handler);
    ASSERT_EQ(raised.size(), 2u);
    const EXCEPTION_RECORD& record = raised[0];
    EXPECT_TRUE(record.ExceptionFlags == 0 && record.NumberParameters == 4);
    EXPECT_EQ(record.ExceptionInformation[0], 0x0501B001u);
    EXPECT_STREQ(reinterpret_cast<const char*>(record.ExceptionInformation[1]), "Heap");
    EXPECT_EQ(record.ExceptionInformation[2], 17u);
    EXPECT_STREQ(reinterpret_cast<const char*>(record.ExceptionInformation[3]), "Forced crash! \"x\"");
    EXPECT_EQ(raised[1].ExceptionInformation[0], 0x0501B007u);
}

TEST(ForcedCrashDeathTest, EndsTheProcessByDefault) {
    const auto crashed = testing::ExitedWithCode(static_cast<int>(kForcedCrash));
    const auto quietly = [] { SetErrorMode(SEM_NOGPFAULTERRORBOX | SEM_FAILCRITICALERRORS); };
    EXPECT_EXIT((quietly(), Crash()), crashed, "");
    // A crash inside the handler must not call the handler again.
    const auto handler = [](const ForcedCrashRecord&, void*) { CoreFree(nullptr); };
    EXPECT_EXIT((quietly(), SetForcedCrashHandler(handler, nullptr), Crash()), crashed, "");
}

}  // namespace
}  // namespace brenta::test
