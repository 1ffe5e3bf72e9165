// What the executor does with a node, by its kind.
#pragma once

#include <array>
#include <cstdint>

#include "script/sub_expression.h"
#include "script/token_classes.h"

namespace brenta {

enum class NodeClass : std::uint8_t {
    Other,   ///< nothing that has a value: `++`, `,` outside a list, keywords
    Assign,  ///< = and the compound assignments
    Binary,
    Unary,
    Constant,
    Name,
    Call,
    List,
    Subscript,
    Member,
};

namespace detail {

constexpr std::array<NodeClass, kTokenClassCount> MakeNodeClasses() {
    std::array<NodeClass, kTokenClassCount> classes{};
    const auto fill = [&classes](int first, int last, NodeClass nodeClass) {
        for (int kind = first; kind <= last; ++kind)
            classes[static_cast<std::size_t>(kind)] = nodeClass;
    };
    fill(TOK_ASSIGN, TOK_OR_ASSIGN, NodeClass::Assign);
    fill(TOK_LOG_OR, TOK_MOD, NodeClass::Binary);
    fill(TOK_INV, TOK_NOT, NodeClass::Unary);
    fill(TOK_TRUE, TOK_NULL, NodeClass::Constant);
    fill(CHAR_CONSTANT, SLITERAL, NodeClass::Constant);
    fill(ID, ID, NodeClass::Name);
    fill(TOK_MEMBER, TOK_MEMBER, NodeClass::Member);
    fill(kCallNode, kCallNode, NodeClass::Call);
    fill(kListNode, kListNode, NodeClass::List);
    fill(kSubscriptNode, kSubscriptNode, NodeClass::Subscript);
    return classes;
}

inline constexpr std::array<NodeClass, kTokenClassCount> kNodeClasses = MakeNodeClasses();

}  // namespace detail

inline NodeClass ClassOf(const ExpressionStatement::SubExpr& node) {
    const auto kind = static_cast<std::size_t>(node.kind);
    return kind < kTokenClassCount ? detail::kNodeClasses[kind] : NodeClass::Other;
}

/// A name or a constant that stands alone.
inline bool IsPlainOperand(const ExpressionStatement::SubExpr& node) {
    if (!node.IsLeaf()) return false;
    const NodeClass nodeClass = ClassOf(node);
    return nodeClass == NodeClass::Name || nodeClass == NodeClass::Constant;
}

/// The value of a plain operand where it lies; null for every other node, and for a name that is not bound.
inline const Value* ValueInPlace(const ExpressionStatement::SubExpr& node) {
    if (!node.IsLeaf()) return nullptr;
    if (node.kind == ID) return node.cell->value.IsUndefined() ? nullptr : &node.cell->value;
    return ClassOf(node) == NodeClass::Constant ? &node.value : nullptr;
}

}  // namespace brenta
