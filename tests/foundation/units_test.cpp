#include "brenta/units.h"

#include <climits>

#include "test_support.h"

namespace brenta::test {
namespace {

constexpr auto kBeyond = static_cast<CoreUnits>(5);

TEST(Units, NamesBothWays) {
    const char* const names[] = {"INCHES", "mils", "cenTIMETERS", "Millimeters"};
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(StringToUnits(names[i]), static_cast<CoreUnits>(i + 1));
    EXPECT_STREQ(UnitsToString(kCentimeters), "Centimeters");
    CrashRecorder recorder;
    for (CoreUnits unknown : {kUnitsNone, kBeyond})
        EXPECT_STREQ(UnitsToString(unknown), "Error");
    EXPECT_EQ(recorder.Last().SiteCode(), 0x05037001u);
    for (const char* name : {"Mil", " mils", static_cast<const char*>(nullptr)})
        EXPECT_EQ(StringToUnits(name), kUnitsNone);
    EXPECT_EQ(recorder.Last().SiteCode(), 0x05037002u);
    EXPECT_STREQ(recorder.Last().File(), "Units");
    const char *const kUnknown = "Forced crash! \"Unknown units type.\"",
                      *const kText = "Forced crash! \"Unknown units type in StringToUnits\"";
    EXPECT_EQ(recorder.Messages(), (Texts{kUnknown, kUnknown, kText, kText, kText}));
}

TEST(Units, Formatting) {
    EXPECT_EQ(UnitToString(393700, 2, kMillimeters), "1.00mm");
    EXPECT_EQ(UnitToString(25000, 0, kMils), "2mil");  // a tie goes to the even digit
    EXPECT_EQ(UnitToString(INT_MIN, 4, kInches), "-214.7484in");
    EXPECT_EQ(UnitToString(10000, -1, kMils), "1.000000mil");
    EXPECT_EQ(UnitToString(10000, 2, kUnitsNone), "");
    const std::tuple<int, CoreUnits, const char*, const char*> rows[] = {
        {0, kInches, "0.000000in", "0in"},        {10000000, kInches, "1.000000in", "1in"},
        {254000, kMils, "25.4000mil", "25.4mil"}, {INT_MAX, kCentimeters, "545.4608cm", "545.4608cm"},
        {-1, kInches, "-0.000000in", "-0in"},     {5, kBeyond, "", ""}};
    for (const auto& [value, units, plain, trimmed] : rows) {
        EXPECT_EQ(UnitToString(value, units, false), plain);
        EXPECT_EQ(UnitToString(value, units, true), trimmed);
    }
}

TEST(Units, VisiblePrecision) {
    const std::pair<const char*, int> rows[] = {{"0.0250in", 3}, {"5.000", 0}, {"1.2.30mm", 2},
                                                {"0.1x2", 2},    {"", 0},      {"100", 0},
                                                {"5.", 0},       {".5", 1},    {"1.2.", 0}};
    for (const auto& [text, precision] : rows) {
        CoreString formatted(text);
        EXPECT_EQ(GetVisibleGridPrecision(formatted), precision) << text;
    }
}

}  // namespace
}  // namespace brenta::test
