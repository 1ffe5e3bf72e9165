#include "brenta/string.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "foundation/characters.h"
#include "foundation/text_compare.h"
#include "test_support.h"

namespace brenta::test {
namespace {

std::string Text(const CoreString& text) {
    EXPECT_EQ(text()[text.GetLength()], 0) << "no terminator";
    return std::string(text.View());
}

TEST(CoreString, IsMadeFromTexts) {
    const char* const null = nullptr;
    const std::string long30(30, 'x');
    const std::pair<CoreString, std::string> kRows[] = {
        {CoreString(null), ""},
        {CoreString("abc"), "abc"},
        {CoreString("abc", 2), "ab"},
        {CoreString("abc", -1), ""},
        {CoreString("abc", INT_MAX), "abc"},
        {CoreString(null, 3), ""},
        {CoreString('c'), "c"},
        {CoreString('\0'), ""},
        {CoreString(long30), long30},
        {long30.c_str(), long30},
        {CoreString(std::string_view("a\0c", 3)), "a"},
    };
    for (const auto& [text, expected] : kRows)
        EXPECT_EQ(Text(text), expected);
    EXPECT_EQ(CoreString::GetLength(null) + CoreString::GetLength("four"), 4);
    CoreString text;
    text << 1.5 << ' ' << -7 << " " << 4000000000u << null << static_cast<short>(-3)
         << static_cast<unsigned short>(9);
    EXPECT_EQ(Text(text), "1.500000 -7 4000000000-39");
    const std::unique_ptr<CoreString> pText(new CoreString("R1"));
    EXPECT_TRUE(IsValidHeapPtr(pText.get()));
}

TEST(CoreString, NeverStoresANul) {
    CoreString text("ab");
    text += '\0';
    text.PadLeft(5, '\0');
    EXPECT_EQ(text.Replace('a', '\0') + text.ReplaceAny("ab", '\0') + text.Replace('\0', 'x'), 0);
    EXPECT_EQ(Text(text), "ab");
    const CoreString fullObject("0123456789abcde");
    const CoreString sum = fullObject + '\0';
    EXPECT_EQ(Text(CoreString(sum)), "0123456789abcde");
    text.SetAt(1, 0);
    text.SetAt(1, 'x');
    text.SetAt(-1, 'x');
    EXPECT_EQ(Text(text), "a");
    text[0] = 0;
    EXPECT_EQ(text.GetLength(), 1);
    EXPECT_TRUE(text.IsEmpty() && text == "" && text == CoreString());
}

// Every operation that moves a text between the object and blocks, in random order, against std::string.
// clang-format off
TEST(CoreString, HoldsWhatAModelHolds) {
    std::mt19937 random(7);
    CoreString text;
    std::string model;
    for (int step = 0; step < 20000; ++step) {
        const std::size_t cut = random() % (model.size() + 3);
        const int n = static_cast<int>(cut);
        const std::size_t wide = std::max(cut, model.size());
        CoreString other;
        switch (random() % 13) {
            case 0: text += "0123456789"; model += "0123456789"; break;
            case 1: text += 'c'; model += 'c'; break;
            case 2: text.Truncate(n); model.resize(std::min(model.size(), cut)); break;
            case 3: text.TrimLeft(n); model.erase(0, cut); break;
            case 4: text.TrimRight(n); model.resize(model.size() - std::min(model.size(), cut)); break;
            case 5: other = text; text = std::move(other); break;
            case 6: text = CoreString(text); other = std::move(text); text = other; break;
            case 7: other = text.RemoveLeft(n); text = other + text; break;
            case 8: text.PadLeft(n, '<'); model.insert(0, wide - model.size(), '<'); break;
            case 9: text.PadRight(n, '>'); model.resize(wide, '>'); break;
            case 10: text = text + 'p' + CoreString("q") + "r"; model += "pqr"; break;
            case 11: text = text() + std::min(n, text.GetLength()); model.erase(0, cut); break;
            default: text += text; model += model; break;
        }
        ASSERT_EQ(Text(text), model) << step;
        if (model.size() > 200) text.SetEmpty(), model.clear();
    }
}
// clang-format on

// Blocks made by one thread and freed by another, which ends while more are to come; for the sanitizers.
TEST(CoreString, MovesAmongThreads) {
    std::vector<CoreString> texts(600);
    std::size_t total = 0;
    for (int round = 0; round < 3; ++round) {
        OnThreads(std::size_t{2}, [&](std::size_t first) {
            for (std::size_t i = first; i < texts.size(); i += 2)
                texts[i] += std::string(i * 70, 'x');
        });
        std::rotate(texts.begin(), texts.begin() + 1, texts.end());
    }
    for (const CoreString& text : texts)
        total += text.View().size();
    EXPECT_EQ(total, 3u * 70 * 599 * 600 / 2);
}

TEST(CoreString, TakesItselfAsAnArgument) {
    CoreString text("one,two"), right;
    text = *&text;
    text = std::move(*&text);
    text += text() + 3;
    EXPECT_EQ(text.Replace(text() + 8, text() + 4), 2);
    EXPECT_EQ(Text(text), "one,two,two,two,two");
    EXPECT_TRUE(text.SplitAt(text() + 15, right, text));
    EXPECT_EQ(Text(right) + "|" + Text(text), "one|,two,two,two");
    EXPECT_TRUE(text.SplitAt(',', text, text, 1));
    EXPECT_EQ(Text(text), "two,two");
    text = "a b";
    EXPECT_EQ(Text(text.EscapeURL(text)), "a%20b");
    text.Format("<%s|%s>", text(), text() + 4);
    EXPECT_EQ(Text(text), "<a%20b|b>");
    text = text() + 8;
    EXPECT_EQ(Text(text), ">");
}

// ----------------------------------------------------------------------------------------------------------
// Order

// The order's definition, walked through literally; right where int holds the numbers.
int LiteralOrder(const char* a, const char* b) {
    const auto differ = [](auto x, auto y) { return x < y ? -1 : x > y; };
    for (; *b != 0; ++a, ++b) {
        if (IsDigit(*a) && IsDigit(*b)) {
            if (std::atoi(a) != std::atoi(b)) return differ(std::atoi(a), std::atoi(b));
            for (; IsDigit(*a); ++a, ++b) {
                if (!IsDigit(*b)) return differ(*a, *b);
            }
            if (*b == 0) break;
        }
        if (*a != *b) return differ(*a, *b);
    }
    return *a != 0;
}

TEST(CoreString, OrderIsTheLiteralWalk) {
    for (const char* alphabet : {"012a", "9b0", "a-1", "1\xE9"}) {
        // All texts of up to four of the characters, then some of up to two behind a number.
        std::vector<CoreString> texts{CoreString(), CoreString("a0123456")};
        for (std::size_t i = 0; i < texts.size(); ++i) {
            if (texts[i].GetLength() == 4 || texts[i].GetLength() == 10) continue;
            for (const char* c = alphabet; *c != 0; ++c)
                texts.push_back(texts[i] + *c);
        }
        for (const CoreString& a : texts) {
            for (const CoreString& b : texts) {
                const int order = LiteralOrder(a, b);
                ASSERT_EQ(a.Compare(b), order) << a << " " << b;
                ASSERT_EQ((a > b) - (a < b), order) << a << " " << b;
                ASSERT_EQ(a == b, a.View() == b.View()) << a << " " << b;
            }
        }
    }
}

TEST(CoreString, OrdersLongNumbersAndNull) {
    const char* const null = nullptr;
    const char* const kAscending[] = {"a1",     "a01",          "item9",
                                      "item10", "n99999999999", "n0100000000000000000000"};
    for (std::size_t i = 1; i < std::size(kAscending); ++i) {
        const CoreString low(kAscending[i - 1]), high(kAscending[i]);
        EXPECT_TRUE(low < high && low <= high && high > low && high >= low && low != high) << high();
        EXPECT_TRUE(low() < high && low < high() && high() >= low && high > low()) << high();
    }
    EXPECT_TRUE(null < CoreString("a") && CoreString() > null && CoreString() != null);
    EXPECT_EQ(CompareNatural(null, null), 0);
    EXPECT_EQ(CoreString().Compare(null, true), 1);
    EXPECT_EQ(CoreString("ABC_x").Compare("abc_X", true), 0);
    EXPECT_TRUE(CoreString("_").Compare("A", true) < 0 && CoreString("Z").Compare("[", true) > 0);
    EXPECT_GT(CoreString("\xE9").Compare("z", true), 0);
    EXPECT_TRUE(CoreString("a") > "a\xE9" && CoreString("a\xE9") > "a");
}

// ----------------------------------------------------------------------------------------------------------
// Formatting

#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"

template <class... Values>
std::string Formatted(const std::string& format, Values... values) {
    CoreString text("old");
    text.Format(format.c_str(), values...);
    return Text(text);
}

/// What the system's own printf does otherwise than the language says: blanks before unsigned numbers, no
/// octal zero, and padded hexadecimal fractions.
bool SystemDeparts(const std::string& format) {
    const auto has = [&format](const char* part) { return format.find(part) != std::string::npos; };
    return kIsWindows &&
           ((has(" ") && has("u]")) || (has("#") && has(".0") && has("o]")) || (has("-#0+") && has("a]")));
}

template <class... Values>
void ExpectPrintf(const std::string& format, Values... values) {
    if (SystemDeparts(format)) return;
    char text[2000];
    std::snprintf(text, sizeof(text), format.c_str(), values...);
    ASSERT_EQ(Formatted(format, values...), text) << format;
}

TEST(CoreStringFormat, AgreesWithPrintf) {
    const double kDoubles[] = {0.0, -0.0, 0.5, 2.5, -1e-5, 123456.789, 1e15, 1e308, 9.9999999, HUGE_VAL};
    for (const std::string flag : {"", "-", "0", "+", " ", "#", "-#0+", "# 0"}) {
        for (const std::string size : {"", "1", "12", ".0", ".3", "14.9", ".20", "340.320"}) {
            const std::string start = std::string("[%").append(flag).append(size);
            for (const char* kind : {"d]", "i]", "hd]", "hhd]", "u]", "x]", "X]", "o]", "hu]"}) {
                for (int value : {0, 1, -1, 255, 70000, INT_MAX, INT_MIN})
                    ExpectPrintf(start + kind, value);
            }
            for (const char* kind : {"lld]", "ld]", "zd]", "jd]", "llX]", "lo]", "zu]"}) {
                for (const long long value : {0LL, LLONG_MIN, LLONG_MAX})
                    ExpectPrintf(start + kind, value);
            }
            for (const char* kind : {"f]", "F]", "e]", "E]", "g]", "G]", "a]"}) {
                for (const double value : kDoubles)
                    ExpectPrintf(start + kind, value);
            }
            ExpectPrintf(start + "s]", "text");
            ExpectPrintf(start + "c]", 'c');
        }
    }
    ExpectPrintf("%*.*f|%*d%%", 9, 2, 1.005, -4, 7);
    ExpectPrintf("%.1200e", 0.1);
    EXPECT_EQ(Formatted("%I64d %I32u %p %Lg", -5LL, 6u, nullptr, 2.5L), "-5 6 0x0 2.5");
    EXPECT_EQ(Formatted("%5.1f", -std::nan("")), "  nan");
}

TEST(CoreStringFormat, KeepsItsLimits) {
    const std::string large(70000, 'x');
    EXPECT_EQ(Formatted("%s", static_cast<const char*>(nullptr)), "(null)");
    EXPECT_EQ(Formatted("%600d%3cb", 1, 0), std::string(599, ' ') + "1  ");
    EXPECT_EQ(Formatted("a%-3cb", 0), "a");
    EXPECT_EQ(Formatted(""), "");
    EXPECT_EQ(Formatted("%s", large.c_str()), large.substr(0, 65535));
    EXPECT_EQ(Formatted("%2000000000d", 1), std::string(65535, ' '));
    EXPECT_EQ(Formatted("%.2000000000f", 0.5), "0.5" + std::string(65532, '0'));
    EXPECT_EQ(Formatted("%*d", INT_MIN, 1), "1" + std::string(65534, ' '));
    for (const char* bad : {"a%", "a%n", "a%y", "a%ls", "a%lc", "a%1$d", "a%5", "a%'d"}) {
        int target = 1;
        EXPECT_EQ(Formatted(bad, &target), "") << bad;
        EXPECT_EQ(target, 1);
    }
}

}  // namespace
}  // namespace brenta::test
