/// @file
/// The THeap family: the containers on which the heap is built, and which therefore must not use it. Nodes,
/// blocks and buckets come from the general allocator (plain `new` and `delete`). Included by
/// brenta/containers.h, which describes the semantics; this file says only what differs:
///
/// - The classes have no SizeOf, GetClassName and GetBaseClassName; their virtual slots start with the
///   destructor.
/// - There is no Insert and no Delete.
/// - THeapFastFreeSimpleList and THeapStack take their nodes from blocks of 1000 and keep released nodes.
/// - THeapMap checks its bucket count.
/// - Forced crashes carry the source "Heap", and without memory std::bad_alloc passes through.
///
///     THeapStack<void*> freed;
///     freed.Push(block);
///     void* again = freed.Top();
///     freed.Pop();
///
/// Containers own their nodes and are copied deeply; iterators own nothing. Threads: one container must not
/// be used by two at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <utility>

#include "brenta/detail/chain.h"
#include "brenta/failure.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Nodes and iterator

/// A node: two words when T is one.
template <class T>
struct THeapNode {
    THeapNode* m_pNext;  ///< null in the last node
    T m_value;
};

/// A position in a list of this family; see TIter.
template <class T>
class THeapIter {
 public:
    /// Stands at the first value of any list of the family, or at the end if it is empty.
    template <class List>
    explicit THeapIter(const List& list) : m_pPrev(nullptr), m_pPos(list.HeadNode()) {}
    THeapIter(const THeapIter&) = default;
    THeapIter& operator=(const THeapIter&) = default;
    virtual ~THeapIter() = default;

    /// The current value, valid as long as its node; null at the end.
    T* Get() const { return m_pPos ? &m_pPos->m_value : nullptr; }

    /// Steps on; false if that is the end. A step at the end changes nothing.
    bool Next() {
        if (!m_pPos) return false;
        m_pPrev = m_pPos;
        m_pPos = m_pPos->m_pNext;
        return m_pPos != nullptr;
    }

    THeapNode<T>* m_pPrev;  ///< the node stepped from; null at the head
    THeapNode<T>* m_pPos;   ///< the current node; null at the end
};

// ---------------------------------------------------------------------------------------------------------
// Lists

/// Grows at its front; see TSimpleList. Each value has a node from the general allocator.
template <class T>
class THeapSimpleList {
 public:
    /// Empty; allocates nothing.
    THeapSimpleList() : m_pHead(nullptr) {}
    /// Copies of the other's values in the same order.
    THeapSimpleList(const THeapSimpleList& other) : THeapSimpleList() {
        THeapNode<T>* tail = nullptr;
        for (const T& value : other)
            detail::AppendNode(m_pHead, tail, new THeapNode<T>{nullptr, value});
    }
    /// Copies, then drops the own values.
    THeapSimpleList& operator=(const THeapSimpleList& other) {
        THeapSimpleList copy(other);
        std::swap(m_pHead, copy.m_pHead);
        return *this;
    }
    virtual ~THeapSimpleList() { THeapSimpleList::RemoveAll(); }

    /// Number of values, by walking.
    virtual int GetCount() const { return detail::CountNodes(m_pHead); }
    /// Adds a copy of each value of the other list, in its order, with Add.
    virtual void AddList(const THeapSimpleList& list) {
        for (const T& value : list)
            Add(value);
    }
    /// Adds a copy of `value` at the front.
    virtual void Add(const T& value) { m_pHead = new THeapNode<T>{m_pHead, value}; }
    /// Destroys every value and gives the nodes back.
    virtual void RemoveAll() {
        THeapNode<T>* node = std::exchange(m_pHead, nullptr);
        while (node)
            delete std::exchange(node, node->m_pNext);
    }
    /// As TSimpleList::Remove.
    virtual void Remove(THeapIter<T>& iter) {
        delete detail::UnlinkAt(m_pHead, static_cast<THeapNode<T>**>(nullptr), iter, "Heap");
    }

    /// Whether there is no value. Constant time.
    bool IsEmpty() const { return !m_pHead; }
    /// The first node, which stays the list's; null if the list is empty.
    THeapNode<T>* HeadNode() const { return m_pHead; }
    /// For range-for loops; the values can be read only.
    auto begin() const { return detail::TCursor<const T, const THeapNode<T>>(m_pHead); }
    auto end() const { return detail::TCursor<const T, const THeapNode<T>>(); }

 private:
    THeapNode<T>* m_pHead;
};

