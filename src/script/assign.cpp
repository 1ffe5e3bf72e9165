// Assignments: finding where to store, storing, growing texts and lists in place, chains.
//
// Order. The right operand first, then whatever the target needs (its containers, their indices), then the
// store. The object of a property is evaluated once, and only the request that stores reaches the object; a
// compound assignment reads it first.
//
// Chains. `a = b = c` is (a = b) = c: the target is an assignment. It is carried out, then the outer value
// goes where its right operand is stored (b), then its right operand is evaluated again and assigned again:
// every target ends with the rightmost value, after 2^n assignments for n targets, which is why their number
// is limited. An inner assignment whose right operand denotes no storage stands for that operand, so that a
// chain can end in a property.
#include <new>
#include <span>

#include "brenta/failure.h"
#include "script/executor.h"
#include "script/place.h"
#include "script/taken_value.h"

namespace brenta {
namespace {

using Node = Executor::Node;

/// A variable that holds nothing that asks for care when it is replaced.
bool IsScalarVariable(const Node* target) {
    if (target == nullptr || !target->IsVariable()) return false;
    const Tag tag = target->cell->value.GetTag();
    return tag >= Tag::Null && tag <= Tag::Float;
}

/// `x.name` and `x[i]` where x holds a list and i is a plain operand: what most assignments to elements look
/// like.
bool IsElementOfVariable(const Node& target) {
    if (target.left == nullptr || !target.left->IsVariable() || !target.left->cell->value.IsList())
        return false;
    if (target.right == nullptr) return false;
    if (target.kind == TOK_MEMBER) return target.right->kind == ID;
    return target.kind == kSubscriptNode && target.right->ValueInPlace() != nullptr;
}

/// Whether a name is bound to the function of that name itself, which is no variable.
bool IsFunctionName(const NameCell& cell) {
    return cell.value.IsFunction() && static_cast<const CCoreSymbol*>(cell.value.Function()) == cell.symbol;
}

std::ptrdiff_t IndexOf(const ListBody& list, const Place::Step& step) {
    if (step.name != kNoName) return FindMember(list, step.name);
    return step.index < list.length ? static_cast<std::ptrdiff_t>(step.index) : -1;
}

/// What the place holds now; null when its path no longer leads anywhere.
const Value* Walk(const Place& place) {
    if (place.cell == nullptr) return &place.value;
    const Value* at = &place.cell->value;
    for (const Place::Step& step : place.steps) {
        const std::ptrdiff_t index = at->IsList() ? IndexOf(*at->List(), step) : -1;
        if (index < 0) return nullptr;
        at = &at->List()->items[index];
    }
    return at;
}

const Value* Walk(const Value& root, std::span<const std::uint32_t> path) {
    const Value* at = &root;
    for (const std::uint32_t index : path)
        at = &at->List()->items[index];
    return at;
}

/// The path of a place that Walk has found whole.
std::vector<std::uint32_t> PathOf(const Place& place) {
    std::vector<std::uint32_t> path;
    path.reserve(place.steps.size());
    const Value* at = &place.cell->value;
    for (const Place::Step& step : place.steps) {
        const std::ptrdiff_t index = IndexOf(*at->List(), step);
        path.push_back(static_cast<std::uint32_t>(index));
        at = &at->List()->items[index];
    }
    return path;
}

/// The first `+` of `x = x + a + b ...`, if the assignment has that form with plain operands behind the first
/// and x among none of them; else null.
const Node* FirstSum(const Node& assignment) {
    const NameCell* cell = assignment.left->cell;
    const Node* sum = assignment.right;
    while (sum->left != nullptr && sum->left->kind == TOK_ADD)
        sum = sum->left;
    if (sum->left == nullptr || !sum->left->IsVariable() || sum->left->cell != cell) return nullptr;
    if (sum->right == nullptr || (sum->right->IsVariable() && sum->right->cell == cell)) return nullptr;
    for (const Node* next = sum; next != assignment.right;) {
        next = next->parent;
        if (cell->value.IsList() || next->right == nullptr || !next->right->IsPlainOperand()) return nullptr;
        if (next->right->cell == cell) return nullptr;
    }
    return sum;
}

/// Goes on to an element of the list that the place holds.
void StepTo(Place& place, const ListBody& list, std::uint32_t index, STRID name) {
    if (place.cell != nullptr) {
        place.steps.push_back({name, index});
    } else {
        place.value = Value(list.items[index]);
    }
}

int ChainLength(const Node& node) {
    int length = 1;
    for (const Node* at = &node; at->left != nullptr && at->left->nodeClass == NodeClass::Assign;
         at = at->left)
        ++length;
    return length;
}

}  // namespace

/// What may replace a list: a list, or a reference to an object or function.
bool Executor::FitsList(const Value& value) {
    return value.IsList() || value.IsReference() || value.IsFunction();
}

/// Carries an assignment out. `value`, when given, receives its value; `reference` the place that its right
/// operand denotes.
bool Executor::Assign(const Node& node, Value* value, Place* reference) {
    if (node.right == nullptr) return Fail(node, "Missing r-value.");
    Value assigned;
    if (reference != nullptr) {
        if (!EvaluatePlace(*node.right, assigned, *reference)) return false;
    } else if (node.kind == TOK_ASSIGN && node.right->kind == TOK_ADD && node.left != nullptr &&
               node.left->IsVariable() && node.left->cell->value.IsCounted()) {
        return AssignSum(node, assigned) && AssignValue(node, assigned, value);
    } else if (!Evaluate(*node.right, assigned)) {
        return false;
    }
    if (node.kind == TOK_ASSIGN && IsScalarVariable(node.left)) {
        Value& variable = node.left->cell->value;
        if (value != nullptr) *value = assigned;
        variable = std::move(assigned);
        return true;
    }
    return AssignValue(node, assigned, value);
}

/// The right operand of `x = sum` where x holds a text or a list. If the sum begins with x, what follows is
/// appended to x's value itself instead of to a copy, which makes a loop of such assignments linear.
bool Executor::AssignSum(const Node& node, Value& sum) {
    const Node* at = FirstSum(node);
    if (at == nullptr) return Evaluate(*node.right, sum);
    NameCell& cell = *node.left->cell;
    sum = cell.value;
    Value operand;
    if (!Evaluate(*at->right, operand)) return false;
    // From here on no script code runs, so nobody can see that the variable is empty.
    TakenValue taken(cell.value, sum);
    while (true) {
        if (!Apply(*at, sum, operand, sum)) break;
        if (at == node.right) return true;
        at = at->parent;
        if (!Evaluate(*at->right, operand)) break;
    }
    taken.Undo();
    return false;
}

bool Executor::AssignValue(const Node& node, Value& assigned, Value* value) {
    const Node* target = node.left;
    if (target == nullptr) return Fail(node, "Missing l-value.");
    if (target->IsVariable() && !IsFunctionName(*target->cell)) {
        if (target->cell->value.IsUndefined()) return LoadName(*target, assigned);  // which reports it
        return StoreVariable(node, *target->cell, assigned, value);
    }
    if (target->nodeClass == NodeClass::Assign) return AssignChain(node, assigned, value);
    if (IsElementOfVariable(*target)) return AssignElement(node, assigned, value);
    Place place;
    return FindPlace(*target, place) && Store(node, place, assigned, value);
}

bool Executor::AssignElement(const Node& node, Value& assigned, Value* value) {
    const Node& target = *node.left;
    Value& root = target.left->cell->value;
    std::uint32_t index = 0;
    if (target.kind == TOK_MEMBER) {
        const std::ptrdiff_t member = FindMember(*root.List(), target.right->name);
        if (member < 0) return Fail(target, "Expression does not evaluate to an object.");
        index = static_cast<std::uint32_t>(member);
    } else if (!FindElement(target, *root.List(), *target.right->ValueInPlace(), index)) {
        return false;
    }
    return StoreElement(node, root, {&index, 1}, assigned, value);
}

bool Executor::AssignChain(const Node& node, Value& assigned, Value* value) {
    if (ChainLength(node) > kMaxAssignmentChain)
        return FailLimit(node.Position(), "Expression nested too deeply.");
    const Node& inner = *node.left;
    Place place;
    if (!Assign(inner, nullptr, &place) || !Store(node, place, assigned, value)) return false;
    Value again;
    return Evaluate(*inner.right, again) && AssignValue(inner, again, nullptr);
}

// ---------------------------------------------------------------------------------------------------------
// Finding the place

/// A value together with the place where it is stored, if it is.
bool Executor::EvaluatePlace(const Node& node, Value& value, Place& place) {
    switch (node.nodeClass) {
        case NodeClass::Assign:
            return Assign(node, &value, &place);
        case NodeClass::Name:
        case NodeClass::Member:
        case NodeClass::Subscript:
            return FindPlace(node, place) && ReadPlace(place, value);
        default:
            return Evaluate(node, value);
    }
}

bool Executor::FindPlace(const Node& target, Place& place) {
    const Node* node = &target;
    while (node->left != nullptr &&
           (node->nodeClass == NodeClass::Member || node->nodeClass == NodeClass::Subscript))
        node = node->left;
    // Evaluating a name with operands of its own, as two operands in a row give it, runs these.
    if (!Evaluate(*node, place.value)) return false;
    if (node->kind == ID && !IsFunctionName(*node->cell)) {
        place.value.Clear();
        place.cell = node->cell;
    }
    while (node != &target) {
        node = node->parent;
        const bool found = node->kind == TOK_MEMBER ? StepIntoMember(*node, node == &target, place)
                                                    : StepIntoElement(*node, place);
        if (!found) return false;
    }
    if (place.cell != nullptr)
        place.kind = place.steps.empty() ? Place::Kind::Variable : Place::Kind::Element;
    return true;
}

bool Executor::StepIntoMember(const Node& node, bool isTarget, Place& place) {
    if (node.right == nullptr || node.right->kind != ID) return Fail(node, "Missing right member.");
    const STRID name = node.right->name;
    const Value* container = Walk(place);
    if (container != nullptr && container->IsList()) {
        const std::ptrdiff_t index = FindMember(*container->List(), name);
        if (index < 0) return Fail(node, "Expression does not evaluate to an object.");
        StepTo(place, *container->List(), static_cast<std::uint32_t>(index), name);
        return true;
    }
    if (container == nullptr || !container->IsReference())
        return Fail(node, "Expression does not evaluate to an object.");
    void* const object = container->Reference();
    place.cell = nullptr;
    place.steps.clear();
    place.value.Clear();
    if (isTarget) {
        place.kind = Place::Kind::Property;
        place.object = object;
        place.name = name;
        return true;
    }
    return object == nullptr || RequestGet(object, name, place.value);
}

bool Executor::StepIntoElement(const Node& node, Place& place) {
    const Value null;
    const Value* container = Walk(place);
    if (!CheckContainer(node, container != nullptr ? *container : null)) return false;
    Value index;
    if (!Evaluate(*node.right, index)) return false;
    if (!node.right->IsPlainOperand()) {
        // The index may have run code that changed what the path leads to.
        container = Walk(place);
        if (!CheckContainer(node, container != nullptr ? *container : null)) return false;
    }
    if (container->IsList()) {
        std::uint32_t element = 0;
        if (!FindElement(node, *container->List(), index, element)) return false;
        const STRID name = index.IsString() ? ItemName(*container->List(), element) : kNoName;
        StepTo(place, *container->List(), element, name);
        return true;
    }
    Value result;
    if (!GetElementAt(node, *container, index, result)) return false;
    place.cell = nullptr;
    place.steps.clear();
    place.value = std::move(result);
    return true;
}

bool Executor::ReadPlace(const Place& place, Value& value) {
    if (place.kind == Place::Kind::Property) {
        value.Clear();
        return place.object == nullptr || RequestGet(place.object, place.name, value);
    }
    value = *Walk(place);
    return true;
}

// ---------------------------------------------------------------------------------------------------------
// Storing

bool Executor::Store(const Node& node, const Place& place, Value& assigned, Value* value) {
    switch (place.kind) {
        case Place::Kind::Variable:
            return StoreVariable(node, *place.cell, assigned, value);
        case Place::Kind::Element:
            if (Walk(place) == nullptr) break;
            return StoreElement(node, place.cell->value, PathOf(place), assigned, value);
        case Place::Kind::Property:
            if (place.object == nullptr) break;
            return StoreProperty(node, place, assigned, value);
        case Place::Kind::None:
            break;
    }
    return Fail(node, "Expression does not evaluate to an object.");
}

bool Executor::StoreVariable(const Node& node, NameCell& cell, Value& assigned, Value* value) {
    if (cell.value.IsList() && !FitsList(assigned))
        return Fail(node, "Assigning a scalar to a structure or list.");
    if (node.kind == TOK_ASSIGN) {
        cell.value = std::move(assigned);
    } else if (!Combine(node, cell.value, assigned)) {
        return false;
    }
    if (value != nullptr) *value = cell.value;
    return true;
}

bool Executor::StoreElement(const Node& node, Value& root, std::span<const std::uint32_t> path,
                            Value& assigned, Value* value) {
    const Value& element = *Walk(root, path);
    if (element.IsList() && !FitsList(assigned))
        return Fail(node, "Assigning a scalar to a structure or list.");
    if (node.kind != TOK_ASSIGN) {
        if (!CombineElement(node, root, path, assigned)) return false;
    } else if (path.size() == 1 && !element.IsList() && !assigned.IsList()) {
        // No list comes or goes, so the weights stay as they are.
        Detach(root);
        root.List()->items[path[0]] = std::move(assigned);
    } else {
        const ListLimit limit = ReplaceAtPath(root, path, std::move(assigned));
        if (limit != ListLimit::None) return FailOperator(node, OpErrorOf(limit));
    }
    if (value != nullptr) *value = *Walk(root, path);
    return true;
}

/// A compound assignment to an element. A text or a list is taken out of its list for the time of the
/// operation, so that it can grow in place - unless that list may get too heavy by it and has to keep it.
bool Executor::CombineElement(const Node& node, Value& root, std::span<const std::uint32_t> path,
                              const Value& assigned) {
    Value element(*Walk(root, path));
    const ListBody* added = assigned.IsList() ? assigned.List() : nullptr;
    const bool mayMeetLimit = added != nullptr && (root.List()->weight + added->weight + 1 > kMaxListWeight ||
                                                   root.List()->depth + added->depth + 1 > kMaxListDepth);
    const bool isTaken = element.IsCounted() && !mayMeetLimit;
    if (isTaken) ReplaceAtPath(root, path, Value());
    bool combined = false;
    try {
        combined = Combine(node, element, assigned);
    } catch (const std::bad_alloc&) {
        if (isTaken)
            ReplaceAtPath(root, path, std::move(element));  // into its own place, which needs no memory
        throw;
    }
    if (!combined && !isTaken) return false;
    const ListLimit limit = ReplaceAtPath(root, path, std::move(element));
    if (limit != ListLimit::None) return FailOperator(node, OpErrorOf(limit));
    return combined;
}

bool Executor::StoreProperty(const Node& node, const Place& place, Value& assigned, Value* value) {
    if (node.kind != TOK_ASSIGN) {
        Value current;
        if (!RequestGet(place.object, place.name, current) || !Combine(node, current, assigned)) return false;
        assigned = std::move(current);
    }
    if (!RequestSet(place.object, place.name, assigned)) return false;
    if (value != nullptr) *value = std::move(assigned);
    return true;
}

/// target op= assigned.
bool Executor::Combine(const Node& node, Value& target, const Value& assigned) {
    const auto kind = static_cast<TokId>(node.kind);
    if (OperatorOfAssignment(kind) == TOK_NONE) {
        ForcedCrash(0, "CoreScriptStatement", __LINE__, "Forced crash! \"Unknown assignment operator.\"");
        return false;
    }
    const OpError error = CompoundOperator(kind, target, assigned);
    return error == OpError::None || FailOperator(node, error);
}

}  // namespace brenta
