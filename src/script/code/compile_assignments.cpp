// Assignments. They stand alone, as statements, steps of loops and initialisers: one within an expression
// makes a tree of it.
#include <algorithm>

#include "script/code/compiler.h"

namespace brenta {
namespace {

using Node = ExpressionNode;

/// The terms t of `x = x + t + t ...`, the first addition first; none if the assignment has not that form, or
/// x is among the terms, or one behind the first is more than a name or a constant.
std::vector<const Node*> TermsOf(const Node& assignment) {
    const NameCell* cell = assignment.left->cell;
    std::vector<const Node*> terms;
    const Node* sum = assignment.right;
    for (; sum != nullptr && sum->kind == TOK_ADD; sum = sum->left) {
        if (sum->right == nullptr || (sum->right->IsVariable() && sum->right->cell == cell)) return {};
        terms.push_back(sum->right);
    }
    std::reverse(terms.begin(), terms.end());
    if (sum == nullptr || !sum->IsVariable() || sum->cell != cell) return {};
    for (std::size_t i = 1; i < terms.size(); ++i)
        if (!terms[i]->IsPlainOperand()) return {};
    return terms;
}

bool IsSameMember(const Node& a, const Node& b) {
    return a.kind == TOK_MEMBER && b.kind == TOK_MEMBER && a.left != nullptr && b.left != nullptr &&
           a.left->IsVariable() && b.left->IsVariable() && a.left->cell == b.left->cell &&
           b.right != nullptr && b.right->IsVariable() && a.right->name == b.right->name;
}

}  // namespace

void Compiler::CompileAssignment(const Node& node) {
    const std::int64_t top = m_top;
    if (!IsLowered(node, Wanted::Effect)) {
        NotePoint();
        Emit(Op::Evaluate, &node, NewTemporary(), {kFixed, 0}).n = 1;
    } else if (node.left->IsVariable()) {
        AssignVariable(node);
    } else if (node.left->kind == TOK_MEMBER) {
        AssignMember(node);
    } else {
        AssignElement(node);
    }
    m_top = top;
}

void Compiler::AssignVariable(const Node& node) {
    const Operand variable = Place(*node.left);
    if (node.kind != TOK_ASSIGN) {
        const Operand operand = OperandOf(*node.right);
        if (variable.from == kFrame) {
            Emit(Op::Combine, &node, variable.at, operand).n = node.kind;
        } else {
            Emit(Op::CombineCell, &node, 0, operand, Fixed(node.left->cell)).n = node.kind;
        }
        return;
    }
    const std::vector<const Node*> terms = TermsOf(node);
    const bool isOneTerm = terms.size() == 1 &&
                           (terms[0]->IsPlainOperand() || (variable.from == kFrame && !CanRunCode(terms[0])));
    if (!terms.empty() && !isOneTerm) return AssignSum(node, terms);
    if (node.right->IsPlainOperand()) return StoreTo(node, Place(*node.right));
    if (variable.from != kFrame && isOneTerm && IsSmallNumber(terms[0])) return AddToCell(node);
    if (variable.from == kFrame) return CompileTo(*node.right, variable.at);
    const std::int64_t value = NewTemporary();
    CompileTo(*node.right, value);
    StoreTo(node, Register(value));
}

/// `x = x + 1` where x is in a cell: an instruction for ints in front of the general ones.
void Compiler::AddToCell(const Node& node) {
    const std::size_t add = Here();
    Emit(Op::AddToCell, &node, node.right->right->value.Int(), {kFixed, 0}, Fixed(node.left->cell));
    const std::int64_t value = NewTemporary();
    CompileTo(*node.right, value);
    StoreTo(node, Register(value));
    m_code->instructions[add].n = static_cast<std::int32_t>(Here() - add);
    m_lastLabel = Here();
}

/// Stores into the variable that the assignment has as its target.
void Compiler::StoreTo(const Node& node, Operand value) {
    const Operand variable = Place(*node.left);
    const bool isTemporary = IsTemporary(value);
    if (variable.from == kFrame) {
        Emit(Op::Store, &node, variable.at, value).n = isTemporary ? 1 : 0;
    } else {
        Emit(Op::StoreCell, &node, 0, value, Fixed(node.left->cell)).n = isTemporary ? 1 : 0;
    }
}

/// `x = x + a + b ...` where x may hold a text or a list, which should grow in place: Grow does it all, or
/// nothing, and then the additions follow one by one.
void Compiler::AssignSum(const Node& node, const std::vector<const Node*>& terms) {
    const std::int64_t sum = NewTemporary();
    EmitLoad(node.left, sum, Place(*node.left));
    const Operand first = OperandOf(*terms[0]);
    const std::size_t grow = Here();
    Emit(Op::Grow, &node, sum, Place(*node.left)).b = static_cast<std::int64_t>(terms.size());
    for (const Node* term : terms)
        Emit(Op::Term, term->parent, 0, term == terms[0] ? first : Place(*term));
    // The last sum goes into the variable itself where that is a register.
    const Operand variable = Place(*node.left);
    for (const Node* term : terms) {
        const bool isStored = term == terms.back() && variable.from == kFrame;
        Emit(Op::Add, term->parent, isStored ? variable.at : sum, Register(sum),
             term == terms[0] ? first : Place(*term));
    }
    if (variable.from != kFrame) StoreTo(node, Register(sum));
    m_code->instructions[grow].n = static_cast<std::int32_t>(Here() - grow);
    m_lastLabel = Here();
}

/// A value to be stored: where it is, if nothing can happen to it before, and it is sure to be defined.
Compiler::Operand Compiler::StoredValue(const Node& node, const Node* runsBetween) {
    if (node.IsPlainOperand() && !CanRunCode(runsBetween)) {
        const Operand place = Place(node);
        if (place.from == kFrame || node.kind != ID) return place;
    }
    const std::int64_t value = NewTemporary();
    CompileTo(node, value);
    return Register(value);
}

void Compiler::AssignElement(const Node& node) {
    const Node& target = *node.left;
    const Operand value = StoredValue(*node.right, target.right);
    const Operand container = Place(*target.left);
    if (!target.right->IsPlainOperand()) Emit(Op::CheckContainer, &target, 0, container);
    const Operand index = OperandOf(*target.right);
    NotePoint();
    Instruction& set = Emit(Op::SetElement, &node, value.at, container, index);
    set.dFrom = value.from;
    set.n = node.kind;
}

void Compiler::AssignMember(const Node& node) {
    const Operand structure = Place(*node.left->left);
    const Node& sum = *node.right;
    const bool isStep = node.kind == TOK_ASSIGN && (sum.kind == TOK_ADD || sum.kind == TOK_SUB) &&
                        sum.left != nullptr && IsSameMember(*node.left, *sum.left) &&
                        IsSmallNumber(sum.right);
    const std::size_t step = Here();
    const Operand site = Fixed(&NewSite(*node.left->right));
    if (isStep) {
        const std::int64_t number = sum.right->value.Int();
        Emit(Op::AddToMember, &node, sum.kind == TOK_ADD ? number : -number, structure, site);
    }
    const Operand value = StoredValue(*node.right, nullptr);
    NotePoint();
    Instruction& set = Emit(Op::SetMember, &node, value.at, structure, site);
    set.dFrom = value.from;
    set.n = node.kind;
    if (!isStep) return;
    m_code->instructions[step].n = static_cast<std::int32_t>(Here() - step);
    m_lastLabel = Here();
}

}  // namespace brenta
