// Values and operators, the slow way: texts, lists, null, what is not defined, and what fails.
#include <utility>

#include "script/code/machine.h"
#include "script/taken_value.h"

namespace brenta {
namespace {

using Node = ExpressionNode;

/// The assignment that an operator is a part of, which is the root of its expression.
const Node& AssignmentOf(const Node& node) {
    const Node* at = &node;
    while (at->parent != nullptr)
        at = at->parent;
    return *at;
}

bool HasNumber(Op op) {
    switch (op) {
        case Op::AddNumber:
        case Op::SubtractNumber:
        case Op::RemainderNumber:
        case Op::JumpUnlessEqualNumber:
        case Op::JumpUnlessUnequalNumber:
        case Op::JumpUnlessLessNumber:
        case Op::JumpUnlessGreaterNumber:
        case Op::JumpUnlessAtMostNumber:
        case Op::JumpUnlessAtLeastNumber:
            return true;
        default:
            return false;
    }
}

/// Whether the next instruction stores the sum at hand into the variable that is its left operand.
bool IsStoredBack(const Instruction* pc, const Value& left) {
    const Instruction* next = pc + 1;
    return next->op == Op::StoreCell && next->aFrom == kFrame && next->a == pc->d &&
           &reinterpret_cast<NameCell*>(next->b)->value == &left;
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------
// Values

bool Machine::SlowLoad(const Instruction* pc) {
    const Node* node = m_frame->code->nodes[m_frame->code->IndexOf(pc)];
    m_frame->pc = pc;
    Value value = pc->n != 0 ? Value(std::move(A(pc))) : Value(A(pc));
    if (value.IsUndefined() && node != nullptr) return m_executor.ReportUndefined(*node);
    D(pc) = std::move(value);
    return true;
}

/// Into a temporary, or into a variable: then what it holds has a say.
bool Machine::StoreResult(const Instruction* pc, Value result) {
    Value& d = D(pc);
    if (d.IsList() && !m_executor.FitsList(result))
        return m_executor.Fail(AssignmentOf(m_frame->code->NodeAt(pc)),
                               "Assigning a scalar to a structure or list.");
    d = std::move(result);
    return true;
}

bool Machine::SlowStore(const Instruction* pc) {
    const Node& node = Note(pc);
    Value value = TakeA(pc);
    if (value.IsUndefined()) {
        // What a foreach walks goes to a register, too: then the name is the whole expression.
        const Node& root = AssignmentOf(node);
        return m_executor.ReportUndefined(root.nodeClass == NodeClass::Assign ? *root.right : root);
    }
    return StoreResult(pc, std::move(value));
}

bool Machine::SlowStoreCell(const Instruction* pc) {
    const Node& node = Note(pc);
    Value value = TakeA(pc);
    if (value.IsUndefined()) return m_executor.ReportUndefined(*node.right);
    return m_executor.AssignValue(node, value, nullptr);
}

// ---------------------------------------------------------------------------------------------------------
// Operators

bool Machine::Apply(const Node& node, const Value& left, const Value& right, Value& result) {
    if (left.IsUndefined()) return m_executor.ReportUndefined(*node.left);
    if (right.IsUndefined()) return m_executor.ReportUndefined(*node.right);
    return m_executor.Apply(node, left, right, result);
}

/// `list = list + item`, when nothing is in the way.
bool Machine::AppendToSelf(const Instruction* pc) {
    if (pc->op != Op::Add && pc->op != Op::AddRegisters && pc->op != Op::AddFixed) return false;
    Value& list = A(pc);
    const Value& item = B(pc);
    return &list == &D(pc) && list.IsList() && !item.IsCounted() && !item.IsUndefined() &&
           AppendItem(list, item) == ListLimit::None;
}

/// A left operand that is a temporary, or the variable that the result is for, grows in place.
bool Machine::SlowBinary(const Instruction* pc) {
    if (AppendToSelf(pc)) return true;
    const Node& node = Note(pc);
    const Value number = HasNumber(pc->op) ? Value::OfInt(static_cast<int>(pc->b)) : Value();
    Value& left = A(pc);
    const Value& right = HasNumber(pc->op) ? number : B(pc);
    if (&left == &D(pc) && left.IsCounted() && node.kind == TOK_ADD) {
        if (!Apply(node, left, right, left)) return false;
        DropB(pc);
        return true;
    }
    Value result = Value::OfInt(0);
    if (node.kind == TOK_ADD && left.IsCounted() && &left != &right && IsStoredBack(pc, left)) {
        result = left;
        TakenValue taken(left, result);
        if (!Apply(node, result, right, result)) return false;
        DropB(pc);
        D(pc) = std::move(result);
        return true;
    }
    if (IsTemporary(pc->aFrom, pc->a)) {
        result = std::move(left);
        if (!Apply(node, result, right, result)) return false;
    } else if (!Apply(node, left, right, result)) {
        return false;
    }
    if (!HasNumber(pc->op)) DropB(pc);
    return StoreResult(pc, std::move(result));
}

bool Machine::SlowUnary(const Instruction* pc) {
    const Node& node = Note(pc);
    Value value = TakeA(pc);
    if (value.IsUndefined()) return m_executor.ReportUndefined(*node.right);
    const OpError error = UnaryOperator(static_cast<TokId>(node.kind), value, value);
    if (error != OpError::None) return m_executor.FailOperator(node, error);
    return StoreResult(pc, std::move(value));
}

bool Machine::SlowCombine(const Instruction* pc) {
    const Node& node = Note(pc);
    const Value operand = TakeA(pc);
    if (operand.IsUndefined()) return m_executor.ReportUndefined(*node.right);
    Value& variable = D(pc);
    if (variable.IsList() && !m_executor.FitsList(operand))
        return m_executor.Fail(node, "Assigning a scalar to a structure or list.");
    return m_executor.Combine(node, variable, operand);
}

bool Machine::SlowCombineCell(const Instruction* pc) {
    const Node& node = Note(pc);
    Value operand = TakeA(pc);
    if (operand.IsUndefined()) return m_executor.ReportUndefined(*node.right);
    return m_executor.AssignValue(node, operand, nullptr);
}

/// `x = x + a + b ...` at once, where d is a copy of what x held before the terms were computed. If x still
/// holds that text or list, and nobody else does, the terms are appended to it: the next instruction is then
/// the one behind the assignment. Else the additions that follow do their work.
const Instruction* Machine::Grow(const Instruction* pc) {
    Value& sum = D(pc);
    const Instruction* term = pc + 1;
    const Instruction* end = term + pc->b;
    Note(pc);
    if (sum.IsList() && pc->b > 1) return end;
    TakenValue taken(A(pc), sum);
    if (!taken.IsTaken()) return end;
    for (; term != end; ++term) {
        const Node& node = m_frame->code->NodeAt(term);
        if (!Apply(node, sum, A(term), sum)) {
            taken.Undo();
            return nullptr;
        }
        DropA(term);
    }
    taken.PutBack();
    sum.Clear();
    return pc + pc->n;
}

// ---------------------------------------------------------------------------------------------------------
// Conditions

bool Machine::SlowRelation(const Instruction* pc, bool& holds) {
    const Node& node = Note(pc);
    const bool hasNumber = HasNumber(pc->op);
    const Value right =
        hasNumber ? Value::OfInt(static_cast<int>(pc->b)) : Take(B(pc), IsTemporary(pc->bFrom, pc->b));
    const Value left = TakeA(pc);
    Value result;
    if (!Apply(node, left, right, result)) return false;
    holds = result.Int() != 0;
    return true;
}

bool Machine::SlowCondition(const Instruction* pc, bool& holds) {
    const Node& node = Note(pc);
    const Value value = TakeA(pc);
    const OpError error = BoolOf(value, holds);
    return error == OpError::None || m_executor.FailOperator(node, error);
}

bool Machine::Interrupted(const Instruction* pc) {
    m_frame->pc = pc;
    const Node* node = m_frame->code->nodes[m_frame->code->IndexOf(pc)];
    return m_executor.Interrupted(node != nullptr ? node->Position() : ScriptPosition());
}

}  // namespace brenta
