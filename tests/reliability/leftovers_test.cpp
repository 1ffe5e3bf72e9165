// Nothing is left of what a script began before it failed.
#include "reliability/living.h"
#include "script/script_test_support.h"
#include "script/statement_count.h"

namespace brenta::test {
namespace {

constexpr const char kStopped[] = "while (1) { }";

bool Runs(ParserFixture& fresh, const char* text, bool isModule) {
    if (isModule) return fresh.engine.InjectScript("m", text);
    if (text == kStopped) fresh.engine.RequestStop();
    Var result;
    return fresh.engine.Execute(text, result, kUnitsNone);
}

TEST(Leftovers, OfAFailedScriptThereAreNone) {
    static constexpr struct {
        const char* text;
        const char* error;
        bool isModule = false;
    } kRows[] = {
        {"(1 + {2}", "expecting ')'"},
        {"{ var x = {1}; nobody(x); }", "Symbol 'nobody' not defined."},
        {"{ var t = \"t\"; execute(\"{ var u = t; u = \"); }", "Unexpected end-of-file."},
        {"{ var t = \"execute(t);\"; execute(t); }", "Call stack overflow."},
        {"Env.StdLib.Nothing(1)", "Function call 'Nothing' failed."},
        {"foreach (e in {1, 2}) { { var y = 1 % 0; } }", "Division by zero."},
        {"{ var s = \"12345678\"; while (1) s += s; }", "String too long."},
        {"{ var l = {1}; while (1) l = {l, l}; }", "List too large."},
        {"{ var l = {0}; while (1) l = {l}; }", "List nested too deeply."},
        {kStopped, "Script interrupted."},
        {"include \"nothing\"", "Failed to open source file"},
        {"function F( { }", "Syntax error", true},
        {"function F() { var a = {1, 2}; if (a) { print(a ", "Syntax error", true},
        {"class C { var a = 1; var b = ", "Unexpected end-of-file.", true},
        {"class C { var a[2000000000]; }", "List too large.", true},
        {"function F() { return 1 + 5@; }", "Syntax error.", true},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        const long others = CountStatements();
        ParserFixture fresh;
        EXPECT_EQ(others, 1) << "that of the engine for lengths, which declares Env.StdLib";
        EXPECT_FALSE(Runs(fresh, row.text, row.isModule));  // and builds what is built once
        fresh.messages.TakeErrors();
        const Living living = Living::Now();
        EXPECT_EQ(living.statements - others, 1) << "the same of this engine";
        EXPECT_FALSE(Runs(fresh, row.text, row.isModule));
        EXPECT_NE(fresh.messages.errors.find(row.error), std::string::npos) << fresh.messages.errors;
        fresh.messages.TakeErrors();
        EXPECT_EQ(Living::Now(), living);
    }
}

}  // namespace
}  // namespace brenta::test
