#include "script/value.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "script/operator_rows.h"
#include "script/value_limits.h"
#include "script/value_operators.h"

namespace brenta::test {
namespace {

using namespace rows;

Value ListOf(std::initializer_list<Value> items) {
    Value list = Value::OfList(0);
    for (const Value& item : items)
        AppendItem(list, item);
    return list;
}

std::string Show(const Value& value) {
    return Describe(ToVar(value));
}

/// Counts weight, depth and nested lists of a list anew, everywhere in it, and compares them with its notes.
void CheckNotes(const Value& value) {
    if (!value.IsList()) return;
    std::uint64_t weight = 0;
    std::uint32_t depth = 1;
    std::uint32_t nested = 0;
    for (std::uint32_t i = 0; i < value.List()->length; ++i) {
        const Value& item = value.List()->items[i];
        ++weight;
        if (!item.IsList()) continue;
        CheckNotes(item);
        ++nested;
        weight += item.List()->weight;
        depth = std::max(depth, item.List()->depth + 1);
    }
    EXPECT_EQ(value.List()->weight, weight);
    EXPECT_EQ(value.List()->depth, depth);
    EXPECT_EQ(value.List()->nested, nested);
}

TEST(Value, OperatorsAreThoseOfVar) {
    for (const OperatorRow& row : OperatorRows()) {
        const std::string what = Describe(row);
        const Value left = FromVar(row.left);
        const Value right = FromVar(row.right);
        Value result;
        ASSERT_EQ(BinaryOperator(row.op, left, right, result), OpError::None) << what;
        EXPECT_EQ(Show(result), row.expected) << what;
        // Again with the result in either operand's place, unshared.
        Value target = FromVar(row.left);
        ASSERT_EQ(BinaryOperator(row.op, target, right, target), OpError::None) << what;
        EXPECT_EQ(Show(target), row.expected) << what;
        Value other = FromVar(row.right);
        ASSERT_EQ(BinaryOperator(row.op, left, other, other), OpError::None) << what;
        EXPECT_EQ(Show(other), row.expected) << what;
        CheckNotes(target);
    }
}

TEST(Value, OperatorsSayWhyTheyFail) {
    for (const OperatorRow& row : NullReadRows()) {
        Value result = Value::OfInt(99);
        const OpError error = BinaryOperator(row.op, FromVar(row.left), FromVar(row.right), result);
        EXPECT_EQ(error, OpError::UnknownVarType) << Describe(row);
        EXPECT_EQ(Show(result), "int 99");
    }
    Value result = Value::OfInt(5);
    EXPECT_EQ(BinaryOperator(TOK_MOD, result, Value::OfInt(0), result), OpError::DivisionByZero);
    EXPECT_EQ(BinaryOperator(TOK_MOD, result, Value::OfString("x"), result), OpError::DivisionByZero);
    EXPECT_EQ(CompoundOperator(TOK_MOD_ASSIGN, result, Value::OfBool(false)), OpError::DivisionByZero);
    EXPECT_EQ(Show(result), "int 5");
    EXPECT_EQ(UnaryOperator(TOK_INV, Value(), result), OpError::UnknownVarType);
    EXPECT_EQ(UnaryOperator(TOK_NOT, Value::Undefined(), result), OpError::UnknownVarType);
    EXPECT_EQ(UnaryOperator(TOK_INV, result, result), OpError::None);
    EXPECT_EQ(Show(result), "int -6");
    EXPECT_EQ(UnaryOperator(TOK_NOT, Value::OfString("true"), result), OpError::None);
    EXPECT_EQ(Show(result), "bool false");
    CoreString text;
    EXPECT_EQ(AppendPrinted(ListOf({Value::OfInt(1), Value()}), text), OpError::UnknownVarType);
    EXPECT_EQ(AppendText(Value(), text), OpError::None);
}

TEST(Value, KeepsWeightAndDepthThroughAnySequence) {
    std::uint32_t seed = 12345;
    const auto next = [&seed](std::uint32_t bound) {
        seed = seed * 1664525u + 1013904223u;
        return (seed >> 8) % bound;
    };
    Value pool[4] = {ListOf({Value::OfInt(1)}), ListOf({}), Value::OfInt(3), ListOf({ListOf({Value()})})};
    for (int step = 0; step < 3000; ++step) {
        Value& target = pool[next(4)];
        const Value item(pool[next(4)]);
        if (!target.IsList() || target.List()->weight > 200) {
            target = ListOf({Value::OfInt(1), item.IsList() && item.List()->weight > 50 ? Value() : item});
        } else if (target.List()->length != 0 && next(3) != 0) {
            const std::uint32_t first = next(target.List()->length);
            const Value& child = target.List()->items[first];
            const bool isDeeper = child.IsList() && child.List()->length != 0;
            const std::uint32_t path[] = {first, isDeeper ? next(child.List()->length) : 0};
            ReplaceAtPath(target, {path, isDeeper ? 2u : 1u}, next(2) == 0 ? Value::OfInt(step) : item);
        } else if (next(2) == 0) {
            AppendItem(target, item);
        } else {
            CompoundOperator(TOK_ADD_ASSIGN, target, item);
        }
        CheckNotes(target);
    }
}

TEST(Value, CrossesTheBoundary) {
    const Var structure =
        List({Named(Int(1), "a"), Text("x"), Named(List({Named(Bool(true), "b")}), "in"), Null()});
    const Value value = FromVar(structure);
    EXPECT_EQ(FindMember(*value.List(), StrId("in")), 2);
    EXPECT_EQ(FindMember(*value.List(), StrId("b")), -1);
    EXPECT_EQ(FindMember(*value.List(), kNoName), -1);
    EXPECT_EQ(ItemName(*value.List(), 1), kNoName);
    const Var back = ToVar(value, StrId("s"));
    EXPECT_EQ(back.GetName(), StrId("s"));
    EXPECT_EQ(back.GetList().GetCount(), 4);
    EXPECT_EQ(back.GetMember(kNoName)->GetString(), StrId("x"));
    EXPECT_TRUE(back.GetMember(StrId("in"))->GetMember(StrId("b"))->GetBool());

    auto* function = reinterpret_cast<FuncSymbol*>(std::uintptr_t{64});
    const Var reference = ToVar(Value::OfFunction(function), StrId("f"));
    EXPECT_EQ(reference.GetName(), kFunctionName);
    EXPECT_EQ(FromVar(reference).Function(), function);
    EXPECT_EQ(ToVar(Value::Undefined()).GetKind(), VarKind::Null);

    ConversionLimit limit = ConversionLimit::None;
    Var deep = List({});
    for (std::uint32_t i = 0; i < kMaxListDepth; ++i)
        deep = List({deep});
    EXPECT_TRUE(FromVar(deep, &limit).IsNull());
    EXPECT_EQ(limit, ConversionLimit::ListTooDeep);
}

}  // namespace
}  // namespace brenta::test
