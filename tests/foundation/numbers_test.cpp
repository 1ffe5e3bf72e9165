#include "foundation/numbers.h"

#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "brenta/string.h"
#include "test_support.h"

namespace brenta::test {
namespace {

// clang-format off
TEST(Numbers, ParsesDoubles) {
    const std::pair<const char*, double> kRows[] = {
        {"0", 0}, {"2.5", 2.5}, {" \t-12.5mil", -12.5}, {"+7.", 7}, {".5", 0.5}, {"1e3", 1000},
        {"1E-2x", 0.01}, {"1e", 1}, {"1e+", 1}, {"5e6e7", 5e6}, {"1e400", HUGE_VAL}, {"-1e400", -HUGE_VAL},
        {"1e-400", 0}, {"0e99999", 0}, {"0.0001e310", 1e306}, {"1e99999999999999", HUGE_VAL},
        {"1e-99999999999999", 0}, {"5e-324", 5e-324}, {"179769313486231570e291", 1.7976931348623157e308},
        {"", 0}, {"abc", 0}, {".", 0}, {"-.e5", 0}, {"--1", 0}, {"+-1", 0}, {"- 1", 0}, {"inf", 0},
        {"nan", 0}, {"-infinity", 0}, {"0x10", 0}, {"1,5", 1}, {nullptr, 0},
    };
    for (const auto& [text, value] : kRows) EXPECT_EQ(ParseDouble(text), value) << CoreString(text)();
    EXPECT_EQ(ParseDouble(std::string_view("12345e67", 4)), 1234);
    EXPECT_EQ(ParseDouble(std::string_view("1e99999", 3)), 1e9);
    EXPECT_EQ(ParseDouble((std::string(400, '9') + "e-399").c_str()), 10.0);
    EXPECT_EQ(ParseDouble(("0." + std::string(400, '0') + "1").c_str()), 0.0);
}

TEST(Numbers, ParsesAndNarrowsIntegers) {
    const std::pair<const char*, int> kRows[] = {
        {"0", 0}, {" \n42x", 42}, {"-7", -7}, {"+7", 7}, {"007", 7}, {"2147483647", INT_MAX},
        {"2147483648", INT_MAX}, {"-2147483648", INT_MIN}, {"-2147483649", INT_MIN},
        {"99999999999999999999999", INT_MAX}, {"", 0}, {"-", 0}, {"- 1", 0}, {"x1", 0}, {"0x10", 0},
        {nullptr, 0},
    };
    for (const auto& [text, value] : kRows) EXPECT_EQ(ParseInt(text), value) << CoreString(text)();
    const std::pair<double, int> kDoubles[] = {
        {0, 0}, {-0.9, 0}, {2.9, 2}, {-2.9, -2}, {2147483647.9, INT_MAX}, {2147483648.0, INT_MIN},
        {-2147483648.9, INT_MIN}, {1e300, INT_MIN}, {HUGE_VAL, INT_MIN}, {-HUGE_VAL, INT_MIN},
        {std::nan(""), INT_MIN},
    };
    for (const auto& [value, narrowed] : kDoubles) EXPECT_EQ(DoubleToInt(value), narrowed) << value;
}
// clang-format on

std::string Printed(double value, int decimals) {
    char text[1500];
    std::snprintf(text, sizeof(text), "%.*f", decimals, value);
    return text;
}

TEST(Numbers, WritesWhatPrintfWritesAndReadsWhatStrtodReads) {
    std::mt19937_64 random(3);
    const double kTies[] = {0.5,   1.5,    2.5,    0.125, 0.375, 1e22,     1e23,
                            1e308, -1e308, 5e-324, -0.0,  0.1,   9.9999995};
    for (std::size_t i = 0; i < 20000; ++i) {
        const double value = i < std::size(kTies) ? kTies[i]
                             : i % 2 == 0         ? std::bit_cast<double>(random())
                                                  : static_cast<double>(random() % 1000007) / 3200;
        if (!std::isfinite(value)) continue;
        for (const int decimals : {0, 2, 6, 17}) {
            char text[kFixedTextSize];
            const std::size_t length = FormatFixed(value, decimals, text, sizeof(text));
            ASSERT_EQ(std::string(text, length), Printed(value, decimals)) << value;
            ASSERT_EQ(ParseDouble(text), std::strtod(text, nullptr)) << text;
        }
        char exact[64];
        std::snprintf(exact, sizeof(exact), "%.17g", value);
        ASSERT_EQ(ParseDouble(exact), value) << exact;
    }
}

TEST(Numbers, WritesIntoAnyBuffer) {
    CoreString text("x=");
    AppendFixed(text, 5e-324, 1074);
    EXPECT_EQ(std::string(text), "x=" + Printed(5e-324, 1074));
    const std::tuple<double, int, std::size_t, const char*> kRows[] = {
        {1.25, 1, 8, "1.2"},     {1.25, -1, 16, "1.250000"},  {-123.456, 2, 5, "-123"},
        {1, 2, 1, ""},           {std::nan(""), 2, 8, "nan"}, {-std::nan(""), 2, 8, "nan"},
        {HUGE_VAL, 2, 8, "inf"}, {-HUGE_VAL, 2, 8, "-inf"},
    };
    for (const auto& [value, decimals, size, expected] : kRows) {
        char buffer[16];
        EXPECT_EQ(FormatFixed(value, decimals, buffer, size), std::strlen(expected));
        EXPECT_STREQ(buffer, expected);
    }
    EXPECT_EQ(FormatFixed(1.0, INT_MAX, nullptr, 0), 0u);
}

}  // namespace
}  // namespace brenta::test
