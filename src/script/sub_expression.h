// The node of an expression tree.
//
// Shape. A binary operator has its operands left and right; a unary operator has no left child; a leaf
// (constant, name) has usually none, but two operands in a row put one under the other. A call node has the
// callee left and the arguments right, a subscript node the container left and the index right, a list node
// its contents left (and, when an operator-less neighbour was drawn under it, something right). Several
// arguments or contents hang together by `,` nodes that group from the left.
//
// Size. Along the left a tree is as deep as its text is long: a sum of a million terms is a million nodes
// deep. Whoever walks a tree goes down the left in a loop. Along the right it is a dozen levels deep in
// ordinary texts; the bracket limit bounds it, but only at about 20,000 (each level of brackets can hang 200
// groups under one another), so a walk that recurses to the right must watch the stack.
#pragma once

#include <cstdint>

#include "brenta/lexer.h"
#include "brenta/statements.h"
#include "script/name_cells.h"
#include "script/node_class.h"
#include "script/value.h"

namespace brenta {

/// A node knows what it needs to run: an identifier its name cell, a constant its value. Nothing is looked up
/// later.
struct ExpressionStatement::SubExpr {
    std::int16_t kind = 0;  ///< TokId or NodeKind
    bool barrier = false;   ///< stops the climb of an insertion; never set
    NodeClass nodeClass = NodeClass::Other;
    std::int16_t priority = 0;  ///< of the kind, raised for the root of a bracketed group
    std::int32_t line = 0;
    STRID file = kNoName;
    Value value;               ///< constants: the value; all others null
    NameCell* cell = nullptr;  ///< identifiers: the cell of their name in the engine
    STRID name = kNoName;      ///< identifiers: their name
    /// Names and constants without operands of their own: where the value lies, in the node or the cell.
    const Value* place = nullptr;
    SubExpr* left = nullptr;
    SubExpr* right = nullptr;
    SubExpr* parent = nullptr;  ///< null for the root

    ScriptPosition Position() const { return {file, line}; }
    bool IsLeaf() const { return left == nullptr && right == nullptr; }
    bool IsPlainOperand() const { return place != nullptr; }
    bool IsVariable() const { return place != nullptr && kind == ID; }
    /// The value of a plain operand; null for other nodes, and for a name that nothing is bound to.
    const Value* ValueInPlace() const { return place != nullptr && !place->IsUndefined() ? place : nullptr; }
};

}  // namespace brenta
