#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <tuple>

#include "brenta/host.h"
#include "brenta/string.h"

namespace brenta {
namespace {

TEST(CoreStringEdit, Replaces) {
    CoreString text("aba");
    EXPECT_EQ(text.Replace("a", "aa"), 2);
    EXPECT_STREQ(text, "aabaa");
    EXPECT_EQ(text.Replace("aa", nullptr), 2);
    EXPECT_STREQ(text, "b");
    EXPECT_EQ(text.Replace("", "x") + text.Replace(nullptr, "x") + text.Replace("c", "x"), 0);
    text = "a-b_c-\xE9";
    EXPECT_EQ(text.Replace('-', '+'), 2);
    EXPECT_EQ(text.ReplaceAny("_\xE9", '.'), 2);
    EXPECT_STREQ(text, "a+b.c+.");
    EXPECT_EQ(text.ReplaceAny(nullptr, '.'), 0);
    text = "zA9\xE4 b[";
    text.MakeUpper();
    EXPECT_STREQ(text, "ZA9\xE4 B[");
    text.MakeLower();
    text.MakeReverse();
    EXPECT_STREQ(text,
                 "[b \xE4"
                 "9az");
    text.SortChars();
    EXPECT_STREQ(text, "\xE4 9[abz");
}

TEST(CoreStringEdit, TrimsAndPads) {
    const char* const kTrimRows[][4] = {
        // text, trimmed at both ends, at the start, at the end
        {" \t a b \r\n", "a b", "a b \r\n", " \t a b"},
        {"\v\f", "", "", ""},
        {"\xA0", "\xA0", "\xA0", "\xA0"},
    };
    for (const auto& [text, both, leading, trailing] : kTrimRows) {
        CoreString first(text), second(text), third(text);
        first.Trim();
        second.TrimLeading();
        third.TrimTrailing();
        EXPECT_TRUE(first == both && second == leading && third == trailing) << text;
    }
    CoreString text("42");
    text.PadLeft(5, '0');
    text.PadLeft(1, '0');
    text.PadRight(-1, '0');
    text.PadLeft(INT_MAX, '0');
    text.TrimRight(0);
    text.TrimLeft(-3);
    EXPECT_STREQ(text, "00042");
    text.PadRight(20, '.');
    EXPECT_STREQ(text, "00042...............");
    text.TrimRight(15);
    EXPECT_STREQ(text.Left(-2) + text.Left(2) + text.Left(INT_MAX), "0000042");
    EXPECT_STREQ(text.RemoveLeft(3), "000");
    EXPECT_EQ(text.GetLastChar(), '2');
    text.TrimRight(10);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(text.GetLastChar(), 0);
}

// clang-format off
TEST(CoreStringEdit, StripsOnlyPairs) {
    const std::tuple<const char*, bool, const char*> kRows[] = {
        {"\"x\"", true, "x"}, {"\"\"", true, ""}, {"x\"", false, "x\""}, {"\"x", false, "\"x"}, {"\"", false, "\""}, {"", false, ""},
    };
    for (const auto& [before, stripped, after] : kRows) {
        CoreString text(before);
        EXPECT_EQ(text.StripBrackets('"'), stripped) << before;
        EXPECT_STREQ(text, after);
    }
}

TEST(CoreStringEdit, CountsOn) {
    const std::tuple<const char*, int, const char*> kRows[] = {
        {"R9", 1, "R10"}, {"Pad-3", 1, "Pad-2"}, {"U1A", 1, "U2A"}, {"A-1", 1, "A0"}, {"1", -2, "-1"}, {"R009", 1, "R10"},
        {"C1R2", -5, "C1R-3"}, {"N2147483647", 1, "N2147483648"}, {"N9223372036854775806", 1, "N9223372036854775807"},
        {"N9223372036854775807", 1, nullptr}, {"-9223372036854775808", -1, nullptr},
        {"N99999999999999999999", 1, nullptr}, {"none", 1, nullptr}, {"", 1, nullptr},
    };
    for (const auto& [before, step, after] : kRows) {
        CoreString text(before);
        EXPECT_EQ(text.NextNumber(step), after != nullptr) << before;
        EXPECT_STREQ(text, after ? after : before);
    }
}
// clang-format on

TEST(CoreStringEdit, EscapesForUrls) {
    CoreString out("old");
    EXPECT_STREQ(CoreString("a b/c~").EscapeURL(out), "a%20b%2fc~");
    for (int c = 1; c < 256; ++c) {
        const char text[] = {static_cast<char>(c), 0};
        const bool escaped = c <= ' ' || c == 127 || std::strchr("\"#$%&+,/:;<=>?@[\\]^`{|}", c) != nullptr;
        char expected[8];
        std::snprintf(expected, sizeof(expected), escaped ? "%%%02x" : "%c", c);
        EXPECT_STREQ(CoreString(text).EscapeURL(out), expected) << c;
    }
}

TEST(CoreStringEdit, SavesToAFile) {
    const HostServices before = GetHostServices();
    HostServices services = before;
    std::string shown;
    services.context = &shown;
    services.showMessage = [](void* pShown, const char* text, unsigned int) {
        *static_cast<std::string*>(pShown) += text;
        return 1;
    };
    SetHostServices(services);
    const std::string path = ::testing::TempDir() + "brenta_string_edit_test.txt";
    EXPECT_TRUE(CoreString("line 1\nline 2 100%s").SaveToFile(path.c_str()));
    std::ifstream file(path);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "line 1\nline 2 100%s");
    std::remove(path.c_str());
    EXPECT_EQ(shown, "");
    const std::string absent = ::testing::TempDir() + "absent/%s.txt";
    EXPECT_FALSE(CoreString("x").SaveToFile(absent.c_str()));
    EXPECT_FALSE(CoreString("x").SaveToFile(nullptr));
    EXPECT_EQ(shown, "Failed to create file " + absent + ".Failed to create file .");
    SetHostServices(before);
}

}  // namespace
}  // namespace brenta
