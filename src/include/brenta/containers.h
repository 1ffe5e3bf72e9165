/// @file
/// The container templates: lists, stack, hash map and their iterators.
///
/// | Template           | Use it for                                                                        |
/// |--------------------|-----------------------------------------------------------------------------------|
/// | TSimpleList<T>     | a bag whose order does not matter; Add pushes at the front                        |
/// | TOrderedList<T>    | a sequence that keeps the order of Add                                            |
/// | TIter<T>           | stepping through either list, inserting and removing on the way                   |
/// | TStack<T>          | last in, first out                                                                |
/// | TIntMap<K,V>       | look-up by number, enumeration, pointer or STRID; derive from TMap for other keys |
/// | TMapIter<K,V>      | stepping through a map                                                            |
///
///     TOrderedList<int> widths;
///     widths.Add(8);
///     widths.Add(12);
///     for (int width : widths) Route(width);                   // 8, 12
///     TIter<int> iter(widths);
///     while (iter.Get() && *iter.Get() != 12) iter.Next();
///     widths.Remove(iter);                                     // 8
///
/// Null and size. A container holds any values, null pointers among them. Counts are ints; nothing checks for
/// more values than an int counts.
///
/// Values are copied into nodes and destroyed with them; T needs a copy constructor, and its own `==` for
/// Delete. Containers copy deeply, keeping the order. Nodes live on the aligned lane of the library's global
/// heap (brenta/heap.h), and so does a container made with `new`. Without memory an addition adds nothing.
///
/// Iterators hold bare node pointers. A node that goes in any other way than through the iterator that stands
/// on it, or that has just stepped off it, leaves that iterator dangling, and nothing can notice it.
///
/// A call that breaks a rule raises a forced crash (brenta/failure.h) with the source "Templ"; each operation
/// says what it does when the handler resumes.
///
/// Cost. Lists have no count and no back links: GetCount, Delete and Remove walk from the head. A map never
/// rehashes: choose the bucket count for the number of keys to come. No container shrinks its memory use
/// below what its nodes need.
///
/// Threads. One container must not be used by two threads at once.
///
/// The THeap family (brenta/detail/heap_containers.h, included here) has the same semantics on the general
/// allocator; it is what the heap itself is built on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include "brenta/detail/chain.h"
#include "brenta/detail/class_name.h"
#include "brenta/detail/heap_containers.h"
#include "brenta/failure.h"
#include "brenta/heap.h"

namespace brenta {

template <class T>
class TSimpleList;
template <class T>
class TOrderedList;

// ---------------------------------------------------------------------------------------------------------
// Nodes

/// The part of a node that holds the value. Nodes are made and destroyed by their containers; one meets them
/// through an iterator's members and through TMap::Add, and never owns one.
template <class T>
class TNodeBase {
 public:
    /// Holds a copy of `value`.
    explicit TNodeBase(const T& value) : m_value(value) {}
    TNodeBase(const TNodeBase&) = delete;
    TNodeBase& operator=(const TNodeBase&) = delete;

    /// The size of the object in bytes, without what it points to; so for every class here.
    virtual std::size_t SizeOf() const { return sizeof(*this); }
    /// The template's name, without its arguments; so for every class here.
    virtual const char* GetClassName() const { return "TNodeBase"; }
    /// The name of the base class that a class gives for itself, "none" if it gives none; so for every class
    /// here.
    virtual const char* GetBaseClassName() const { return "none"; }
    virtual ~TNodeBase() = default;

    BRENTA_HEAP_OPERATORS

    T m_value;  ///< may be changed in place
};

/// A node of a chain. It does not own its successor.
template <class T>
class TNode : public TNodeBase<T> {
 public:
    /// Holds a copy of `value` and stands before `next`, null for the end of the chain.
    explicit TNode(const T& value, TNode* next = nullptr) : TNodeBase<T>(value), m_pNext(next) {}

    std::size_t SizeOf() const override { return sizeof(*this); }
    const char* GetClassName() const override { return "TNode"; }
    const char* GetBaseClassName() const override { return "TNodeBase<T>"; }

