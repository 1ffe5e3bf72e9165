// Calls: script functions, host objects, intrinsic methods, classes, depth.

#include "brenta/names.h"
#include "script/run_script.h"

namespace brenta::test {
namespace {

// clang-format off

TEST(Call, Functions) {
    static constexpr char kModule[] =
        "var x = 1; function none() { } function five() { return 5; } function slot() { 5; } function bare() { 5; return; }"
        "function fib(n) { if (n < 2) { return n; } return fib(n - 1) + fib(n - 2); }"
        "function even(n) { if (n == 0) { return true; } var r = odd(n - 1); return r; }"
        "function odd(n) { if (n == 0) { return false; } var r = even(n - 1); return r; }"
        "function count(n) { var t; if (n > 0) { t = n; count(n - 1); } return t; }"
        "function fresh() { var a[2]; a[0] = 1; return a; } function change(l) { l[0] = 9; return l; }"
        "function outer() { var x = 5; return seen(); } function seen() { return x; }"
        "function hide() { var fib = 1; return fib + 1; } function pass(f, v) { return f(v); }"
        "function left(v) { print(v); return true; } function right(v) { print(v); return false; }"
        "function brk() { break; } function cont() { while (1) { inner(); } } function inner() { continue; }"
        "function bad() { return nobody; } function reads() { x = 7; return 0; }";
    static constexpr ScriptRow kRows[] = {
        {"({none(), slot(), bare(), fib(20), even(7), count(3), fresh(), fresh()})",
         "={null, null, null, 6765, false, 3, {1, null}, {1, null}}"},
        {"var l = {1}; change(l); ({l, outer() + x, hide(), pass(fib, 10), x + reads() + x})", "={{1}, 6, 2, 55, 8}"},
        {"var f = fib; var s = {five}; ({f(10), fib, s[0]})", "={55, function fib, function five}"},
        {"left(1) || right(2)", ">1 >2 =true"},
        {"five(1)", "!RunScript:function 'five' has 0 parameters, but 1 were supplied. !Function call failed. failed"},
        {"fib(1,)", "!Missing right argument. failed"},
        {"fib(nobody)", "!Symbol 'nobody' not defined. failed"},
        {"bad()", "!m(1): Symbol 'nobody' not defined. !Function call failed. failed"},
        {"brk()", "!RunScript:Misplaced 'break' statement. !Function call failed. failed"},
        {"cont()", "!RunScript:Misplaced 'continue' statement. !m(1): Function call failed. !Function call failed. failed"},
        {"(1)(2)", "=2"},
        {"nobody()", "!Symbol 'nobody' not defined. failed"},
        {"x(1)", "!IntrinsicFunction:Unrecognized intrinsic function. !Function call 'x' failed. failed"},
        {"1 five()", "!IntrinsicFunction:Unrecognized intrinsic function. !Function call failed. failed"},
    };
    CheckRows(kRows, kModule);
}

TEST(Call, Objects) {
    static constexpr RequestRow kRows[] = {
        {"Env.Probe.self.Sum(1, 2.5, \"3\")", "=6", "1 self;3 Sum 1 2.5 \"3\";"},
        {"o.Sum(o.Sum(1), o.Sum({2}))", "=1", "3 Sum 1;3 Sum {2};3 Sum 1 0;"},
        {"o.Unknown(1)", "!Function call 'Unknown' failed. failed", "3 Unknown 1;"},
        {"o.unknown", "failed", "1 unknown;"},
        {"o.Sum(nobody)", "!Symbol 'nobody' not defined. failed", ""},
        {"o(1)", "!Function call 'o' failed. failed", "3 o 1;"},
        {"Env.Nothing.Sum(1)", "!RunScript:Symbol 'Sum' is set to a valid object. !Function call 'Sum' failed. failed", ""},
        {"a = {0}; a[0] = o; a[0].Sum(4)", "=4", "3 Sum 4;"},
        {"reflect(o)", "> = 13\n =null", "4 ;"},
    };
    CheckRequests(kRows);
}

// clang-format on

TEST(Call, ObjectsMayComeBack) {
    ScriptRun run(
        "var o = Env.Probe; function f(v) { var t = v; o.Run(\"t = t + 1; 5\"); return t; }"
        "function g() { return o.Run(\"var q = 4; nobody\"); } function h() { g(); return 1; }"
        "function load() { var late = 1; o.Load(\"var global = 6; function late2() { return global; }\");"
        " return late2() + late; }"
        "function back() { o.Run(\"back()\"); }"
        "function below(v) { o.Load(\"class K { var m = 1; } function g2(a) { return a + v; } var v = 7;\");"
        " return {g2(1), v}; }");
    EXPECT_EQ(run.Execute("f(1)"), "=2");
    // What a host binds ends with the block that called it, also when that block binds nothing itself.
    EXPECT_EQ(run.Execute("var n = 0; while (n < 2) { o.Run(\"var w = 1;\"); { n += w; } } n"), "=2");
    EXPECT_EQ(run.Execute("w"), "!Symbol 'w' not defined. failed");
    EXPECT_EQ(run.Execute("back()"), "!RunScript:Call stack overflow. failed");
    EXPECT_EQ(run.Execute("o.Run(\"1 + 2\") + o.Run(\"10mil\")"), "=100003");
    EXPECT_EQ(
        run.Execute("g()"),
        "!Symbol 'nobody' not defined. !m(1): Function call 'Run' failed. !Function call failed. failed");
    EXPECT_EQ(run.Execute("load()"), "=7");
    EXPECT_EQ(run.Execute("late2()"), "=6");
    EXPECT_EQ(run.Execute("below(20)"), "={21, 20}");
    EXPECT_EQ(run.Execute("var k as K; g2(k.m)"), "=8");
    // A global is there though a local of its name stands in front of it.
    EXPECT_EQ(run.Execute("{ var global = 1; o.Load(\"var global = 7;\"); }"),
              "!loaded(1): Symbol 'global' already defined. !Function call 'Load' failed. failed");
    EXPECT_EQ(run.Execute("global"), "=6");
    EXPECT_EQ(run.Execute("o.Run(\"5mil\"); 10", kMils), "=100000");
    // Each of the nested runs knows its own input and tokens.
    EXPECT_EQ(run.Load("var before = o.Run(\"2 ;\"); var after = before + 1;"), "=null");
    EXPECT_EQ(run.Execute("after"), "=3");
}

// clang-format off

TEST(Call, Round) {
    static constexpr ScriptRow kRows[] = {
        {"var x = 1.13; var y = -1.2; var z = -1.6; ({x.Round(0.25), y.Round(1), z.Round(1), z.Round(\"2\")})",
         "={1.25, 0.0, -1.0, 0.0}"},
        {"var x = true; var y = 100000; ({x.Round(2), y.Round(0.00000001)})", "={2.0, -21.474836}"},
        {"var x = 1; x.Round(0)", "!IntrinsicFunction:Round argument must be greater than 0. !Function call 'Round' failed. failed"},
        {"var x = 1; x.Round()", "!IntrinsicFunction:Round takes 1 argument. !Function call 'Round' failed. failed"},
        {"var x = \"1\"; x.Round(1)", "!IntrinsicFunction:Unrecognized intrinsic function. !Function call 'Round' failed. failed"},
        {"var x = 1; x.Floor(1)", "!IntrinsicFunction:Unrecognized intrinsic function. !Function call 'Floor' failed. failed"},
    };
    CheckRows(kRows);
}

// clang-format on

TEST(Call, Classes) {
    static int created = 0;
    RegisterScriptableClass("TestProbe", []() -> CCoreScriptable* { return ++created, new Probe; });
    static constexpr char kModule[] =
        "class A { var a = 1; var b = a + 1; }"
        "class B inherits A { var c = b * 10; var n as A; var l[2]; }"
        "class C { var o as TestProbe; }"
        "class Bad { var x = nobody; }"
        "function make() { var v as B; v.n.a += 1; return v; }";
    static constexpr ScriptRow kRows[] = {
        {"var v as A; v", "={a = 1, b = 2}"},
        {"var v as B; v", "!m(1): Symbol 'b' not defined. failed"},
        {"var b = 4; make(); make()", "={a = 1, b = 2, c = 40, n = {a = 2, b = 2}, l = {null, null}}"},
        {"var v[2] as A; v[1].a = 5; v", "={{a = 1, b = 2}, {a = 5, b = 2}}"},
        {"var v as Bad; v", "!m(1): Symbol 'nobody' not defined. failed"},
        {"var v as C; var w[2] as TestProbe; ({v.o, w})", "={object, {object, object}}"},
        {"var v as A = {7}; ({v, A})", "={{7}, {a = null, b = null}}"},
    };
    CheckRows(kRows, kModule);
    ScriptRun run;
    created = 0;
    run.Execute("for (var i = 0; i < 5; i += 1) { var p as TestProbe; }");
    EXPECT_EQ(created, 6);  // one for the declaration, one for each execution
}

TEST(Call, Interruption) {
    ScriptRun run("function spin() { while (1) { } } function twice() { return 1; }");
    run.engine.RequestStop();
    EXPECT_EQ(run.Execute("1 + 1"), "=2");
    EXPECT_EQ(run.Execute("\n\ntwice()"), "!cmd:(3): Script interrupted. failed");
    EXPECT_EQ(run.Execute("twice()"), "=1");
    run.engine.RequestStop();
    run.engine.ClearStop();
    EXPECT_EQ(run.Execute("twice()"), "=1");
    run.engine.RequestStop();
    EXPECT_EQ(run.Execute("foreach (e in {1, 2}) { print(e); }"), ">1 !Script interrupted. failed");
    std::thread stopper([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        run.engine.RequestStop();
    });
    EXPECT_EQ(run.RunScript("spin", {}), "!m(1): Script interrupted. failed");
    stopper.join();
}

}  // namespace
}  // namespace brenta::test
