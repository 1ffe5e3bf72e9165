// Conditions of branches and loops.
#include "script/code/compiler.h"

namespace brenta {
namespace {

using Node = ExpressionNode;

/// The jumps that test a relation, in the order of the tokens' relations.
struct RelationJumps {
    int kind;
    Op unless;
    Op unlessNumber;
    Op repeatIf;
    Op stepRepeatIf;  // Op::Jump: there is none
};

constexpr RelationJumps kRelationJumps[] = {
    {TOK_EQ, Op::JumpUnlessEqual, Op::JumpUnlessEqualNumber, Op::RepeatIfEqual, Op::Jump},
    {TOK_NOT_EQ, Op::JumpUnlessUnequal, Op::JumpUnlessUnequalNumber, Op::RepeatIfUnequal, Op::Jump},
    {TOK_LESS, Op::JumpUnlessLess, Op::JumpUnlessLessNumber, Op::RepeatIfLess, Op::StepRepeatIfLess},
    {TOK_GREATER, Op::JumpUnlessGreater, Op::JumpUnlessGreaterNumber, Op::RepeatIfGreater, Op::Jump},
    {TOK_LEQ, Op::JumpUnlessAtMost, Op::JumpUnlessAtMostNumber, Op::RepeatIfAtMost, Op::StepRepeatIfAtMost},
    {TOK_GEQ, Op::JumpUnlessAtLeast, Op::JumpUnlessAtLeastNumber, Op::RepeatIfAtLeast, Op::Jump},
};

const RelationJumps* JumpsOf(const Node& node) {
    for (const RelationJumps& jumps : kRelationJumps)
        if (jumps.kind == node.kind) return &jumps;
    return nullptr;
}

}  // namespace

/// Goes on behind a condition that holds and jumps on one that does not. An empty condition does not hold.
void Compiler::CompileCondition(const ExpressionStatement* condition, Label& otherwise) {
    const Node* root = condition != nullptr ? condition->GetRoot() : nullptr;
    if (root == nullptr) return EmitJump(Op::Jump, otherwise);
    const std::int64_t top = m_top;
    const RelationJumps* jumps = JumpsOf(*root);
    if (jumps != nullptr && IsLowered(*root, Wanted::Value)) {
        CompileRelation(*root, jumps->unless, jumps->unlessNumber);
    } else {
        const std::int64_t value = NewTemporary();
        CompileRoot(*root, value);
        Emit(Op::JumpUnless, root, 0, Register(value));
    }
    otherwise.push_back(Here() - 1);
    m_top = top;
}

/// A jump with the two sides of a relation as operands; the distance is left open.
void Compiler::CompileRelation(const Node& relation, Op jump, Op jumpNumber) {
    const std::int64_t top = m_top;
    const Operand left = CompileLeft(relation);
    if (left.from == kFrame && IsSmallNumber(relation.right)) {
        Emit(jumpNumber, &relation, 0, left).b = relation.right->value.Int();
    } else {
        const Operand right = CompileRight(relation);
        Emit(jump, &relation, 0, left, right);
    }
    m_top = top;
}

/// The end of a turn. Where the condition is a relation of plain operands, it is tested here and the loop
/// goes back to its body; else to the condition at its top.
void Compiler::CompileRepeat(const ExpressionStatement* condition, const Node* at, std::size_t top,
                             std::size_t body) {
    const Node* root = condition != nullptr ? condition->GetRoot() : nullptr;
    const RelationJumps* jumps = root != nullptr ? JumpsOf(*root) : nullptr;
    const bool isPlain = jumps != nullptr && root->left != nullptr && root->left->IsPlainOperand() &&
                         root->right != nullptr && root->right->IsPlainOperand();
    if (!isPlain) {
        const std::int32_t distance = DistanceTo(top);
        Emit(Op::Repeat, at).n = distance;
        return;
    }
    if (jumps->stepRepeatIf != Op::Jump) FuseStep(*root, jumps->stepRepeatIf, body);
    const std::int32_t distance = DistanceTo(body);
    Emit(jumps->repeatIf, root, 0, Place(*root->left), Place(*root->right)).n = distance;
}

/// `i = i + 1` followed by the test of i: put in front of both, one instruction does for them as long as they
/// deal with ints, and leaves it to them otherwise.
void Compiler::FuseStep(const Node& relation, Op op, std::size_t body) {
    if (Here() == body || m_lastLabel == Here()) return;
    const Instruction step = m_code->instructions.back();
    const Operand variable = Place(*relation.left);
    if (step.op != Op::AddNumber || variable.from != kFrame || step.d != variable.at || step.a != step.d)
        return;
    const Node* stepNode = m_code->nodes.back();
    m_code->instructions.pop_back();
    m_code->nodes.pop_back();
    const std::int32_t distance = DistanceTo(body);
    Instruction& fused = Emit(op, &relation, step.d, {kFixed, step.b}, Place(*relation.right));
    fused.n = distance;
    m_code->instructions.push_back(step);
    m_code->nodes.push_back(stepNode);
}

}  // namespace brenta