    TNode* m_pNext;  ///< null in the last node
};

// ---------------------------------------------------------------------------------------------------------
// List iterator

/// A position in a list: at a node, or at the end. It owns nothing, copies are positions of their own, and it
/// must not outlive the list. Values can be changed through it even in a const list. The first value can be
/// read before the first step:
///
///     TIter<int> iter(list);
///     for (; iter.Get(); iter.Next()) Use(*iter.Get());
template <class T>
class TIter {
 public:
    /// Stands at the first value of the list, or at the end if it is empty.
    explicit TIter(const TSimpleList<T>& list) : m_pPrev(nullptr), m_pPos(list.m_pHead) {}
    explicit TIter(const TOrderedList<T>& list) : m_pPrev(nullptr), m_pPos(list.m_pHead) {}
    TIter(const TIter&) = default;
    TIter& operator=(const TIter&) = default;

    virtual std::size_t SizeOf() const { return sizeof(*this); }
    virtual const char* GetClassName() const { return "TIter"; }
    virtual const char* GetBaseClassName() const { return "none"; }
    virtual ~TIter() = default;

    BRENTA_HEAP_OPERATORS

    /// The value at which the iterator stands; null at the end. Valid as long as its node.
    T* Get() const { return m_pPos ? &m_pPos->m_value : nullptr; }

    /// Steps to the next value; false if that is the end. A step at the end changes nothing.
    bool Next() {
        if (!m_pPos) return false;
        m_pPrev = m_pPos;
        m_pPos = m_pPos->m_pNext;
        return m_pPos != nullptr;
    }

    TNode<T>* m_pPrev;  ///< the node stepped from, or last inserted; null at the head
    TNode<T>* m_pPos;   ///< the current node; null at the end
};

// ---------------------------------------------------------------------------------------------------------
// Lists. Both have the same operations in the same virtual slots.

/// A singly linked list that grows at its front: adding 1, 2, 3 gives 3, 2, 1.
///
/// It owns its nodes. Add, Insert, IsEmpty and GetHead take constant time, all else time in proportion to the
/// values passed over. It is two words long.
template <class T>
class TSimpleList {
 public:
    /// Empty; allocates nothing.
    TSimpleList() : m_pHead(nullptr) {}
    /// Copies of the other's values in the same order; without memory the first ones only. The other list is
    /// not touched.
    TSimpleList(const TSimpleList& other) : m_pHead(nullptr) { CopyFrom(other); }
    /// Takes the other's nodes over, which keep their addresses, and leaves it empty.
    TSimpleList(TSimpleList&& other) noexcept : m_pHead(std::exchange(other.m_pHead, nullptr)) {}
    /// Copies, then drops the own values; assigning a list to itself does nothing.
    TSimpleList& operator=(const TSimpleList& other) {
        if (this != &other) *this = TSimpleList(other);
        return *this;
    }
    /// Takes the other's nodes over and drops the own values; the other list is empty after.
    TSimpleList& operator=(TSimpleList&& other) noexcept {
        TSimpleList taken(std::move(other));
        std::swap(m_pHead, taken.m_pHead);
        return *this;
    }

    virtual std::size_t SizeOf() const { return sizeof(*this); }
    virtual const char* GetClassName() const { return "TSimpleList"; }
    virtual const char* GetBaseClassName() const { return "none"; }
    virtual ~TSimpleList() { TSimpleList::RemoveAll(); }

    BRENTA_HEAP_OPERATORS

    /// Number of values, by walking.
    virtual int GetCount() const { return detail::CountNodes(m_pHead); }

    /// Adds a copy of each value of the other list, in its order, with Add.
    virtual void AddList(const TSimpleList& list) {
        for (const T& value : list)
            Add(value);
    }

    /// Adds a copy of `value`, which may be one of the list's own, at the front.
    virtual void Add(const T& value) {
        if (auto* node = new TNode<T>(value, m_pHead)) m_pHead = node;
    }