/// Grows at its tail; see TOrderedList. Each value has a node from the general allocator.
template <class T>
class THeapOrderedList {
 public:
    /// Empty; allocates nothing.
    THeapOrderedList() : m_pHead(nullptr), m_pTail(nullptr) {}
    /// Copies of the other's values in the same order.
    THeapOrderedList(const THeapOrderedList& other) : THeapOrderedList() {
        for (const T& value : other)
            THeapOrderedList::Add(value);
    }
    /// Copies, then drops the own values.
    THeapOrderedList& operator=(const THeapOrderedList& other) {
        THeapOrderedList copy(other);
        std::swap(m_pHead, copy.m_pHead);
        std::swap(m_pTail, copy.m_pTail);
        return *this;
    }
    virtual ~THeapOrderedList() { THeapOrderedList::RemoveAll(); }

    /// Number of values, by walking.
    virtual int GetCount() const { return detail::CountNodes(m_pHead); }
    /// Adds a copy of each value of the other list, in its order, with Add. Of the list itself: the values
    /// present at the call.
    virtual void AddList(const THeapOrderedList& list) {
        // Counted, since the list may be this one.
        int count = list.GetCount();
        for (THeapIter<T> iter(list); count-- > 0; iter.Next())
            Add(*iter.Get());
    }
    /// Adds a copy of `value` at the tail.
    virtual void Add(const T& value) {
        detail::RequireTail(m_pHead, m_pTail, "Heap");
        detail::AppendNode(m_pHead, m_pTail, new THeapNode<T>{nullptr, value});
    }
    /// Destroys every value and gives the nodes back.
    virtual void RemoveAll() {
        THeapNode<T>* node = std::exchange(m_pHead, nullptr);
        m_pTail = nullptr;
        while (node)
            delete std::exchange(node, node->m_pNext);
    }
    /// As TOrderedList::Remove; since nothing can be inserted, the tail is never lost.
    virtual void Remove(THeapIter<T>& iter) { delete detail::UnlinkAt(m_pHead, &m_pTail, iter, "Heap"); }

    /// Whether there is no value. Constant time.
    bool IsEmpty() const { return !m_pHead; }
    /// The first node, which stays the list's; null if the list is empty.
    THeapNode<T>* HeadNode() const { return m_pHead; }
    /// For range-for loops; the values can be read only.
    auto begin() const { return detail::TCursor<const T, const THeapNode<T>>(m_pHead); }
    auto end() const { return detail::TCursor<const T, const THeapNode<T>>(); }

 private:
    THeapNode<T>* m_pHead;
    THeapNode<T>* m_pTail;
};

/// Grows at its front, with its own pool of nodes: building and dropping long lists again and again costs an
/// allocation per 1000 values at most. Nodes go back to the general allocator only in RemoveAll.
template <class T>
class THeapFastFreeSimpleList {
 public:
    /// Nodes in one block of the pool. A block is used from its end to its start.
    static constexpr int kNodesPerBlock = 1000;

    THeapFastFreeSimpleList() : m_pHead(nullptr), m_pFree(nullptr), m_pBlocks(nullptr), m_fresh(0) {}
    /// Copies of the other's values in the same order, in blocks of its own.
    THeapFastFreeSimpleList(const THeapFastFreeSimpleList& other) : THeapFastFreeSimpleList() {
        CopyFrom(other);
    }
    THeapFastFreeSimpleList& operator=(const THeapFastFreeSimpleList& other) {
        if (this == &other) return *this;
        THeapFastFreeSimpleList::RemoveAll();
        CopyFrom(other);
        return *this;
    }
    virtual ~THeapFastFreeSimpleList() { THeapFastFreeSimpleList::RemoveAll(); }

    /// Number of values, by walking.
    virtual int GetCount() const { return detail::CountNodes(m_pHead); }
    /// Adds a copy of each value of the other list, in its order, with Add.
    virtual void AddList(const THeapFastFreeSimpleList& list) {
        for (const T& value : list)
            Add(value);
    }
    /// Adds a copy of `value` at the front, in a node from NewNode.
    virtual void Add(const T& value) {
        THeapNode<T>* const node = NewNode(value);
        node->m_pNext = m_pHead;
        m_pHead = node;
    }
    /// Destroys every value and gives all blocks of nodes back, the released nodes included.
    virtual void RemoveAll() {
        for (; m_pHead; m_pHead = m_pHead->m_pNext)
            std::destroy_at(&m_pHead->m_value);
        m_pFree = nullptr;
        m_fresh = 0;
        while (m_pBlocks) {
            Block* const block = std::exchange(m_pBlocks, m_pBlocks->m_pNext);
            std::allocator<THeapNode<T>>().deallocate(block->m_pNodes, kNodesPerBlock);
            delete block;
        }
    }
    /// As TSimpleList::Remove; the node goes to FreeNode.
    virtual void Remove(THeapIter<T>& iter) {
        THeapNode<T>* const node =
            detail::UnlinkAt(m_pHead, static_cast<THeapNode<T>**>(nullptr), iter, "Heap");
        if (node) FreeNode(node);
    }

