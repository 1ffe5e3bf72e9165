#include "script/code/shapes.h"

#include <algorithm>

namespace brenta {
namespace {

using Node = ExpressionNode;

/// Operands nest to the right about as deep as brackets do; what is deeper is not worth lowering.
constexpr int kMaxDepth = 50;
/// Arguments have to fit into a frame.
constexpr int kMaxArguments = 100;

bool IsValue(const Node* node, int depth);

bool IsMemberName(const Node* node) {
    return node != nullptr && node->IsVariable();
}

/// Every comma of a list has both sides; lists, not arguments, may end with one.
bool AreItems(const Node& contents, bool mayTrail, int maxCount, int depth) {
    const Node* node = &contents;
    int count = 1;
    for (; node->kind == TOK_COMMA; node = node->left, ++count) {
        const bool trails = mayTrail && node == &contents && node->right == nullptr;
        if (node->left == nullptr || count == maxCount) return false;
        if (!trails && !IsValue(node->right, depth)) return false;
    }
    return IsValue(node, depth);
}

bool AreRightOperands(const Node& node, int depth) {
    switch (node.nodeClass) {
        case NodeClass::Binary:
            return node.right == nullptr || IsValue(node.right, depth);
        case NodeClass::Unary:
            return node.left == nullptr && IsValue(node.right, depth);
        case NodeClass::Call:
            if (node.left == nullptr) return false;
            return node.right == nullptr || AreItems(*node.right, false, kMaxArguments, depth);
        case NodeClass::Member:
            return node.left != nullptr && IsMemberName(node.right);
        case NodeClass::Subscript:
            return node.left != nullptr && IsValue(node.right, depth);
        case NodeClass::List:
            return node.right == nullptr;
        default:
            return false;
    }
}

/// An operand: anything but an assignment.
bool IsValue(const Node* node, int depth) {
    if (node == nullptr || depth == kMaxDepth) return false;
    for (; node != nullptr && !node->IsPlainOperand(); node = node->left) {
        if (!AreRightOperands(*node, depth + 1)) return false;
        if (node->nodeClass == NodeClass::List && node->left != nullptr)
            return AreItems(*node->left, true, -1, depth + 1);
    }
    return true;
}

bool IsTarget(const Node* target) {
    if (target == nullptr) return false;
    if (target->IsVariable()) return true;
    if (target->left == nullptr || !target->left->IsVariable()) return false;
    if (target->kind == TOK_MEMBER) return IsMemberName(target->right);
    return target->kind == kSubscriptNode && IsValue(target->right, 0);
}

}  // namespace

bool IsLowered(const Node& root, Wanted wanted) {
    if (root.nodeClass != NodeClass::Assign) return IsValue(&root, 0);
    return wanted == Wanted::Effect && IsTarget(root.left) && IsValue(root.right, 0);
}

bool CanRunCode(const Node* node) {
    for (; node != nullptr && !node->IsPlainOperand(); node = node->left) {
        switch (node->nodeClass) {
            case NodeClass::Call:
            case NodeClass::Member:
            case NodeClass::Subscript:
                return true;
            default:
                if (CanRunCode(node->right)) return true;
        }
    }
    return false;
}

// Commas group from the left.
std::vector<const Node*> ItemsOf(const Node& contents) {
    std::vector<const Node*> items;
    const Node* node = &contents;
    for (; node->kind == TOK_COMMA; node = node->left)
        if (node->right != nullptr) items.push_back(node->right);
    items.push_back(node);
    std::reverse(items.begin(), items.end());
    return items;
}

}  // namespace brenta