    /// Inserts a copy of `value` before the iterator's current value (at the end of the list if it stands
    /// there; at the head if it has not stepped yet). The new value becomes the one the iterator came from.
    virtual void Insert(TIter<T>& iter, const T& value) {
        TNode<T>*& link = iter.m_pPrev ? iter.m_pPrev->m_pNext : m_pHead;
        if (auto* node = new TNode<T>(value, link)) link = iter.m_pPrev = node;
    }

    /// Removes the first value that equals `value`; if there is none, raises
    /// "Forced crash! \"Object not in list for delete.\"" and, resumed, changes nothing.
    virtual void Delete(const T& value) {
        for (TNode<T>** link = &m_pHead; *link; link = &(*link)->m_pNext) {
            if (!detail::ValuesEqual((*link)->m_value, value)) continue;
            delete std::exchange(*link, (*link)->m_pNext);
            return;
        }
        ForcedCrash(0x0504E002, "Templ", __LINE__, "Forced crash! \"Object not in list for delete.\"");
    }

    /// Removes the iterator's current value; the iterator then stands at the following one. At the end:
    /// "Assertion failed! iter.m_pPos"; resumed, or if the node is not of this list, nothing changes.
    virtual void Remove(TIter<T>& iter) {
        delete detail::UnlinkAt(m_pHead, static_cast<TNode<T>**>(nullptr), iter, "Templ");
    }

    /// Destroys every value, from the first on, and gives the nodes back. Iterators dangle after it.
    virtual void RemoveAll() {
        TNode<T>* node = std::exchange(m_pHead, nullptr);
        while (node)
            delete std::exchange(node, node->m_pNext);
    }

    /// Whether there is no value. Constant time, other than GetCount.
    bool IsEmpty() const { return !m_pHead; }
    /// The first value, valid until it is removed; null if the list is empty.
    T* GetHead() const { return m_pHead ? &m_pHead->m_value : nullptr; }

    /// For range-for loops, from the first value on. The value just visited must not be removed in the loop;
    /// use a TIter for that.
    auto begin() { return detail::TCursor<T, TNode<T>>(m_pHead); }
    auto end() { return detail::TCursor<T, TNode<T>>(); }
    auto begin() const { return detail::TCursor<const T, const TNode<T>>(m_pHead); }
    auto end() const { return detail::TCursor<const T, const TNode<T>>(); }

 private:
    friend class TIter<T>;

    void CopyFrom(const TSimpleList& other) {
        TNode<T>** link = &m_pHead;
        for (const T& value : other) {
            *link = new TNode<T>(value);
            if (!*link) return;
            link = &(*link)->m_pNext;
        }
    }

    TNode<T>* m_pHead;
};

/// A singly linked list that grows at its tail and keeps the order of addition.
///
/// The tail marks where Add appends. Insert through an iterator behind the last value does not move it, so a
/// later Add comes before what was inserted there: 1, 2, insert 9 at the end, add 3 gives 1, 2, 3, 9.
///
/// It owns its nodes. Add, Insert, IsEmpty, GetHead and a Splice without such values take constant time, all
/// else time in proportion to the values passed over. It is three words long.
template <class T>
class TOrderedList {
 public:
    /// Empty; allocates nothing.
    TOrderedList() : m_pHead(nullptr), m_pTail(nullptr) {}
    /// Copies of the other's values in the same order; the tail is the last of them.
    TOrderedList(const TOrderedList& other) : TOrderedList() {
        for (const T& value : other)
            TOrderedList::Add(value);
    }
    /// Takes the other's nodes and tail over; nodes keep their addresses, and the other list is empty after.
    TOrderedList(TOrderedList&& other) noexcept
        : m_pHead(std::exchange(other.m_pHead, nullptr)), m_pTail(std::exchange(other.m_pTail, nullptr)) {}
    /// Copies, then drops the own values; assigning a list to itself does nothing.
    TOrderedList& operator=(const TOrderedList& other) {
        if (this != &other) *this = TOrderedList(other);
        return *this;
    }
    /// Takes the other's nodes and tail over and drops the own values; the other list is empty after.
    TOrderedList& operator=(TOrderedList&& other) noexcept {
        TOrderedList taken(std::move(other));
        std::swap(m_pHead, taken.m_pHead);
        std::swap(m_pTail, taken.m_pTail);
        return *this;
    }

