
#include <fstream>
#include <sstream>

#include "brenta/files.h"
#include "brenta/lexer.h"
#include "platform/data_folder.h"
#include "script/script_test_support.h"
#include "script/stream_guard.h"
#include "script/token_set.h"
#include "script/value_limits.h"

namespace brenta::test {
namespace {

struct TestLexer : CCoreScriptLexer {
    explicit TestLexer(bool keepComments = false) : CCoreScriptLexer(false, keepComments) {
        m_pMessages = &messages;
    }
    using CCoreScriptLexer::ExtractEscSeq;
    using CCoreScriptLexer::GetBinValue;
    using CCoreScriptLexer::GetHexValue;
    bool& UnitsSeen() { return m_unitsSeen; }
    std::string ErrorPlace() const {
        return std::string(StrPtr(m_scanError.file)) + ":" + std::to_string(m_scanError.line);
    }

    RecordingStream messages;
};

/// The error text of each token, with its value in brackets where it has one; "END" for the end marker.
std::string Tokens(CCoreScriptLexer& lexer) {
    std::string all;
    for (auto iter = lexer.GetFirstToken(); iter.Get() != nullptr; iter.Next()) {
        const ScriptToken& token = **iter.Get();
        if (!all.empty()) all += " ";
        all += token.id == TOK_END ? "END" : CCoreScriptLexer::GetTokenErrorText(token.id);
        if (token.length > 0) all.append("[").append(token.text) += "]";
        EXPECT_EQ(std::string(token.text).size(), token.length);
        EXPECT_STREQ(StrPtr(token.GetValue()), token.text);
    }
    return all;
}

// clang-format off
const std::pair<const char*, const char*> kScanRows[] = {
    {"", "END"}, {" \t\r\n", "END"}, {"print printer _halt _halts", "print identifier[printer] _halt identifier[_halts] END"},
    {"a<<=b", "identifier[a] <<= identifier[b] END"}, {"a++ +b", "identifier[a] ++ + identifier[b] END"},
    {"!a!=b", "! identifier[a] != identifier[b] END"}, {"x[1].y", "identifier[x] [ decimal constant[1] ] . identifier[y] END"},
    // numbers
    {"007 0", "decimal constant[007] decimal constant[0] END"}, {"0b102", "binary constant[10] decimal constant[2] END"},
    {"0x1Fg", "integer constant[1F] identifier[g] END"}, {"0x 0b", "integer constant binary constant END"},
    {"1.5 .5 5. 1..2", "float constant[1.5] float constant[.5] float constant[5.] float constant[1.] float constant[.2] END"},
    {"5e3", "decimal constant[5] identifier[e3] END"}, {"0x1cm", "integer constant[1c] identifier[m] END"},
    // units: ten-millionths of an inch, truncated
    {"5mil 007mil", "decimal constant[50000] decimal constant[70000] END"}, {"1in 1cm", "decimal constant[10000000] decimal constant[3937007] END"},
    {"2.5mm .1in", "float constant[984251] float constant[1000000] END"}, {"300in", "decimal constant[-2147483648] END"},
    {"5mils 5ins", "decimal constant[50000] identifier[s] decimal constant[50000000] identifier[s] END"},
    {"5cms 5mms 12 mil", "decimal constant[19685039] identifier[s] decimal constant[1968503] identifier[s] decimal constant[12] identifier[mil] END"},
    // characters and strings
    {"'A' '\\n' '\\65' '\\x41' '\\q'", "character[A] character[\\n] character[\\65] character[\\x41] character[\\q] END"},
    {"'\"' ' ' '\\''", "character[\"] character[ ] character[\\'] END"}, {"''", "character character END"},
    {"'ab'", "character[a] identifier[b] character END"}, {"'' 'ab'", "character character[ ] identifier[ab] character END"},
    {"'\\123'", "character[\\12] decimal constant[3] character END"},
    {"\"a b\" \"\" \"it's", "string literal[a b] string literal string literal[it's] END"}, {"\"a\\\"b", "string literal[a\\] identifier[b] END"},
    // comments
    {"a // b\nc // d", "identifier[a] identifier[c] END"}, {"/* note */", "identifier[note] * / END"}, {"a//", "identifier[a] END"},
};

// clang-format on

TEST(ScriptLexer, TurnsTextsIntoTokens) {
    TestLexer lexer;
    for (const auto& [text, tokens] : kScanRows) {
        EXPECT_TRUE(lexer.InjectScriptText("cmd:", text, true)) << text;
        EXPECT_EQ(Tokens(lexer), tokens) << text;
        lexer.FlushTokens();
    }
    lexer.InjectScriptText("cmd:", "a", true);
    lexer.InjectScriptText("cmd:", "b", true);
    EXPECT_EQ(Tokens(lexer), "identifier[a] END identifier[b] END") << "scanning appends";
    EXPECT_EQ(lexer.messages.errors, "");
}

TEST(ScriptLexer, KeepsCommentsWhenAsked) {
    TestLexer lexer(true);
    EXPECT_TRUE(lexer.InjectScriptText("cmd:", "a /*\n// b", true));
    EXPECT_EQ(Tokens(lexer),
              "identifier[a] unknown token id unknown token id unknown token id unknown token id END");
}

TEST(ScriptLexer, CarriesNumbersAndPlaces) {
    TestLexer lexer;
    lexer.InjectScriptText("m", "\n99999999999 1.25\n 5mil 2.5mm", true);
    std::string all;
    for (auto iter = lexer.GetFirstToken(); iter.Get() != nullptr; iter.Next()) {
        const ScriptToken& token = **iter.Get();
        all += StrPtr(token.file) + std::to_string(token.line) + ": " + std::to_string(token.number);
        all += token.hasUnit ? " with unit\n" : "\n";
    }
    EXPECT_EQ(all,
              "m2: 2147483647.000000\nm2: 1.250000\n"
              "m3: 50000.000000 with unit\nm3: 984251.000000 with unit\nm3: 0.000000\n");
    EXPECT_TRUE(lexer.UnitsSeen());
}

TEST(ScriptLexer, ExtractsIntegers) {
    const struct {
        const char* text;
        int value;
        bool isInteger = true;
    } rows[] = {
        {"'A'", 65},     {"'\\n'", 10},      {"'\\65'", 65},      {"'\\12'", 12},
        {"'\\x41'", 65}, {"'\\q'", 0},       {"'\\\"'", 34},      {"'\\''", 39},
        {"'\\?'", 63},   {"'\\\\'", 92},     {"'\\a'", 7},        {"'\\b'", 8},
        {"'\\f'", 12},   {"'\\r'", 13},      {"'\\t'", 9},        {"'\\v'", 11},
        {"'\xe9'", -23}, {"''", 0},          {"0b101", 5},        {"0b", 0},
        {"0xfF", 255},   {"0xffffffff", -1}, {"010", 10},         {"99999999999", 2147483647},
        {"5mil", 50000}, {"1.5", 0, false},  {"\"1\"", 0, false}, {"a", 0, false},
        {"+", 0, false},
    };
    for (const auto& row : rows) {
        TestLexer lexer;
        ASSERT_TRUE(lexer.InjectScriptText("cmd:", row.text, true)) << row.text;
        int value = 7;
        EXPECT_EQ(lexer.ExtractTokenInteger(**lexer.GetFirstToken().Get(), value), row.isInteger) << row.text;
        EXPECT_EQ(value, row.value) << row.text;
    }
    TestLexer lexer;
    EXPECT_EQ(lexer.GetHexValue("1gF"), 0x11F) << "what is no digit repeats the one before";
    EXPECT_EQ(lexer.GetBinValue("12"), 4);
    int value = 7;
    EXPECT_FALSE(lexer.ExtractEscSeq("", value));
}

// The texts of the numbers from 1 on, "?" for those that messages do not name. Each text scans as its token.
TEST(ScriptLexer, NumbersItsTokensAsFixed) {
    std::istringstream texts(
        "= *= /= %= += -= <<= >>= &= ^= |= || && | ^ & == != < > <= >= << >> + - * / % "
        "print execute ? ? function ? if else for foreach in while continue break return var ? "
        "class inherits enum _halt true false null { } , ; . ~ ! ++ -- [ ] ( )");
    int id = 1;
    for (std::string text; texts >> text; ++id) {
        const bool named = text != "?";
        EXPECT_EQ(CCoreScriptLexer::GetTokenErrorText(static_cast<TokId>(id)),
                  named ? text : std::string("unknown token id"));
        TestLexer lexer;
        lexer.InjectScriptText("cmd:", named ? text.c_str() : "", true);
        EXPECT_EQ((*lexer.GetFirstToken().Get())->id, named ? id : -1);
    }
    EXPECT_EQ(id, 67);
    for (const int unnamed : {-1, 0, 74, 75, 76, 77, 1000})
        EXPECT_STREQ(CCoreScriptLexer::GetTokenErrorText(static_cast<TokId>(unnamed)), "unknown token id");
    EXPECT_EQ(TokenSet().size(), 76u);
}

TEST(ScriptLexer, SaysWhereAScanStopped) {
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"a\nb @ c", "m:2", "identifier[a] identifier[b]"},
        {"a\n include b", "m:2", "identifier[a]"},
        {"include\n\n", "m:1", ""},
        {"include\n@", "m:1", ""},
        {"a \x80", "m:1", "identifier[a]"}};
    for (const auto& [text, place, tokens] : rows) {
        TestLexer lexer;
        EXPECT_FALSE(lexer.InjectScriptText("m", text, true)) << text;
        EXPECT_EQ(lexer.ErrorPlace(), place) << text;
        EXPECT_EQ(Tokens(lexer), tokens) << text;
        EXPECT_EQ(lexer.messages.errors, "");
    }
}

