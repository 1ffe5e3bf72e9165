// The containers of both families: what each operation does to the order of values, and what is left when a
// broken rule is reported and the handler resumes.
#include "brenta/containers.h"

#include <algorithm>

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

TEST(Containers, KeepTheSizesAndNamesThatCallersKnow) {
    const TOrderedList<int> list;
    EXPECT_EQ(list.SizeOf(), 3 * sizeof(void*));
    EXPECT_EQ(TIter<int>(list).SizeOf(), 3 * sizeof(void*));
    EXPECT_STREQ(list.GetBaseClassName(), "TFastFreeSimpleList<T>");
}

enum Operation { kNothing, kAddItself, kAddCopy, kAssignItself, kInsert9, kDelete1, kRemove, kClear };

/// Does one thing to a list of either kind, with an iterator that has taken so many steps.
template <class List>
void Apply(Operation operation, int steps, List& list) {
    TIter<int> iter = IterAt(list, steps);
    TNode<int>* const previous = iter.m_pPrev;
    TNode<int>* const current = iter.m_pPos;
    TNode<int>* const next = current ? current->m_pNext : nullptr;
    List& itself = list;
    if (operation == kAddItself) list.AddList(list);
    if (operation == kAddCopy) list.AddList(List(list));
    if (operation == kAssignItself) list = itself;
    if (operation == kInsert9) list.Insert(iter, 9);
    if (operation == kDelete1) list.Delete(1);
    if (operation == kRemove) list.Remove(iter);
    if (operation == kClear) return list.RemoveAll();
    EXPECT_EQ(iter.m_pPos, operation == kRemove ? next : current);
    EXPECT_EQ(iter.m_pPrev, operation == kInsert9 ? IterAt(list, std::min(steps, 2) + 1).m_pPrev : previous);
}

TEST(Containers, ListsKeepTheirOrder) {
    // Values added, what happens at which position, the simple and the ordered list after it.
    const std::tuple<Ints, Operation, int, Ints, Ints> kRows[] = {
        {{}, kNothing, 0, {}, {}},
        {{1, 2, 3}, kNothing, 0, {3, 2, 1}, {1, 2, 3}},
        {{1, 2}, kAddItself, 0, {1, 2, 2, 1}, {1, 2, 1, 2}},
        {{1, 2}, kAddCopy, 0, {1, 2, 2, 1}, {1, 2, 1, 2}},
        {{1, 2}, kAssignItself, 0, {2, 1}, {1, 2}},
        {{}, kInsert9, 0, {9}, {9}},
        {{1, 2}, kInsert9, 0, {9, 2, 1}, {9, 1, 2}},
        {{1, 2}, kInsert9, 1, {2, 9, 1}, {1, 9, 2}},
        {{1, 2}, kInsert9, 5, {2, 1, 9}, {1, 2, 9}},
        {{1, 2, 3}, kDelete1, 0, {3, 2}, {2, 3}},
        {{1, 2, 1}, kDelete1, 0, {2, 1}, {2, 1}},
        {{1}, kRemove, 0, {}, {}},
        {{1, 2, 3}, kRemove, 0, {2, 1}, {2, 3}},
        {{1, 2, 3}, kRemove, 1, {3, 1}, {1, 3}},
        {{1, 2, 3}, kRemove, 2, {3, 2}, {1, 2}},
        {{1, 2, 3}, kClear, 0, {}, {}},
    };
    for (const auto& [added, operation, steps, simpleAfter, orderedAfter] : kRows) {
        SCOPED_TRACE(testing::PrintToString(std::tuple(added, operation, steps)));
        auto simple = ListOf<TSimpleList<int>>(added);
        auto ordered = ListOf<TOrderedList<int>>(added);
        Apply(operation, steps, simple);
        Apply(operation, steps, ordered);
        EXPECT_EQ(ValuesOf(simple), simpleAfter);
        EXPECT_EQ(ValuesOf(ordered), orderedAfter);
        EXPECT_EQ(simple.GetCount(), static_cast<int>(simpleAfter.size()));
        EXPECT_EQ(ordered.GetHead() ? *ordered.GetHead() : -1, ordered.IsEmpty() ? -1 : orderedAfter[0]);

        // Head and tail still serve for more: everywhere but behind the value inserted last.
        simple.Add(7);
        ordered.Add(7);
        EXPECT_EQ(ValuesOf(simple).front(), 7);
        Ints more = orderedAfter;
        more.insert(steps == 5 ? more.end() - 1 : more.end(), 7);
        EXPECT_EQ(ValuesOf(ordered), more);
    }
}