    virtual std::size_t SizeOf() const { return sizeof(*this); }
    virtual const char* GetClassName() const { return "TOrderedList"; }
    virtual const char* GetBaseClassName() const { return "TFastFreeSimpleList<T>"; }
    virtual ~TOrderedList() { TOrderedList::RemoveAll(); }

    BRENTA_HEAP_OPERATORS

    /// Number of values, by walking.
    virtual int GetCount() const { return detail::CountNodes(m_pHead); }

    /// Adds a copy of each value of the other list, in its order, with Add. Of the list itself: the values
    /// present at the call.
    virtual void AddList(const TOrderedList& list) {
        if (this == &list) {
            const TOrderedList present(list);
            for (const T& value : present)
                Add(value);
            return;
        }
        for (const T& value : list)
            Add(value);
    }

    /// Adds a copy of `value` at the tail. If the tail was lost (see Remove):
    /// "Assertion failed! m_pHead == NULL"; resumed, the value goes behind the last one.
    virtual void Add(const T& value) {
        detail::RequireTail(m_pHead, m_pTail, "Templ");
        detail::AppendNode(m_pHead, m_pTail, new TNode<T>(value));
    }

    /// As TSimpleList::Insert. Sets the tail when the list was empty, and never otherwise.
    virtual void Insert(TIter<T>& iter, const T& value) {
        TNode<T>*& link = iter.m_pPrev ? iter.m_pPrev->m_pNext : m_pHead;
        auto* node = new TNode<T>(value, link);
        if (!node) return;
        if (!m_pHead) m_pTail = node;
        link = iter.m_pPrev = node;
    }

    /// Removes the first value that equals `value`; nothing happens if there is none.
    virtual void Delete(const T& value) {
        TNode<T>* before = nullptr;
        for (TNode<T>* node = m_pHead; node; before = node, node = node->m_pNext) {
            if (!detail::ValuesEqual(node->m_value, value)) continue;
            (before ? before->m_pNext : m_pHead) = node->m_pNext;
            if (node == m_pTail) m_pTail = before ? before : m_pHead ? detail::LastNode(m_pHead) : nullptr;
            delete node;
            return;
        }
    }

    /// As TSimpleList::Remove. Removing a head that is the tail while values were inserted behind it:
    /// "Assertion failed! m_pHead->m_pNext == NULL"; resumed, the value goes, the others stay, and the tail
    /// is lost until the next Add.
    virtual void Remove(TIter<T>& iter) { delete detail::UnlinkAt(m_pHead, &m_pTail, iter, "Templ"); }

    /// Destroys every value, from the first on, and gives the nodes back. Iterators dangle after it.
    virtual void RemoveAll() {
        TNode<T>* node = std::exchange(m_pHead, nullptr);
        m_pTail = nullptr;
        while (node)
            delete std::exchange(node, node->m_pNext);
    }

    /// Whether there is no value. Constant time, other than GetCount.
    bool IsEmpty() const { return !m_pHead; }
    /// The first value, valid until it is removed; null if the list is empty.
    T* GetHead() const { return m_pHead ? &m_pHead->m_value : nullptr; }
    /// The same for the last value; null also if the tail was lost (see Remove).
    T* GetTail() const { return m_pTail ? &m_pTail->m_value : nullptr; }

    /// Moves all values of `from` behind the tail without copying, in constant time; `from` is empty after.
    /// The nodes keep their addresses. Moving a list into itself changes nothing. A lost tail is reported as
    /// by Add, before anything is moved.
    void Splice(TOrderedList&& from) {
        if (this == &from || !from.m_pHead) return;
        detail::RequireTail(m_pHead, m_pTail, "Templ");
        TNode<T>* const first = std::exchange(from.m_pHead, nullptr);
        TNode<T>* const second = std::exchange(first->m_pNext, nullptr);
        TNode<T>* const tail = std::exchange(from.m_pTail, nullptr);
        detail::AppendNode(m_pHead, m_pTail, first);
        if (!second) return;
        TNode<T>* const last = detail::LastNode(tail && tail != first ? tail : second);
        last->m_pNext = std::exchange(first->m_pNext, second);
        m_pTail = last;
    }

