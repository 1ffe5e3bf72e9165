// The node of an expression tree and the arena that holds the nodes of one expression.
#pragma once

#include <cstdint>

#include "brenta/lexer.h"
#include "brenta/statements.h"
#include "script/name_cells.h"
#include "script/value.h"

namespace brenta {

/// Node kinds that the parser makes itself, behind the lexer's token identifiers.
enum NodeKind : int { kCallNode = 77, kListNode = 78, kSubscriptNode = 79 };

/// A node knows what it needs to run: an identifier its name cell, a constant its value. Nothing is looked up
/// later.
struct ExpressionStatement::SubExpr {
    std::int16_t kind = 0;  ///< TokId or NodeKind
    bool barrier = false;   ///< stops the climb of an insertion; never set
    std::int16_t priority = 0;
    std::int32_t line = 0;
    STRID file = kNoName;
    Value value;               ///< constants: the value; all others null
    NameCell* cell = nullptr;  ///< identifiers: the cell of their name in the engine
    STRID name = kNoName;      ///< identifiers: their name
    SubExpr* left = nullptr;
    SubExpr* right = nullptr;
    SubExpr* parent = nullptr;

    ScriptPosition Position() const { return {file, line}; }
};

}  // namespace brenta
