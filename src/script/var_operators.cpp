// Var's operators: the shared rules (script/operand.h), their results stored as Vars.
//
// The forced crash for null reads is raised when the result is known but not yet stored: a handler that looks
// at the operands sees them as they were, one that resumes gets the result, and one that throws leaves
// everything as it was.
#include <utility>

#include "brenta/failure.h"
#include "brenta/var.h"
#include "script/operand.h"
#include "script/value_operand.h"
#include "script/var_access.h"

namespace brenta {

namespace {

constexpr std::size_t kTextLimit = 0x7FFFFFF0;  // what a CoreString can hold

void Apply(TokId op, const Var& left, const Var& right, OperatorResult& result) {
    ApplyOperator(op, OperandOf(left), OperandOf(right), kTextLimit, result);
    for (int reads = result.nullReads; reads > 0; --reads)
        ForcedCrash(0, "Var", __LINE__, "Forced crash! \"Unknown var type.\"");
}

/// Stores a result, which may lie in a text of `out` itself; the name of `out` stays.
void Store(const OperatorResult& result, Var& out) {
    switch (result.kind) {
        case VarKind::Bool:
            return VarAccess::SetBool(out, result.number != 0);
        case VarKind::Int:
            return VarAccess::SetInt(out, static_cast<int>(result.number));
        case VarKind::Float:
            return VarAccess::SetFloat(out, result.number);
        case VarKind::String:
            return VarAccess::SetText(
                out, StrId(result.text.data(), static_cast<unsigned int>(result.text.size())));
        default:
            return VarAccess::SetNull(out);
    }
}

Var Binary(TokId op, const Var& left, const Var& right) {
    OperatorResult result;
    Apply(op, left, right, result);
    Var value;
    Store(result, value);
    return value;
}

bool Test(TokId op, const Var& left, const Var& right) {
    OperatorResult result;
    Apply(op, left, right, result);
    return result.number != 0;
}

Var& Compound(TokId op, Var& target, const Var& right) {
    OperatorResult result;
    Apply(op, target, right, result);
    Store(result, target);
    return target;
}

}  // namespace

// Elements of lists keep their names, also the one that is appended: this is how structures are put together.
Var Var::operator+(const Var& right) const {
    if (m_kind != VarKind::List) return Binary(TOK_ADD, *this, right);
    Var sum(m_items, kNoName);
    sum.AddItem(right);
    return sum;
}

Var Var::operator-(const Var& right) const {
    return Binary(TOK_SUB, *this, right);
}

Var Var::operator*(const Var& right) const {
    return Binary(TOK_MUL, *this, right);
}

Var Var::operator/(const Var& right) const {
    return Binary(TOK_DIV, *this, right);
}

Var Var::operator%(const Var& right) const {
    return Binary(TOK_MOD, *this, right);
}

Var Var::operator<<(const Var& right) const {
    return Binary(TOK_SHL, *this, right);
}

Var Var::operator>>(const Var& right) const {
    return Binary(TOK_SHR, *this, right);
}

Var Var::operator&(const Var& right) const {
    return Binary(TOK_AND, *this, right);
}

Var Var::operator|(const Var& right) const {
    return Binary(TOK_OR, *this, right);
}

Var Var::operator^(const Var& right) const {
    return Binary(TOK_XOR, *this, right);
}

Var Var::operator~() const {
    return Var(~GetInt(), kNoName);
}

bool Var::operator&&(const Var& right) const {
    return Test(TOK_LOG_AND, *this, right);
}

bool Var::operator||(const Var& right) const {
    return Test(TOK_LOG_OR, *this, right);
}

bool Var::operator!() const {
    return !GetBool();
}

bool Var::operator==(const Var& right) const {
    return Test(TOK_EQ, *this, right);
}

bool Var::operator!=(const Var& right) const {
    return Test(TOK_NOT_EQ, *this, right);
}

bool Var::operator<(const Var& right) const {
    return Test(TOK_LESS, *this, right);
}

bool Var::operator<=(const Var& right) const {
    return Test(TOK_LEQ, *this, right);
}

bool Var::operator>(const Var& right) const {
    return Test(TOK_GREATER, *this, right);
}

bool Var::operator>=(const Var& right) const {
    return Test(TOK_GEQ, *this, right);
}

Var& Var::operator+=(const Var& right) {
    if (m_kind != VarKind::List) return Compound(TOK_ADD, *this, right);
    if (right.m_kind != VarKind::List) {
        AddItem(right);
        return *this;
    }
    m_items.AddList(right.m_items);
    return *this;
}

Var& Var::operator-=(const Var& right) {
    return Compound(TOK_SUB, *this, right);
}

Var& Var::operator*=(const Var& right) {
    return Compound(TOK_MUL, *this, right);
}

Var& Var::operator/=(const Var& right) {
    return Compound(TOK_DIV, *this, right);
}

Var& Var::operator%=(const Var& right) {
    return Compound(TOK_MOD, *this, right);
}

Var& Var::operator<<=(const Var& right) {
    return Compound(TOK_SHL, *this, right);
}

Var& Var::operator>>=(const Var& right) {
    return Compound(TOK_SHR, *this, right);
}

Var& Var::operator&=(const Var& right) {
    return Compound(TOK_AND, *this, right);
}

Var& Var::operator|=(const Var& right) {
    return Compound(TOK_OR, *this, right);
}

Var& Var::operator^=(const Var& right) {
    return Compound(TOK_XOR, *this, right);
}

}  // namespace brenta