    /// Appends a node that was made elsewhere, which the list deletes like its own. A lost tail is reported
    /// as by Add.
    void AddNode(TNode<T>* node) {
        detail::RequireTail(m_pHead, m_pTail, "Templ");
        detail::AppendNode(m_pHead, m_pTail, node);
    }

    /// Takes the first node out, which the caller deletes; null if the list is empty.
    TNode<T>* TakeHead() {
        TNode<T>* const node = m_pHead;
        if (!node) return nullptr;
        m_pHead = node->m_pNext;
        if (node == m_pTail) m_pTail = nullptr;
        return node;
    }

    /// Turns the order round without copying; the tail is the last value again, also if it was lost.
    void Reverse() {
        m_pTail = m_pHead;
        for (TNode<T>* node = std::exchange(m_pHead, nullptr); node;)
            m_pHead = std::exchange(node, std::exchange(node->m_pNext, m_pHead));
    }

    /// For range-for loops, from the first value on. The value just visited must not be removed in the loop;
    /// use a TIter for that.
    auto begin() { return detail::TCursor<T, TNode<T>>(m_pHead); }
    auto end() { return detail::TCursor<T, TNode<T>>(); }
    auto begin() const { return detail::TCursor<const T, const TNode<T>>(m_pHead); }
    auto end() const { return detail::TCursor<const T, const TNode<T>>(); }

 private:
    friend class TIter<T>;

    TNode<T>* m_pHead;
    TNode<T>* m_pTail;
};

// ---------------------------------------------------------------------------------------------------------
// Stack

/// Last in, first out. It owns copies of what was pushed, is copied deeply, and takes constant time for all
/// but GetCount, RemoveAll and copying.
template <class T>
class TStack {
 public:
    TStack() = default;
    TStack(const TStack& other) : m_values(other.m_values) {}
    TStack(TStack&& other) noexcept : m_values(std::move(other.m_values)) {}
    TStack& operator=(const TStack& other) {
        m_values = other.m_values;
        return *this;
    }
    TStack& operator=(TStack&& other) noexcept {
        m_values = std::move(other.m_values);
        return *this;
    }

    virtual std::size_t SizeOf() const { return sizeof(*this); }
    virtual const char* GetClassName() const { return "TStack"; }
    virtual const char* GetBaseClassName() const { return "none"; }
    virtual ~TStack() = default;

    BRENTA_HEAP_OPERATORS

    /// Number of values, by walking.
    int GetCount() const { return m_values.GetCount(); }
    /// Whether there is nothing to pop. Constant time.
    bool IsEmpty() const { return m_values.IsEmpty(); }

    /// Puts a copy of `value` on top.
    void Push(const T& value) { m_values.Add(value); }

    /// Destroys the top value. On an empty stack: "Assertion failed! m_pHead"; resumed, nothing happens.
    void Pop() {
        if (m_values.IsEmpty()) return ForcedCrash(0, "Templ", __LINE__, "Assertion failed! m_pHead");
        TIter<T> top(m_values);
        m_values.Remove(top);
    }

    /// The top value, valid until it is popped. On an empty stack: "Assertion failed! m_pHead"; resumed, a
    /// fresh value-initialised T that lives until the next such call.
    T& Top() {
        if (T* top = m_values.GetHead()) return *top;
        ForcedCrash(0, "Templ", __LINE__, "Assertion failed! m_pHead");
        return m_dummy.emplace();
    }

    /// Destroys every value.
    void RemoveAll() { m_values.RemoveAll(); }

