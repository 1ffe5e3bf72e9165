// Lists: growth, copy on write, and the weight and depth that bound them.
//
// Every list body knows how many elements it holds with all that is nested in it (weight), how many levels it
// has (depth) and how many of its elements are lists (nested). Sharing makes these the only measure of what a
// script has built: `a = {a, a}` forty times over is forty small bodies and a million million elements.
// All three are kept exactly. Weights add up, so a change at the end of a path changes every list above it by
// the same difference. Depths are maxima: they only need a second look when the element that goes was the
// deepest and what comes is less deep. The nearest neighbours are asked first, since the usual reason for
// that is a loop that replaces one element after the other; a list without lists needs no look at all.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "script/value.h"
#include "script/value_limits.h"
#include "script/value_memory.h"

namespace brenta {

namespace {

std::uint64_t WeightOf(const Value& value) {
    return value.IsList() ? value.List()->weight : 0;
}

std::uint32_t DepthOf(const Value& value) {
    return value.IsList() ? value.List()->depth : 0;
}

ListBody* NewList(std::size_t capacity) {
    Value* items = capacity == 0 ? nullptr : static_cast<Value*>(AcquireBody(capacity * sizeof(Value)));
    auto* body = static_cast<ListBody*>(std::malloc(sizeof(ListBody)));
    if (body == nullptr) {
        std::free(items);
        throw std::bad_alloc();
    }
    body->count = 1;
    body->length = 0;
    body->capacity = static_cast<std::uint32_t>(capacity);
    body->depth = 1;
    body->nested = 0;
    body->weight = 0;
    body->shape = nullptr;
    body->items = items;
    return body;
}

void EnsureRoom(ListBody& body, std::size_t needed) {
    if (needed <= body.capacity) return;
    const std::size_t capacity = GrownCapacity(body.capacity, needed);
    // Values may be moved as bytes: nothing points at them across an append.
    body.items = static_cast<Value*>(ResizeBody(static_cast<void*>(body.items), capacity * sizeof(Value)));
    body.capacity = static_cast<std::uint32_t>(capacity);
}

/// Accounts for one more element of that weight and depth.
void NoteAdded(ListBody& body, const Value& item) {
    body.weight += 1 + WeightOf(item);
    body.depth = std::max(body.depth, 1 + DepthOf(item));
    body.nested += item.IsList() ? 1u : 0u;
}

ListLimit CheckLimits(std::uint64_t weight, std::uint64_t depth) {
    if (depth > kMaxListDepth) return ListLimit::TooDeep;
    return weight > kMaxListWeight ? ListLimit::TooLarge : ListLimit::None;
}

/// The depth of a list whose element at `changed` has just become less deep than it was.
std::uint32_t DepthAfterChange(const ListBody& body, std::size_t changed) {
    if (body.nested == 0) return 1;
    std::uint32_t inner = DepthOf(body.items[changed]);
    for (std::size_t step = 1; inner + 1 < body.depth; ++step) {
        const bool hasBefore = step <= changed;
        const bool hasBehind = step < body.length - changed;
        if (!hasBefore && !hasBehind) break;
        if (hasBefore) inner = std::max(inner, DepthOf(body.items[changed - step]));
        if (hasBehind) inner = std::max(inner, DepthOf(body.items[changed + step]));
    }
    return inner + 1;
}

// --- shapes

Shape* NewShape(std::size_t capacity) {
    auto* shape = static_cast<Shape*>(AcquireBody(offsetof(Shape, names) + capacity * sizeof(STRID)));
    shape->count = 1;
    shape->size = 0;
    shape->capacity = static_cast<std::uint32_t>(capacity);
    return shape;
}

/// A shape that only this list has, with room for `needed` names.
Shape& OwnShape(ListBody& body, std::size_t needed) {
    Shape* shape = body.shape;
    if (shape != nullptr && shape->count == 1 && needed <= shape->capacity) return *shape;
    Shape* own = NewShape(GrownCapacity(shape == nullptr ? 0 : shape->size, needed));
    if (shape != nullptr) {
        own->size = shape->size;
        std::memcpy(own->names, shape->names, shape->size * sizeof(STRID));
        ReleaseShape(shape);
    }
    body.shape = own;
    return *own;
}

void SetName(ListBody& body, std::size_t index, STRID name) {
    Shape& shape = OwnShape(body, index + 1);
    STRID* names = shape.names;
    while (shape.size <= index)
        names[shape.size++] = kNoName;
    names[index] = name;
}

}  // namespace

Shape* RetainShape(Shape* shape) {
    if (shape != nullptr) ++shape->count;
    return shape;
}

void ReleaseShape(Shape* shape) {
    if (shape != nullptr && --shape->count == 0) std::free(shape);
}

Value Value::OfList(std::size_t capacity) {
    return Value(Tag::List, WordOf(NewList(capacity)));
}

namespace {

/// Makes the list's body unshared with room for `capacity` elements.
void DetachWithRoom(Value& list, std::size_t capacity) {
    const ListBody& shared = *list.List();
    Value own = Value::OfList(std::max<std::size_t>(capacity, shared.length));
    ListBody& body = *own.List();
    for (std::uint32_t i = 0; i < shared.length; ++i)
        new (&body.items[i]) Value(shared.items[i]);
    body.length = shared.length;
    body.depth = shared.depth;
    body.nested = shared.nested;
    body.weight = shared.weight;
    body.shape = RetainShape(shared.shape);
    list = std::move(own);
}

void AppendUnchecked(ListBody& body, Value&& item, STRID name) {
    // The name first: should memory run out on the way, the list is unchanged to all who look.
    if (name != kNoName) SetName(body, body.length, name);
    NoteAdded(body, item);
    new (&body.items[body.length]) Value(std::move(item));
    ++body.length;
}

}  // namespace

void Detach(Value& list) {
    if (!list.IsUnshared()) DetachWithRoom(list, list.List()->length);
}

ListLimit AppendItem(Value& list, Value item, STRID name) {
    ListBody& present = *list.List();
    const bool isPlain = !item.IsList() && name == kNoName;
    if (isPlain && present.count == 1 && present.length < present.capacity &&
        present.weight < kMaxListWeight) {
        new (&present.items[present.length++]) Value(std::move(item));
        ++present.weight;
        return ListLimit::None;
    }
    const ListLimit limit = CheckLimits(list.List()->weight + 1 + WeightOf(item), 1u + DepthOf(item));
    if (limit != ListLimit::None) return limit;
    const std::size_t needed = list.List()->length + std::size_t{1};
    if (!list.IsUnshared()) DetachWithRoom(list, GrownCapacity(needed, needed));
    EnsureRoom(*list.List(), needed);
    AppendUnchecked(*list.List(), std::move(item), name);
    return ListLimit::None;
}

ListLimit AppendItems(Value& list, const Value& tail) {
    const Value held(tail);  // keeps the elements while the list, perhaps the same one, grows
    const ListBody& from = *held.List();
    const ListLimit limit = CheckLimits(list.List()->weight + from.weight, from.depth);
    if (limit != ListLimit::None) return limit;
    const std::size_t needed = std::size_t{list.List()->length} + from.length;
    if (!list.IsUnshared()) DetachWithRoom(list, needed);
    EnsureRoom(*list.List(), needed);
    for (std::uint32_t i = 0; i < from.length; ++i)
        AppendUnchecked(*list.List(), Value(from.items[i]), ItemName(from, i));
    return ListLimit::None;
}

ListLimit RepeatItem(std::size_t length, const Value& item, Value& list) {
    const std::uint64_t each = 1 + WeightOf(item);
    if (length > kMaxListWeight / each) return ListLimit::TooLarge;
    const ListLimit limit = CheckLimits(length * each, 1u + DepthOf(item));
    if (limit != ListLimit::None) return limit;
    Value result = Value::OfList(length);
    for (std::size_t i = 0; i < length; ++i)
        AppendUnchecked(*result.List(), Value(item), kNoName);
    list = std::move(result);
    return ListLimit::None;
}

namespace {

/// Brings weight and depth up to date after the element at `index` has changed from these to its present
/// ones.
void NoteChanged(ListBody& body, std::size_t index, std::uint64_t weightBefore, std::uint32_t depthBefore) {
    const Value& place = body.items[index];
    const std::uint32_t depthAfter = DepthOf(place);
    body.weight = body.weight - weightBefore + WeightOf(place);
    if (depthAfter >= depthBefore) {
        body.depth = std::max(body.depth, depthAfter + 1);
    } else if (depthBefore + 1 == body.depth) {
        body.depth = DepthAfterChange(body, index);
    }
}

/// Stores no list over no list, which changes no notes.
void StorePlain(Value& root, std::span<const std::uint32_t> path, Value& item) {
    Value* place = &root;
    for (const std::uint32_t step : path) {
        Detach(*place);
        place = &place->List()->items[step];
    }
    place->Swap(item);
}

/// Stores without a look at the limits. The recursion is as deep as the path is long.
void StoreAtPath(Value& list, std::span<const std::uint32_t> path, Value& item) {
    Detach(list);
    ListBody& body = *list.List();
    Value& place = body.items[path[0]];
    const std::uint64_t weightBefore = WeightOf(place);
    const std::uint32_t depthBefore = DepthOf(place);
    if (path.size() > 1) {
        StoreAtPath(place, path.subspan(1), item);
    } else {
        body.nested = body.nested - (place.IsList() ? 1u : 0u) + (item.IsList() ? 1u : 0u);
        place.Swap(item);  // what was there is freed by the caller, when all accounts are settled
    }
    NoteChanged(body, path[0], weightBefore, depthBefore);
}

}  // namespace

ListLimit ReplaceItem(Value& list, std::size_t index, Value item) {
    const auto step = static_cast<std::uint32_t>(index);
    return ReplaceAtPath(list, {&step, 1}, std::move(item));
}

ListLimit ReplaceAtPath(Value& root, std::span<const std::uint32_t> path, Value item) {
    const Value* place = &root;
    for (const std::uint32_t step : path)
        place = &place->List()->items[step];
    if (!place->IsList() && !item.IsList()) {
        StorePlain(root, path, item);
        return ListLimit::None;
    }
    const std::uint64_t weight = root.List()->weight - WeightOf(*place) + WeightOf(item);
    const ListLimit limit = CheckLimits(weight, path.size() + DepthOf(item));
    if (limit == ListLimit::None) StoreAtPath(root, path, item);
    return limit;
}

std::ptrdiff_t FindMember(const ListBody& list, STRID name) {
    if (list.shape == nullptr || name == kNoName) return -1;
    const STRID* names = list.shape->names;
    const std::uint32_t size = std::min(list.shape->size, list.length);
    for (std::uint32_t i = 0; i < size; ++i)
        if (names[i] == name) return i;
    return -1;
}

}  // namespace brenta
