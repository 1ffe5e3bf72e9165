#include "script/code/compiler.h"
#include "script/code/constants.h"

namespace brenta {
namespace {

using Node = ExpressionNode;

constexpr std::int64_t kRegisterSize = sizeof(Value);

/// The general form of an operator, and those for two registers and for a register and a fixed place.
struct Forms {
    int kind;
    Op general;
    Op registers;
    Op fixed;
};

constexpr Forms kForms[] = {
    {TOK_ADD, Op::Add, Op::AddRegisters, Op::AddFixed},
    {TOK_SUB, Op::Subtract, Op::SubtractRegisters, Op::Subtract},
    {TOK_MUL, Op::Multiply, Op::MultiplyRegisters, Op::MultiplyFixed},
    {TOK_DIV, Op::Divide, Op::Divide, Op::Divide},
    {TOK_MOD, Op::Remainder, Op::Remainder, Op::Remainder},
};

Op OpOf(int kind, Origin left, Origin right) {
    for (const Forms& forms : kForms) {
        if (forms.kind != kind) continue;
        if (left != kFrame) return forms.general;
        return right == kFrame ? forms.registers : forms.fixed;
    }
    return Op::Binary;
}

/// The form with a number on the right; Op::Binary if there is none.
Op NumberOpOf(int kind) {
    switch (kind) {
        case TOK_ADD:
            return Op::AddNumber;
        case TOK_SUB:
            return Op::SubtractNumber;
        case TOK_MOD:
            return Op::RemainderNumber;
        default:
            return Op::Binary;
    }
}

bool IsMethodCallee(const Node& node) {
    return node.kind == TOK_MEMBER && node.parent != nullptr && node.parent->kind == kCallNode &&
           node.parent->left == &node;
}

}  // namespace

bool Compiler::IsSmallNumber(const Node* node) {
    return node != nullptr && node->IsPlainOperand() && node->nodeClass == NodeClass::Constant &&
           node->value.IsInt();
}

/// The value of a statement's expression; null for an empty one.
void Compiler::CompileExpression(const ExpressionStatement* expression, std::int64_t d) {
    if (expression != nullptr && expression->GetRoot() != nullptr)
        return CompileRoot(*expression->GetRoot(), d);
    EmitLoad(nullptr, d, Fixed(&kNullConstant));
}

void Compiler::CompileRoot(const Node& root, std::int64_t d) {
    if (IsLowered(root, Wanted::Value)) return CompileTo(root, d);
    NotePoint();
    Emit(Op::Evaluate, &root).d = d;
}

void Compiler::CompileForEffect(const ExpressionStatement* expression) {
    const Node* root = expression != nullptr ? expression->GetRoot() : nullptr;
    if (root == nullptr) return;
    if (root->nodeClass == NodeClass::Assign) return CompileAssignment(*root);
    const std::int64_t value = NewTemporary();
    CompileRoot(*root, value);
    Emit(Op::Clear, nullptr, value, {kFixed, 0}).n = 1;
    m_top = value;
}

// ---------------------------------------------------------------------------------------------------------
// Operands

/// Where a name or constant is.
Compiler::Operand Compiler::Place(const Node& plain) {
    if (plain.kind != ID) return Fixed(&plain.value);
    const std::int64_t local = NeedsCell(*plain.cell) ? LocalNames::kNone : m_locals.Find(*plain.cell);
    return local != LocalNames::kNone ? Register(local) : Fixed(&plain.cell->value);
}

/// The operand as it is, or in a new temporary.
Compiler::Operand Compiler::OperandOf(const Node& node) {
    if (node.IsPlainOperand()) return Place(node);
    const std::int64_t place = NewTemporary();
    CompileTo(node, place);
    return Register(place);
}

/// Whether the left operand, a plain one, has to be read before the right one is computed.
bool Compiler::MustLoadFirst(const Node& node) {
    if (node.nodeClass == NodeClass::Call) return MustLoadCallee(node);
    const Node& left = *node.left;
    if (left.kind != ID || node.right == nullptr || node.right->IsPlainOperand()) return false;
    // A container is looked at before its index is computed anyway.
    if (CanRunCode(node.right)) return true;
    return Place(left).from == kFixed && node.nodeClass != NodeClass::Subscript;
}

/// The left operand of an operator that stands by itself.
Compiler::Operand Compiler::CompileLeft(const Node& node) {
    if (node.left == nullptr) return Fixed(&kZeroConstant);
    if (!node.left->IsPlainOperand() || !MustLoadFirst(node)) return OperandOf(*node.left);
    const std::int64_t place = NewTemporary();
    EmitLoad(node.left, place, Place(*node.left));
    return Register(place);
}

Compiler::Operand Compiler::CompileRight(const Node& node) {
    return node.right != nullptr ? OperandOf(*node.right) : Fixed(&kZeroConstant);
}

// ---------------------------------------------------------------------------------------------------------
// Trees

/// Goes down the left operands and comes back up. The operand so far is kept in the topmost temporary, which
/// is the one for the result if that is there anyway; above it lie those of the right operand.
void Compiler::CompileTo(const Node& root, std::int64_t d) {
    if (root.IsPlainOperand()) return EmitMove(&root, d, Place(root));
    const std::int64_t top = m_top;
    const bool isTopmost = m_code->IsTemporary(d) && d + kRegisterSize == m_top;
    const std::int64_t temporary = isTopmost ? d : NewTemporary();
    const Node* node = &root;
    while (node->nodeClass != NodeClass::List && node->left != nullptr && !node->left->IsPlainOperand())
        node = node->left;
    Operand left = Fixed(&kZeroConstant);
    if (node->nodeClass != NodeClass::List && node->left != nullptr) left = Place(*node->left);
    while (true) {
        const bool isRoot = node == &root;
        CompileNode(*node, left, temporary, isRoot ? d : temporary);
        m_top = temporary + kRegisterSize;
        if (isRoot) break;
        left = Register(temporary);
        node = node->parent;
    }
    m_top = top;
}

/// One node, with its left operand so far; `temporary` is the topmost one and may hold it.
void Compiler::CompileNode(const Node& node, Operand left, std::int64_t temporary, std::int64_t d) {
    const bool isPlain = node.left != nullptr && node.left->IsPlainOperand();
    if (isPlain && node.nodeClass != NodeClass::List && MustLoadFirst(node)) {
        EmitLoad(node.left, temporary, left);
        left = Register(temporary);
    }
    switch (node.nodeClass) {
        case NodeClass::Binary:
            return CompileBinary(node, left, temporary, d);
        case NodeClass::Unary:
            Emit(Op::Unary, &node, d, OperandOf(*node.right)).n = node.kind;
            return;
        case NodeClass::Call:
            return CompileCall(node, left, temporary, d);
        case NodeClass::List:
            return CompileList(node, temporary, d);
        case NodeClass::Subscript:
            return CompileElement(node, left, d);
        case NodeClass::Member:
            if (IsMethodCallee(node)) return CompileCallee(node, left, temporary);
            NotePoint();
            Emit(Op::GetMember, &node, d, left, Fixed(&NewSite(*node.right))).n = IsTemporary(left) ? 1 : 0;
            return;
        default:
            return;
    }
}

void Compiler::CompileBinary(const Node& node, Operand left, std::int64_t temporary, std::int64_t d) {
    const Op numberOp = NumberOpOf(node.kind);
    if (numberOp != Op::Binary && left.from == kFrame && IsSmallNumber(node.right) &&
        !(numberOp == Op::RemainderNumber && node.right->value.Int() <= 0)) {
        Emit(numberOp, &node, d, left).b = node.right->value.Int();
        return;
    }
    // The temporary is free as long as the left operand is not in it.
    if (!IsTemporary(left)) m_top = temporary;
    const Operand right = CompileRight(node);
    Emit(OpOf(node.kind, left.from, right.from), &node, d, left, right).n = node.kind;
}

/// What the container is must be known to be good before its index is computed.
void Compiler::CompileElement(const Node& node, Operand container, std::int64_t d) {
    if (!node.right->IsPlainOperand()) Emit(Op::CheckContainer, &node, 0, container);
    const Operand index = OperandOf(*node.right);
    NotePoint();
    Emit(Op::GetElement, &node, d, container, index).n = IsTemporary(container) ? 1 : 0;
}

void Compiler::CompileList(const Node& node, std::int64_t temporary, std::int64_t d) {
    if (node.left == nullptr) return EmitMove(&node, d, Fixed(&kNullConstant));
    Emit(Op::NewList, &node).d = temporary;
    const std::int64_t top = m_top;
    for (const Node* item : ItemsOf(*node.left)) {
        const Operand value = OperandOf(*item);
        Emit(Op::Append, item, temporary, value);
        m_top = top;
    }
    if (d != temporary) EmitMove(&node, d, Register(temporary));
}

MemberSite& Compiler::NewSite(const Node& member) {
    return m_code->sites.emplace_back(member.name);
}

// ---------------------------------------------------------------------------------------------------------
// Calls

/// A callee is looked at when its arguments have been computed. That is too late if they can change it, or
/// can fail where it is not defined.
bool Compiler::MustLoadCallee(const Node& call) {
    const Node& callee = *call.left;
    if (callee.kind != ID || call.right == nullptr) return false;
    // A constant is no reason; a name may not be defined, which is to be found after the callee.
    if (call.right->IsPlainOperand() && call.right->kind != ID) return false;
    if (CanRunCode(call.right)) return true;
    const std::size_t index = m_code->loadedCallees.size();
    const bool isLoaded =
        m_model != nullptr ? m_model->loadedCallees[index] : !m_cells.IsGlobal(*callee.cell);
    m_code->loadedCallees.push_back(isLoaded);
    return isLoaded;
}

/// The object whose method is called, and what FindMethod says of it, lie in two temporaries.
void Compiler::CompileCallee(const Node& node, Operand object, std::int64_t temporary) {
    EmitLoad(node.left, temporary, object);
    Instruction& find = Emit(Op::FindMethod, &node);
    find.d = temporary;
    find.b = Fixed(&NewSite(*node.right)).at;
}

/// The arguments lie in the topmost temporaries, where the callee's frame will be; its result comes to lie
/// where the first of them does.
void Compiler::CompileCall(const Node& node, Operand callee, std::int64_t temporary, std::int64_t d) {
    const bool isMethod = IsMethodCallee(*node.left);
    if (isMethod) {
        NewTemporary();
    } else if (!IsTemporary(callee)) {
        m_top = temporary;
    }
    const std::int64_t window = m_top;
    const int count = CompileArguments(node.right);
    m_top = std::max(m_top, window + kRegisterSize);
    m_code->frameBytes = std::max(m_code->frameBytes, m_top);
    const std::int64_t result = isMethod ? temporary : window;
    NotePoint();
    Emit(isMethod ? Op::CallMethod : Op::Call, &node, result, callee).n = count;
    if (d != result) EmitMove(&node, d, Register(result));
}

/// Returns how many there are.
int Compiler::CompileArguments(const Node* contents) {
    if (contents == nullptr) return 0;
    const std::vector<const Node*> items = ItemsOf(*contents);
    for (const Node* item : items)
        CompileTo(*item, NewTemporary());
    return static_cast<int>(items.size());
}

}  // namespace brenta
