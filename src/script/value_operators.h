// The operators of the language on Values. Var's operators and the engine share these, so there is one truth.
//
// An operator that cannot give a value says why; the engine turns that into a script error at the operator's
// position, the Var operators into the forced crash "Unknown var type." (null reads) or a saturated value.
#pragma once

#include "brenta/lexer.h"
#include "script/value.h"

namespace brenta {

enum class OpError {
    None,
    UnknownVarType,  ///< "Unknown var type.": an int, bool or printed form of the null value was needed
    DivisionByZero,  ///< "Division by zero.": integer %
    StringTooLong,   ///< "String too long."
    ListTooLarge,    ///< "List too large."
    ListTooDeep,     ///< "List nested too deeply."
};

/// The script error text of `error`.
const char* OpErrorText(OpError error);

/// result = left op right for every binary operator token except assignments (TOK_LOG_OR ... TOK_MOD).
/// `result` may be `left` or `right`. When `left` is not shared and is also `result`, strings and lists grow
/// in place.
OpError BinaryOperator(TokId op, const Value& left, const Value& right, Value& result);
/// target op= right for TOK_MUL_ASSIGN ... TOK_OR_ASSIGN; `+=` with lists on both sides concatenates in
/// place.
OpError CompoundOperator(TokId op, Value& target, const Value& right);
/// TOK_INV (~) and TOK_NOT (!).
OpError UnaryOperator(TokId op, const Value& right, Value& result);

/// The number of an operand: string by its digits, bool, int, float; 0 for the other kinds.
double NumberOf(const Value& value);
OpError IntOf(const Value& value, int& out);
OpError BoolOf(const Value& value, bool& out);
/// The text form (Var::GetString): "" for null. Appends to `out`; UnknownVarType for lists that hold a null.
OpError AppendText(const Value& value, CoreString& out);
/// The printed form (Var::Print). Appends.
OpError AppendPrinted(const Value& value, CoreString& out);
/// The narrowed number: an Int when `number` has no fractional part, else a Float.
Value Narrow(double number);

}  // namespace brenta
