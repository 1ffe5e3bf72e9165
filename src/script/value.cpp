// Strings, and the end of bodies.
#include "script/value.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "script/value_memory.h"

namespace brenta {

namespace {

/// Never less than the header with its padding, whose bytes short texts use.
std::size_t StringBodySize(std::size_t capacity) {
    return std::max(sizeof(StringBody), offsetof(StringBody, bytes) + capacity + 1);
}

StringBody* NewString(std::size_t capacity) {
    auto* body = static_cast<StringBody*>(AcquireBody(StringBodySize(capacity)));
    body->count = 1;
    body->length = 0;
    body->capacity = static_cast<std::uint32_t>(capacity);
    return body;
}

void SetBytes(StringBody& body, std::size_t start, std::string_view text) {
    // Through a pointer: the array in the declaration has one element, the block has many.
    char* bytes = body.bytes;
    if (!text.empty()) std::memmove(bytes + start, text.data(), text.size());
    bytes[start + text.size()] = 0;
    body.length = static_cast<std::uint32_t>(start + text.size());
}

/// Frees a list and everything that only it held. Nested lists wait in a chain through their own bodies, so
/// depth costs no stack and no memory.
void FreeList(ListBody* first) {
    first->nextToFree = nullptr;
    for (ListBody* pending = first; pending != nullptr;) {
        ListBody* body = pending;
        pending = body->nextToFree;
        for (Value *item = body->items, *end = item + body->length; item != end; ++item) {
            if (item->IsList() && item->IsUnshared()) {
                ListBody* inner = item->List();
                inner->nextToFree = pending;
                pending = inner;
            } else {
                item->~Value();
            }
        }
        ReleaseShape(body->shape);
        std::free(body->items);
        std::free(body);
    }
}

}  // namespace

void* AcquireBody(std::size_t size) {
    void* block = std::malloc(size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void* ResizeBody(void* block, std::size_t size) {
    void* resized = std::realloc(block, size);
    if (resized == nullptr) throw std::bad_alloc();
    return resized;
}

// By half: with resizing in place this copies about as often as doubling does and wastes less.
std::size_t GrownCapacity(std::size_t capacity, std::size_t needed) {
    return std::max(needed, capacity + capacity / 2 + 4);
}

void Value::FreeBody() {
    if (m_tag == Tag::List) {
        FreeList(List());
    } else {
        std::free(String());
    }
}

Value Value::OfString(std::string_view text) {
    StringBody* body = NewString(text.size());
    SetBytes(*body, 0, text);
    return Value(Tag::String, WordOf(body));
}

Value Value::OfString(std::string_view first, std::string_view second) {
    StringBody* body = NewString(first.size() + second.size());
    SetBytes(*body, 0, first);
    SetBytes(*body, first.size(), second);
    return Value(Tag::String, WordOf(body));
}

void AppendString(Value& string, std::string_view tail) {
    if (!string.IsUnshared()) {
        string = Value::OfString(string.Text(), tail);
        return;
    }
    StringBody* body = string.String();
    const std::size_t length = body->length;
    const std::size_t needed = length + tail.size();
    if (needed <= body->capacity) return SetBytes(*body, length, tail);
    // The tail may be a part of the text itself, which may move.
    const bool isInside = tail.data() >= body->bytes && tail.data() <= body->bytes + length;
    const std::size_t offset = isInside ? static_cast<std::size_t>(tail.data() - body->bytes) : 0;
    const std::size_t capacity = GrownCapacity(body->capacity, needed);
    body = static_cast<StringBody*>(ResizeBody(body, StringBodySize(capacity)));
    body->capacity = static_cast<std::uint32_t>(capacity);
    string.m_word = Value::WordOf(body);
    SetBytes(*body, length, isInside ? std::string_view(body->bytes + offset, tail.size()) : tail);
}

}  // namespace brenta
