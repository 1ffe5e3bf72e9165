// Statements and the evaluation of expressions.

#include "script/run_script.h"

namespace brenta::test {
namespace {

// clang-format off

TEST(Execute, Expressions) {
    static constexpr ScriptRow kRows[] = {
        {"({7 - 2 - 1, 2 + 3 * 4, (2 + 3) * 4, 7 / 2, 6 / 2, 2.0, 1 | 6 ^ 3 & 2, 1 << 33})",
         "={4, 14, 20, 3.5, 3, 2.0, 5, 2}"},
        {"({-5, +5, !5, ~5, !!5, 2 * -3, null == null, true && false || true})",
         "={-5, 5, false, -6, false, -3, false, true}"},
        {"({2147483647 + 1, 1073741824 * 1, \"a\" + 1 + 2.5, \"item9\" < \"item10\", {}})",
         "={-2147483648, 1073741824.0, \"a12.5\", true, null}"},
        {"({1, 2.5, \"a\", {true}, (2, 3), })", "={1, 2.5, \"a\", {true}, 2, 3}"},
        {"var l = {1} + {2}; var m = {1} 5; ({l, m})", "={{1, {2}}, {1, 5}}"},
        {"var zz = 3; 1 zz", "=1"},
        {"1 zz", "!Symbol 'zz' not defined. failed"},
        {"", "=null"},
        {"\n y + z", "!cmd:(2): Symbol 'y' not defined. failed"},
        {"var i = 1; i++", "!Illigal expression. failed"},
        {"1, 2", "!Illigal expression. failed"},
        {"1 else 2", "!Illigal expression. failed"},
        {"({, 1})", "!Missing left argument. failed"},
        {"({1, , 2})", "!Missing right argument. failed"},
        {"!null", "!Unknown var type. failed"},
        {"null && true", "!Unknown var type. failed"},
        {"\"a\" + {null}", "!Unknown var type. failed"},
    };
    CheckRows(kRows);
}

TEST(Execute, MembersAndSubscripts) {
    static constexpr char kModule[] =
        "class P { var x = 1; var y = 2; } class Q inherits P { var y = 20; var p as P; }"
        "var p as P; var q as Q; var l = {10, 20, 30}; var i = 1; var u;"
        "function f() { print(\"f\"); return 0; }";
    static constexpr ScriptRow kRows[] = {
        {"({l[0], l[i], l[i + 1], l[f()], p[\"y\"], p[0], q.y, q.p.x, Env.Version, Env.Nothing.x})",
         ">f ={10, 20, 30, 10, 2, 1, 2, 1, \"4.0\", null}"},
        {"q", "={x = 1, y = 2, y = 20, p = {x = 1, y = 2}}"},
        {"var r[2] as P; r[1].x = 5; r", "={{x = 1, y = 2}, {x = 5, y = 2}}"},
        {"l[3]", "!Subscript out of bounds for array 'l' failed"},
        {"l[-1]", "!Subscript out of bounds for array 'l' failed"},
        {"l[\"nobody's name\"]", "!Subscript not found for array 'l' failed"},
        {"q.p[\"z\"]", "!Subscript not found for array 'p' failed"},
        {"l[1.0]", "!Bad subscript for array 'l' failed"},
        {"l[]", "!Missing subscript 'l' failed"},
        {"i[f()]", "!Subscript on non-array 'i' failed"},
        {"Env.Nothing[0]", "!Expression does not evaluate to an object. failed"},
        {"p.z", "!Expression does not evaluate to an object. failed"},
        {"= .x", "!Missing  left member. failed"},
        {"u.x", "!Expression does not evaluate to an object. failed"},
        {"p.", "!Missing right member. failed"},
        {"p.(i + 1)", "!Missing right member. failed"},
    };
    CheckRows(kRows, kModule);
}

TEST(Execute, Statements) {
    static constexpr ScriptRow kRows[] = {
        {"1; 2; ; )", "=2"},
        {"5; var x = 1", "=null"},
        {"if (0) { 10; } else if (0) { 20; } else { 30; }", "=30"},
        {"if () { 10; } else { 20; }", "=20"},
        {"if (null) { 10; }", "!Unknown var type. failed"},
        {"return 7; break; continue; 8; return;", "=8"},
        {"{ 1; return 2; 3; }", "=2"},
        {"{ { 5 } { ; 6 } } return 7", "=7"},
        {"_halt 4", "=4"},
        {") 1) 2) ; 3 ) print(1)) 4", ">1 =4"},
        {"5 ]", "!Syntax error: expecting ';', but found ']' failed"},
        {"if (0) 1; else 2; 3", "=3"},
        {"if (1) if (0) 1; else 2;", "=2"},
        {"if (0) {} else while (0) if (0) 4; else 5; 6", "=6"},
        {"if (1) print(1); else 2;", ">1 !Illigal expression. failed"},
        {"{ if (1) } 2", "=2"},
        {"var a[3] = 4; a", "!Subscript out of bounds for array 'a' failed"},
        {"{ var x = 1; } x", "!Symbol 'x' not defined. failed"},
        {"{ var x = 1; var x = 2; }", "failed"},
        {"var x = 1; { var x = x + 1; x; }", "=null"},
        {"print(); print(1.5) print(true) print({1, {2, \"b\"}})", ">1.5 >1 >12b =null"},
        {"print(null)", "!Unknown var type. failed"},
        {"print(reflect)", "!Unknown var type. failed"},
        {"var a[2]; print(a)", "!Unknown var type. failed"},
        {"for (var i = 0; i < 3; i += 1) print(i); i", ">0 >1 >2 =3"},
        {"for (var i = 0; ; i += 1) { print(i); }", "=null"},
        {"for (var i = 0; i < 9; i += 1) { if (i < 2) { continue; } if (i == 4) { break; } print(i); }", ">2 >3 =null"},
        {"for (var i = y; i < 1; i += 1) { }", "!Symbol 'y' not defined. failed"},
        {"for (var i = 0; i < 1; y) { }", "!Symbol 'y' not defined. failed"},
        {"{ for (var i = 0; i < 1; i += 1) { print(i); } for (var i = 0; i < 1; i += 1) { } }", ">0 failed"},
        {"var n = 0; while (n < 3) n += 1; while () ; n = 9; n", "=3"},
        {"foreach (e in {1, {2}, \"c\"}) print(e); foreach (e2 in 5) { print(e2); }", ">1 >2 >c =null"},
        {"while (null) { }", "!Unknown var type. failed"},
        {"foreach (e in y) { }", "!Symbol 'y' not defined. failed"},
        {"foreach (e in {1, 2, 3}) { if (e == 2) { break; } print(e); } 7", ">1 =7"},
        {"var l = {1, 2}; foreach (e in l) { l += {e}; e = 9; } l", "={1, 2, 1, 2}"},
        {"foreach (e in {1}) { } e", "!Symbol 'e' not defined. failed"},
    };
    CheckRows(kRows);
}

TEST(Execute, ExecutedTexts) {
    static constexpr char kModule[] =
        "function half(x) { execute(\"return x / 2;\"); return 99; }"
        "function bare() { execute(\"5; return;\"); return 99; }"
        "function local() { var t = 1; execute(\"t = t + 1; var u = 5; inner();\"); return t; }"
        "function inner() { t = t * 10; }"
        "function loop() { while (true) { execute(\"break;\"); } return 3; }"
        "function global() { execute(\"1;\"); return 2; } var g = global(); var h = 4;";
    static constexpr ScriptRow kRows[] = {
        {"execute(\"print(1); 2\")", ">1 =2"},
        {"execute(null); execute(); execute(12)", "=12"},
        {"execute({null})", "!Unknown var type. failed"},
        {"execute(\"y\")", "!execute:(1): Symbol 'y' not defined. failed"},
        {"execute(\"1 + ;)\")", "!execute:(1): Syntax error: expecting ';', but found ')' failed"},
        {"execute(\"\n @\")", "!execute:(2): Syntax error. failed"},
        {"execute(\"foreach (e in {1}) { }\"); execute(\"foreach (e in {1}) { }\")", "=null"},
        {"{ execute(\"var y = 5; y\"); y; }", "!Symbol 'y' not defined. failed"},
        {"({half(8), bare(), local(), loop(), g + h})", "={4, null, 20, 3, 6}"},
    };
    CheckRows(kRows, kModule);
}

TEST(Execute, LongAndDeepTexts) {
    ScriptRun run;
    EXPECT_EQ(run.Execute("0" + Repeat(" + 1", 1'000'000)), "=1000000");
    EXPECT_EQ(run.Execute("var l = {" + Repeat("1,", 100'000) + "}; l += {2}; l[100000]"), "=2");
    EXPECT_EQ(run.Execute(Repeat("!", 100'000) + "0"), "=true");
    EXPECT_EQ(run.Execute(Repeat("l = ", 100'000) + "8"), "!Expression nested too deeply. failed");
}

// clang-format on

}  // namespace
}  // namespace brenta::test
