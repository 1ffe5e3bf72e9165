#include "brenta/framework.h"
#include "brenta/names.h"
#include "test_support.h"

namespace brenta::test {
namespace {

CoreString TokensOf(decltype(GetTokens) get, const char* text, const char* delimiters) {
    TOrderedList<STRID> names;
    names.Add(StrId("kept"));
    get(text, delimiters, names);
    CoreString joined;
    for (STRID name : names)
        joined += CoreString(StrPtr(name)) + '|';
    joined.Replace('"', '\'');
    return joined;
}

TEST(TextHelpers, Tokens) {
    // Text, delimiters, tokens, tokens with quoted runs; ' stands for a quote.
    const std::tuple<const char*, const char*, const char*, const char*> rows[] = {
        {";;top;;bottom,top;", ";,", "kept|top|bottom|top|", "kept|top|bottom|top|"},
        {"caf\xE9x", "\xE9", "kept|caf|x|", "kept|caf|x|"},
        {"a b", nullptr, "kept|a b|", "kept|a b|"},
        {"'a b'  c", " ", "kept|'a|b'|c|", "kept|a b|c|"},
        {"'' 'x", " ", "kept|''|'x|", "kept|x|"},
        {"a'b c' 'd'e '", " ", "kept|a'b|c'|'d'e|'|", "kept|a'b|c'|d|e|"}};
    for (const auto& [text, delimiters, plain, quoted] : rows) {
        CoreString input(text);
        input.Replace('\'', '"');
        EXPECT_EQ(TokensOf(GetTokens, input, delimiters), plain);
        EXPECT_EQ(TokensOf(GetTokensQuoted, input, delimiters), quoted);
    }
    EXPECT_TRUE(TokensOf(GetTokens, nullptr, " ") == "kept|" &&
                TokensOf(GetTokensQuoted, nullptr, "") == "kept|");
}

bool MatchesHere(const char* pattern, const char* text) {
    if (*pattern == 0) return true;
    if (*pattern == '*' && MatchesHere(pattern + 1, text)) return true;
    const auto fold = [](char c) { return c >= 'A' && c <= 'Z' ? c + 32 : +c; };
    if (*text == 0 || !(*pattern == '*' || *pattern == '?' || fold(*pattern) == fold(*text))) return false;
    return MatchesHere(*pattern == '*' ? pattern : pattern + 1, text + 1);
}

bool MatchesAnywhere(const char* pattern, const char* text) {
    return *text != 0 && (MatchesHere(pattern, text) || MatchesAnywhere(pattern, text + 1));
}

TEST(TextHelpers, SearchAgreesWithTheDefinition) {
    std::mt19937 random(7);
    for (int round = 0; round < 20000; ++round) {
        const std::string pattern = RandomText(random, "aB?*\xE9", 6);
        const std::string text = RandomText(random, "Ab?\xE9\xC9", 9);
        ASSERT_EQ(SearchStringForMatch(pattern.c_str(), text.c_str()),
                  MatchesAnywhere(pattern.c_str(), text.c_str()))
            << pattern << " in " << text;
    }
    EXPECT_TRUE(SearchStringForMatch(nullptr, "a") && !SearchStringForMatch("*", nullptr));
    CoreString stars("b");
    stars.PadLeft(1001, '*');
    stars.Replace("*", "*a");
    EXPECT_FALSE(SearchStringForMatch(stars, std::string(100000, 'a').c_str()));
}

TEST(TextHelpers, MatchClosing) {
    const std::string deep(1000000, '(');
    const std::string closed = deep + std::string(1000001, ')');
    const std::tuple<char, char, const char*, std::ptrdiff_t> rows[] = {
        {'(', ')', "a(b)c)d", 5}, {'(', ')', ")", 0},    {'(', ')', "(())", -1},
        {'"', '"', "ab\"c\"", 2}, {'(', '\0', "a(", -1}, {'(', ')', closed.c_str(), 2000000}};
    for (const auto& [open, close, text, position] : rows) {
        const char* found = MatchClosing(open, close, text);
        EXPECT_EQ(found ? found - text : -1, position);
    }
    EXPECT_TRUE(!MatchClosing('(', ')', deep.c_str()) && !MatchClosing('(', ')', nullptr));
}

TEST(TextHelpers, EndsOfATextAndLetterNumbers) {
    for (auto [text, trimmed] : {std::pair(" a\t ", " a"), {"\t ", ""}, {"", ""}, {"a b\n", "a b\n"}}) {
        std::string copy = text;
        TrimTrailingWhite(copy.data());
        EXPECT_STREQ(copy.c_str(), trimmed);
    }
    TrimTrailingWhite(nullptr);
    EXPECT_STREQ(SkipWhite("\t a "), "a ");
    EXPECT_EQ(SkipWhite(nullptr), nullptr);
    EXPECT_TRUE(GetAlphaPrefix("Rz12R") == "Rz" && GetAlphaPrefix("\xE9z") == "" &&
                GetAlphaPrefix(nullptr) == "");
    const std::pair<int, const char*> numbers[] = {
        {0, "A"}, {25, "Z"}, {26, "BA"}, {27, "BB"}, {701, "BAZ"}, {-1, "Z"}, {2147483647, "GYTISYX"}};
    for (const auto& [number, letters] : numbers) {
        CString out("old");
        EXPECT_TRUE(DecimalToBase26(number, out) == letters) << out;
    }
}

}  // namespace
}  // namespace brenta::test
