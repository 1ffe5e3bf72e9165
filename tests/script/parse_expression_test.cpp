

#include "script/script_test_support.h"
#include "script/sub_expression.h"

namespace brenta::test {
namespace {

/// The tree of a text's first expression; its errors if it has some.
std::string Tree(ParserFixture& fixture, const std::string& text) {
    TIter<ScriptToken*> iter = fixture.Scan(text);
    const std::unique_ptr<ExpressionStatement> expression(fixture.engine.ParseExpression(iter));
    if (expression == nullptr) return fixture.messages.TakeErrors();
    CoreString tree;
    expression->Describe(tree);
    return std::string(tree.View()) + fixture.messages.TakeErrors();
}

// clang-format off
constexpr std::pair<const char*, const char*> kRows[] = {
    {"",                        ""},
    // one operator of each row against the next, then equal ones
    {"a = b || c",              "(= a (|| b c))"},
    {"a || b && c",             "(|| a (&& b c))"},
    {"a && b | c",              "(&& a (| b c))"},
    {"a | b ^ c",               "(| a (^ b c))"},
    {"a ^ b & c",               "(^ a (& b c))"},
    {"a & b == c",              "(& a (== b c))"},
    {"a != b < c",              "(!= a (< b c))"},
    {"a >= b << c",             "(>= a (<< b c))"},
    {"a >> b + c",              "(>> a (+ b c))"},
    {"a % ~b",                  "(% a (~ _ b))"},
    {"a = b = c",               "(= (= a b) c)"},
    {"a += b <<= c",            "(<<= (+= a b) c)"},
    {"a < b > c == d != e",     "(!= (== (> (< a b) c) d) e)"},
    // signs and other operators without a left operand
    {"!!x",                     "(! ! x)"},
    {"!a.b",                    "(! _ (. a b))"},
    // members, subscripts, calls
    {"x[i + 1] = 2",            "(= ([] x (+ i 1)) 2)"},
    {"a.b[1].c[2]",             "([] (. ([] (. a b) 1) c) 2)"},
    {"f(g(x), -1) + 1",         "(+ (f() f (, (f() g x) (- _ 1))) 1)"},
    {"f(1)(2)",                 "(f() f (2 1))"},
    // lists
    {"{}",                      "{}"},
    {"{{1}, {a = 2},}",         "({} (, (, ({} 1) ({} (= a 2)))))"},
    // operands side by side: what is placed later takes the place
    {"1 zz",                    "(1 _ zz)"},
    {"zz 1",                    "(1 zz)"},
    {"a {1}",                   "({} a)"},
    {"(1 + 2) (10 + 4)",        "(+ (+ 1 2) 4)"},
    // a type says nothing here
    {"x as T = 5",              "(= x 5)"},
    {"a[3] as T",               "([] a 3)"},
    {"x as",                    "x"},
    {"\"a \" + \"\"",           "(+ \"a \" \"\")"},
    {"0x1F + 0b101 - 'A'",      "(- (+ 31 5) 65)"},
    // errors
    {"(x)[1]",      "t(1): Illigal expression.\n"},
    {"f(1)[0]",     "t(1): Illigal expression.\n"},
    {"a +\nx[1][2]", "t(2): Illigal expression.\n"},
    {"(a",          "t(1): Syntax error: expecting ')', but found 'unknown token id'\n"},
    {"f(1,\n2;3)",  "t(2): Syntax error: expecting ')', but found ';'\n"},
    {"x[1)",        "t(1): Syntax error: expecting ']', but found ')'\n"},
    {"{1, {2}",     "t(1): Syntax error: expecting '}', but found 'unknown token id'\n"},
};
// clang-format on

TEST(ParseExpression, TreesAndErrors) {
    ParserFixture fixture;
    for (const auto& [text, expected] : kRows)
        EXPECT_EQ(Tree(fixture, text), expected) << text;
}

}  // namespace
}  // namespace brenta::test
