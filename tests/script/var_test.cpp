#include "brenta/var.h"

#include <climits>

#include "brenta/dump.h"
#include "script/operator_rows.h"
#include "test_support.h"

namespace brenta::test {
namespace {

using namespace rows;

// clang-format off
Var Apply(const Var& a, TokId op, const Var& b) {
    switch (op) {
        case TOK_ADD: return a + b;
        case TOK_SUB: return a - b;
        case TOK_MUL: return a * b;
        case TOK_DIV: return a / b;
        case TOK_MOD: return a % b;
        case TOK_SHL: return a << b;
        case TOK_SHR: return a >> b;
        case TOK_AND: return a & b;
        case TOK_OR: return a | b;
        case TOK_XOR: return a ^ b;
        case TOK_EQ: return Bool(a == b);
        case TOK_NOT_EQ: return Bool(a != b);
        case TOK_LESS: return Bool(a < b);
        case TOK_LEQ: return Bool(a <= b);
        case TOK_GREATER: return Bool(a > b);
        case TOK_GEQ: return Bool(a >= b);
        case TOK_LOG_AND: return Bool(a && b);
        case TOK_LOG_OR: return Bool(a || b);
        default: return Null();
    }
}

/// The compound assignment of an operator; false for those that have none.
bool Assign(Var& a, TokId op, const Var& b) {
    switch (op) {
        case TOK_ADD: return &(a += b) == &a;
        case TOK_SUB: return &(a -= b) == &a;
        case TOK_MUL: return &(a *= b) == &a;
        case TOK_DIV: return &(a /= b) == &a;
        case TOK_MOD: return &(a %= b) == &a;
        case TOK_SHL: return &(a <<= b) == &a;
        case TOK_SHR: return &(a >>= b) == &a;
        case TOK_AND: return &(a &= b) == &a;
        case TOK_OR: return &(a |= b) == &a;
        case TOK_XOR: return &(a ^= b) == &a;
        default: return false;
    }
}
// clang-format on

TEST(Var, OperatorsFollowTheLeftOperandAndTheValue) {
    for (const OperatorRow& row : OperatorRows()) {
        EXPECT_EQ(Describe(Apply(row.left, row.op, row.right)), row.expected) << Describe(row);
        if (row.left.GetKind() == VarKind::List) continue;
        Var target = Named(row.left, "target");
        if (!Assign(target, row.op, row.right)) continue;
        EXPECT_EQ(Describe(target), row.expected) << Describe(row);
        EXPECT_EQ(target.GetName(), StrId("target"));
    }
}

TEST(Var, ReadsNullThroughTheForcedCrash) {
    for (const OperatorRow& row : NullReadRows()) {
        CrashRecorder recorder;
        const Var result = Apply(row.left, row.op, row.right);
        EXPECT_EQ(recorder.Messages().size(), 1u) << Describe(row);
        EXPECT_EQ(Describe(result), row.expected) << Describe(row);
    }
    CrashRecorder recorder;
    CoreString text;
    EXPECT_EQ(Null().GetInt(), 0);
    EXPECT_FALSE(Null().GetBool());
    EXPECT_TRUE(!Null());
    EXPECT_EQ(Describe(~Null()), "int -1");
    Null().Print(text);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(Describe(Null() & Null()), "int 0");
    ASSERT_EQ(recorder.Messages().size(), 7u);
    EXPECT_EQ(recorder.Messages()[0], "Forced crash! \"Unknown var type.\"");
    EXPECT_EQ(recorder.Last().SiteCode(), 0u);
    EXPECT_STREQ(recorder.Last().File(), "Var");
}

TEST(Var, Converts) {
    // clang-format off
    const std::tuple<Var, double, int, bool, const char*> rows[] = {
        // value, as float, int, bool and text
        {Bool(true), 1, 1, true, "true"},
        {Int(-7), -7, -7, true, "-7"},
        {Float(2.5), 2.5, 2, true, "2.5"},
        {Float(-2.9), -2.9, -2, true, "-2.9"},
        {Float(0.0000001), 0.0000001, 0, true, "0."},
        {Float(-0.0000001), -0.0000001, 0, true, "-0."},
        {Float(1.0 / 3), 1.0 / 3, 0, true, "0.333333"},
        {Float(1e20), 1e20, INT_MIN, true, "-2147483648"},
        {Float(-0.0), 0, 0, false, "0"},
        {Float(2147483647.25), 2147483647.25, INT_MAX, true, "2147483647.25"},
        {Text("12.5mm"), 12.5, 12, true, "12.5mm"},
        {Text("tRuE"), 0, 0, true, "tRuE"},
        {Text("trues"), 0, 0, false, "trues"},
        {Text("99999999999"), 99999999999.0, INT_MAX, true, "99999999999"},
        {Text(""), 0, 0, false, ""},
        {Ref(0), 0, 0, false, "0"},
        {Ref(0x1234567890), 0, 0x34567890, true, "34567890"},
        {List({}), 0, 0, false, "{}\n"},
        {List({Bool(true), Text("a"), List({Float(0.5)})}), 0, 3, true, "{1, a, {0.5}\n}\n"},
    };
    // clang-format on
    for (const auto& [value, asFloat, asInt, asBool, asText] : rows) {
        CoreString printed("> ");
        value.Print(printed);
        const bool isBool = value.GetKind() == VarKind::Bool;  // the only kind that prints otherwise
        EXPECT_EQ(std::string("> ") + (isBool ? asBool ? "1" : "0" : asText), printed());
        EXPECT_DOUBLE_EQ(value.GetFloat(), asFloat) << asText;
        EXPECT_EQ(value.GetInt(), asInt) << asText;
        EXPECT_EQ(value.GetBool(), asBool) << asText;
        EXPECT_EQ(!value, !asBool) << asText;
        EXPECT_STREQ(StrPtr(value.GetString()), asText);
    }
    EXPECT_EQ(Null().GetFloat(), 0);
    EXPECT_EQ(Null().GetString(), kNoName);
    EXPECT_STREQ(StrPtr(Float(kNaN).GetString()), "nan");
    EXPECT_STREQ(StrPtr(Float(-kNaN).GetString()), "nan");
    EXPECT_EQ(Float(kNaN).GetInt(), INT_MIN);
    EXPECT_EQ(Describe(~Int(5)), "int -6");
    EXPECT_EQ(Ref(24).GetRef(), reinterpret_cast<void*>(std::uintptr_t{24}));
    EXPECT_EQ(Int(24).GetRef(), nullptr);
}

TEST(Var, AssignsPlainValuesAndKeepsItsName) {
    Var value = Named(List({Int(1)}), "v");
    EXPECT_EQ(Describe(value = 5), "int 5");
    EXPECT_TRUE(value.GetList().IsEmpty());
    EXPECT_EQ(Describe(value = true), "bool true");
    EXPECT_EQ(Describe(value = 2.0), "float 2");
    EXPECT_EQ(Describe(value = StrId("text")), "string text");
    EXPECT_EQ(Describe(value = "other"), "string other");
    EXPECT_EQ(Describe(value = reinterpret_cast<void*>(std::uintptr_t{16})), "reference 10");
    EXPECT_EQ(Describe(value = List({Int(1), Int(2)}).GetList()), "list {1, 2}\n");
    EXPECT_EQ(value.GetName(), StrId("v"));
    value = Named(Int(9), "w");
    EXPECT_EQ(value.GetName(), StrId("w"));

    Var source = Named(List({Int(7)}), "s");
    Var taken(std::move(source));
    EXPECT_EQ(Describe(taken), "list {7}\n");
    EXPECT_EQ(source.GetKind(), VarKind::Null);  // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE(source.GetList().IsEmpty());
}

TEST(Var, CopiesDeeply) {
    Var inner = List({Int(1)});
    Var outer = List({inner, Int(2)});
    const Var copy(outer);
    outer.GetList().GetHead()->Add(Int(9));
    *inner.GetList().GetHead() = 5;
    EXPECT_EQ(Describe(outer), "list {{1, 9}\n, 2}\n");
    EXPECT_EQ(Describe(copy), "list {{1}\n, 2}\n");
}

TEST(Var, MayBeAssignedFromItsOwnParts) {
    Var value = List({List({Int(1), Int(2)}), Text("x")});
    value = *value.GetList().GetHead();
    EXPECT_EQ(Describe(value), "list {1, 2}\n");
    value += value;
    EXPECT_EQ(Describe(value), "list {1, 2, 1, 2}\n");
    value.Add(value);
    EXPECT_EQ(Describe(value), "list {1, 2, 1, 2, {1, 2, 1, 2}\n}\n");
    value = value.GetList();
    EXPECT_EQ(value.GetInt(), 5);
    value += *value.GetList().GetHead();
    EXPECT_EQ(value.GetInt(), 6);
    value = std::move(*value.GetList().GetHead());
    EXPECT_EQ(Describe(value), "int 1");
    Var text = Text("aXbX");
    text -= Text("X");
    text += text;
    EXPECT_EQ(Describe(text), "string abab");
    text = List({text});
    const Var& same = text;
    text = same;
    EXPECT_EQ(Describe(text), "list {abab}\n");
}

TEST(Var, FindsAndAddsMembers) {
    Var point = List({Named(Int(1), "x"), Named(Int(2), "y"), Named(Int(3), "x")});
    ASSERT_NE(point.GetMember(StrId("x")), nullptr);
    *point.GetMember(StrId("x")) += Int(10);
    EXPECT_EQ(Describe(point), "list {11, 2, 3}\n");
    EXPECT_EQ(point.GetMember(StrId("z")), nullptr);
    EXPECT_EQ(Text("x").GetMember(StrId("x")), nullptr);
    EXPECT_EQ(Int(1).GetListIter().Get(), nullptr);
    EXPECT_EQ(point.GetListIter().Get()->GetInt(), 11);
    // The appended elements keep their names, so the right operand's members can be found.
    Var sum = point + Named(Int(4), "z");
    EXPECT_EQ(sum.GetMember(StrId("z"))->GetInt(), 4);
    EXPECT_EQ(sum.GetName(), kNoName);
    Var grown = Null();
    grown.Add(Int(1));
    EXPECT_EQ(Describe(grown), "list {1}\n");
    Var number = Int(3);
    number.Add(Int(1));
    EXPECT_EQ(Describe(number), "int 3");
    EXPECT_TRUE(number.GetList().IsEmpty());
}

/// A list in a list in a list ..., with an int innermost; built from the inside without copying.
Var Nest(int depth) {
    Var value = Int(1);
    for (int i = 0; i < depth; ++i) {
        Var outer(TOrderedList<Var>(), kNoName);
        outer.Add(Int(0));
        *outer.GetList().GetHead() = std::move(value);
        value = std::move(outer);
    }
    return value;
}

std::string DumpOf(const Var& value, bool withNames) {
    DumpFormatter out;
    CoreString text;
    value.Dump(out, withNames);
    out.GetString(text);
    return text();
}

TEST(Var, NestsToAnyDepth) {
    constexpr int kDepth = 100000;
    const Var deep = Nest(kDepth);
    Var copy = deep;
    copy += copy;
    CoreString text;
    copy.Print(text);
    EXPECT_EQ(text.GetLength(), 2 * (3 * kDepth - 3 + 1) + 2 + 3);
    EXPECT_EQ((Text("") + deep).GetKind(), VarKind::String);
    EXPECT_NE(DumpOf(deep, true).find("{...}"), std::string::npos);
}

}  // namespace
}  // namespace brenta::test
