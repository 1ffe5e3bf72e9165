// Assignments: targets, compound operators, chains, copies, growth in place.

#include "script/run_script.h"

namespace brenta::test {
namespace {

constexpr char kModule[] =
    "class P { var x = 1; var l = {1, 2}; }"
    "var p as P; var a; var b; var l = {1, 2, 3}; var s = \"ab\"; var n = {{1, {2}}, 3};"
    "function swap() { l = {7, 8, 9}; return 0; } function shrink() { l = {7}; return 2; }"
    "function say(v) { print(v); return v; }";

// clang-format off

TEST(Assign, Targets) {
    static constexpr ScriptRow kRows[] = {
        {"(a) = 5; l[1] = 9; p.x = 9; p.l[1] = 9; p[\"x\"] += 1; Env.Version = 5; ({a, l, p, Env.Version})",
         "={5, {1, 9, 3}, {x = 10, l = {1, 9}}, 5}"},
        {"l[0] = l; p.l = {3}; ({l, p})", "={{{1, 2, 3}, 2, 3}, {x = 1, l = {3}}}"},
        // The right side first, then the target's indices, then the store; nothing dangles.
        {"l[say(0)] = say(5); l", ">5 >0 ={5, 2, 3}"},
        {"l[swap()] = 1; l", "={1, 8, 9}"},
        {"l[shrink()] = 1", "!Subscript out of bounds for array 'l' failed"},
        // Values are copied.
        {"a = l; a[0] = 9; b = p; b.x = 9; ({l, p.x})", "={{1, 2, 3}, 1}"},
        {"a = say; a(\"called\")", ">called =\"called\""},
        {"= 5", "!Missing l-value. failed"},
        {"a =", "!Missing r-value. failed"},
        {"y = 5", "!Symbol 'y' not defined. failed"},
        {"y = z", "!Symbol 'z' not defined. failed"},
        {"5 = a", "!Expression does not evaluate to an object. failed"},
        {"say = 6", "!Expression does not evaluate to an object. failed"},
        {"swap().x = 6", "!Expression does not evaluate to an object. failed"},
        {"p.z = 6", "!Expression does not evaluate to an object. failed"},
        {"Env.Nothing.x = 1", "!Expression does not evaluate to an object. failed"},
        {"p.(1 + 1) = 6", "!Missing right member. failed"},
        {"l[] = 6", "!Missing subscript 'l' failed"},
        {"s[0] = 6", "!Subscript on non-array 's' failed"},
        {"l = 5", "!Assigning a scalar to a structure or list. failed"},
        {"p.l = {}", "!Assigning a scalar to a structure or list. failed"},
        {"l += 4", "!Assigning a scalar to a structure or list. failed"},
    };
    CheckRows(kRows, kModule);
}

TEST(Assign, CompoundOperators) {
    static constexpr ScriptRow kRows[] = {
        {"a = 6; a *= 7; a -= 2; a /= 16; a", "=2.5"},
        {"a = 7; a %= 4; a <<= 3; a >>= 1; a ^= 5; a |= 16; a &= 27; a", "=25"},
        {"l += {4, 5}; l += l; s += s; s += 1; ({l, s})", "={{1, 2, 3, 4, 5, 1, 2, 3, 4, 5}, \"abab1\"}"},
        {"p.x += 1; p.x *= 10; p.l += {p}; p", "={x = 20, l = {1, 2, {x = 20, l = {1, 2}}}}"},
        {"n[0] += n; l[0] += 5; l[1] -= l[0]; ({n, l})", "={{{1, {2}, {1, {2}}, 3}, 3}, {6, -4, 3}}"},
    };
    CheckRows(kRows, kModule);
}

TEST(Assign, Chains) {
    static constexpr ScriptRow kRows[] = {
        {"var c = 1; a = b = c = 2; ({a, b, c})", "={2, 2, 2}"},
        {"b = a = l[0] = 5; ({a, b, l})", "={5, 5, {5, 2, 3}}"},
        {"a = 1; b = 2; a += b = 5; ({a, b})", "={8, 5}"},
        {"a = (b = 3) + 1; ({a, b, (a = 2) + a})", "={4, 3, 4}"},
        // The first pass assigns for real, and its type errors are real.
        {"a = l = {1}; a", "={1}"},
        {"l = a = {1}", "!Assigning a scalar to a structure or list. failed"},
        {"a = y = 4", "!Symbol 'y' not defined. failed"},
    };
    CheckRows(kRows, kModule);
    ScriptRun run(kModule);
    // The inner assignment is carried out before the outer one finds no place.
    EXPECT_EQ(run.Execute("b = 1; a = b + 2 = 4"), "!Expression does not evaluate to an object. failed");
    EXPECT_EQ(run.Execute("a"), "=3");
    EXPECT_EQ(run.Execute(Repeat("a = ", 20) + "7; a"), "=7");
    EXPECT_EQ(run.Execute(Repeat("a = ", 21) + "8"), "!Expression nested too deeply. failed");
}

TEST(Assign, Properties) {
    static constexpr RequestRow kRows[] = {
        {"o.name = 7", "=7", "2 name 7;"},
        {"o.name += 7", "=12", "1 name;2 name 12;"},
        {"a = o.name = 7; a", "=7", "1 name;2 name 7;1 name;"},
        {"o.name = a = 7; o.name", "=7", "2 name null;2 name 7;1 name;"},
        {"o.self.self.name = 3", "=3", "1 self;1 self;2 name 3;"},
        {"o.other = 7", "failed", "2 other 7;"},
        {"o.other += 7", "failed", "1 other;"},
        {"o.name %= 0", "!Division by zero. failed", "1 name;"},
        {"o[4]", "=8", "1  4;"},
        {"o[4] = 1", "!Expression does not evaluate to an object. failed", "1  4;"},
        {"o.list[1]", "=2", "1 list;"},
        {"o.list[1] = 5", "!Expression does not evaluate to an object. failed", "1 list;"},
        {"a = {0}; a[0] = o; a[0].name", "=5", "1 name;"},
        {"o = 5; o", "=5", ""},
    };
    CheckRequests(kRows);
}

TEST(Assign, GrowthInPlaceShowsNowhere) {
    static constexpr ScriptRow kRows[] = {
        {"a = s; s = s + \"c\" + 1; b = l; l = l + 4; ({s, a, l, b})", "={\"abc1\", \"ab\", {1, 2, 3, 4}, {1, 2, 3}}"},
        {"s = s + s + s; s = s + {1} + s; s", "=\"ababab{1}\nababab\""},
        {"s = s + (s = \"x\"); s", "=\"abx\""},
        {"l = l + l; l", "={1, 2, 3, {1, 2, 3}}"},
        {"l = l + swap() + 1; l", "={1, 2, 3, 0, 1}"},
        {"foreach (e in l) { l = l + e; } l", "={1, 2, 3, 1, 2, 3}"},
        {"p.l += p.l; p.l = p.l + 5; p.l", "={1, 2, 1, 2, 5}"},
    };
    CheckRows(kRows, kModule);
    // What fails leaves the variable as it was.
    ScriptRun run(kModule);
    EXPECT_EQ(run.Execute("s = s + \"c\" + {null}"), "!Unknown var type. failed");
    EXPECT_EQ(run.Execute("s = s + \"c\" + y"), "!Symbol 'y' not defined. failed");
    EXPECT_EQ(run.Execute("l = l + 4 + y"), "!Symbol 'y' not defined. failed");
    EXPECT_EQ(run.Execute("({s, l})"), "={\"ab\", {1, 2, 3}}");
}

// clang-format on

TEST(Assign, GrowthIsLinear) {
    // A copy for every turn would take minutes.
    ScriptRun run;
    EXPECT_EQ(run.Execute("var s = \"\"; for (var i = 0; i < 200000; i += 1) { s = s + \"ab\" + \"cd\"; }"
                          "var l = {0}; for (var k = 0; k < 200000; k += 1) { l = l + k; }"
                          "var o = {{0}}; for (var m = 0; m < 200000; m += 1) { o[0] += {m}; }"
                          "l[200000] + 1"),
              "=200000");
}

}  // namespace
}  // namespace brenta::test
