// What the executor does with a node, by its kind.
#pragma once

#include <array>
#include <cstdint>

#include "brenta/lexer.h"
#include "script/token_classes.h"

namespace brenta {

/// Node kinds that the parser makes itself, behind the lexer's token identifiers.
enum NodeKind : int { kCallNode = 77, kListNode = 78, kSubscriptNode = 79 };

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

inline NodeClass NodeClassOf(int kind) {
    const auto index = static_cast<std::size_t>(kind);
    return index < kTokenClassCount ? detail::kNodeClasses[index] : NodeClass::Other;
}

}  // namespace brenta
