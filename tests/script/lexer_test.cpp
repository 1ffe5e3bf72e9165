#include "brenta/lexer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace brenta {
namespace {

enum : int { kWord = 1, kIn = 2, kNumber = 3, kSpace = 4 };

struct SmallLexer : CCoreLexer {
    SmallLexer() {
        DefineToken("IN", kIn, "in", false);
        DefineToken("WORD", kWord, "[a-z]+", false);
        DefineToken("NUMBER", kNumber, "<1>[0-9]+</1>", false);
        DefineToken("SPACE", kSpace, "[ \r\n]+", true);
    }
};

/// "name:line:text" of each token to come, and how it ended: "end", "none" where no kind matches, or "no
/// input".
std::string Rest(CCoreLexer& lexer) {
    std::string all;
    LexToken token;
    while (lexer.GetToken(token)) {
        if (token.id == -1) return all + "end";
        all += std::string(StrPtr(token.file)) + ":" + std::to_string(token.line) + ":";
        all.append(token.text, static_cast<std::size_t>(token.length)) += " ";
    }
    return all + (token.text == nullptr ? "no input" : "none");
}

char* OwnedText(const char* text) {
    return std::strcpy(new char[std::strlen(text) + 1], text);
}

TEST(Lexer, TakesTheLongestMatchAndAmongEqualsTheFirstKind) {
    SmallLexer lexer;
    lexer.PushStream("t", 1, "in inx 12", false);
    LexToken token;
    for (const int id : {int{kIn}, int{kWord}, int{kNumber}, -1}) {
        ASSERT_TRUE(lexer.GetToken(token));
        EXPECT_EQ(token.id, id);
    }
    EXPECT_EQ(token.text, nullptr);
    EXPECT_FALSE(lexer.GetToken(token)) << "the end is reported once";
    EXPECT_EQ(lexer.GetScanCount(), 5);
    EXPECT_EQ(lexer.GetCleanScanCount(), 4) << "in inx, WORD took the place of IN";
}

TEST(Lexer, CountsLines) {
    SmallLexer lexer;
    lexer.PushStream("t", 7, "a\n\nb\rc\r\n d", false);
    EXPECT_EQ(Rest(lexer), "t:7:a t:9:b t:9:c t:10:d end");
}

TEST(Lexer, ReadsAPushedTextBeforeTheOneBeneath) {
    SmallLexer lexer;
    LexToken token;
    EXPECT_FALSE(lexer.GetToken(token));
    lexer.PushStream("outer", 1, "a\nb", false);
    lexer.GetToken(token);
    lexer.PushStream("inner", 5, OwnedText("x y"), true);
    EXPECT_EQ(Rest(lexer), "inner:5:x inner:5:y outer:2:b end");

    lexer.PushStream("outer", 1, "a", false);
    lexer.GetToken(token);
    lexer.PushStream("inner", 1, OwnedText("x"), true);
    EXPECT_EQ(Rest(lexer), "inner:1:x none") << "a text that ends together with the one above it";
}

TEST(Lexer, StaysWhereNoKindMatches) {
    SmallLexer lexer;
    const char* text = "a @";
    lexer.PushStream("t", 3, text, false);
    EXPECT_EQ(Rest(lexer), "t:3:a none");
    CoreString name;
    int line = 0;
    const char* position = nullptr;
    LexToken token;
    for (int again = 0; again < 2; ++again) {
        EXPECT_FALSE(lexer.GetToken(token));
        EXPECT_EQ(token.id, 0);
        ASSERT_TRUE(lexer.GetPos(name, line, position));
        EXPECT_EQ(position, text + 2);
    }
    EXPECT_STREQ(name, "t");
    EXPECT_EQ(line, 3);
    EXPECT_TRUE(lexer.SetPos("u", 9, text));
    EXPECT_EQ(Rest(lexer), "u:9:a none");
    lexer.FlushInput();
    EXPECT_FALSE(lexer.GetPos(name, line, position));
    EXPECT_FALSE(lexer.SetPos("u", 9, text));
    lexer.PushStream(nullptr, 1, nullptr, true);
    EXPECT_EQ(Rest(lexer), "end");
}

TEST(Lexer, KeepsTheTagsOfTheLastToken) {
    SmallLexer lexer;
    EXPECT_EQ(lexer.GetTag(1).GetKind(), VarKind::Null);
    LexToken token;
    for (const bool owned : {true, false}) {
        char* text = OwnedText("a 12");
        lexer.PushStream("t", 1, text, owned);
        lexer.GetToken(token);
        lexer.GetToken(token);
        SmallLexer copy(lexer);
        if (owned) lexer.GetToken(token);  // the end: the text goes, the tag stays
        if (!owned) delete[] text;
        for (CCoreLexer* each : {&lexer, &copy}) {
            EXPECT_EQ(each->GetTag(1).GetString(), StrId("12"));
            for (const int absent : {-1, 0, 2, 5})
                EXPECT_EQ(each->GetTag(absent).GetKind(), VarKind::Null);
        }
        lexer.FlushInput();
    }
    lexer.PushStream("t", 1, "a", false);
    lexer.GetToken(token);
    EXPECT_EQ(lexer.GetTag(1).GetKind(), VarKind::Null);
}

TEST(Lexer, CopiesItsKinds) {
    SmallLexer* original = new SmallLexer;
    original->PushStream("t", 1, "a", false);
    SmallLexer copy(*original);
    SmallLexer assigned;
    assigned.PushStream("old", 1, OwnedText("x"), true);
    assigned = *original;
    assigned = *&assigned;
    delete original;
    copy.DefineToken("AT", 9, "@", false);
    for (SmallLexer* lexer : {&copy, &assigned}) {
        EXPECT_EQ(Rest(*lexer), "no input") << "a copy starts without input";
        lexer->PushStream("u", 1, "in b9@", false);
        EXPECT_EQ(Rest(*lexer), lexer == &copy ? "u:1:in u:1:b u:1:9 u:1:@ end" : "u:1:in u:1:b u:1:9 none");
    }
}

}  // namespace
}  // namespace brenta
