// Evaluation of expression trees to values.
//
// EvaluateSpine is the heart: it goes down the left operands to the first one that is a leaf (or a node that
// evaluates itself, such as an assignment), and climbs back by the parent links, at each node combining the
// value so far, which is that node's left operand, with its right operand. `value` carries the left operand
// all the way up, so a sum of a million terms takes one frame, and a text built by `a + b + c` grows in
// place.
//
// A left operand is copied into `value` before the right operand runs, as the right may assign to it; only
// when both are leaves are they read where they lie.
#include "brenta/names.h"
#include "script/executor.h"

namespace brenta {
namespace {

using Node = Executor::Node;

/// The left operand that has to be evaluated before `node` can be, unless it is a plain one.
const Node* LeftOnSpine(const Node& node) {
    if (node.left == nullptr || node.left->IsPlainOperand()) return nullptr;
    const NodeClass nodeClass = node.nodeClass;
    return nodeClass == NodeClass::Assign || nodeClass == NodeClass::List ? nullptr : node.left;
}

/// An operator with two plain operands, which most operators have.
bool IsPlainPair(const Node& node) {
    return node.nodeClass == NodeClass::Binary && node.left != nullptr && node.left->IsPlainOperand() &&
           node.right != nullptr && node.right->IsPlainOperand();
}

/// Whether a member node names what a call node calls.
bool IsCallee(const Node& node) {
    return node.parent != nullptr && node.parent->kind == kCallNode && node.parent->left == &node;
}

/// The name of the value that a node gives, for messages: a variable's or an element's.
STRID NameOfValue(const Node* node) {
    if (node != nullptr && node->kind == TOK_MEMBER) node = node->right;
    return node != nullptr && node->kind == ID ? node->name : kNoName;
}

/// The operators on two ints that need nothing but themselves. False: the general operator has to do it.
bool ApplyToInts(int kind, std::int64_t left, std::int64_t right, Value& result) {
    std::int64_t number = 0;
    switch (kind) {
        case TOK_ADD:
            number = left + right;
            break;
        case TOK_SUB:
            number = left - right;
            break;
        case TOK_LESS:
            result = Value::OfBool(left < right);
            return true;
        case TOK_GREATER:
            result = Value::OfBool(left > right);
            return true;
        case TOK_LEQ:
            result = Value::OfBool(left <= right);
            return true;
        case TOK_GEQ:
            result = Value::OfBool(left >= right);
            return true;
        case TOK_EQ:
            result = Value::OfBool(left == right);
            return true;
        case TOK_NOT_EQ:
            result = Value::OfBool(left != right);
            return true;
        default:
            return false;
    }
    if (number != static_cast<std::int32_t>(number)) return false;
    result = Value::OfInt(static_cast<int>(number));
    return true;
}

}  // namespace

bool Executor::EvaluateTree(const Node* root, Value& value) {
    if (root != nullptr) return Evaluate(*root, value);
    value.Clear();
    return true;
}

bool Executor::Evaluate(const Node& node, Value& value) {
    if (const Value* inPlace = node.ValueInPlace()) {
        value = *inPlace;
        return true;
    }
    if (IsPlainPair(node)) return ApplyToPlain(node, value);
    return EvaluateSpine(node, value);
}

bool Executor::EvaluateSpine(const Node& root, Value& value) {
    if (StackIsLow()) return Overflow(root);
    const Node* node = &root;
    while (const Node* left = LeftOnSpine(*node))
        node = left;
    if (!Begin(*node, value)) return false;
    while (node != &root) {
        node = node->parent;
        if (!Continue(*node, value)) return false;
    }
    return true;
}

/// The node at the foot of the spine: its left operand is missing, a plain one, or its own affair.
bool Executor::Begin(const Node& node, Value& value) {
    if (IsPlainPair(node)) return ApplyToPlain(node, value);
    if (node.nodeClass == NodeClass::Assign) return Assign(node, &value);
    if (node.nodeClass == NodeClass::List) return BuildList(node, value);
    if (node.left == nullptr) {
        value = Value::OfInt(0);
        return Continue(node, value);
    }
    const Value* left = node.left->ValueInPlace();
    if (left == nullptr) return LoadName(*node.left, value);  // which says that it is not defined
    if (node.nodeClass == NodeClass::Subscript && node.right != nullptr) {
        if (const Value* index = node.right->ValueInPlace()) return GetElementAt(node, *left, *index, value);
    }
    value = *left;
    return Continue(node, value);
}

/// `value` is the node's left operand and becomes the node's value.
bool Executor::Continue(const Node& node, Value& value) {
    switch (node.nodeClass) {
        case NodeClass::Binary:
            return ApplyNested(node, value);
        case NodeClass::Unary:
            return ApplyUnary(node, value);
        case NodeClass::Call:
            return EvaluateCall(node, value);
        case NodeClass::Member:
            return GetMember(node, IsCallee(node), value);
        case NodeClass::Subscript:
            return GetElement(node, value);
        case NodeClass::Name:
            return EvaluateOperand(node, value) && LoadName(node, value);
        case NodeClass::Constant:
            if (!EvaluateOperand(node, value)) return false;
            value = node.value;
            return true;
        default:
            return EvaluateOperand(node, value) && Fail(node, "Illigal expression.");
    }
}

// ---------------------------------------------------------------------------------------------------------
// Operators

/// Both operands are read where they lie. They are asked whether they are defined only when they are no ints.
bool Executor::ApplyToPlain(const Node& node, Value& value) {
    const Value& left = *node.left->place;
    const Value& right = *node.right->place;
    if (left.IsInt() && right.IsInt() && ApplyToInts(node.kind, left.Int(), right.Int(), value)) return true;
    if (left.IsUndefined()) return LoadName(*node.left, value);
    if (right.IsUndefined()) return LoadName(*node.right, value);
    const OpError error = BinaryOperator(static_cast<TokId>(node.kind), left, right, value);
    return error == OpError::None || FailOperator(node, error);
}

bool Executor::Apply(const Node& node, const Value& left, const Value& right, Value& result) {
    const OpError error = BinaryOperator(static_cast<TokId>(node.kind), left, right, result);
    return error == OpError::None || FailOperator(node, error);
}

bool Executor::ApplyNested(const Node& node, Value& value) {
    Value right = Value::OfInt(0);
    if (node.right != nullptr) {
        if (const Value* inPlace = node.right->ValueInPlace()) return Apply(node, value, *inPlace, value);
        if (!EvaluateSpine(*node.right, right)) return false;
    }
    return Apply(node, value, right, value);
}

/// The left operand of a unary operator has been evaluated and is dropped.
bool Executor::ApplyUnary(const Node& node, Value& value) {
    if (!EvaluateOperand(node, value)) return false;
    const OpError error = UnaryOperator(static_cast<TokId>(node.kind), value, value);
    return error == OpError::None || FailOperator(node, error);
}

/// The right operand; the number 0 when there is none.
bool Executor::EvaluateOperand(const Node& node, Value& value) {
    if (node.right != nullptr) return Evaluate(*node.right, value);
    value = Value::OfInt(0);
    return true;
}

bool Executor::LoadName(const Node& node, Value& value) {
    if (node.cell->value.IsUndefined()) return ReportUndefined(node);
    value = node.cell->value;
    return true;
}

bool Executor::ReportUndefined(const Node& name) {
    Messages().Error(name.Position(), "Symbol '%s' not defined.", StrPtr(name.name));
    return false;
}

// ---------------------------------------------------------------------------------------------------------
// Lists

bool Executor::BuildList(const Node& node, Value& list) {
    // {} is the empty value, not an empty list.
    list.Clear();
    if (node.IsLeaf()) return true;
    list = Value::OfList(0);
    return (node.left == nullptr || CollectItems(*node.left, true, &list)) &&
           (node.right == nullptr || CollectItems(*node.right, true, &list));
}

/// Evaluates the items of a `,` tree from left to right, into a list or, without one, onto the argument
/// stack. Commas group from the left, so the walk goes down their left operands in a loop; a group among the
/// items that is itself a `,` tree adds its items one by one.
bool Executor::CollectItems(const Node& contents, bool mayTrail, Value* list) {
    if (StackIsLow()) return Overflow(contents);
    const Node* node = &contents;
    for (; node->kind == TOK_COMMA; node = node->left) {
        if (node->left == nullptr) return Fail(*node, "Missing left argument.");
    }
    if (!CollectItem(*node, list)) return false;
    while (node != &contents) {
        node = node->parent;
        const Node* item = node->right;
        if (item == nullptr) {
            if (mayTrail && node == &contents) return true;
            return Fail(*node, "Missing right argument.");
        }
        if (!(item->kind == TOK_COMMA ? CollectItems(*item, false, list) : CollectItem(*item, list)))
            return false;
    }
    return true;
}

bool Executor::CollectItem(const Node& item, Value* list) {
    Value value;
    if (!Evaluate(item, value)) return false;
    if (list == nullptr) {
        PushArgument(std::move(value));
        return true;
    }
    const ListLimit limit = AppendItem(*list, std::move(value));
    return limit == ListLimit::None || FailOperator(item, OpErrorOf(limit));
}

// ---------------------------------------------------------------------------------------------------------
// Members and elements

bool Executor::GetMember(const Node& node, bool isCallee, Value& value) {
    if (node.left == nullptr) return Fail(node, "Missing  left member.");
    if (node.right == nullptr || node.right->kind != ID) return Fail(node, "Missing right member.");
    const STRID name = node.right->name;
    if (value.IsList()) {
        const std::ptrdiff_t place = FindMember(*value.List(), name);
        if (place < 0) return Fail(node, "Expression does not evaluate to an object.");
        value = Value(value.List()->items[place]);
        return true;
    }
    if (isCallee) {
        m_calleeIsMethod = true;
        return true;
    }
    if (!value.IsReference()) return Fail(node, "Expression does not evaluate to an object.");
    if (value.Reference() != nullptr) return RequestGet(value.Reference(), name, value);
    value.Clear();
    return true;
}

bool Executor::GetElement(const Node& node, Value& value) {
    if (!CheckContainer(node, value)) return false;
    if (const Value* inPlace = node.right->ValueInPlace()) return GetElementAt(node, value, *inPlace, value);
    Value index;
    return EvaluateSpine(*node.right, index) && GetElementAt(node, value, index, value);
}

/// Everything about a subscript that is known before its index is evaluated.
bool Executor::CheckContainer(const Node& node, const Value& container) {
    if (node.left == nullptr) return Fail(node, "Missing l-value.");
    const STRID name = NameOfValue(node.left);
    if (!container.IsList() && !container.IsReference()) {
        Messages().Error(node.Position(), "Subscript on non-array '%s'", StrPtr(name));
        return false;
    }
    if (node.right == nullptr) {
        Messages().Error(node.Position(), "Missing subscript '%s'", StrPtr(name));
        return false;
    }
    return true;
}

/// `value` may be the container itself.
bool Executor::GetElementAt(const Node& node, const Value& container, const Value& index, Value& value) {
    if (!CheckContainer(node, container)) return false;
    if (container.IsReference()) {
        if (container.Reference() == nullptr) return Fail(node, "Expression does not evaluate to an object.");
        return RequestElement(container.Reference(), index, value);
    }
    std::uint32_t place = 0;
    if (!FindElement(node, *container.List(), index, place)) return false;
    value = Value(container.List()->items[place]);
    return true;
}

bool Executor::FindElement(const Node& node, const ListBody& list, const Value& index, std::uint32_t& place) {
    if (index.IsInt()) {
        place = static_cast<std::uint32_t>(index.Int());
        if (index.Int() >= 0 && index.Int() < list.length) return true;
    } else if (index.IsString()) {
        // A text that is nobody's name is no element's either; it need not become one for the question.
        const char* text = index.String()->bytes;
        const std::ptrdiff_t found = StrPresent(text) ? FindMember(list, StrId(text)) : -1;
        place = static_cast<std::uint32_t>(found);
        if (found >= 0) return true;
    }
    const char* problem = index.IsInt()      ? "Subscript out of bounds for array"
                          : index.IsString() ? "Subscript not found for array"
                                             : "Bad subscript for array";
    Messages().Error(node.Position(), "%s '%s'", problem, StrPtr(NameOfValue(node.left)));
    return false;
}

// ---------------------------------------------------------------------------------------------------------
// Failures

bool Executor::Fail(const Node& at, const char* text) {
    Messages().Error(at.Position(), "%s", text);
    return false;
}

bool Executor::FailOperator(const Node& at, OpError error) {
    if (error == OpError::UnknownVarType || error == OpError::DivisionByZero)
        return Fail(at, OpErrorText(error));
    return FailLimit(at.Position(), OpErrorText(error));
}

bool Executor::FailLimit(const ScriptPosition& at, const char* text) {
    m_unwindingSilently = true;
    Messages().Error(at, "%s", text);
    return false;
}

/// The request is consumed by the run that it stops.
bool Executor::Interrupted(const ScriptPosition& at) {
    m_state.stopRequested.store(false, std::memory_order_relaxed);
    m_state.interrupted = true;
    return FailLimit(at, "Script interrupted.");
}

}  // namespace brenta
