#include "brenta/string.h"
#include "test_support.h"

namespace brenta::test {
namespace {

const char* const kNull = nullptr;

template <class Separator>
void ExpectSplit(const char* text, Separator separator, int start, bool found, const char* left,
                 const char* right) {
    CoreString outLeft("old"), outRight("old");
    EXPECT_EQ(CoreString(text).SplitAt(separator, outLeft, outRight, start), found) << text;
    EXPECT_TRUE(outLeft == left && outRight == right) << outLeft() << "|" << outRight();
}

// clang-format off
TEST(CoreStringSearch, FindsTexts) {
    const std::tuple<const char*, const char*, bool, int, int> kRows[] = {
        // text, sought, ignore case, start, position; AgreesWithNaiveSearch has the ordinary cases
        {"abcab", "ab", false, -7, 0}, {"x\xC4y", "\xC4Y", true, 0, 1}, {"abcab", "", false, 3, 3},
        {"abcab", "", false, 5, -1}, {"", "", false, 0, -1}, {"abcab", "ab", false, 99, -1},
        {"abcab", kNull, false, 0, -1}, {"\xC4", "\xE4", true, 0, -1},
    };
    for (const auto& [text, sought, ignoreCase, start, position] : kRows) {
        EXPECT_EQ(CoreString(text).Find(sought, ignoreCase, start), position) << text << " " << CoreString(sought)();
    }
}

TEST(CoreStringSearch, CountsCharactersFromTheStart) {
    const CoreString text("abcab");
    const std::tuple<const char*, bool, int, int> kRows[] = {
        // characters, ignore case, start, position of the first of them behind it
        {"b", false, 2, 2}, {"B", true, 2, 2}, {"b", false, -5, 1}, {"B", false, 0, -1}, {"a", false, 5, -1},
        {"xb", false, 2, 2}, {"XB", true, 0, 1}, {"XB", false, 0, -1}, {"", false, 0, -1}, {kNull, false, 0, -1},
    };
    for (const auto& [set, ignoreCase, start, offset] : kRows) {
        EXPECT_EQ(text.FindAny(set, ignoreCase, start), offset);
        EXPECT_TRUE(CoreString::GetLength(set) != 1 || text.Find(*set, ignoreCase, start) == offset) << set;
    }
    EXPECT_TRUE(text.Contains("zc") && CoreString("a\xE9").Contains("\xE9"));
    EXPECT_FALSE(text.Contains("") || text.Contains(kNull) || CoreString().Contains("a") || text.Contains("xyz"));
}

TEST(CoreStringSearch, MatchesPatterns) {
    const std::tuple<const char*, const char*, bool, bool, bool> kRows[] = {
        // text, pattern, ignore case, begins, matches
        {"abc", "", false, true, true}, {"abc", "bc", false, false, true}, {"abc", "a?c", false, true, true},
        {"abc", "?c", false, false, true}, {"abc", "a*zzz", false, true, true}, {"abc", "abc*", false, true, true},
        {"abc", "*", false, true, true}, {"abc", "AB", true, true, true}, {"abc", "AB", false, false, false},
        {"ab\xC4", "?B\xC4", true, true, true}, {"ab\xC4", "ab\xE4", true, false, false},
        {"abc", "x*", false, false, false}, {"abc", "abc?", false, false, false}, {"", "", false, true, false},
        {"", "*", false, true, false}, {"", "?", false, false, false}, {"abc", kNull, false, false, false},
    };
    for (const auto& [text, pattern, ignoreCase, begins, matches] : kRows) {
        EXPECT_EQ(CoreString(text).BeginsWith(pattern, ignoreCase), begins) << text << " " << CoreString(pattern)();
        EXPECT_EQ(CoreString(text).Match(pattern, ignoreCase), matches) << text << " " << CoreString(pattern)();
    }
}

TEST(CoreStringSearch, KnowsNumbers) {
    const char* const kGood[] = {"0", "-12.5", " 7", "7.", "+.5", "\t\n00", "123456789012345678901234567890"};
    const char* const kBad[] = {"", " ", ".", "+", "-.", " 7 ", "1-2", "1.2.3", "--1", "1e5", "0x1", "a", "\xB2", "- 1"};
    for (const char* text : kGood) EXPECT_TRUE(CoreString(text).IsAllNumeric()) << text;
    for (const char* text : kBad) EXPECT_FALSE(CoreString(text).IsAllNumeric()) << text;
}

TEST(CoreStringSplit, CutsAtTexts) {
    const std::tuple<const char*, const char*, int, bool, const char*, const char*> kRows[] = {
        // text, separator, start, found, left, right
        {"x,y,z", ",", 2, true, "x,y", "z"}, {"a::b", "::", 0, true, "a", "b"}, {",", ",", 0, true, "", ""},
        {"x,y", ",", -2, true, "x", "y"}, {"xy", ",", 0, false, "xy", ""}, {"x,y", "", 0, false, "x,y", ""},
        {"x,y", kNull, 0, false, "x,y", ""}, {"x,y", ",", 3, false, "x,y", ""},
    };
    for (const auto& [text, mark, start, found, left, right] : kRows) ExpectSplit(text, mark, start, found, left, right);
}

TEST(CoreStringSplit, CutsAtCharacters) {
    const std::tuple<const char*, int, bool, const char*, const char*> kRows[] = {
        // text, start, found, left, right
        {"x,y", 0, true, "x", "y"}, {"xy,z", -1, true, "xy", "z"}, {"a,bc,d", 2, true, "a,", "d"},
        {"xy", 0, false, "xy", ""}, {"x,y", 3, false, "x,y", "old"}, {"", 0, false, "", "old"},
    };
    for (const auto& [text, start, found, left, right] : kRows) ExpectSplit(text, ',', start, found, left, right);
    const char* const kTokenRows[][3] = {
        // text, token, rest
        {"a,b", "a", "b"}, {",,a,b", ",,a", "b"}, {"a,,b", "a", ",b"}, {"a,", "a", ""}, {"a", "a", ""},
        {"", "", ""}, {",,", ",,", ""},
    };
    for (const auto& [whole, token, rest] : kTokenRows) {
        CoreString text(whole);
        EXPECT_STREQ(text.ExtractToken(','), token) << whole;
        EXPECT_STREQ(text, rest) << whole;
    }
}
// clang-format on

// Random texts over few letters against the plainest code that can do it.
TEST(CoreStringSearch, AgreesWithNaiveSearch) {
    std::mt19937 random(11);
    const auto make = [&](std::size_t longest) { return RandomText(random, "abB", longest); };
    for (int round = 0; round < 10000; ++round) {
        const std::string text = make(40), from = make(3), to = make(5);
        const std::size_t start = random() % (text.size() + 1);
        SCOPED_TRACE(testing::PrintToString(std::tuple(text, from, to, start)));
        const CoreString string(text);
        const int place = start == text.size() ? -1 : static_cast<int>(text.find(from, start));
        ASSERT_EQ(string.Find(from.c_str(), false, static_cast<int>(start)), place);

        CoreString low(string), lowFrom(from);
        low.MakeLower(), lowFrom.MakeLower();
        ASSERT_EQ(string.Find(from.c_str(), true), low.Find(lowFrom));

        std::string model;
        int count = 0;
        for (std::size_t i = 0; i < text.size();) {
            const bool hit = !from.empty() && text.compare(i, from.size(), from) == 0;
            model += hit ? to : text.substr(i, 1);
            i += hit ? from.size() : 1;
            count += hit;
        }
        CoreString replaced(string);
        ASSERT_EQ(replaced.Replace(from.c_str(), to.c_str()), count);
        ASSERT_EQ(replaced.View(), model);
    }
}

// Texts and patterns of repeated pieces, on which trying place after place would take minutes in all.
TEST(CoreStringSearch, IsLinearForRepeatedPieces) {
    constexpr std::size_t kHalf = 400000;
    const CoreString text(std::string(2 * kHalf, 'a').c_str());
    EXPECT_EQ(text.Find((std::string(kHalf, 'a') + 'b' + std::string(kHalf / 2, 'a')).c_str(), false), -1);
    EXPECT_EQ(text.Find((std::string(kHalf, 'A') + 'b').c_str(), true), -1);

    std::mt19937 random(5);
    for (int round = 0; round < 60; ++round) {
        const std::string piece = RandomText(random, "ab", 4) + 'a';
        std::string pattern, place;
        while (pattern.size() < 3000)
            pattern += piece;
        for (int i = 0; i < 8; ++i)
            place += pattern + (random() % 8 == 0 ? "b" : "") + piece;
        pattern += random() % 2 ? "a" : "ba";
        const std::size_t found = place.find(pattern);
        const int expected = found == std::string::npos ? -1 : static_cast<int>(found);
        ASSERT_EQ(CoreString(place.c_str()).Find(pattern.c_str(), false), expected) << piece;
        ASSERT_EQ(CoreString(place.c_str()).Find(pattern.c_str(), true), expected) << piece;
    }
}

}  // namespace
}  // namespace brenta::test