    /// Whether there is no value. Constant time.
    bool IsEmpty() const { return !m_pHead; }
    /// The first node, which stays the list's; null if the list is empty.
    THeapNode<T>* HeadNode() const { return m_pHead; }
    /// For range-for loops; the values can be read only.
    auto begin() const { return detail::TCursor<const T, const THeapNode<T>>(m_pHead); }
    auto end() const { return detail::TCursor<const T, const THeapNode<T>>(); }

 protected:
    /// A node with a copy of `value` and no successor: a released one, or else the next of the newest block.
    virtual THeapNode<T>* NewNode(const T& value) {
        if (m_pFree) {
            std::construct_at(&m_pFree->m_value, value);
            return TakeFreeNode();
        }
        if (m_fresh == 0) AddBlock();
        THeapNode<T>* const node = ::new (m_pBlocks->m_pNodes + (m_fresh - 1)) THeapNode<T>{nullptr, value};
        --m_fresh;
        return node;
    }
    /// Destroys the value and keeps the node for reuse.
    virtual void FreeNode(THeapNode<T>* node) {
        std::destroy_at(&node->m_value);
        node->m_pNext = std::exchange(m_pFree, node);
    }

 private:
    struct Block {
        THeapNode<T>* m_pNodes;
        Block* m_pNext;
    };

    THeapNode<T>* TakeFreeNode() {
        THeapNode<T>* const node = std::exchange(m_pFree, m_pFree->m_pNext);
        node->m_pNext = nullptr;
        return node;
    }
    void AddBlock() {
        std::unique_ptr<Block> block(new Block{nullptr, m_pBlocks});
        block->m_pNodes = std::allocator<THeapNode<T>>().allocate(kNodesPerBlock);
        m_pBlocks = block.release();
        m_fresh = kNodesPerBlock;
    }
    void CopyFrom(const THeapFastFreeSimpleList& other) {
        THeapNode<T>* tail = nullptr;
        for (const T& value : other)
            detail::AppendNode(m_pHead, tail, NewNode(value));
    }

    THeapNode<T>* m_pHead;
    THeapNode<T>* m_pFree;
    Block* m_pBlocks;
    int m_fresh;
};

/// Last in, first out, on the pooled list.
template <class T>
class THeapStack : public THeapFastFreeSimpleList<T> {
 public:
    THeapStack() = default;
    THeapStack(const THeapStack& other) : THeapFastFreeSimpleList<T>(other) {}
    THeapStack& operator=(const THeapStack& other) {
        THeapFastFreeSimpleList<T>::operator=(other);
        return *this;
    }
    ~THeapStack() override = default;

    /// Puts a copy of `value` on top.
    void Push(const T& value) { this->Add(value); }

    /// As TStack::Pop.
    void Pop() {
        if (this->IsEmpty()) return ForcedCrash(0, "Heap", __LINE__, "Assertion failed! m_pHead");
        THeapIter<T> top(*this);
        this->Remove(top);
    }

    /// As TStack::Top.
    T& Top() {
        if (!this->IsEmpty()) return this->HeadNode()->m_value;
        ForcedCrash(0, "Heap", __LINE__, "Assertion failed! m_pHead");
        return m_dummy.emplace();
    }

 private:
    std::optional<T> m_dummy;
};

// ---------------------------------------------------------------------------------------------------------
// Maps

template <class K, class V>
class THeapMapIter;

/// A hash map with chained buckets; see TMap.
template <class K, class V>
class THeapMap {
 public:
    /// What a node holds.
    struct Entry {
        K m_key;    ///< must not be changed
        V m_value;  ///< may be changed in place
    };
    using Node = THeapNode<Entry>;

    /// A bucket count outside 1 to 1000000: "Range Error! buckets not between 1 and 1000000."; resumed, the
    /// nearest count inside.
    explicit THeapMap(int bucketCount)
        : m_bucketCount(CheckedBucketCount(bucketCount)),
          m_ppBuckets(new Node*[static_cast<std::size_t>(m_bucketCount)]()),
          m_count(0) {}
    THeapMap(const THeapMap&) = delete;
    THeapMap& operator=(const THeapMap&) = delete;

