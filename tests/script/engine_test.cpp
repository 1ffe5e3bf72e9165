// The engine as a host sees it: environment, modules, commands, calls, and its state after failures.

#include <fstream>

#include "brenta/names.h"
#include "script/engine_state.h"
#include "script/operator_rows.h"
#include "script/run_script.h"

namespace brenta::test {
namespace {

TOrderedList<Var> Arguments(std::initializer_list<Var> values) {
    return rows::List(values).GetList();
}

TEST(Engine, Environment) {
    RecordingStream stream;
    TOrderedList<Var> values =
        Arguments({Var(1, StrId("a")), Var(2, StrId("b")), Var(3, StrId("a")), Var(4, StrId("c"))});
    CCoreScriptEngine engine(values, &stream);
    EXPECT_EQ(stream.errors, "SetEnvironmentBlock:'a' already defined in environment.\n");
    Var result;
    EXPECT_TRUE(engine.Execute("Env", result, kUnitsNone));
    EXPECT_EQ(Describe(result), "{a = 1, b = 2}");

    CCoreScriptEngine silent({}, nullptr);
    ASSERT_NE(silent.GetMsgStream(), nullptr);
    EXPECT_FALSE(silent.Execute("nobody", result, kUnitsNone));
    EXPECT_TRUE(silent.Execute("Env.StdLib", result, kUnitsNone));
    EXPECT_NE(result.GetRef(), nullptr);
}

TEST(Engine, CommandsInUnits) {
    static constexpr std::tuple<const char*, CoreUnits, const char*> kRows[] = {
        {"10", kInches, "=100000000"},
        {"-10", kMillimeters, "=-3937007"},
        {"2; 1mm", kMils, "=393700"},
        {"\"2.5\"", kMils, "=25000"},
        {"", kMils, "=0"},
    };
    for (const auto& [text, units, told] : kRows)
        EXPECT_EQ(ScriptRun().Execute(text, units), told) << text;
    ScriptRun run;
    CrashRecorder crashes;
    EXPECT_EQ(run.Execute("7", static_cast<CoreUnits>(9)), "=7");
    EXPECT_EQ(crashes.Messages(), std::vector<std::string>{"Forced crash! \"Unknown UnitType\""});
}

/// Whichever engine calls it first, a function works where it was parsed, and nowhere else.
TEST(Engine, FunctionsStayWithTheirEngine) {
    for (const char* name : {"twice", "reflect"}) {
        ScriptRun run("var g = 2; function twice(a) { print(a * g); }");
        ScriptRun other("var g = 3;");
        Var function;
        ASSERT_TRUE(run.engine.Execute(name, function, kUnitsNone));
        const TOrderedList<Var> five = Arguments({Var(5, kNoName)});
        const std::string refusal = std::string("!RunScript:Symbol '") + name + "' is not a function. failed";
        EXPECT_EQ(other.Call(function, five), refusal);
        EXPECT_NE(run.Call(function, five), refusal);
        EXPECT_EQ(run.Execute("twice(4)"), ">8 =null");
    }
}

TEST(Engine, CallsOfTheHost) {
    ScriptRun run(
        "var v = 5; class C { } function add(a, b) { return a + b; } function ref() { return add; }");
    const TOrderedList<Var> one = Arguments({Var(4, StrId("x"))});
    const TOrderedList<Var> two = Arguments({Var(2, StrId("x")), Var("3", kNoName)});
    EXPECT_EQ(run.RunScript("add", two), "=\"23\"");
    EXPECT_EQ(run.RunScript("add", one),
              "!RunScript:function 'add' has 2 parameters, but 1 were supplied. failed");
    EXPECT_EQ(run.RunScript("Missing", {}), "!RunScript:function 'Missing' not defined. failed");
    EXPECT_EQ(run.RunScript("Missing", {}, true), "failed");
    EXPECT_EQ(run.RunScript(nullptr, {}), "!RunScript:function '' not defined. failed");
    EXPECT_EQ(run.RunScript("v", {}), "!RunScript:'v' is not a function. failed");
    EXPECT_EQ(run.RunScript("C", {}, true), "failed");
    EXPECT_EQ(run.RunScript("reflect", Arguments({Var(two, kNoName)})), ">2\n3\n =null");

    Var function;
    ASSERT_TRUE(run.engine.RunScript("ref", function, {}, false));
    EXPECT_EQ(run.Call(function, two), "=\"23\"");
    function = static_cast<void*>(run.engine.GetSymbol(StrId("v"), false));
    EXPECT_EQ(run.Call(function, {}), "!RunScript:Symbol 'v' is not a function. failed");
    function = static_cast<void*>(nullptr);
    EXPECT_EQ(run.Call(function, {}), "!RunScript:Symbol '' is not a function. failed");
    function.SetName(StrId("v"));
    EXPECT_EQ(run.Call(function, {}), "!RunScript:Symbol 'v' is set to a valid object. failed");
    EXPECT_EQ(run.Call(Var(&run.probe, StrId("Sum")), one), "=4");
    EXPECT_EQ(run.Call(Var(&run.probe, StrId("No")), {}), "failed");
    EXPECT_EQ(run.Call(Var(7, StrId("Round")), one), "=8.0");
    EXPECT_EQ(run.Call(Var(7, kNoName), {}), "!IntrinsicFunction:Unrecognized intrinsic function. failed");
}

TEST(Engine, HostSeesAndChangesValues) {
    ScriptRun run("var v = 5; function look() { var v = 6; return Env.Probe.Run(\"v\"); }");
    auto* const symbol = static_cast<ScriptSymbol*>(run.engine.GetSymbol(StrId("v"), false));
    EXPECT_EQ(Describe(symbol->GetValue()), "5");
    symbol->SetValue(Var("new", kNoName));
    EXPECT_EQ(run.Execute("v"), "=\"new\"");
    EXPECT_EQ(run.Execute("v = 8; look()"), "=6");
    Var deep = rows::List({});
    for (int i = 0; i < 1000; ++i)
        deep = rows::List({deep});
    EXPECT_FALSE(symbol->SetValue(deep));
    EXPECT_EQ(Describe(symbol->GetValue()), "8");
    run.Execute("Env.Probe.name");
    ASSERT_NE(run.probe.context, nullptr);
    EXPECT_TRUE(run.probe.context->IsEmpty());
}

TEST(Engine, Modules) {
    ScriptRun run;
    EXPECT_EQ(run.Load("function f() { return 1; }"), "=null");
    EXPECT_EQ(run.Load("function f() { }"), "!m(1): Symbol 'f' already defined. failed");
    EXPECT_EQ(run.Load("var a = 1;\nvar b = nobody;\nvar c = 3;"),
              "!m(2): Symbol 'nobody' not defined. failed");
    EXPECT_EQ(run.Execute("a"), "=1");
    EXPECT_EQ(run.Execute("c"), "!Symbol 'c' not defined. failed");
    EXPECT_EQ(run.Load("var d = 1;\n @"), "!m(2): Syntax error. failed");
    EXPECT_EQ(run.Load("include"), "!m(1): Syntax error. failed");
    EXPECT_EQ(run.Load(""), "=null");
    EXPECT_FALSE(run.engine.LoadScriptModule("no such file.scr"));
    EXPECT_NE(run.Execute("f()").find("Failed to open source file"), std::string::npos);

    const Scratch scratch;
    const std::string path = scratch / "file.scr";
    std::ofstream(path) << "var fromFile = 1 +\n    2;\nfunction g() { return h; }";
    EXPECT_TRUE(run.engine.LoadScriptModule(path.c_str()));
    EXPECT_EQ(run.Execute("fromFile"), "=3");
    EXPECT_EQ(run.Execute("g()"), "!" + path + "(3): Symbol 'h' not defined. !Function call failed. failed");
}

TEST(Engine, CommandsLeaveNothingBehind) {
    ScriptRun run;
    run.Execute("var q = 4; var text = \"var t = 1; foreach (e in {1}) { var u = t; }\";");
    const std::size_t symbols = run.engine.State().symbols.size();
    EXPECT_EQ(run.Execute("for (var i = 0; i < 100; i += 1) { execute(text); { var t = q; } } q"), "=4");
    EXPECT_EQ(run.engine.State().symbols.size(), symbols + 1);  // i
}

}  // namespace
}  // namespace brenta::test