    /// From the top downwards.
    auto begin() { return m_values.begin(); }
    auto end() { return m_values.end(); }
    auto begin() const { return m_values.begin(); }
    auto end() const { return m_values.end(); }

 private:
    TSimpleList<T> m_values;
    std::optional<T> m_dummy;
};

// ---------------------------------------------------------------------------------------------------------
// Maps

/// A key with its value: what a map's nodes hold. Copied as its parts are.
template <class K, class V>
class TPair {
 public:
    /// Both parts value-initialised: numbers 0, pointers null.
    TPair() : m_key(), m_value() {}
    TPair(const K& key, const V& value) : m_key(key), m_value(value) {}
    TPair(const TPair&) = default;
    TPair& operator=(const TPair&) = default;

    virtual std::size_t SizeOf() const { return sizeof(*this); }
    virtual const char* GetClassName() const { return "TPair"; }
    virtual const char* GetBaseClassName() const { return "none"; }
    virtual ~TPair() = default;

    BRENTA_HEAP_OPERATORS

    K m_key;    ///< must not be changed while the pair is in a map
    V m_value;  ///< may be
};

template <class K, class V>
class TMapIter;

/// A hash map with chained buckets. Derive from it and supply Hash and KeysEqual; TIntMap does so for keys
/// that are numbers. New keys stand at the front of their bucket's chain. V needs a default constructor.
///
/// The map owns its nodes, which keep their addresses until they are removed, and cannot be copied. Finding,
/// adding and removing a key takes time in proportion to the keys in its bucket.
template <class K, class V>
class TMap {
 public:
    using Node = TNode<TPair<K, V>>;

    /// The bucket count stays as it is for the map's life; a count below 1 is taken as 1. Throws
    /// std::bad_alloc if there is no memory for the buckets (8 bytes each).
    explicit TMap(int bucketCount)
        : m_bucketCount(bucketCount < 1 ? 1 : bucketCount),
          m_ppBuckets(new Node*[static_cast<std::size_t>(m_bucketCount)]()),
          m_count(0) {}
    TMap(const TMap&) = delete;
    TMap& operator=(const TMap&) = delete;

    /// Destroys every key and value.
    virtual ~TMap() {
        TMap::RemoveAll();
        delete[] m_ppBuckets;
    }

    /// Any number; equal keys must have equal hashes. The bucket is its remainder by the bucket count.
    virtual std::uint32_t Hash(const K& key) const = 0;
    /// Whether two keys are the same key.
    virtual bool KeysEqual(const K& a, const K& b) const = 0;

    /// Stores a copy of the key's value in `out` and returns true; false leaves `out` as it was.
    virtual bool Lookup(const K& key, V& out) const {
        const Node* node = Find(key);
        if (!node) return false;
        out = node->m_value.m_value;
        return true;
    }

    /// Replaces the value of a present key, or adds the key. Returns the value as the map holds it, good
    /// until the key is removed; without memory for a new key, the argument.
    virtual const V& SetAt(const K& key, const V& value) {
        Node* node = Find(key);
        if (node) {
            node->m_value.m_value = value;
        } else {
            node = Add(key, value);
        }
        return node ? node->m_value.m_value : value;
    }

    /// Adds a key with its value and returns its node (null without memory). A key that is present already:
    /// "Forced crash! \"key already exists in map.\""; resumed, a second node with this key hides the first.
    virtual Node* Add(const K& key, const V& value) {
        if (Find(key)) ForcedCrash(0, "Templ", __LINE__, "Forced crash! \"key already exists in map.\"");
        Node*& bucket = BucketOf(key);
        auto* node = new Node(TPair<K, V>(key, value), bucket);
        if (!node) return nullptr;
        bucket = node;
        ++m_count;
        return node;
    }

    /// Removes a key and returns its value. An absent key: "Forced crash! \"Item not in map.\""; resumed, a
    /// value-initialised V. `key` may be the key inside the map.
    virtual V Remove(const K& key) {
        for (Node** link = &BucketOf(key); *link; link = &(*link)->m_pNext) {
            if (!KeysEqual((*link)->m_value.m_key, key)) continue;
            V value = std::move((*link)->m_value.m_value);
            delete std::exchange(*link, (*link)->m_pNext);
            --m_count;
            return value;
        }
        ForcedCrash(0, "Templ", __LINE__, "Forced crash! \"Item not in map.\"");
        return V();
    }

