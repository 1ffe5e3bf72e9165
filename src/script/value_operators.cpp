// Operators on Values: the common pairs of numbers at once, strings and lists in place where they may be
// changed, everything else by the rules shared with Var.
//
// The short cuts give what the shared rules, which compute in doubles, would give. Sums and differences of
// two ints are exact in both. A product of two ints is exact in 64 bits, and turning it into a double rounds
// it exactly once, as multiplying two doubles does. Quotients are computed as doubles anyway.
#include "script/value_operators.h"

#include <charconv>
#include <climits>
#include <new>

#include "script/operand.h"
#include "script/value_operand.h"

namespace brenta {

namespace {

[[gnu::noinline]] OpError SharedOperator(TokId op, const Value& left, const Value& right, Value& result);

// --- numbers. Whole numbers are exact in 64 bits, and give what the doubles of the shared rules would.

OpError StoreBool(Value& result, bool value) {
    result.SetBool(value);
    return OpError::None;
}

OpError StoreInt(Value& result, int value) {
    result.SetInt(value);
    return OpError::None;
}

OpError StoreWhole(Value& result, std::int64_t number) {
    const bool isInRange = number >= INT_MIN && number <= INT_MAX;
    return StoreInt(result, isInRange ? static_cast<int>(number) : INT_MIN);
}

OpError StoreNumber(Value& result, double number) {
    result = Narrow(number);
    return OpError::None;
}

OpError StoreProduct(Value& result, double number) {
    if (number < kProductBound) return StoreNumber(result, number);
    result.SetFloat(number);
    return OpError::None;
}

/// Both operands are ints.
OpError IntOperator(TokId op, const Value& left, const Value& right, Value& result) {
    const std::int64_t a = left.Int();
    const std::int64_t b = right.Int();
    const int shortA = static_cast<int>(a);
    const int shortB = static_cast<int>(b);
    switch (op) {
        case TOK_ADD:
            return StoreWhole(result, a + b);
        case TOK_SUB:
            return StoreWhole(result, a - b);
        case TOK_MUL:
            return StoreProduct(result, static_cast<double>(a * b));
        case TOK_DIV:
            return StoreNumber(result, static_cast<double>(a) / static_cast<double>(b));
        case TOK_EQ:
            return StoreBool(result, a == b);
        case TOK_NOT_EQ:
            return StoreBool(result, a != b);
        case TOK_LESS:
            return StoreBool(result, a < b);
        case TOK_GREATER:
            return StoreBool(result, a > b);
        case TOK_LEQ:
            return StoreBool(result, a <= b);
        case TOK_GEQ:
            return StoreBool(result, a >= b);
        case TOK_OR:
            return StoreInt(result, shortA | shortB);
        case TOK_XOR:
            return StoreInt(result, shortA ^ shortB);
        case TOK_AND:
            return StoreInt(result, shortA & shortB);
        case TOK_SHL:
            return StoreInt(result, ShiftLeft(shortA, shortB));
        case TOK_SHR:
            return StoreInt(result, ShiftRight(shortA, shortB));
        case TOK_MOD:
            if (b != 0) return StoreInt(result, IntRemainder(shortA, shortB));
            [[fallthrough]];
        default:
            return SharedOperator(op, left, right, result);
    }
}

double NumericPayload(const Value& value) {
    return value.IsFloat() ? value.Float() : static_cast<double>(value.Int());
}

/// Both operands are numbers.
OpError FloatOperator(TokId op, const Value& left, const Value& right, Value& result) {
    const double a = NumericPayload(left);
    const double b = NumericPayload(right);
    switch (op) {
        case TOK_ADD:
            return StoreNumber(result, a + b);
        case TOK_SUB:
            return StoreNumber(result, a - b);
        case TOK_MUL:
            return StoreProduct(result, a * b);
        case TOK_DIV:
            return StoreNumber(result, a / b);
        case TOK_EQ:
            return StoreBool(result, a == b);
        case TOK_NOT_EQ:
            return StoreBool(result, a != b);
        case TOK_LESS:
            return StoreBool(result, a < b);
        case TOK_GREATER:
            return StoreBool(result, a > b);
        case TOK_LEQ:
            return StoreBool(result, a <= b);
        case TOK_GEQ:
            return StoreBool(result, a >= b);
        default:
            return SharedOperator(op, left, right, result);
    }
}

// --- strings and lists. These stay out of the way of the numbers.

OpError JoinToList(const Value& left, const Value& right, Value& result) {
    // Held first: the right value may be the list itself, which is then shared and not changed in place, or
    // one of its elements, which may move.
    Value item(right);
    if (&left == &result) return OpErrorOf(AppendItem(result, std::move(item)));
    Value list(left);
    const ListLimit limit = AppendItem(list, std::move(item));
    if (limit == ListLimit::None) result = std::move(list);
    return OpErrorOf(limit);
}

/// The text form of an operand, for the time of one operator: where it lies for strings, printed for others.
class TextForm {
 public:
    explicit TextForm(const Value& value) {
        if (value.IsString()) {
            m_text = value.Text();
        } else if (value.IsInt()) {
            const auto written = std::to_chars(m_digits, m_digits + sizeof(m_digits), value.Int());
            m_text = {m_digits, written.ptr};
        } else {
            m_error = AppendText(value, m_buffer);
            m_text = m_buffer.View();
        }
    }
    OpError Error() const { return m_error; }
    std::string_view View() const { return m_text; }

