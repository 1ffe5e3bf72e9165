#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "brenta/lexer.h"

namespace brenta {
namespace {

std::string TagOf(CCoreLexer& lexer, int n) {
    const Var& tag = lexer.GetTag(n);
    return tag.GetKind() == VarKind::Null ? "-" : StrPtr(tag.GetString());
}

struct MatchRow {
    const char* pattern;
    const char* text;
    int length;                // 0: no token
    const char* tags = "- -";  // 1 and 2, "-" for null
};

// clang-format off
const MatchRow kMatchRows[] = {
    // literal runs, escapes and white space
    {"abc", "abcd", 3}, {"abc", "abd", 0}, {"a.b", "a.b", 3}, {"a.b", "axb", 0}, {"a]-{}", "a]-{}", 5},
    {" \t\n\v\f\rab", "ab", 2}, {"a b", "a b", 3}, {"( a )", "a ", 2}, {"( a )", "a", 0}, {"a + b", "a a b", 5},
    {"(a) * b", "aab", 3}, {"\\*\\\\\\<", "*\\<", 3}, {"\\r\\n\\t\\q", "\r\n\tq", 4}, {"a\\ ", "a ", 2}, {"", "a", 0},
    // quantifiers take the whole atom, and give nothing back
    {"ab+", "ababa", 4}, {"a(b)+", "abbb", 4}, {"a(b)?c", "abc", 3}, {"a(b)?c", "ac", 2}, {"(a)*a", "aaa", 3},
    {"x[ab]*b", "xabab", 5}, {"(ab)+c", "ababc", 5}, {"(ab)+c", "aba", 2},
    // groups: all or nothing; at the top what was taken counts
    {"x(abc)", "xabd", 1}, {"x(ab)?c", "xac", 1}, {"0x<1>[0-9a-fA-F]+</1>", "0xZ", 2},
    {"0x<1>[0-9a-fA-F]+</1>", "0x1fg", 4, "1f -"}, {"/\\*!((\\*/)*)\\*/", "/* a */", 2},
    {"(a)((b)c)", "abd", 1}, {"()a", "a", 0}, {"x()a", "xa", 2},
    // alternatives: neighbours only, the first that matches wins
    {"(in|ins)", "ins", 2}, {"xa|b", "xa", 2}, {"xa|b", "b", 1}, {"(x)a|b", "xa", 2}, {"(x)a|b", "xb", 2},
    {"(x)a|b|c", "xc", 2}, {"(x)a|b|cd", "xad", 2}, {"(x)a|b|(c)d", "xbd", 3}, {"(a|)b", "ab", 2}, {"x(a|)b", "xb", 2},
    {"a|", "a", 1}, {"(x)|<1>y</1>", "xy", 2}, {"(!a|!b)+", "abac", 3},
    // sets
    {"[abc]+", "cabd", 3}, {"[c-a]+", "abcd", 3}, {"[a-c-e]+", "abcdef", 5}, {"[a-\\ce]+", "abced", 4},
    {"[!a-c]+", "xyza", 3}, {"x[!]+", "x\xff\x01", 3}, {"x[!a]", "x", 1}, {"[a\\-z]+", "-azb", 3}, {"[\\]]+", "]]", 2},
    {"[[!<(|]+", "(<![|x", 5}, {"[ \n]+", " \n ", 3}, {"x[]", "x]", 1}, {"x[\xe0-\xff]", "x\xe9", 2}, {"[a!]+", "!a", 2},
    // bytes of 128 and more start nothing
    {"\xe9", "\xe9", 0}, {"[!a]", "\xe9", 0},
    // tags
    {"<1>[0-9]+</1><2>(in|ins|mm)?</2>", "5ins", 3, "5 in"}, {"<1>[0-9]+</1><2>(in)?</2>", "5", 1, "5 "},
    {"< 1>a< /1>", "a", 1, "a -"}, {"</1>a<1>", "a", 1}, {"(<1>[ab]</1>c)+", "acbc", 4, "- -"},
    {"<1>(a<2>b)?</1>", "ac", 0}, {"x<1>(a<2>b)?</1></2>", "xac", 1, " -"}, {"<1>a", "a", 1},
    // repetition of nothing ends
    {"x(a*)*", "xaab", 3}, {"x(()*)+y", "xy", 2}, {"x(a?)+b", "xaab", 4}, {"x(a?)b", "xb", 2}, {"x*+", "x", 1}, {"(x)<1>*", "x", 1},
};

const struct {
    const char* message;
    std::vector<const char*> patterns;
} kErrorRows[] = {
    {"Tag specifier out of range. Use 1 to 8.", {"<5>", "<0>", "</x>", "<", "</ 1>", "a</"}},
    {"Missing closing '>' in tag.", {"<1", "<1 >", "<12>"}},
    {"Missing closing ')'.", {"(a", "(", "((a)"}},
    {"Already in a range specification.", {"[a--b]"}},
    {"Missing start character in range.", {"[-a]", "[!-a]", "[a-\\c-e]"}},
    {"Missing closing ']'.", {"[a-]", "[", "[abc", "[a-", "[a\\", "[!"}},
    {"Unexpected ')'.", {"a)", ")", "(a))b"}},
    {"Unexpected '>'.", {">", "a>b", "(a>)"}},
    {"Missing character after '\\'.", {"a\\"}},
};
// clang-format on

// The fuzz target pattern_lexer compares with a literal matcher, over its seeds in every run of the tests.
TEST(Pattern, MatchesByTheRules) {
    for (const MatchRow& row : kMatchRows) {
        SCOPED_TRACE(std::string(row.pattern) + " on " + row.text);
        CCoreLexer lexer;
        ASSERT_TRUE(lexer.DefineToken("kind", 7, row.pattern, false)) << lexer.GetPatternError()();
        lexer.PushStream("text", 1, row.text, false);
        LexToken token;
        EXPECT_EQ(lexer.GetToken(token), row.length > 0);
        EXPECT_EQ(token.id, row.length > 0 ? 7 : 0);
        EXPECT_EQ(token.length, row.length);
        EXPECT_EQ(TagOf(lexer, 1) + " " + TagOf(lexer, 2), row.tags);
    }
}

TEST(Pattern, SaysWhatIsWrongWithOne) {
    for (const auto& [message, patterns] : kErrorRows) {
        for (const char* pattern : patterns) {
            CCoreLexer lexer;
            EXPECT_FALSE(lexer.DefineToken("kind", 7, pattern, false)) << pattern;
            EXPECT_STREQ(lexer.GetPatternError(), message) << pattern;
        }
    }
    const std::string deepest = std::string(100, '(') + "a" + std::string(100, ')');
    CCoreLexer lexer;
    EXPECT_TRUE(lexer.DefineToken("kind", 7, deepest.c_str(), false));
    EXPECT_FALSE(lexer.DefineToken("kind", 7, ("(" + deepest + ")").c_str(), false));
    EXPECT_STREQ(lexer.GetPatternError(), "Groups nested too deeply.");
}

}  // namespace
}  // namespace brenta