    /// Destroys every key and value.
    virtual ~THeapMap() {
        THeapMap::RemoveAll();
        delete[] m_ppBuckets;
    }

    /// Any number; equal keys must have equal hashes.
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
    /// Replaces the value of a present key, or adds the key. Returns the value as the map holds it.
    virtual const V& SetAt(const K& key, const V& value) {
        Node* node = Find(key);
        if (!node) return Add(key, value)->m_value.m_value;
        return node->m_value.m_value = value;
    }
    /// As TMap::Add, and never null.
    virtual Node* Add(const K& key, const V& value) {
        if (Find(key)) ForcedCrash(0, "Heap", __LINE__, "Forced crash! \"key already exists in map.\"");
        Node*& bucket = BucketOf(key);
        bucket = new Node{bucket, Entry{key, value}};
        ++m_count;
        return bucket;
    }
    /// As TMap::Remove.
    virtual V Remove(const K& key) {
        for (Node** link = &BucketOf(key); *link; link = &(*link)->m_pNext) {
            if (!KeysEqual((*link)->m_value.m_key, key)) continue;
            V value = std::move((*link)->m_value.m_value);
            delete std::exchange(*link, (*link)->m_pNext);
            --m_count;
            return value;
        }
        ForcedCrash(0, "Heap", __LINE__, "Forced crash! \"Item not in map.\"");
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
    /// Number of buckets, 1 to 1000000.
    int GetBucketCount() const { return m_bucketCount; }

 private:
    friend class THeapMapIter<K, V>;

    static int CheckedBucketCount(int count) {
        constexpr int kMaxBuckets = 1000000;
        if (count >= 1 && count <= kMaxBuckets) return count;
        ForcedCrash(0, "Heap", __LINE__, "Range Error! buckets not between 1 and 1000000.");
        return count < 1 ? 1 : kMaxBuckets;
    }
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

/// A map whose keys are numbers, enumerations or pointers; see TIntMap.
template <class K, class V>
class THeapIntMap : public THeapMap<K, V> {
 public:
    using THeapMap<K, V>::THeapMap;

    std::uint32_t Hash(const K& key) const override { return detail::HashKey(key); }
    bool KeysEqual(const K& a, const K& b) const override { return a == b; }
};

/// Steps through a map; see TMapIter.
template <class K, class V>
class THeapMapIter {
 public:
    /// Stands at the map's first entry, or at the end if it is empty.
    explicit THeapMapIter(const THeapMap<K, V>& source) : THeapMapIter(&source) {}
    /// The same; null: "Assertion failed! pSrc", and resumed, the iterator stands at the end.
    explicit THeapMapIter(const THeapMap<K, V>* pSrc) : m_pSource(pSrc), m_bucket(-1), m_pPos(nullptr) {
        if (pSrc) {
            SeekBucket();
        } else {
            ForcedCrash(0, "Heap", __LINE__, "Assertion failed! pSrc");
        }
    }
    THeapMapIter(const THeapMapIter&) = default;
    THeapMapIter& operator=(const THeapMapIter&) = default;
    virtual ~THeapMapIter() = default;

    /// Whether there is no entry to read.
    bool AtEnd() const { return !m_pPos; }
    /// Steps to the next entry; false if that is the end. A step at the end changes nothing.
    bool Next() {
        if (!m_pPos) return false;
        m_pPos = m_pPos->m_pNext;
        if (!m_pPos) SeekBucket();
        return m_pPos != nullptr;
    }
    /// As TMapIter::Key and TMapIter::Value.
    const K& Key() { return CurrentEntry().m_key; }
    V& Value() { return CurrentEntry().m_value; }

 private:
    using Entry = typename THeapMap<K, V>::Entry;

    void SeekBucket() {
        while (!m_pPos && ++m_bucket < m_pSource->m_bucketCount)
            m_pPos = m_pSource->m_ppBuckets[m_bucket];
    }
    Entry& CurrentEntry() {
        if (m_pPos) return m_pPos->m_value;
        ForcedCrash(0, "Heap", __LINE__, "Assertion failed! m_pPos");
        return m_dummy.emplace();
    }

    const THeapMap<K, V>* m_pSource;
    int m_bucket;
    THeapNode<Entry>* m_pPos;
    std::optional<Entry> m_dummy;
};

}  // namespace brenta
