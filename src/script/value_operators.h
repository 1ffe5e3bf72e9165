// The operators of the language on Values. Var's operators and the engine share their kernels
// (script/operand.h), so there is one truth.
//
// An operator that cannot give a value says why; the engine turns that into a script error at the operator's
// position, the Var operators into the forced crash "Unknown var type." (null reads) or a saturated value.
#pragma once

#include "brenta/lexer.h"
#include "script/value.h"
#include "script/value_limits.h"

namespace brenta {

enum class OpError {
    None,
    UnknownVarType,  ///< "Unknown var type.": an int, bool or printed form of the null value was needed
    DivisionByZero,  ///< "Division by zero.": integer %
    StringTooLong,   ///< "String too long."
    ListTooLarge,    ///< "List too large."
    ListTooDeep,     ///< "List nested too deeply."
};

/// The script error text of `error`; "" for None.
const char* OpErrorText(OpError error);
OpError OpErrorOf(ListLimit limit);
OpError OpErrorOf(ConversionLimit limit);

/// result = left op right for every binary operator token except assignments (TOK_LOG_OR ... TOK_MOD).
/// `result` may be `left` or `right`; on an error it is unchanged. When `left` is not shared and is also
/// `result`, strings and lists grow in place, so that `s = s + e` in a loop is linear.
OpError BinaryOperator(TokId op, const Value& left, const Value& right, Value& result);
/// target op= right for TOK_MUL_ASSIGN ... TOK_OR_ASSIGN; `+=` on a list appends in place, a list on the
/// right element by element. On an error the target is unchanged. The target is a variable or a temporary,
/// not an element inside a list: those are replaced with ReplaceAtPath.
OpError CompoundOperator(TokId op, Value& target, const Value& right);
/// The binary operator of a compound assignment (TOK_ADD for TOK_ADD_ASSIGN), TOK_NONE for other tokens.
TokId OperatorOfAssignment(TokId assignment);
/// TOK_INV (~) and TOK_NOT (!).
OpError UnaryOperator(TokId op, const Value& right, Value& result);

/// The number of an operand: string by its digits, bool, int, float; 0 for the other kinds.
double NumberOf(const Value& value);
OpError IntOf(const Value& value, int& out);
OpError BoolOf(const Value& value, bool& out);
/// The text form (Var::GetString): "" for null. Appends to `out`; UnknownVarType for lists that hold a null.
/// Past `limit` bytes it stops collecting with StringTooLong.
OpError AppendText(const Value& value, CoreString& out, std::size_t limit = kMaxStringLength);
/// The printed form (Var::Print). Appends; limits as above.
OpError AppendPrinted(const Value& value, CoreString& out, std::size_t limit = kMaxStringLength);

/// Narrow for numbers outside the range of an int, or without a number.
Value NarrowUnusual(double number);
/// The narrowed number: an Int when `number` has no fractional part (INT_MIN when it is out of range), else a
/// Float.
inline Value Narrow(double number) {
    if (number >= -2147483648.0 && number <= 2147483647.0) {
        const int whole = static_cast<int>(number);
        return whole == number ? Value::OfInt(whole) : Value::OfFloat(number);
    }
    return NarrowUnusual(number);
}

}  // namespace brenta