/// A list of the values 8 and 9 that has lost its tail: both stood behind it when it was removed.
TOrderedList<int> ListWithoutTail(CrashRecorder& crashes) {
    auto list = ListOf<TOrderedList<int>>({1});
    TIter<int> iter = IterAt(list, 1), head(list);
    list.Insert(iter, 8);
    list.Insert(iter, 9);
    list.Remove(head);
    EXPECT_EQ(crashes.Messages().back(), "Assertion failed! m_pHead->m_pNext == NULL");
    EXPECT_EQ(ValuesOf(list), (Ints{8, 9}));
    return list;
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

    auto ordered = ListWithoutTail(crashes);
    ordered.Delete(1);  // not there, which this list does not report
    ordered.Add(3);
    ordered.Add(4);
    EXPECT_EQ(ValuesOf(ordered), (Ints{8, 9, 3, 4}));
    EXPECT_EQ(crashes.Messages(),
              (Texts{"Forced crash! \"Object not in list for delete.\"", "Assertion failed! iter.m_pPos",
                     "Assertion failed! m_pHead->m_pNext == NULL", "Assertion failed! m_pHead == NULL"}));
}

TEST(Containers, AThrowingHandlerLeavesTheListWhole) {
    CrashRecorder crashes;
    auto list = ListWithoutTail(crashes);
    SetForcedCrashHandler([](const ForcedCrashRecord& record, void*) { throw record; }, nullptr);
    auto from = ListOf<TOrderedList<int>>({4, 5});
    EXPECT_THROW(list.Add(3), ForcedCrashRecord);
    EXPECT_THROW(list.Splice(std::move(from)), ForcedCrashRecord);
    SetForcedCrashHandler(nullptr, nullptr);
    EXPECT_EQ(ValuesOf(list), (Ints{8, 9}));
    EXPECT_EQ(ValuesOf(from), (Ints{4, 5}));
}

