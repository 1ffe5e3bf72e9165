/// @file
/// Chains of nodes: what the lists, stacks and maps of both container families have in common. Not for direct
/// use; include brenta/containers.h.
///
/// A node is any record with a member `m_pNext`; a chain is the pointer to its first node, null when empty.
/// The functions allocate and free nothing, own nothing, and take no lock. `source` is what a forced crash
/// names as its source, "Templ" or "Heap".
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <type_traits>

#include "brenta/failure.h"

namespace brenta::detail {

/// Counts by walking; 0 for null.
template <class Node>
int CountNodes(const Node* head) {
    int count = 0;
    for (; head; head = head->m_pNext)
        ++count;
    return count;
}

/// The last node reachable from `node`, which must not be null.
template <class Node>
Node* LastNode(Node* node) {
    while (node->m_pNext)
        node = node->m_pNext;
    return node;
}

/// The node whose successor is `node`, found by walking from `head` (which may be null); null if there is
/// none.
template <class Node>
Node* FindBefore(Node* head, const Node* node) {
    while (head && head->m_pNext != node)
        head = head->m_pNext;
    return head;
}

/// Unlinks the node at which `iter` stands and moves the iterator to its successor; the caller destroys the
/// node. Null if there was nothing to unlink. `tail` is null for lists without one. The order of the steps
/// and checks is that of list removal as brenta/containers.h describes it.
template <class Node, class Iter>
Node* UnlinkAt(Node*& head, Node** tail, Iter& iter, const char* source) {
    Node* const node = iter.m_pPos;
    if (!node) {
        ForcedCrash(0, source, __LINE__, "Assertion failed! iter.m_pPos");
        return nullptr;
    }
    if (node == head) {
        if (tail && head == *tail) {
            if (head->m_pNext) ForcedCrash(0, source, __LINE__, "Assertion failed! m_pHead->m_pNext == NULL");
            *tail = nullptr;
        }
        head = node->m_pNext;
        iter.m_pPos = head;
        return node;
    }
    Node* const before = FindBefore(head, node);
    if (!before) return nullptr;
    if (tail && node == *tail) *tail = before;
    before->m_pNext = node->m_pNext;
    iter.m_pPos = before->m_pNext;
    return node;
}

/// Checks that a list with values has a tail. One that has lost it is reported, and the real last node takes
/// its place. Goes before everything that appends, so that a handler may throw.
template <class Node>
void RequireTail(Node* head, Node*& tail, const char* source) {
    if (tail || !head) return;
    ForcedCrash(0, source, __LINE__, "Assertion failed! m_pHead == NULL");
    tail = LastNode(head);
}

/// Appends `node` behind the tail; null (no memory) appends nothing. What was inserted behind the tail
/// through an iterator stays behind the new node, so nothing is lost.
template <class Node>
void AppendNode(Node*& head, Node*& tail, Node* node) {
    if (!node) return;
    Node*& link = tail ? tail->m_pNext : head;
    node->m_pNext = link;
    link = tail = node;
}

/// Whether two values are equal by their own `==`; values without one equal nothing.
template <class T>
bool ValuesEqual(const T& a, const T& b) {
    if constexpr (requires {
                      { a == b } -> std::convertible_to<bool>;
                  }) {
        return a == b;
    } else {
        return false;
    }
}

/// The hash of a number, enumeration or pointer: its low 31 bits. Negative numbers count as their two's
/// complement.
template <class K>
std::uint32_t HashKey(const K& key) {
    std::uintptr_t bits;
    if constexpr (std::is_pointer_v<K>) {
        bits = reinterpret_cast<std::uintptr_t>(key);
    } else {
        bits = static_cast<std::uintptr_t>(key);
    }
    return static_cast<std::uint32_t>(bits & 0x7FFFFFFFu);
}

/// Walks the values of a chain in a range-for loop: a forward iterator that owns nothing. T carries the
/// constness. The node on which it stands must not go before it has stepped on.
template <class T, class Node>
class TCursor {
 public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = std::remove_const_t<T>;
    using difference_type = std::ptrdiff_t;
    using pointer = T*;
    using reference = T&;

    /// Stands at `node`; null is the end of every chain.
    explicit TCursor(Node* node = nullptr) : m_pNode(node) {}
    /// The value, and the steps: not at the end, which nothing checks.
    T& operator*() const { return m_pNode->m_value; }
    T* operator->() const { return &m_pNode->m_value; }
    TCursor& operator++() {
        m_pNode = m_pNode->m_pNext;
        return *this;
    }
    TCursor operator++(int) {
        TCursor before = *this;
        ++*this;
        return before;
    }
    /// Whether both stand at the same node, or both at an end.
    bool operator==(const TCursor& other) const = default;

 private:
    Node* m_pNode;
};

}  // namespace brenta::detail
