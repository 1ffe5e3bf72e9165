// What the register tier does by means of its own: locals in registers, frames, instructions for common
// cases. Each program must have the same outcome with locals in registers, with all names in cells, and as a
// tree.
#include <ctime>

#include "script/engine_state.h"
#include "script/run_script.h"

namespace brenta::test {

namespace {

enum class Form { Registers, Cells, Tree };

std::string OutcomeOf(const std::string& module, Form form) {
    ScriptRun run;
    run.engine.State().useRegisterTier = form != Form::Tree;
    run.engine.State().useRegisterLocals = form == Form::Registers;
    const std::string loaded = run.Load(module);
    return loaded == "=null" ? run.RunScript("Main", {}) : loaded;
}

struct Row {
    const char* module;
    const char* outcome;
};

void ExpectOutcomes(std::initializer_list<Row> rows) {
    for (const Row& row : rows)
        for (const Form form : {Form::Registers, Form::Cells, Form::Tree})
            EXPECT_EQ(OutcomeOf(row.module, form), row.outcome)
                << row.module << "\nform " << static_cast<int>(form);
}

}  // namespace

TEST(RegisterTier, LetsOthersSeeLocals) {
    ExpectOutcomes({
        {"function G() { return x; } function Main() { var x = 3; return G(); }", "=3"},
        {"function G() { x = x + 1; } function Main(){ var x = 3; G(); G(); return x; }", "=5"},
        {"function Main() { var x = 3; execute(\"x = x + 1;\"); return x; }", "=4"},
        {"function Main() { var x = 3; execute(\"return x;\"); return 0; }", "=3"},
        {"function Main() { var x = 3; { var x = 4; execute(\"x = 5;\"); } return x; }", "=3"},
        {"function Main() { var x = 1; execute(\"var x = 2;\"); return x; }",
         "!execute:(1): Symbol 'x' already defined. failed"},
        {"function G() { execute(\"x = x + y;\"); } function F(x) { var y = 2; G(); return x; }"
         " function Main() { var y = 9; return F(1) + y; }",
         "=12"},
        {"function F(n) { if (n == 0) { execute(\"n = 7;\"); return n; } return F(n - 1) + n; }"
         " function Main() { return F(3); }",
         "=13"},
        {"function Main() { for (var i = 0; i < 9; i += 1) { if (i == 4) execute(\"break;\"); } return i; }",
         "=4"},
        {"function Main() { var x = 1; return x + Env.Probe.Run(\"x = 5; x;\") + x; }", "=11"},
    });
}

TEST(RegisterTier, NamesThatAreNotDefined) {
    ExpectOutcomes({
        {"function Main() { foreach (x in y) { print(x); } }", "!m(1): Symbol 'y' not defined. failed"},
        {"function Main() { foreach (x in {1}) { foreach (z in y) { } } }",
         "!m(1): Symbol 'y' not defined. failed"},
        {"function Main() { nope(zz); }", "!m(1): Symbol 'nope' not defined. failed"},
        {"function Main() { nope(zz, 1); }", "!m(1): Symbol 'nope' not defined. failed"},
        {"function F(a) { } function Main() { F(zz); }", "!m(1): Symbol 'zz' not defined. failed"},
    });
}

/// Registers are shown to a factory that looks a name up, and back in their places afterwards.
TEST(RegisterTier, FactoriesMayLookNamesUp) {
    static CCoreScriptEngine* engine = nullptr;
    static bool hasFound = false;
    RegisterScriptableClass("LooksUp", [] {
        hasFound |= engine->GetSymbol(StrId("k"), false) != nullptr;
        return static_cast<CCoreScriptable*>(nullptr);
    });
    ScriptRun run;
    engine = &run.engine;
    EXPECT_EQ(run.Load("function Main() { var k = 3; var t as LooksUp; k = k + 1; return k; }"), "=null");
    EXPECT_EQ(run.RunScript("Main", {}), "=4");
    EXPECT_TRUE(hasFound);
}

TEST(RegisterTier, KeepsWhatHostsHaveBound) {
    ExpectOutcomes({
        {"function F(b) { Env.Probe.Run(\"var b = 5;\"); return b; } function Main() { return F(1); }", "=5"},
        {"function F(b) { { Env.Probe.Run(\"var b = 5;\"); } return b; } function Main() { return F(1); }",
         "=1"},
        {"function F() { Env.Probe.Run(\"var c = 1;\"); var c = 2; return c; } function Main() { return F(); "
         "}",
         "!m(1): Function call failed. failed"},
        {"function Main() { var x = 3; Env.Probe.Load(\"function Late() { x += 1; return x; }\");"
         " return Late() * 10 + x; }",
         "=44"},
        {"function F() { Env.Probe.Load(\"function Late() { return x; }\"); return Late(); }"
         " function Main() { var x = 3; var y = F(); return x + y; }",
         "=6"},
    });
}

TEST(RegisterTier, ReadsOperandsInOrder) {
    ExpectOutcomes({
        {"function Main() { return a + 1 % 0; }", "!m(1): Symbol 'a' not defined. failed"},
        {"function Main() { return 1 % 0 + a; }", "!m(1): Division by zero. failed"},
        {"function Main() { return G(1 % 0); }", "!m(1): Symbol 'G' not defined. failed"},
        {"function G() { x = 5; return 1; } function Main() { var x = 1; return x * 10 + G() + x; }", "=16"},
        {"function G() { f = H; return 1; } function H(a) { return 2; } function F(a) { return 3; }"
         " function Main() { var f = F; return f(G()) * 10 + f(0); }",
         "=32"},
        {"function G() { l = {9}; return 0; } function Main() { var l = {1}; return l[G()] * 10 + l[0]; }",
         "=19"},
        {"function G() { l = 3; return 0; } function Main() { var l = {1}; l[G()] = 2; return l; }",
         "!m(1): Assigning a scalar to a structure or list. !m(1): Function call failed. failed"},
    });
}

/// The time that a text takes deep in a recursion does not grow with the depth.
TEST(RegisterTier, ShowsLocalsDeepInARecursion) {
    const ScriptRow rows[] = {
        {"function F(n) { var x = n; if (n == 0) return 0; var r = F(n - 1); execute(\"x = x + 1\");"
         " return r + x - n; }",
         "=8000"},
        {"function F(n) { { var s = n; if (n > 0) { s = F(n - 1); } else { Env.Probe.Run(\"var z = 2\"); }"
         " execute(\"s += 1\"); return s; } }",
         "=8001"},
    };
    for (const ScriptRow& row : rows) {
        ScriptRun run(row.text);
        const std::clock_t start = std::clock();
        run.Execute("F(800)");
        const std::clock_t middle = std::clock();
        EXPECT_EQ(run.Execute("F(8000)"), row.told);
        EXPECT_LT(std::clock() - middle, (middle - start) * 30 + CLOCKS_PER_SEC / 20) << row.text;
    }
}

TEST(RegisterTier, CallsAsDeepAsMemoryAllows) {
    const std::string deep =
        "function D(n) { if (n == 0) { return 0; } return 1 + D(n - 1); } function F() { return F(); }";
    ScriptRun run(deep);
    EXPECT_EQ(run.Execute("D(100000)"), "=100000");
    EXPECT_EQ(run.Execute("F()"), "!m(1): Call stack overflow. failed");
    EXPECT_EQ(run.Execute("D(3)"), "=3");
    std::string many;
    for (int i = 0; i < 300; ++i)
        many += "var v" + std::to_string(i) + "; ";
    ScriptRun large("function D(n) { if (n < 0) { " + many +
                    "} if (n == 0) { execute(\"n = 1\"); return n; }"
                    " return 1 + D(n - 1); } function F() { if (1 == 0) { " +
                    many + "} return F(); }");
    EXPECT_EQ(large.Execute("D(10000)"), "=10001");
    EXPECT_EQ(large.Execute("F()"), "!m(1): Call stack overflow. failed");
}

}  // namespace brenta::test
