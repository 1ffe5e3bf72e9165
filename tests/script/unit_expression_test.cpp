#include <atomic>
#include <thread>

#include "brenta/units.h"
#include "test_support.h"

namespace brenta::test {
namespace {

TEST(UnitExpression, Texts) {
    // clang-format off
    static constexpr std::tuple<const char*, CoreUnits, int, bool> kRows[] = {
        {"10", kMils, 100000, true}, {"20mil+5mil", kMils, 250000, true}, {"2.5mm", kMils, 984250, true},
        {"(1in+2mm)/2", kMils, 5393700, true}, {"1/8in", kMils, 0, true}, {"1/8", kInches, 1250000, true},
        {"10mil+1", kMils, 100000, true}, {"5mil+", kMils, 50000, true}, {".5mil", kInches, 5000, true},
        {" -3.5mil\t", kInches, -35000, true}, {"0x10", kMils, 160000, true}, {"0X10", kMils, 20, true},
        {"15", kUnitsNone, 20, true}, {"-15", kUnitsNone, -20, true}, {"10MIL", kInches, 100000, true},
        {"2147483647", kUnitsNone, 2147483640, true}, {"300", kInches, -2147483640, true},
        {"", kMils, 0, true}, {"null", kUnitsNone, 0, true}, {"\"25\"", kUnitsNone, 30, true},
        {"({1, 2, 3, 4, 5})", kUnitsNone, 10, true}, {"1.2.3", kMils, 3000, true},
        {"3 mm", kMils, 0, false}, {"5@", kMils, 0, false}, {"5mils", kMils, 0, false}, {"mm", kMils, 0, false},
    };
    // clang-format on
    for (const auto& [text, units, length, valid] : kRows) {
        EXPECT_EQ(StringToUnit(text, units), length) << text;
        EXPECT_EQ(ValidateUnit(text), valid) << text;
        EXPECT_EQ(StringToUnit("1+1", kMils), 20000) << "after " << text;
    }
    EXPECT_EQ(StringToUnit(nullptr, kMils), 0);
    EXPECT_FALSE(ValidateUnit(nullptr));
}

TEST(UnitExpression, ThreadsTakeTurns) {
    OnThreads(2, [](int) {
        for (int i = 0; i < 200; ++i) {
            const std::string text = std::to_string(i) + "mil * 2";
            EXPECT_EQ(StringToUnit((text + " + nothing").c_str(), kInches), 0);
            EXPECT_EQ(StringToUnit(text.c_str(), kInches), i * 20000);
        }
    });
}

TEST(UnitExpression, ATextWithoutEndCanBeStopped) {
    for (const char* text : {"while (1) { }", "WHILE (1) { }"}) {
        std::atomic<bool> hasEnded{false};
        CoreString messages;
        int value = 7;
        std::thread typed([&] {
            EXPECT_FALSE(EvaluateUnit(text, kMils, value, &messages));
            hasEnded = true;
        });
        while (!hasEnded)
            StopUnitEvaluation();
        typed.join();
        EXPECT_EQ(messages, "cmd:(1): Script interrupted.");
    }
    StopUnitEvaluation();
    EXPECT_TRUE(ValidateUnit("while (1) { break; }"));
}

/// The handler of a forced crash may wait for another thread that evaluates a length.
TEST(UnitExpression, NoTurnIsHeldInAForcedCrash) {
    static int s_length = 0;
    const auto handler = [](const ForcedCrashRecord&, void*) {
        std::thread([] { s_length = StringToUnit("1", kMils); }).join();
    };
    const CrashRecorder restored;
    SetForcedCrashHandler(handler, nullptr);
    EXPECT_EQ(StringToUnit("70", static_cast<CoreUnits>(9)), 70);
    EXPECT_EQ(s_length, 10000);
}

TEST(UnitExpression, Messages) {
    CoreString messages("old");
    int value = 7;
    EXPECT_FALSE(EvaluateUnit("5mils", kMils, value, &messages));
    EXPECT_EQ(messages, "cmd:(1): Symbol 's' not defined.");
    EXPECT_EQ(value, 0);
    EXPECT_TRUE(EvaluateUnit("5MIL", kInches, value, &messages));
    EXPECT_EQ(messages, "");
    EXPECT_EQ(value, 50000);
    EXPECT_FALSE(EvaluateUnit("print(nobody", kMils, value, &messages));
    EXPECT_EQ(messages, "cmd:(1): Syntax error: expecting ')', but found 'unknown token id'");
    EXPECT_FALSE(EvaluateUnit(nullptr, kMils, value, &messages));
    EXPECT_EQ(messages, "");
}

}  // namespace
}  // namespace brenta::test
