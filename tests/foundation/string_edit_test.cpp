#include <climits>
#include <cstdio>
#include <cstring>

#include "brenta/string.h"
#include "test_support.h"

namespace brenta::test {
namespace {

// clang-format off
TEST(CoreStringEdit, Edits) {
    const struct {
        const char* before;
        int (*edit)(CoreString&);
        int result;  // 0 where the operation has none
        const char* after;
    } kRows[] = {
        {"aba", [](CoreString& s) { return s.Replace("a", "aa"); }, 2, "aabaa"},
        {"aabaa", [](CoreString& s) { return s.Replace("aa", nullptr); }, 2, "b"},
        {"aba", [](CoreString& s) { return s.Replace("", "x") + s.Replace(nullptr, "x"); }, 0, "aba"},
        {"a-b-\xE9", [](CoreString& s) { return s.Replace('-', '+'); }, 2, "a+b+\xE9"},
        {"a-b_\xE9", [](CoreString& s) { return s.ReplaceAny("_\xE9", '.') + s.ReplaceAny(nullptr, '!'); }, 2, "a-b.."},
        {"zA9\xE4[", [](CoreString& s) { return s.MakeUpper(), 0; }, 0, "ZA9\xE4["},
        {"ZA9\xC4[", [](CoreString& s) { return s.MakeLower(), s.MakeReverse(), 0; }, 0, "[\xC4""9az"},
        {"za9\xE4\xC4[ z", [](CoreString& s) { return s.SortChars(), 0; }, 0, "\xC4\xE4 9[azz"},
        {" \t a b \r\n", [](CoreString& s) { return s.Trim(), 0; }, 0, "a b"},
        {" \t a b \r\n", [](CoreString& s) { return s.TrimLeading(), 0; }, 0, "a b \r\n"},
        {" \t a b \r\n", [](CoreString& s) { return s.TrimTrailing(), 0; }, 0, " \t a b"},
        {"\v\f\n", [](CoreString& s) { return s.Trim(), 0; }, 0, ""},
        {"\xA0x\xA0", [](CoreString& s) { return s.Trim(), 0; }, 0, "\xA0x\xA0"},
        {"42", [](CoreString& s) { return s.PadLeft(5, '0'), 0; }, 0, "00042"},
        {"42", [](CoreString& s) { return s.PadLeft(1, '0'), s.PadRight(-1, '0'), s.PadLeft(INT_MAX, '0'), 0; }, 0, "42"},
        {"42", [](CoreString& s) { return s.PadRight(17, '.'), 0; }, 0, "42..............."},
        {"abc", [](CoreString& s) { return s.TrimRight(0), s.TrimLeft(-3), s.Truncate(3), 0; }, 0, "abc"},
        {"abc", [](CoreString& s) { return s.TrimRight(10), int{s.GetLastChar()}; }, 0, ""},
        {"abc", [](CoreString& s) { return s.Truncate(-1), 0; }, 0, ""},
        {"abc", [](CoreString& s) { return s = s.Left(-2) + s.Left(2) + s.Left(INT_MAX), 0; }, 0, "ababc"},
        {"abc", [](CoreString& s) { return (s.RemoveLeft(2) == "ab") + s.GetLastChar(); }, 1 + 'c', "c"},
        {"\"x\"", [](CoreString& s) { return int{s.StripBrackets('"')}; }, 1, "x"},
        {"\"\"", [](CoreString& s) { return int{s.StripBrackets('"')}; }, 1, ""},
        {"x\"", [](CoreString& s) { return int{s.StripBrackets('"')}; }, 0, "x\""},
        {"\"", [](CoreString& s) { return int{s.StripBrackets('"')}; }, 0, "\""},
    };
    for (const auto& row : kRows) {
        CoreString text(row.before);
        EXPECT_EQ(row.edit(text), row.result) << row.before << " -> " << row.after;
        EXPECT_STREQ(text, row.after);
    }
}

TEST(CoreStringEdit, CountsOn) {
    const std::tuple<const char*, int, const char*> kRows[] = {
        {"R9", 1, "R10"}, {"Pad-3", 1, "Pad-2"}, {"U1A", 1, "U2A"}, {"A-1", 1, "A0"}, {"1", -2, "-1"},
        {"R009", 1, "R10"}, {"C1R2", -5, "C1R-3"}, {"N2147483647", 1, "N2147483648"},
        {"N9223372036854775806", 1, "N9223372036854775807"}, {"N9223372036854775807", 1, nullptr},
        {"-9223372036854775808", -1, nullptr}, {"N99999999999999999999", 1, nullptr}, {"none", 1, nullptr},
        {"", 1, nullptr},
    };
    for (const auto& [before, step, after] : kRows) {
        CoreString text(before);
        EXPECT_EQ(text.NextNumber(step), after != nullptr) << before;
        EXPECT_STREQ(text, after ? after : before);
    }
    CoreString holed("01234567890123456-7");
    holed[3] = 0;
    EXPECT_TRUE(holed.NextNumber(1));
    EXPECT_EQ(CoreString(holed).View(), std::string_view("012\0004567890123456-6", 19));
}
// clang-format on

TEST(CoreStringEdit, EscapesForUrls) {
    CoreString out("old");
    EXPECT_STREQ(CoreString("a b/c~").EscapeURL(out), "a%20b%2fc~");
    for (int c = 1; c < 256; ++c) {
        const bool escaped = c <= ' ' || c == 127 || std::strchr("\"#$%&+,/:;<=>?@[\\]^`{|}", c) != nullptr;
        char expected[8];
        std::snprintf(expected, sizeof(expected), escaped ? "%%%02x" : "%c", c);
        EXPECT_STREQ(CoreString(static_cast<char>(c)).EscapeURL(out), expected);
    }
}

TEST(CoreStringEdit, SavesToAFile) {
    const RecordingHost host;
    const Scratch scratch;
    const std::string path = scratch / "file.txt", absent = scratch / "absent/%s.txt";
    EXPECT_TRUE(CoreString("line 1\nline 2 100%s").SaveToFile(path.c_str()));
    EXPECT_EQ(ReadTextFile(path), "line 1\nline 2 100%s");
    EXPECT_FALSE(CoreString("x").SaveToFile(absent.c_str()) || CoreString("x").SaveToFile(nullptr));
    EXPECT_EQ(host.shown, (Texts{"Failed to create file " + absent + ".|0", "Failed to create file .|0"}));
}

}  // namespace
}  // namespace brenta::test