TEST(ScriptLexer, CopiesItsTokens) {
    auto* original = new TestLexer;
    original->InjectScriptText("m", "a 5mil \"x\"", true);
    CCoreScriptLexer copy(*original);
    CCoreScriptLexer assigned(false, false);
    assigned.InjectScriptText("m", "z", true);
    assigned = *original;
    delete original;
    EXPECT_EQ(Tokens(copy), "identifier[a] decimal constant[50000] string literal[x] END");
    EXPECT_EQ(Tokens(assigned), Tokens(copy));
}

TEST(StreamGuard, RestoresTheOuterScan) {
    TestLexer lexer;
    lexer.InjectScriptText("outer", "a b 1mil", true);
    lexer.UnitsSeen() = false;
    lexer.InjectScriptText("raw", "x y", false);
    LexToken token;
    lexer.GetRawToken(token);
    for (int depth = 0; depth < 2; ++depth) {
        StreamGuard guard(lexer);
        EXPECT_EQ(Tokens(lexer), "");
        EXPECT_FALSE(lexer.GetRawToken(token)) << "the inner scan does not see the outer input";
        EXPECT_TRUE(lexer.InjectScriptText("inner", "c 5mil", true));
        {
            StreamGuard innermost(lexer);
            EXPECT_FALSE(
                lexer.InjectScriptText("failing", std::string(10000, 'x').append(" @").c_str(), true));
        }
        EXPECT_EQ(Tokens(lexer), "identifier[c] decimal constant[50000] END");
        EXPECT_TRUE(lexer.UnitsSeen());
        lexer.FlushTokens();
        lexer.InjectScriptText("inner", "d", true);
        EXPECT_EQ(Tokens(lexer), "identifier[d] END");
    }
    EXPECT_FALSE(lexer.UnitsSeen());
    EXPECT_EQ(Tokens(lexer), "identifier[a] identifier[b] decimal constant[10000] END");
    EXPECT_TRUE(lexer.GetRawToken(token));
    EXPECT_EQ(std::string(token.text, 1), "y");
}