TEST(Containers, SpliceMovesWithoutCopying) {
    const std::pair<Ints, Ints> kRows[] = {{{}, {}},     {{1}, {}},  {{}, {1}},
                                           {{}, {1, 2}}, {{1}, {2}}, {{1, 2}, {3, 4, 5}}};
    for (const auto& [before, behind] : kRows) {
        auto into = ListOf<TOrderedList<int>>(before);
        auto from = ListOf<TOrderedList<int>>(behind);
        const int* const first = from.GetHead();
        into.Splice(std::move(from));
        into.Splice(std::move(into));
        EXPECT_TRUE(!first || IterAt(into, static_cast<int>(before.size())).Get() == first);
        into.Add(7);
        from.Add(8);
        Ints all = before;
        all.insert(all.end(), behind.begin(), behind.end());
        all.push_back(7);
        EXPECT_EQ(ValuesOf(into), all);
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
    EXPECT_TRUE(IsValidHeapPtr(into.GetHead()));
}

template <class List>
void ExpectDeepCopies(int first) {
    List list, assigned;
    for (int i = 0; i < 3; ++i)
        list.Add(Counted(i));
    List copy(list), taken(std::move(list));
    assigned = taken;
    taken.RemoveAll();
    list = List();
    EXPECT_EQ(Counted::living, 6);
    EXPECT_TRUE(copy.begin()->value == first && assigned.begin()->value == first);
}

TEST(Containers, CopiesAreDeepAndValuesAreDestroyedOnce) {
    ExpectDeepCopies<TSimpleList<Counted>>(2);
    ExpectDeepCopies<TOrderedList<Counted>>(0);
    ExpectDeepCopies<THeapSimpleList<Counted>>(2);
    ExpectDeepCopies<THeapOrderedList<Counted>>(0);
    ExpectDeepCopies<THeapFastFreeSimpleList<Counted>>(2);
    {
        TIntMap<int, Counted> map(3);
        map.Add(1, Counted(1));
        map.SetAt(1, Counted(2));
        EXPECT_EQ(map.Remove(1).value, 2);
        EXPECT_EQ(Counted::living, 0);
        map.Add(3, Counted());
    }
    EXPECT_EQ(Counted::living, 0);
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
    stack.Top() = 5;  // a dummy, fresh each time
    EXPECT_EQ(stack.Top(), 0);
    EXPECT_EQ(crashes.Messages(), Texts(3, "Assertion failed! m_pHead"));
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
    EXPECT_TRUE(map.Lookup(10, value) && value == 1000);
    EXPECT_TRUE(!map.Lookup(17, value) && value == 1000);
    EXPECT_TRUE(map.SetAt(3, 4) == 4 && map.GetCount() == 4);
    EXPECT_TRUE(map.SetAt(17, 6) == 6 && map.GetCount() == 5);

    // 0x7FFFFFFF is 1 modulo 7; 17, 10 and 3 share bucket 3, the newest in front.
    Ints keys;
    for (Iter iter(map); !iter.AtEnd(); iter.Next())
        keys.push_back(iter.Key());
    EXPECT_EQ(keys, (Ints{-1, 17, 10, 3, 5}));
    Iter iter(map);
    iter.Next();
    EXPECT_EQ(map.Remove(iter.Key()), 6);  // the argument lies in the node
    EXPECT_TRUE(crashes.Messages().empty());

    EXPECT_EQ(map.Add(10, 11)->m_value.m_value, 11);
    EXPECT_EQ(map.GetCount(), 5);
    for (int expected : {11, 1000, 0})
        EXPECT_EQ(map.Remove(10), expected);
    EXPECT_EQ(map.GetCount(), 3);
    map.RemoveAll();
    Iter atEnd(map), ofNull(static_cast<const Map*>(nullptr));
    EXPECT_FALSE(atEnd.Next() || ofNull.Next());
    EXPECT_TRUE(atEnd.Key() == 0 && ofNull.Value() == 0);
    EXPECT_STREQ(crashes.Last().File(), source);
    EXPECT_EQ(crashes.Messages(),
              (Texts{"Forced crash! \"key already exists in map.\"", "Forced crash! \"Item not in map.\"",
                     "Assertion failed! pSrc", "Assertion failed! m_pPos", "Assertion failed! m_pPos"}));
}

TEST(Containers, Maps) {
    ExpectMapBehaviour<TIntMap<int, int>, TMapIter<int, int>>("Templ");
    ExpectMapBehaviour<THeapIntMap<int, int>, THeapMapIter<int, int>>("Heap");
}

TEST(Containers, BucketCounts) {
    // Asked for; what a map and a map of the heap's family then have.
    for (const auto& [asked, ordinary, heap] : {std::tuple(1, 1, 1),
                                                {1000000, 1000000, 1000000},
                                                {0, 1, 1},
                                                {-5, 1, 1},
                                                {1000001, 1000001, 1000000}}) {
        CrashRecorder crashes;
        EXPECT_EQ((TIntMap<int, int>(asked).GetBucketCount()), ordinary);
        EXPECT_TRUE(crashes.Messages().empty());
        THeapIntMap<int, int> map(asked);
        EXPECT_EQ(map.GetBucketCount(), heap);
        EXPECT_EQ(crashes.Messages(),
                  Texts(asked != heap, "Range Error! buckets not between 1 and 1000000."));
        map.Add(5, 6);
        EXPECT_EQ(map.Remove(5), 6);
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
    CrashRecorder crashes;
    THeapIter<int> atEnd(THeapOrderedList<int>{});
    ordered.Remove(atEnd);
    EXPECT_EQ(crashes.Messages(), Texts{"Assertion failed! iter.m_pPos"});
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
        list.Remove(iter);
        list.Add(5);
        EXPECT_EQ(list.HeadNode(), last - 999);
        list.Add(6);
        EXPECT_TRUE(list.HeadNode() < last - 999 || list.HeadNode() > last);
        EXPECT_EQ(list.GetCount(), 1001);
        list.RemoveAll();  // and once more: nothing of the old blocks is left
    }
}

}  // namespace
}  // namespace brenta::test