 private:
    std::string_view m_text;
    OpError m_error = OpError::None;
    char m_digits[16];
    CoreString m_buffer;
};

OpError StoreJoined(const Value& left, std::string_view leftText, std::string_view rightText, Value& result) {
    if (leftText.size() + rightText.size() > kMaxStringLength) return OpError::StringTooLong;
    if (&left == &result && left.IsString()) {
        AppendString(result, rightText);
    } else {
        result = Value::OfString(leftText, rightText);
    }
    return OpError::None;
}

/// One of the operands is a string, the left one is no list.
OpError JoinTexts(const Value& left, const Value& right, Value& result) {
    if (left.IsString() && right.IsString()) return StoreJoined(left, left.Text(), right.Text(), result);
    const TextForm leftText(left);
    const TextForm rightText(right);
    if (leftText.Error() != OpError::None) return leftText.Error();
    if (rightText.Error() != OpError::None) return rightText.Error();
    return StoreJoined(left, leftText.View(), rightText.View(), result);
}

/// Both operands are strings, whose comparisons need no text form.
OpError CompareStrings(TokId op, const Value& left, const Value& right, Value& result) {
    if (op == TOK_EQ || op == TOK_NOT_EQ)
        return StoreBool(result, (left.Text() == right.Text()) == (op == TOK_EQ));
    return StoreBool(result, TextsRelate(op, left.String()->bytes, right.String()->bytes));
}

/// At least one operand is no number.
[[gnu::noinline]] OpError OtherOperator(TokId op, const Value& left, const Value& right, Value& result) {
    if (op == TOK_ADD) {
        if (left.IsList()) return JoinToList(left, right, result);
        if (left.IsString() || right.IsString()) return JoinTexts(left, right, result);
    }
    if (op >= TOK_EQ && op <= TOK_GEQ && left.IsString() && right.IsString())
        return CompareStrings(op, left, right, result);
    return SharedOperator(op, left, right, result);
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
            // A text from which nothing was taken keeps its body.
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
    if (left.IsInt() && right.IsInt()) return IntOperator(op, left, right, result);
    if (left.IsNumeric() && right.IsNumeric()) return FloatOperator(op, left, right, result);
    return OtherOperator(op, left, right, result);
}

// The two families of tokens are numbered in different orders.
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
    // The one compound that is more than its operator: `l + r` would append the list r as one element.
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
    if (sink.Lacks()) throw std::bad_alloc();
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
