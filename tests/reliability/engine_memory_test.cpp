// Each allocation of a run fails in turn: the run says so and fails, and the engine works as before.
#include "reliability/faults.h"
#include "script/engine_state.h"
#include "script/run_script.h"

namespace brenta::test {
namespace {

/// Runs Main, in which an allocation fails unless there are fewer. False if there were.
bool RunsOutAfter(long count, FaultOf kind, const ScriptRow& row, bool asTree) {
    ScriptRun run(row.text);
    run.engine.State().useRegisterTier = !asTree;
    std::string told;
    bool ranOut;
    {
        const Fault fault(kind, count, false);
        try {
            told = run.RunScript("Main", {});
        } catch (const std::bad_alloc&) {
            told = "Out of memory.";  // where the test itself needed some
        }
        ranOut = fault.HasStruck();
    }
    EXPECT_TRUE(told == row.told || told.find("Out of memory.") != std::string::npos) << told;
    EXPECT_EQ(run.engine.GetScopeDepth(), 1) << count;
    EXPECT_TRUE(run.RunScript("Main", {}).ends_with(row.told)) << asTree << ' ' << count;
    return ranOut;
}

}  // namespace

TEST(OutOfMemory, EndsTheRunAndNothingElse) {
    const ScriptRow rows[] = {
        {R"(function G() { return x + 1; }
            function F(n) { var x = n; var s = "t" + n; if (n > 0) return F(n - 1) + G();
                            execute("x = x + 1; s = s + x;"); Env.Probe.Run("var y = 5;"); return x; }
            function Main() { foreach (e in {1}) { var l = {e}; execute("l = l + 1;"); } return F(5) + 1; })",
         "=22"},
        {R"(var g = 0;
            class P { var a = 1; var b = {0}; }
            function Late() { g += 1; Env.Probe.Load("function Z" + g + "() { return u" + g + "; }"); }
            function C(n) { var p as P; p.a = n; { var h = p;
                            if (n > 0) { h = C(n - 1); Env.Probe.Run("var z = 1;"); } else Late();
                            p.b = {h.a}; } return p; }
            function Main() { var u1 = 1; var u2 = 2; var r = C(3); return {r.a, u1, u2}; })",
         "={3, 1, 2}"},
    };
    for (const ScriptRow& row : rows)
        for (const auto& [kind, asTree] : {std::pair(FaultOf::Memory, false),
                                           {FaultOf::Memory, true},
                                           {FaultOf::Heap, false},
                                           {FaultOf::Heap, true}})
            for (long count = 0; !HasFailure() && RunsOutAfter(count, kind, row, asTree);)
                ++count;
}

}  // namespace brenta::test
