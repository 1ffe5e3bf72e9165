// Operators on Values: the common pairs of numbers at once, strings and lists in place where they may be
// changed, everything else by the rules shared with Var.
#include "script/value_operators.h"

#include <climits>

#include "script/operand.h"
#include "script/value_operand.h"

namespace brenta {

namespace {

// --- numbers. Whole numbers are exact in 64 bits, and give what the doubles of the shared rules would.

Value WholeResult(std::int64_t number) {
    const bool isInRange = number >= INT_MIN && number <= INT_MAX;
    return Value::OfInt(isInRange ? static_cast<int>(number) : INT_MIN);
}

Value WholeProduct(std::int64_t product) {
    const auto number = static_cast<double>(product);
    return number < kProductBound ? WholeResult(product) : Value::OfFloat(number);
}

/// Both operands are ints. False for the operators that need the shared rules (and the error of `%` by 0).
bool IntOperator(TokId op, int a, int b, Value& result) {
    const std::int64_t left = a;
    const std::int64_t right = b;
    switch (op) {
        case TOK_ADD:
            return result = WholeResult(left + right), true;
        case TOK_SUB:
            return result = WholeResult(left - right), true;
        case TOK_MUL:
            return result = WholeProduct(left * right), true;
        case TOK_DIV:
            return result = Narrow(static_cast<double>(a) / b), true;
        case TOK_MOD:
            if (b == 0) return false;
            return result = Value::OfInt(IntRemainder(a, b)), true;
        case TOK_EQ:
            return result = Value::OfBool(a == b), true;
        case TOK_NOT_EQ:
            return result = Value::OfBool(a != b), true;
        case TOK_LESS:
            return result = Value::OfBool(a < b), true;
        case TOK_GREATER:
            return result = Value::OfBool(a > b), true;
        case TOK_LEQ:
            return result = Value::OfBool(a <= b), true;
        case TOK_GEQ:
            return result = Value::OfBool(a >= b), true;
        case TOK_OR:
            return result = Value::OfInt(a | b), true;
        case TOK_XOR:
            return result = Value::OfInt(a ^ b), true;
        case TOK_AND:
            return result = Value::OfInt(a & b), true;
        case TOK_SHL:
            return result = Value::OfInt(ShiftLeft(a, b)), true;
        case TOK_SHR:
            return result = Value::OfInt(ShiftRight(a, b)), true;
        default:
            return false;
    }
}

/// Both operands are numbers. False for the operators that need the shared rules.
bool FloatOperator(TokId op, double a, double b, Value& result) {
    switch (op) {
        case TOK_ADD:
            return result = Narrow(a + b), true;
        case TOK_SUB:
            return result = Narrow(a - b), true;
        case TOK_MUL:
            return result = a * b < kProductBound ? Narrow(a * b) : Value::OfFloat(a * b), true;
        case TOK_DIV:
            return result = Narrow(a / b), true;
        case TOK_EQ:
            return result = Value::OfBool(a == b), true;
        case TOK_NOT_EQ:
            return result = Value::OfBool(a != b), true;
        case TOK_LESS:
            return result = Value::OfBool(a < b), true;
        case TOK_GREATER:
            return result = Value::OfBool(a > b), true;
        case TOK_LEQ:
            return result = Value::OfBool(a <= b), true;
        case TOK_GEQ:
            return result = Value::OfBool(a >= b), true;
        default:
            return false;
    }
}

double NumericPayload(const Value& value) {
    return value.IsFloat() ? value.Float() : static_cast<double>(value.Int());
}

// --- joining

OpError JoinToList(const Value& left, const Value& right, Value& result) {
    // Held first: the right value may be the list itself, or one of its elements.
    Value item(right);
    if (&left == &result && left.IsUnshared()) return OpErrorOf(AppendItem(result, std::move(item)));
    Value list(left);
    const ListLimit limit = AppendItem(list, std::move(item));
    if (limit == ListLimit::None) result = std::move(list);
    return OpErrorOf(limit);
}

/// The text form of an operand: where it lies for strings, else in `buffer`.
OpError TextOf(const Value& value, CoreString& buffer, std::string_view& text) {
    if (value.IsString()) {
        text = value.Text();
        return OpError::None;
    }
    const OpError error = AppendText(value, buffer);
    text = buffer.View();
    return error;
}

/// One of the operands is a string, the left one is no list.
OpError JoinTexts(const Value& left, const Value& right, Value& result) {
    CoreString leftBuffer;
    CoreString rightBuffer;
    std::string_view leftText;
    std::string_view rightText;
    OpError error = TextOf(left, leftBuffer, leftText);
    if (error == OpError::None) error = TextOf(right, rightBuffer, rightText);
    if (error != OpError::None) return error;
    if (leftText.size() + rightText.size() > kMaxStringLength) return OpError::StringTooLong;
    if (&left == &result && left.IsString() && left.IsUnshared()) {
        AppendString(result, rightText);
    } else {
        result = Value::OfString(leftText, rightText);
    }
    return OpError::None;
}

// --- the shared rules

void Store(const OperatorResult& from, const Value& left, Value& result) {
    switch (from.kind) {
        case VarKind::Bool:
            result = Value::OfBool(from.number != 0);
            return;
        case VarKind::Int:
            result = Value::OfInt(static_cast<int>(from.number));
            return;
        case VarKind::Float:
            result = Value::OfFloat(from.number);
            return;
        case VarKind::String:
            // A text that stayed whole keeps its body.
            if (left.IsString() && from.text.size() == left.Text().size() &&
                from.text.data() == left.Text().data())
                result = Value(left);
            else
                result = Value::OfString(from.text);
            return;
        default:
            result.Clear();
    }
}

OpError SharedOperator(TokId op, const Value& left, const Value& right, Value& result) {
    OperatorResult outcome;
    ApplyOperator(op, OperandOf(left), OperandOf(right), kMaxStringLength, outcome);
    if (outcome.nullReads != 0) return OpError::UnknownVarType;
    if (outcome.divisionByZero) return OpError::DivisionByZero;
    if (outcome.textTooLong) return OpError::StringTooLong;
    Store(outcome, left, result);
    return OpError::None;
}

}  // namespace

OpError BinaryOperator(TokId op, const Value& left, const Value& right, Value& result) {
    if (left.IsInt() && right.IsInt()) {
        if (IntOperator(op, static_cast<int>(left.Int()), static_cast<int>(right.Int()), result))
            return OpError::None;
    } else if (left.IsNumeric() && right.IsNumeric()) {
        if (FloatOperator(op, NumericPayload(left), NumericPayload(right), result)) return OpError::None;
    } else if (op == TOK_ADD) {
        if (left.IsList()) return JoinToList(left, right, result);
        if (left.IsString() || right.IsString()) return JoinTexts(left, right, result);
    }
    return SharedOperator(op, left, right, result);
}

TokId OperatorOfAssignment(TokId assignment) {
    switch (assignment) {
        case TOK_MUL_ASSIGN:
            return TOK_MUL;
        case TOK_DIV_ASSIGN:
            return TOK_DIV;
        case TOK_MOD_ASSIGN:
            return TOK_MOD;
        case TOK_ADD_ASSIGN:
            return TOK_ADD;
        case TOK_SUB_ASSIGN:
            return TOK_SUB;
        case TOK_SHL_ASSIGN:
            return TOK_SHL;
        case TOK_SHR_ASSIGN:
            return TOK_SHR;
        case TOK_AND_ASSIGN:
            return TOK_AND;
        case TOK_XOR_ASSIGN:
            return TOK_XOR;
        case TOK_OR_ASSIGN:
            return TOK_OR;
        default:
            return TOK_NONE;
    }
}

OpError CompoundOperator(TokId op, Value& target, const Value& right) {
    if (op == TOK_ADD_ASSIGN && target.IsList()) {
        if (right.IsList()) return OpErrorOf(AppendItems(target, right));
        return OpErrorOf(AppendItem(target, right));
    }
    return BinaryOperator(OperatorOfAssignment(op), target, right, target);
}

OpError UnaryOperator(TokId op, const Value& right, Value& result) {
    if (op == TOK_NOT) {
        bool value = false;
        const OpError error = BoolOf(right, value);
        if (error == OpError::None) result = Value::OfBool(!value);
        return error;
    }
    int value = 0;
    const OpError error = IntOf(right, value);
    if (error == OpError::None) result = Value::OfInt(~value);
    return error;
}

// ---------------------------------------------------------------------------------------------------------
// Reading

const char* OpErrorText(OpError error) {
    switch (error) {
        case OpError::None:
            return "";
        case OpError::UnknownVarType:
            return "Unknown var type.";
        case OpError::DivisionByZero:
            return "Division by zero.";
        case OpError::StringTooLong:
            return "String too long.";
        case OpError::ListTooLarge:
            return "List too large.";
        case OpError::ListTooDeep:
            return "List nested too deeply.";
    }
    return "";
}

OpError OpErrorOf(ListLimit limit) {
    switch (limit) {
        case ListLimit::None:
            return OpError::None;
        case ListLimit::TooLarge:
            return OpError::ListTooLarge;
        case ListLimit::TooDeep:
            return OpError::ListTooDeep;
    }
    return OpError::None;
}

OpError OpErrorOf(ConversionLimit limit) {
    switch (limit) {
        case ConversionLimit::None:
            return OpError::None;
        case ConversionLimit::StringTooLong:
            return OpError::StringTooLong;
        case ConversionLimit::ListTooLarge:
            return OpError::ListTooLarge;
        case ConversionLimit::ListTooDeep:
            return OpError::ListTooDeep;
    }
    return OpError::None;
}

Value NarrowUnusual(double number) {
    OperatorResult result;
    StoreNarrowed(number, result);
    return result.kind == VarKind::Int ? Value::OfInt(static_cast<int>(result.number))
                                       : Value::OfFloat(number);
}

double NumberOf(const Value& value) {
    return value.IsNumeric() ? NumericPayload(value) : NumberOf(OperandOf(value));
}

OpError IntOf(const Value& value, int& out) {
    int nullReads = 0;
    out = value.IsInt() ? static_cast<int>(value.Int()) : IntOf(OperandOf(value), nullReads);
    return nullReads == 0 ? OpError::None : OpError::UnknownVarType;
}

OpError BoolOf(const Value& value, bool& out) {
    int nullReads = 0;
    out = value.IsBool() ? value.Int() != 0 : BoolOf(OperandOf(value), nullReads);
    return nullReads == 0 ? OpError::None : OpError::UnknownVarType;
}

namespace {

OpError ErrorOf(const TextSink& sink) {
    if (sink.NullReads() != 0) return OpError::UnknownVarType;
    return sink.IsFull() ? OpError::StringTooLong : OpError::None;
}

}  // namespace

OpError AppendText(const Value& value, CoreString& out, std::size_t limit) {
    TextSink sink(out, limit);
    AddText(OperandOf(value), sink);
    return ErrorOf(sink);
}

OpError AppendPrinted(const Value& value, CoreString& out, std::size_t limit) {
    TextSink sink(out, limit);
    AddPrinted(OperandOf(value), sink);
    return ErrorOf(sink);
}

}  // namespace brenta
