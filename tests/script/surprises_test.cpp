#include "script/surprises.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace brenta {
namespace {

/// "line: text" of each warning.
std::string WarningsOf(const std::string& text) {
    static CCoreScriptLexer lexer(false, false);
    lexer.FlushTokens();
    EXPECT_TRUE(lexer.InjectScriptText("m", text.c_str(), true)) << text;
    TOrderedList<ScriptWarning> warnings;
    FindSurprises(lexer.GetFirstToken(), warnings);
    std::string all;
    for (const ScriptWarning& warning : warnings) {
        EXPECT_STREQ(StrPtr(warning.position.file), "m");
        all += std::to_string(warning.position.line) + ": " + warning.text() + "\n";
    }
    return all;
}

// clang-format off
// Statements of a function, and a fragment of the one warning.
const std::pair<const char*, const char*> kRows[] = {
    {"x = 2 * -3;", "'* (-x)'"}, {"x = 5 - -2;", "'- (-x)'"}, {"x = 6 / +y;", "'/ (+x)'"}, {"x = !!y;", "'! (!x)'"},
    {"x = ~-1;", "'~ (-x)'"}, {"x = -~y; x = !~y;", "'! (~x)'"},
    {"i++;", "'x = x + 1'"}, {"x = --i;", "There is no '--'"},
    {"x = 5mils;", "no plural"}, {"x = 12 mil;", "directly behind"}, {"x = 12 in;", "directly behind"},
    {"x = 1.5 mm;", "directly behind"}, {"x = 5e3;", "no exponent"}, {"x = 1 1/8;", "side by side"},
    {"x = y z;", "side by side"}, {"x = 1\ny = 2;", "side by side"}, {"x = (1+2) (10+4);", "Only a name"},
    {"x = f(1)(2);", "Only a name"}, {"x = a[0](1);", "Only a name"}, {"x = {1} {2};", "side by side"},
    {"x = \"a\\\"b;", "escape"}, {"print(\"a\\n\");", "escape"}, {"do { f(); }", "side by side"},
    {"x = a[1][2];", "follow a name"}, {"x = f(1)[0];", "follow a name"}, {"x = [1, 2];", "braces"},
    {"x = 1/8in;", "nearly 0"}, {"x = y + 1/8in;", "nearly 0"}, {"f(3 / 2mm);", "nearly 0"},
    {"x = 10mil + 1;", "Give it a unit"}, {"x = 1.5 - 1mm;", "Give it a unit"},
    {"x = 300in;", "too large"}, {"x = 99999999999;", "too large"}, {"x = 0x;", "'0x'"}, {"x = 0b;", "'0b'"},
    {"x = '';", "character"}, {"x = null == y;", "null on the left"}, {"x = {};", "empty list"}, {"f({}, 1);", "empty list"},
    {"if (c) print(1); else x = 2;", "ends the 'if'"}, {"if (c) { x = 1; }; else x = 2;", "ends the 'if'"},
    {"if (c) execute(t); else x = 2;", "ends the 'if'"}, {"if (c) x = 1;; else x = 2;", "ends the 'if'"},
    {"while (x < 3); x = x + 1;", "'while'"}, {"for (i = 0; i < 3; i = i + 1); f();", "'for'"},
    {"if (c); f();", "'if'"}, {"if (c) f(); else; g();", "'else'"},
    {"while () f();", "is false"}, {"for (i = 0; ; i = i + 1) f();", "never runs"}, {"for (; i < 3; i = i + 1) f();", "left out"},
    {"var a = 1, b = 2;", "one variable"}, {"var a, b;", "one variable"}, {"var a[2] = {1, 2};", "out of bounds"},
    {"for (var i = 0; i < 2; i = i + 1) {} for (var i = 0; i < 2; i = i + 1) {}", "second 'var i'"},
    {"var a; var a = 2;", "second 'var a'"}, {"var l = {1}; l += 4;", "holds a list"}, {"var l[3]; if (c) l = 0;", "holds a list"},
    {"/* sum of f(x) */ x = 1;", "no comment"},
    {"x = i < n && a[i] > 2;", "test of 'i'"}, {"x = o != null && o.width > 2;", "test of 'o'"},
    {"if (o == null || o.Empty()) f();", "test of 'o'"}, {"x = y && o && f(o);", "test of 'o'"},
    {"x = l && l[0] == 1;", "test of 'l'"},
};

const char kGoodScript[] = R"(
include_not = 1;
class Base { var name = "C:\parts\new"; var size = -1; }
class Pad inherits Base { var drill = 0.9mm; var items[2] as Base; }
var total = 0;
function Half(x) { return x / 2; }
function Main(a, list, o)
{
    var x = -1; var y = (a - 1) * (-2); var z = a < -1; x = a == -b; x = 1 << -1; x = {-1, -2}; x = f(-1, !a); x = a && !b;
    x = -!a; return -1;
    x = 10mil + 5mil; x = a / 1mil + 1; x = 1mm * 2 + 3 * 4mm; x = 10mil - 2 * a; x = 1in / 8; x = 5in / 8in; x = a * 100 / 1mm;
    x = 1mil > 0; x = 10mil + 0; x = (a + 1).Round(1mil); x = 1 + 10mil / 1mil;
    if (a) x = 1; else if (b) { print(1); } else print(2);
    if (a) print(1) else print(2);
    if (a) { } else { x = 1; }
    if (a) break; else continue;
    while (a < 3) { a = a + 1; } for (var i = 0; i < 3; i = i + 1) { var t = i; } for (i = 0; i < 3; i = i + 1) f(i);
    foreach (part in {1, {2, 3}}) { var t = part; if (t == null) { return; } }
    { var j = 1; } { var j = 2; } if (a) var k = 1; else var k = 2;
    var p as Pad; var q[3] as Pad; var l = {1, 2}; l = l + 3; l += {4}; l = f(l); l[0] = 5; p.l = 5; list = 3;
    foreach (l in list) { l = 5; }
    x = a.b[1].c; x = a.f(1).g(2); x = f(g(1))  - h(2); x = o as Pad; print(x) print(y); execute("x = 1;") x = 2;
    x = IsDigit(c) || IsAlpha(c); x = i < j && a[i] > a[j]; x = i != j && a[i] == a[j]; x = a > 0 && f(b); x = f(i) && a[i];
    x = "it's"; x = "\"; x = 'A' + '\n' + '\''; x = 0x1F | 0b101; x = 2147483647 + 99999999999.; x = o == null;
    return {1, 2} + 3;
}
)";
// clang-format on

TEST(Surprises, AreFoundWhereTheyStand) {
    for (const auto& [statements, fragment] : kRows) {
        const std::string found = WarningsOf("function F()\n{" + std::string(statements) + "\n}");
        EXPECT_NE(found.find(fragment), std::string::npos) << statements << "\n" << found;
        EXPECT_EQ(std::count(found.begin(), found.end(), '\n'), 1) << statements << "\n" << found;
    }
    EXPECT_NE(WarningsOf("class C { var x; function F() { } }").find("1: A function inside"),
              std::string::npos);
    EXPECT_NE(WarningsOf("function F() { print(\"a); }").find("1: The text is not closed"),
              std::string::npos);
    const std::string found = WarningsOf("function F()\n{\n  i++;\n\n  a = 1/8in; b = {};\n}");
    EXPECT_EQ(found.find("3: There is no '++'"), 0u) << found;
    EXPECT_LT(found.find("5: The unit belongs"), found.find("5: '{}' is null")) << found;
}

TEST(Surprises, AreNotSeenInAGoodScript) {
    EXPECT_EQ(WarningsOf(kGoodScript), "");
}

}  // namespace
}  // namespace brenta
