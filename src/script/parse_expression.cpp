// Expressions: tokens become nodes, and each node finds its own place in the tree.
//
//   expression := { token } before one of ; ) ] } or the end of the text
//   token      := constant | name | operator | keyword | `as` any
//              |  `{` expression `}`          a list
//              |  name `[` expression `]`     a subscript
//              |  name `(` expression `)`     a call
//              |  `(` expression `)`          a group
//
// Insertion. There is no rule per level of precedence. A node starts where the last one was placed and climbs
// towards the root until it stands under a node of strictly lower priority; it becomes that node's right
// child and takes the subtree that was there as its own left operand. If no node is lower, it becomes the
// root over everything so far. Three things follow.
//
//   - Equal priorities stop nothing, so operators of one row group from the left: `a - b - c` is (a - b) - c,
//     and `a = b = c` is (a = b) = c.
//   - A bracketed group is built as a tree of its own; its root then gets a boost of 50 (a subscript 40),
//     more than any token has, and is placed like a single operand.
//   - Each node that is climbed past leaves the right edge of the tree for good, so a whole expression is
//     built in linear time, whatever its shape.
//
// Placing a node can overwrite its left child: a group or list that directly follows an operand takes that
// operand there and loses its own, `(1 + 2) (10 + 4)` is 3 + 4. The nodes lost stay in the arena.
//
// Whether a bracket is a call, a subscript or a group depends on the token before it: it must be a name. So
// `x[1][2]` and `(x)[1]` are errors, `a.b[1]` is fine, and the second group of `f(1)(2)` is an operand.
#include <vector>

#include "brenta/string.h"
#include "foundation/lack_of_memory.h"
#include "script/expression_nodes.h"
#include "script/parser.h"
#include "script/token_classes.h"
#include "script/value_limits.h"
#include "script/value_operators.h"

