// The containers of both families: what each operation does to the order of values, and what is left when a
// broken rule is reported and the handler resumes.
#include "brenta/containers.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "test_support.h"

namespace brenta::test {
namespace {

using Ints = std::vector<int>;

template <class List>
Ints ValuesOf(const List& list) {
    Ints values;
    for (const auto& value : list)
        values.push_back(value);
    return values;
}

template <class List>
List ListOf(const Ints& values) {
    List list;
    for (int value : values)
        list.Add(value);
    return list;
}

TIter<int> IterAt(const auto& list, int steps) {
    TIter<int> iter(list);
    while (steps-- > 0)
        iter.Next();
    return iter;
}

/// Counts its living objects.
struct Counted {
    explicit Counted(int v = 0) : value(v) { ++living; }
    Counted(const Counted& other) : value(other.value) { ++living; }
    Counted& operator=(const Counted&) = default;
    ~Counted() { --living; }
    bool operator==(const Counted& other) const { return value == other.value; }
    int value;
    static inline int living = 0;
};

template <class Object>
void ExpectQueries(const Object& object, std::size_t words, const char* name, const char* base) {
    EXPECT_EQ(object.SizeOf(), words * sizeof(void*)) << name;
    EXPECT_STREQ(object.GetClassName(), name);
    EXPECT_STREQ(object.GetBaseClassName(), base);
}

TEST(Containers, NameThemselves) {
    using Word = std::uintptr_t;
    TSimpleList<Word> simple;
    TOrderedList<Word> ordered;
    ExpectQueries(simple, 2, "TSimpleList", "none");
    ExpectQueries(ordered, 3, "TOrderedList", "TFastFreeSimpleList<T>");
    ExpectQueries(TIter<Word>(simple), 3, "TIter", "none");
    ExpectQueries(TNodeBase<Word>(1), 2, "TNodeBase", "none");
    ExpectQueries(TNode<Word>(1), 3, "TNode", "TNodeBase<T>");
    ExpectQueries(TPair<Word, Word>(1, 2), 3, "TPair", "none");
}

// One operation on both lists, started from the values added in the order given.
struct ListCase {
    const char* what;
    Ints added;
    std::function<void(TSimpleList<int>&)> onSimple;
    std::function<void(TOrderedList<int>&)> onOrdered;
    Ints simple;
    Ints ordered;
};

template <class List>
std::function<void(List&)> InsertAt(int steps, int value) {
    return [=](List& list) {
        TIter<int> iter = IterAt(list, steps);
        int* const current = iter.Get();
        list.Insert(iter, value);
        EXPECT_EQ(iter.m_pPrev->m_value, value);
        EXPECT_EQ(iter.Get(), current);
    };
}

template <class List>
std::function<void(List&)> RemoveAt(int steps) {
    return [=](List& list) {
        TIter<int> iter = IterAt(list, steps);
        TNode<int>* const previous = iter.m_pPrev;
        TNode<int>* const next = iter.m_pPos->m_pNext;
        list.Remove(iter);
        EXPECT_EQ(iter.m_pPrev, previous);
        EXPECT_EQ(iter.m_pPos, next);
    };
}

#define BOTH(operation) [](TSimpleList<int>& l) { operation; }, [](TOrderedList<int>& l) { operation; }
#define BOTH_OF(maker, ...) maker<TSimpleList<int>>(__VA_ARGS__), maker<TOrderedList<int>>(__VA_ARGS__)

TEST(Containers, ListsKeepTheirOrder) {
    const ListCase kCases[] = {
        {"nothing", {}, BOTH((void)l), {}, {}},
        {"additions", {1, 2, 3}, BOTH((void)l), {3, 2, 1}, {1, 2, 3}},
        {"itself", {1, 2}, BOTH(l.AddList(l)), {1, 2, 2, 1}, {1, 2, 1, 2}},
        {"own copy", {1, 2}, BOTH(auto c(l); l.AddList(c)), {1, 2, 2, 1}, {1, 2, 1, 2}},
        {"self-assignment", {1, 2}, BOTH(auto& same = l; l = same), {2, 1}, {1, 2}},
        {"insert into empty", {}, BOTH_OF(InsertAt, 0, 9), {9}, {9}},
        {"insert at head", {1, 2}, BOTH_OF(InsertAt, 0, 9), {9, 2, 1}, {9, 1, 2}},
        {"insert inside", {1, 2}, BOTH_OF(InsertAt, 1, 9), {2, 9, 1}, {1, 9, 2}},
        {"insert at end", {1, 2}, BOTH_OF(InsertAt, 5, 9), {2, 1, 9}, {1, 2, 9}},
        {"delete head", {1, 2, 3}, BOTH(l.Delete(1)), {3, 2}, {2, 3}},
        {"delete first equal", {1, 2, 1}, BOTH(l.Delete(1)), {2, 1}, {2, 1}},
        {"remove only", {1}, BOTH_OF(RemoveAt, 0), {}, {}},
        {"remove head", {1, 2, 3}, BOTH_OF(RemoveAt, 0), {2, 1}, {2, 3}},
        {"remove inside", {1, 2, 3}, BOTH_OF(RemoveAt, 1), {3, 1}, {1, 3}},
        {"remove last", {1, 2, 3}, BOTH_OF(RemoveAt, 2), {3, 2}, {1, 2}},
        {"remove all", {1, 2, 3}, BOTH(l.RemoveAll()), {}, {}},
    };
    for (const ListCase& row : kCases) {
        SCOPED_TRACE(row.what);
        auto simple = ListOf<TSimpleList<int>>(row.added);
        auto ordered = ListOf<TOrderedList<int>>(row.added);
        row.onSimple(simple);
        row.onOrdered(ordered);
        EXPECT_EQ(ValuesOf(simple), row.simple);
        EXPECT_EQ(ValuesOf(ordered), row.ordered);
        EXPECT_EQ(simple.GetCount(), static_cast<int>(row.simple.size()));
        EXPECT_EQ(ordered.IsEmpty(), row.ordered.empty());
        EXPECT_EQ(ordered.GetHead() ? *ordered.GetHead() : -1, row.ordered.empty() ? -1 : row.ordered[0]);

        // Head and tail still serve for more: everywhere but behind the value inserted last.
        simple.Add(7);
        ordered.Add(7);
        EXPECT_EQ(ValuesOf(simple).front(), 7);
        Ints more = row.ordered;
        more.insert(std::string(row.what) == "insert at end" ? more.end() - 1 : more.end(), 7);
        EXPECT_EQ(ValuesOf(ordered), more);
    }
}

TEST(Containers, AStepAtTheEndChangesNothing) {
    auto list = ListOf<TOrderedList<int>>({1, 2});
    TIter<int> iter(list);
    EXPECT_TRUE(iter.Next());
    EXPECT_FALSE(iter.Next());
    EXPECT_FALSE(iter.Next());
    EXPECT_EQ(iter.Get(), nullptr);
    list.Insert(iter, 9);
    EXPECT_EQ(ValuesOf(list), (Ints{1, 2, 9}));
}

TEST(Containers, ListBreachesAreReportedAndSurvived) {
    CrashRecorder crashes;
    auto simple = ListOf<TSimpleList<int>>({1, 2});
    simple.Delete(9);
    EXPECT_EQ(crashes.Last().SiteCode(), 0x0504E002u);
    EXPECT_STREQ(crashes.Last().File(), "Templ");
    TIter<int> atEnd = IterAt(simple, 2);
    simple.Remove(atEnd);
    EXPECT_EQ(crashes.Last().SiteCode(), 0u);
    EXPECT_EQ(ValuesOf(simple), (Ints{2, 1}));

    auto ordered = ListOf<TOrderedList<int>>({1});
    ordered.Delete(9);  // not reported
    TIter<int> iter = IterAt(ordered, 1);
    ordered.Insert(iter, 8);
    ordered.Insert(iter, 9);
    TIter<int> head(ordered);
    ordered.Remove(head);  // head and tail at once, with 8 and 9 behind it
    EXPECT_EQ(ValuesOf(ordered), (Ints{8, 9}));
    ordered.Add(3);  // the tail was lost
    EXPECT_EQ(ValuesOf(ordered), (Ints{8, 9, 3}));
    ordered.Add(4);
    EXPECT_EQ(ValuesOf(ordered), (Ints{8, 9, 3, 4}));

    EXPECT_EQ(crashes.Messages(),
              (std::vector<std::string>{
                  "Forced crash! \"Object not in list for delete.\"", "Assertion failed! iter.m_pPos",
                  "Assertion failed! m_pHead->m_pNext == NULL", "Assertion failed! m_pHead == NULL"}));
}

TEST(Containers, AThrowingHandlerLeavesTheListWhole) {
    auto list = ListOf<TOrderedList<int>>({1});
    {
        CrashRecorder ignore;
        TIter<int> iter = IterAt(list, 1);
        list.Insert(iter, 9);
        TIter<int> head(list);
        list.Remove(head);
    }
    SetForcedCrashHandler([](const ForcedCrashRecord& record, void*) { throw record; }, nullptr);
    auto from = ListOf<TOrderedList<int>>({4, 5});
    EXPECT_THROW(list.Add(3), ForcedCrashRecord);
    EXPECT_THROW(list.Splice(std::move(from)), ForcedCrashRecord);
    SetForcedCrashHandler(nullptr, nullptr);
    EXPECT_EQ(ValuesOf(list), (Ints{9}));
    EXPECT_EQ(ValuesOf(from), (Ints{4, 5}));
}

TEST(Containers, SpliceMovesWithoutCopying) {
    struct {
        Ints into, from, result;
    } kCases[] = {
        {{}, {}, {}},         {{1}, {}, {1}},     {{}, {1}, {1}},
        {{}, {1, 2}, {1, 2}}, {{1}, {2}, {1, 2}}, {{1, 2}, {3, 4, 5}, {1, 2, 3, 4, 5}},
    };
    for (const auto& row : kCases) {
        auto into = ListOf<TOrderedList<int>>(row.into);
        auto from = ListOf<TOrderedList<int>>(row.from);
        const int* const first = from.GetHead();
        into.Splice(std::move(from));
        into.Splice(std::move(into));
        EXPECT_EQ(ValuesOf(into), row.result);
        EXPECT_TRUE(from.IsEmpty());
        if (first) {
            EXPECT_EQ(IterAt(into, static_cast<int>(row.into.size())).Get(), first);
        }
        into.Add(7);
        from.Add(8);
        EXPECT_EQ(ValuesOf(into).back(), 7);
        EXPECT_EQ(ValuesOf(from), (Ints{8}));
    }
    // Values behind the tails of both lists.
    auto into = ListOf<TOrderedList<int>>({1});
    auto from = ListOf<TOrderedList<int>>({2, 3});
    TIter<int> intoEnd = IterAt(into, 1), fromEnd = IterAt(from, 2);
    into.Insert(intoEnd, 8);
    from.Insert(fromEnd, 9);
    into.Splice(std::move(from));
    EXPECT_EQ(ValuesOf(into), (Ints{1, 2, 3, 9, 8}));
}

TEST(Containers, CopiesAreDeepAndValuesAreDestroyedOnce) {
    {
        TSimpleList<Counted> simple;
        TOrderedList<Counted> ordered;
        THeapFastFreeSimpleList<Counted> pooled;
        for (int i = 0; i < 3; ++i) {
            simple.Add(Counted(i));
            ordered.Add(Counted(i));
            pooled.Add(Counted(i));
        }
        TSimpleList<Counted> simpleCopy(simple);
        TOrderedList<Counted> orderedCopy, moved(std::move(ordered));
        THeapFastFreeSimpleList<Counted> pooledCopy(pooled);
        orderedCopy = moved;
        simple.RemoveAll();
        moved = TOrderedList<Counted>();
        pooled.RemoveAll();
        EXPECT_EQ(Counted::living, 9);
        EXPECT_EQ(simpleCopy.begin()->value, 2);
        EXPECT_EQ(orderedCopy.begin()->value, 0);
        EXPECT_EQ(pooledCopy.begin()->value, 2);
        TIntMap<int, Counted> map(3);
        map.Add(1, Counted(1));
        map.SetAt(1, Counted(2));
        EXPECT_EQ(map.Remove(1).value, 2);
        EXPECT_EQ(Counted::living, 9);
    }
    EXPECT_EQ(Counted::living, 0);
}

TEST(Containers, NodesLieAlignedOnTheGlobalHeap) {
    CoreAllocate(5);
    TOrderedList<double> list;
    list.Add(1.5);
    EXPECT_TRUE(IsValidHeapPtr(list.GetHead()));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(list.GetHead()) % alignof(double), 0u);
}

template <class Stack>
void ExpectStackBehaviour(const char* source) {
    CrashRecorder crashes;
    Stack stack;
    for (int i = 1; i <= 3; ++i)
        stack.Push(i);
    EXPECT_EQ(ValuesOf(stack), (Ints{3, 2, 1}));
    stack.Top() = 7;
    stack.Pop();
    EXPECT_EQ(stack.Top(), 2);
    stack.RemoveAll();
    EXPECT_TRUE(crashes.Messages().empty());
    stack.Pop();
    EXPECT_STREQ(crashes.Last().File(), source);
    EXPECT_EQ(stack.Top(), 0);
    stack.Top() = 5;  // a dummy, fresh each time
    EXPECT_EQ(stack.Top(), 0);
    EXPECT_EQ(crashes.Messages(), std::vector<std::string>(4, "Assertion failed! m_pHead"));
    EXPECT_EQ(stack.GetCount(), 0);
}

TEST(Containers, Stacks) {
    ExpectStackBehaviour<TStack<int>>("Templ");
    ExpectStackBehaviour<THeapStack<int>>("Heap");
}

template <class Map, class Iter>
void ExpectMapBehaviour(const char* source) {
    CrashRecorder crashes;
    Map map(7);
    EXPECT_EQ(map.Hash(-1), 0x7FFFFFFFu);
    for (int key : {3, 10, 5, -1})
        map.Add(key, key * 100);
    int value = -1;
    EXPECT_TRUE(map.Lookup(10, value));
    EXPECT_EQ(value, 1000);
    EXPECT_FALSE(map.Lookup(17, value));
    EXPECT_EQ(value, 1000);
    EXPECT_EQ(map.SetAt(3, 4), 4);
    EXPECT_EQ(map.GetCount(), 4);
    EXPECT_EQ(map.SetAt(17, 6), 6);
    EXPECT_EQ(map.GetCount(), 5);

    // 0x7FFFFFFF is 1 modulo 7; 17, 10 and 3 share bucket 3, the newest in front.
    Ints keys;
    for (Iter iter(map); !iter.AtEnd(); iter.Next())
        keys.push_back(iter.Key());
    EXPECT_EQ(keys, (Ints{-1, 17, 10, 3, 5}));
    Iter iter(map);
    iter.Next();
    EXPECT_EQ(map.Remove(iter.Key()), 6);  // the argument lies in the node
    EXPECT_TRUE(crashes.Messages().empty());

    auto* duplicate = map.Add(10, 11);
    EXPECT_EQ(duplicate->m_value.m_value, 11);
    EXPECT_EQ(map.GetCount(), 5);
    EXPECT_EQ(map.Remove(10), 11);
    EXPECT_EQ(map.Remove(10), 1000);
    EXPECT_EQ(map.Remove(10), 0);
    EXPECT_EQ(map.GetCount(), 3);
    map.RemoveAll();
    Iter atEnd(map), ofNull(static_cast<const Map*>(nullptr));
    EXPECT_FALSE(atEnd.Next());
    EXPECT_FALSE(ofNull.Next());
    EXPECT_EQ(atEnd.Key(), 0);
    EXPECT_EQ(ofNull.Value(), 0);
    EXPECT_STREQ(crashes.Last().File(), source);
    EXPECT_EQ(crashes.Messages(),
              (std::vector<std::string>{"Forced crash! \"key already exists in map.\"",
                                        "Forced crash! \"Item not in map.\"", "Assertion failed! pSrc",
                                        "Assertion failed! m_pPos", "Assertion failed! m_pPos"}));
}

TEST(Containers, Maps) {
    ExpectMapBehaviour<TIntMap<int, int>, TMapIter<int, int>>("Templ");
    ExpectMapBehaviour<THeapIntMap<int, int>, THeapMapIter<int, int>>("Heap");
}

TEST(Containers, BucketCounts) {
    struct {
        int asked, ordinary, heap;
        bool reported;
    } kCases[] = {
        {1, 1, 1, false}, {1000000, 1000000, 1000000, false}, {0, 1, 1, true},
        {-5, 1, 1, true}, {1000001, 1000001, 1000000, true},
    };
    for (const auto& row : kCases) {
        CrashRecorder crashes;
        TIntMap<int, int> ordinary(row.asked);
        EXPECT_TRUE(crashes.Messages().empty());
        THeapIntMap<int, int> heap(row.asked);
        EXPECT_EQ(ordinary.GetBucketCount(), row.ordinary);
        EXPECT_EQ(heap.GetBucketCount(), row.heap);
        ASSERT_EQ(crashes.Messages().size(), row.reported ? 1u : 0u) << row.asked;
        if (row.reported) {
            EXPECT_EQ(crashes.Messages()[0], "Range Error! buckets not between 1 and 1000000.");
        }
        heap.Add(5, 6);
        EXPECT_EQ(heap.Remove(5), 6);
    }
}

TEST(Containers, HeapListsFollowTheSameRules) {
    THeapSimpleList<int> simple;
    THeapOrderedList<int> ordered;
    for (int i = 1; i <= 3; ++i)
        simple.Add(i), ordered.Add(i);
    simple.AddList(simple);
    ordered.AddList(ordered);
    EXPECT_EQ(ValuesOf(simple), (Ints{1, 2, 3, 3, 2, 1}));
    EXPECT_EQ(ValuesOf(ordered), (Ints{1, 2, 3, 1, 2, 3}));
    THeapIter<int> iter(ordered);
    while (iter.m_pPos->m_pNext)
        iter.Next();
    ordered.Remove(iter);
    ordered.Add(9);
    EXPECT_EQ(ValuesOf(ordered), (Ints{1, 2, 3, 1, 2, 9}));
    CrashRecorder crashes;
    ordered.Remove(iter);
    EXPECT_EQ(crashes.Messages(), std::vector<std::string>{"Assertion failed! iter.m_pPos"});
    EXPECT_STREQ(crashes.Last().File(), "Heap");
}

TEST(Containers, PooledNodesComeFromBlocksOfAThousand) {
    THeapFastFreeSimpleList<int> list;
    for (int round = 0; round < 2; ++round) {
        list.Add(0);
        const THeapNode<int>* const last = list.HeadNode();
        for (int i = 1; i < 1000; ++i)
            list.Add(i);
        EXPECT_EQ(list.HeadNode(), last - 999);  // from the block's end to its start
        THeapIter<int> iter(list);
        const THeapNode<int>* const released = list.HeadNode();
        list.Remove(iter);
        list.Add(5);
        EXPECT_EQ(list.HeadNode(), released);
        list.Add(6);
        EXPECT_TRUE(list.HeadNode() < last - 999 || list.HeadNode() > last);
        EXPECT_EQ(list.GetCount(), 1001);
        list.RemoveAll();  // and once more: nothing of the old blocks is left
    }
}

}  // namespace
}  // namespace brenta::test