// --- files

class ScriptFiles : public testing::Test {
 protected:
    std::string Write(const char* name, const std::string& text) {
        const std::string path = folder / name;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }

    const DataFolder folder;
};

TEST_F(ScriptFiles, IncludesStandForTheirTokens) {
    const std::string start = Write("start.scr", "a include \"two.scr\" b\ninclude \"./sub/one.scr\"\nc");
    Write("two.scr", "two\n");
    Write("sub/one.scr", "one include \"../two.scr\" // rest");
    TestLexer lexer;
    EXPECT_TRUE(lexer.LoadScriptModule(start.c_str())) << lexer.messages.errors;
    EXPECT_EQ(
        Tokens(lexer),
        "identifier[a] identifier[two] identifier[b] identifier[one] identifier[two] identifier[c] END");
    auto iter = lexer.GetFirstToken();
    iter.Next();
    EXPECT_STREQ(StripPathName(StrPtr((*iter.Get())->file)), "two.scr");

    // A folder that does not begin with "." is relative to the process.
    const std::string main = Write("main.scr", "a include \"sub/one.scr\" b");
    TestLexer other;
    EXPECT_FALSE(other.LoadScriptModule(main.c_str()));
    EXPECT_NE(other.messages.errors.find("main.scr(1): Failed to open source file '"), std::string::npos);
    EXPECT_EQ(other.ErrorPlace(), ":0") << "reported already";
}