namespace brenta {
namespace {

using SubExpr = ExpressionStatement::SubExpr;

constexpr int kGroupBoost = 50;
constexpr int kSubscriptBoost = 40;
constexpr int kListBoost = 0;

static_assert(kMaxExpressionDepth * kGroupBoost + 46 <= INT16_MAX, "priorities must fit their 16 bits");

/// The number of nodes that the expression at `iter` needs at most, but for what a misplaced `as` hides.
std::size_t CountNodes(TIter<ScriptToken*> iter) {
    std::size_t count = 0;
    std::size_t open = 0;
    for (const ScriptToken* token = CurrentToken(iter); !IsEnd(token); token = CurrentToken(iter)) {
        if (EndsExpression(token->id)) {
            if (open == 0 || token->id == TOK_SEMI) break;
            --open;
        } else {
            ++count;
            if (token->id == TOK_LPAREN || token->id == TOK_LBRACKET || token->id == TOK_LCURLY) ++open;
        }
        iter.Next();
    }
    return count;
}

SubExpr* RootOf(SubExpr* node) {
    while (node != nullptr && node->parent != nullptr) {
        node = node->parent;
    }
    return node;
}

/// `as` and the token behind it say nothing inside an expression.
void SkipTypeAnnotation(TIter<ScriptToken*>& iter) {
    iter.Next();
    if (!IsEnd(CurrentToken(iter))) iter.Next();
}

/// The value of a constant; null for every other token.
Value ConstantOf(const CCoreScriptEngine& engine, const ScriptToken& token) {
    switch (token.id) {
        case CHAR_CONSTANT:
        case BINARY_CONSTANT:
        case HEX_CONSTANT: {
            int value = 0;
            engine.ExtractTokenInteger(token, value);
            return Value::OfInt(value);
        }
        case DEC_CONSTANT:
            return Value::OfInt(static_cast<int>(token.number));
        case FLOAT_CONSTANT:
            return Value::OfFloat(token.number);
        case SLITERAL:
            return Value::OfString({token.text, token.length});
        case TOK_TRUE:
        case TOK_FALSE:
            return Value::OfBool(token.id == TOK_TRUE);
        default:
            return Value();
    }
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------
// Parsing

ExpressionStatement* CCoreScriptEngine::ParseExpression(TIter<ScriptToken*>& iter) {
    auto expression = MakeStatement<ExpressionStatement>();
    if (!expression->ParseExpression(*this, iter)) return nullptr;
    m_pState->openStatement = true;
    return expression.release();
}

bool ExpressionStatement::ParseExpression(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter) {
    Clear();
    if (const std::size_t count = CountNodes(iter); count > 0) m_pNodes = ExpressionNodes::Create(count);
    if (ParseSubExpression(engine, iter, &m_pRoot)) return true;
    Clear();
    return false;
}

bool ExpressionStatement::ParseSubExpression(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter,
                                             SubExpr** root) {
    SubExpr* current = nullptr;
    bool afterName = false;
    for (;;) {
        const ScriptToken* const token = CurrentToken(iter);
        if (token == nullptr || EndsExpression(token->id)) break;
        switch (token->id) {
            case TOK_AS:
                SkipTypeAnnotation(iter);
                continue;
            case TOK_LCURLY:
                if (!ParseListLiteral(engine, iter, &current)) return false;
                break;
            case TOK_LBRACKET:
            case TOK_LPAREN:
                if (!ParseBracket(engine, iter, afterName, &current)) return false;
                break;
            default:
                if (!ParseToken(engine, *token, &current)) return false;
                iter.Next();
                break;
        }
        afterName = token->id == ID;
    }
    *root = RootOf(current);
    return true;
}

// A constant, a name or an operator.
bool ExpressionStatement::ParseToken(CCoreScriptEngine& engine, const ScriptToken& token, SubExpr** current) {
    if (token.length > kMaxStringLength) {
        engine.Messages().Error(PositionOf(&token), "String too long.");
        return false;
    }
    SubExpr* const node = NewNode(token, token.id);
    if (token.id == ID) {
        node->name = token.GetValue();
        node->cell = &engine.Cells().CellOf(node->name);
        node->place = &node->cell->value;
    } else {
        node->value = ConstantOf(engine, token);
        if (node->nodeClass == NodeClass::Constant) node->place = &node->value;
    }
    InsertSubExpression(node, current);
    return true;
}

// list := `{` expression `}`
bool ExpressionStatement::ParseListLiteral(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter,
                                           SubExpr** current) {
    SubExpr* const list = NewNode(*CurrentToken(iter), kListNode);
    iter.Next();
    if (!ParsePostfix(engine, iter, TOK_RCURLY, kListBoost, &list->left)) return false;
    if (list->left != nullptr) list->left->parent = list;
    InsertSubExpression(list, current);
    return true;
}

// subscript := name `[` expression `]`    call := name `(` expression `)`    group := `(` expression `)`
bool ExpressionStatement::ParseBracket(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, bool afterName,
                                       SubExpr** current) {
    const ScriptToken& bracket = *CurrentToken(iter);
    const bool subscript = bracket.id == TOK_LBRACKET;
    if (subscript && !afterName) {
        engine.Messages().Error(PositionOf(&bracket), "Illigal expression.");
        return false;
    }
    if (afterName) InsertSubExpression(NewNode(bracket, subscript ? kSubscriptNode : kCallNode), current);
    iter.Next();
    return subscript ? ParsePostfix(engine, iter, TOK_RBRACKET, kSubscriptBoost, current)
                     : ParsePostfix(engine, iter, TOK_RPAREN, kGroupBoost, current);
}

// What stands between two brackets, entered behind the opening one and left behind the closing one. Nothing
// between them inserts nothing.
bool ExpressionStatement::ParsePostfix(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, TokId closing,
                                       int priorityBoost, SubExpr** into) {
    EngineState& state = engine.State();
    const NestingLevel level(state.expressionDepth);
    if (state.expressionDepth > kMaxExpressionDepth || IsStackLow(engine)) {
        ReportLimit(engine, CurrentToken(iter), "Expression nested too deeply.");
        return false;
    }
    SubExpr* root = nullptr;
    if (!ParseSubExpression(engine, iter, &root)) return false;
    if (!engine.AssertToken(CurrentToken(iter), closing)) return false;
    iter.Next();
    if (root != nullptr) {
        root->priority = static_cast<std::int16_t>(root->priority + priorityBoost);
        InsertSubExpression(root, into);
    }
    return true;
}

void ExpressionStatement::InsertSubExpression(SubExpr* node, SubExpr** current) {
    SubExpr* above = *current;
    SubExpr* below = nullptr;
    while (above != nullptr && !above->barrier && above->priority >= node->priority) {
        below = above;
        above = above->parent;
    }
    SubExpr* operand = below;
    if (above != nullptr && !above->barrier) {
        operand = above->right;
        above->right = node;
        above->place = nullptr;
        node->parent = above;
    } else if (above != nullptr) {
        operand = RootOf(above);
    }
    if (operand != nullptr) {
        node->left = operand;
        node->place = nullptr;
        operand->parent = node;
    }
    *current = node;
}

SubExpr* ExpressionStatement::NewNode(const ScriptToken& token, int kind) {
    if (m_pNodes == nullptr) m_pNodes = ExpressionNodes::Create(1);
    SubExpr* const node = m_pNodes->New();
    node->kind = static_cast<std::int16_t>(kind);
    node->nodeClass = NodeClassOf(kind);
    node->priority = TokenPriority(kind);
    node->line = token.line;
    node->file = token.file;
    return node;
}

// ---------------------------------------------------------------------------------------------------------
// Describing

namespace {

void DescribeToken(const SubExpr& node, CoreString& out) {
    if (node.kind == ID) {
        out += StrPtr(node.name);
        return;
    }
    if (!IsOperandKind(node.kind) || node.value.IsNull()) {
        out += KindText(node.kind);
        return;
    }
    const int start = out.GetLength();
    if (node.value.IsString()) out += '"';
    static_cast<void>(OrWithoutMemory(OpError::None, [&] { return AppendText(node.value, out); }));
    if (node.value.IsString()) out += '"';
    if (node.value.IsFloat() && out.Find('.', false, start) < 0) out += ".0";
}

/// A node whose text has been begun: what is left to write of it.
struct Pending {
    const SubExpr* node;
    bool leftDone;
};

}  // namespace

// With a stack of its own: trees are as deep on their left as their text is long.
void ExpressionStatement::Describe(CoreString& out) const {
    std::vector<Pending> pending;
    const SubExpr* node = m_pRoot;
    while (node != nullptr || !pending.empty()) {
        if (node != nullptr) {
            if (!node->IsLeaf()) out += '(';
            DescribeToken(*node, out);
            if (node->IsLeaf()) {
                node = nullptr;
                continue;
            }
            out += node->left != nullptr ? " " : " _";
            pending.push_back({node, false});
            node = node->left;
            continue;
        }
        Pending& last = pending.back();
        if (!last.leftDone && last.node->right != nullptr) {
            last.leftDone = true;
            out += ' ';
            node = last.node->right;
            continue;
        }
        out += ')';
        pending.pop_back();
    }
}

}  // namespace brenta
