#include "script/parser.h"

#include "reliability/living.h"
#include "script/script_test_support.h"

namespace brenta::test {
namespace {

/// The errors of a text, "" if it parses.
std::string ErrorsOf(const std::string& text) {
    ParserFixture fixture;
    TIter<ScriptToken*> iter = fixture.Scan(text);
    const bool good = ParsedText(fixture.engine).Parse(iter, StatementSequence::Text);
    EXPECT_EQ(good, fixture.messages.errors.empty()) << text;
    EXPECT_EQ(fixture.engine.GetScopeDepth(), 1) << text;
    return fixture.messages.TakeErrors();
}

std::string ModuleErrorsOf(const std::string& text) {
    ParserFixture fixture;
    const std::string errors = fixture.ParseModule(text);
    EXPECT_TRUE(fixture.engine.GetScopeDepth() == 1 && !fixture.engine.GetFirstToken().Get()) << text;
    return errors;
}

// clang-format off
/// Texts that all fail with the same messages.
struct FailingTexts {
    const char* errors;
    std::vector<const char*> texts;
};

const std::vector<FailingTexts> kTextErrors = {
    {"t(1): Syntax error: expecting ';', but found ')'\n",
     {"a)", "for (; a; b) c", "for (print(1); b; c) d"}},
    {"t(2): Syntax error: expecting ';', but found '}'\n", {"a;\n }"}},
    {"t(1): Syntax error: expecting ';', but found ']'\n", {"if (a) b] else c"}},
    {"t(1): Syntax error: expecting ';', but found 'unknown token id'\n", {"break"}},
    {"t(1): Syntax error: expecting ')', but found ';'\n", {"print(1;"}},
    {"t(1): Syntax error: expecting 'in', but found 'identifier'\n", {"foreach (x of a) b"}},
    {"t(1): Syntax error: expecting 'identifier', but found 'decimal constant'\n", {"var x as 1;"}},
    {"t(1): Unexpected end-of-file.\n", {"{ a;\n", "if (a)", "if (a) b; else", "print("}},
    {"t(1): Symbol 'x' already defined.\n", {"foreach (x in a) {} var x;", "foreach (x in a) ; foreach (x in a) b;"}},
    {"t(1): Symbol 'reflect' already defined.\n", {"var reflect;"}},
    {"t(1): Class 'Unknown' not defined.\n", {"var x as Unknown;"}},
    {"t(1): Invalid subscript.\n", {"var a[0];", "var a[];"}},
    {"t(1): List too large.\n", {"var a[2000000000];"}},
    {"t(1): Missing r-value.\n", {"var x = 1, y = 2;"}},
    // a failed expression reports first, then the construct around it, and nobody above
    {"t(1): Illigal expression.\n", {"{ 3[1] }"}},
    {"t(2): Illigal expression.\nt(1): Expection valid expression\n", {"{ if\n(3[1]) {} }"}},
    {"t(1): Illigal expression.\nt(1): Expection valid expression\n", {"print(3[1])"}},
    {"t(1): Illigal expression.\nt(1): Expection valid expression.\n",
     {"while (3[1]) a", "foreach (x in 3[1])", "return 3[1];"}},
    {"t(1): Illigal expression.\nt(1): Expection valid init statement.\n", {"for (3[1]; a; b) c"}},
    {"t(1): Illigal expression.\nt(1): Missing r-value.\n", {"var x = 3[1];"}},
};

const std::vector<FailingTexts> kModules = {
    {"",
     {"", "; function f(a, b) { return a } ; class C {} var x as C",
      "class A { var x = 1; 5 ; function m() {} var y } class B inherits A {}",
      "function f() { var a; { var a; } foreach (a in b) {} }",
      "function f() { if (a) b; else c; while () ; for (a; b; c) d; execute(e) print(1) _halt return; }"}},
    {"t(1): Syntax error.\n", {"print(1);", "function f() {} f();", "}"}},
    {"t(1): Syntax error: expecting ';', but found '}'\n", {"var x }"}},
    {"t(1): Syntax error: expecting ';', but found ']'\n", {"class C { var x ] }"}},
    {"t(1): Syntax error: expecting 'identifier', but found ')'\n", {"function f(a,) {}"}},
    {"t(1): Syntax error: expecting ')', but found 'identifier'\n", {"function f(a b) {}"}},
    {"t(1): Syntax error: expecting '{', but found 'return'\n", {"function f() return 1;"}},
    {"t(2): Unexpected end-of-file.\n",
     {"\nfunction f()", "function f() {\n{}", "class C {\nvar x;", "\nclass C"}},
    {"t(1): Symbol 'f' already defined.\n", {"var f; function f() {}", "function f() {} class f {}"}},
    {"t(1): Symbol 'a' already defined.\n", {"var a; function f(a) {}", "function f(a) { var a; }"}},
    {"t(1): Parameter 'f2' already defined.\n", {"function f(f2, f2) {}"}},
    {"t(1): Class 'D' not defined.\n", {"var D; class C inherits D {}"}},
    {"t(1): Class 'C' not defined.\n", {"class C { var x as C; }"}},
    {"t(2): Member 'x' already defined in class 'C'\n", {"class C { var x;\nvar x; }"}},
    {"t(1): Function 'f' already defined in class 'C'\n", {"class C { function f() {} function f() {} }"}},
};
// clang-format on

TEST(Parser, SaysWhatIsWrongAndLeavesNothing) {
    for (const auto* table : {&kTextErrors, &kModules})
        for (const FailingTexts& row : *table)
            for (const char* text : row.texts) {
                const auto parse = [&] { return table == &kModules ? ModuleErrorsOf(text) : ErrorsOf(text); };
                parse();  // and builds what is built once
                const Living living = Living::Now();
                EXPECT_EQ(parse(), row.errors) << text;
                EXPECT_EQ(Living::Now(), living) << text;
            }
}

TEST(Parser, ACheckRunsNothing) {
    ParserFixture fixture;
    fixture.engine.State().checkOnly = true;
    EXPECT_EQ(fixture.ParseModule("var x = nobody; var a[nobody]; class C { var m[x]; } var c as C; var x;"),
              "t(1): Symbol 'x' already defined.\n");
}

TEST(Parser, WrongKeywordsAreForcedCrashes) {
    ParserFixture fixture;
    CrashRecorder crashes;
    TIter<ScriptToken*> iter = fixture.Scan("print(1);");
    EXPECT_EQ(fixture.engine.ParseIterationStatement(iter), nullptr);
    EXPECT_EQ(fixture.engine.ParseJumpStatement(iter), nullptr);
    EXPECT_EQ(crashes.Messages(), (std::vector<std::string>{"Forced crash! \"Unknown iteration statement.\"",
                                                            "Forced crash! \"Unknown jump statement.\""}));
    EXPECT_EQ(fixture.messages.errors, "t(1): Invalid iteration statement.\n");
}

TEST(Parser, StatementsMayNestAThousandDeep) {
    const std::tuple<const char*, const char*, int> shapes[] = {{"{", "}", 999},
                                                                {"if (a) ", "", 999},
                                                                {"while (a) ", "", 999},
                                                                {"foreach (x in a) {", "}", 499},
                                                                {"if (a) {} else {", "}", 499}};
    const std::string inner = Repeat("(", 200) + "1" + Repeat(")", 200) + ";";
    for (const auto& [open, close, levels] : shapes) {
        EXPECT_EQ(ErrorsOf(Repeat(open, levels) + inner + Repeat(close, levels)), "") << open;
        EXPECT_EQ(ErrorsOf("print(1);" + Repeat(open, 1001) + "1;" + Repeat(close, 1001)),
                  "t(1): Statement nested too deeply.\n");
    }
}

}  // namespace
}  // namespace brenta::test