    /// Destroys every key and value; the buckets stay.
    virtual void RemoveAll() {
        for (int i = 0; i < m_bucketCount; ++i) {
            Node* node = std::exchange(m_ppBuckets[i], nullptr);
            while (node)
                delete std::exchange(node, node->m_pNext);
        }
        m_count = 0;
    }

    /// Number of entries, each of several with one key counted. Constant time.
    int GetCount() const { return m_count; }
    /// Number of buckets, 1 or more.
    int GetBucketCount() const { return m_bucketCount; }

 private:
    friend class TMapIter<K, V>;

    Node*& BucketOf(const K& key) const {
        return m_ppBuckets[Hash(key) % static_cast<unsigned>(m_bucketCount)];
    }
    Node* Find(const K& key) const {
        Node* node = BucketOf(key);
        while (node && !KeysEqual(node->m_value.m_key, key))
            node = node->m_pNext;
        return node;
    }

    std::int32_t m_bucketCount;
    Node** m_ppBuckets;
    int m_count;
};

/// A map whose keys are numbers, enumerations, pointers or STRIDs; the hash is the key's low 31 bits.
template <class K, class V>
class TIntMap : public TMap<K, V> {
 public:
    using TMap<K, V>::TMap;

    std::uint32_t Hash(const K& key) const override { return detail::HashKey(key); }
    bool KeysEqual(const K& a, const K& b) const override { return a == b; }
};

/// Steps through a map: bucket by bucket from the first, each chain from its front. It owns nothing and must
/// not outlive the map. Removing the entry at which it stands leaves it dangling; step on before.
///
///     for (TMapIter<STRID, int> iter(map); !iter.AtEnd(); iter.Next()) Use(iter.Key(), iter.Value());
template <class K, class V>
class TMapIter {
 public:
    /// Stands at the map's first entry, or at the end if it is empty.
    explicit TMapIter(const TMap<K, V>& source) : TMapIter(&source) {}

    /// The same; null: "Assertion failed! pSrc", and resumed, the iterator stands at the end.
    explicit TMapIter(const TMap<K, V>* pSrc) : m_pSource(pSrc), m_bucket(-1), m_pPos(nullptr) {
        if (pSrc) {
            SeekBucket();
        } else {
            ForcedCrash(0, "Templ", __LINE__, "Assertion failed! pSrc");
        }
    }
    TMapIter(const TMapIter&) = default;
    TMapIter& operator=(const TMapIter&) = default;
    virtual ~TMapIter() = default;

    /// Whether there is no entry to read.
    bool AtEnd() const { return !m_pPos; }

    /// Steps to the next entry; false if that is the end. A step at the end changes nothing.
    bool Next() {
        if (!m_pPos) return false;
        m_pPos = m_pPos->m_pNext;
        if (!m_pPos) SeekBucket();
        return m_pPos != nullptr;
    }

    /// The entry's key and value, valid as long as its node. At the end: "Assertion failed! m_pPos"; resumed,
    /// a value-initialised object that lives until the next such call.
    const K& Key() { return Entry().m_key; }
    V& Value() { return Entry().m_value; }

 private:
    void SeekBucket() {
        while (!m_pPos && ++m_bucket < m_pSource->m_bucketCount)
            m_pPos = m_pSource->m_ppBuckets[m_bucket];
    }
    TPair<K, V>& Entry() {
        if (m_pPos) return m_pPos->m_value;
        ForcedCrash(0, "Templ", __LINE__, "Assertion failed! m_pPos");
        return m_dummy.emplace();
    }

    const TMap<K, V>* m_pSource;
    int m_bucket;
    TNode<TPair<K, V>>* m_pPos;
    std::optional<TPair<K, V>> m_dummy;
};

}  // namespace brenta
