// What the compiler asks about expression trees.
#pragma once

#include <vector>

#include "script/sub_expression.h"

namespace brenta {

using ExpressionNode = ExpressionStatement::SubExpr;

/// What an expression is there for. The value of an assignment is left to the tree.
enum class Wanted { Value, Effect };

/// Whether an expression, the root of a statement, is one that is lowered to instructions. The others, which
/// nobody writes on purpose (operands side by side, brackets with nothing in them) or hardly ever
/// (assignments within expressions, targets several steps below a variable), are evaluated as trees. Decided
/// for whole expressions, by their form alone: the names in a tree have to be in cells.
bool IsLowered(const ExpressionNode& root, Wanted wanted);

/// Whether evaluating an operand can run code that changes a variable: a call, or a request to an object.
bool CanRunCode(const ExpressionNode* node);

/// The items of a list or of arguments, first to last.
std::vector<const ExpressionNode*> ItemsOf(const ExpressionNode& contents);

/// Calls `visit` for every node of the tree.
template <class Visit>
void VisitNodes(const ExpressionNode* root, Visit visit) {
    std::vector<const ExpressionNode*> pending;
    for (const ExpressionNode* node = root; node != nullptr;) {
        visit(*node);
        if (node->right != nullptr) pending.push_back(node->right);
        node = node->left;
        if (node != nullptr || pending.empty()) continue;
        node = pending.back();
        pending.pop_back();
    }
}

}  // namespace brenta