TEST_F(ScriptFiles, LooksInTheScriptsFolder) {
    TestLexer lexer;
    EXPECT_FALSE(lexer.LoadScriptModule("nowhere.scr"));
    const std::string& error = lexer.messages.errors;
    EXPECT_EQ(error.find("Failed to open source file '"), 0u) << error;
    ASSERT_NE(error.find("Scripts\\nowhere.scr'"), std::string::npos) << error;

    // Where it looked is where the file has to be.
    const std::string path = error.substr(error.find('\'') + 1, error.rfind('\'') - error.find('\'') - 1);
    const std::filesystem::path native = CoreNativePath(path.c_str())();
    std::filesystem::create_directories(native.parent_path());
    std::ofstream(native) << "found";
    EXPECT_TRUE(lexer.LoadScriptModule("nowhere.scr"));
    EXPECT_EQ(Tokens(lexer), "identifier[found] END");
}

TEST_F(ScriptFiles, RefusesWhatIsNoText) {
    // A folder, nothing, and a file that includes itself, which ends at the depth limit.
    for (const char* text : {"\ninclude \".\"", "\ninclude \"\" ", "a\ninclude \"self.scr\" b"}) {
        const std::string self = Write("self.scr", text);
        TestLexer lexer;
        StreamGuard guard(lexer);
        EXPECT_FALSE(lexer.LoadScriptModule(self.c_str()));
        EXPECT_NE(lexer.messages.errors.find("self.scr(2): Failed to open source file"), std::string::npos);
    }
    // Each file includes the next one twice: the last is reached 2^40 times, were there no end.
    std::string doubling = Write("end.scr", "x");
    for (int i = 0; i < 40; ++i) {
        const std::string twice = "include \"" + doubling + "\"\n";
        doubling = Write((std::to_string(i) + ".scr").c_str(), twice + twice);
    }
    TestLexer endless;
    EXPECT_FALSE(endless.LoadScriptModule(doubling.c_str()));
    EXPECT_NE(endless.messages.errors.find("Failed to open source file"), std::string::npos);
    const std::string huge = Write("huge.scr", "x");
    std::filesystem::resize_file(huge, kMaxSourceSize + 1);
    TestLexer unread;
    EXPECT_FALSE(unread.LoadScriptModule(huge.c_str()));
    EXPECT_NE(unread.messages.errors.find("Failed to read source file"), std::string::npos);
    const std::string last = Write("last.scr", "\ninclude \"empty.scr\"");
    Write("empty.scr", "x");
    TestLexer lexer;
    EXPECT_FALSE(lexer.LoadScriptModule(last.c_str())) << "an include that is the very last of its file";
    EXPECT_EQ(lexer.ErrorPlace(), last + ":2");
    lexer.FlushInput();
    lexer.FlushTokens();
    EXPECT_TRUE(lexer.LoadScriptModule(Write("zero.scr", std::string("a\0@", 3)).c_str()))
        << "a NUL ends the text";
    EXPECT_EQ(Tokens(lexer), "identifier[a] END");
}

}  // namespace
}  // namespace brenta::test
