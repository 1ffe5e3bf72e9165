// The page heap: exact adjacency and reuse, its aligned lane, bad pointers, and many threads.
#include "brenta/heap.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>

#include "brenta/containers.h"
#include "test_support.h"

namespace brenta::test {
namespace {

constexpr int kPage = 1000;

char* Bytes(void* p) {
    return static_cast<char*>(p);
}

// Order and reuse of blocks are AgreesWithTheModel's affair.
TEST(Heap, CountsWhatItGives) {
    CHeap heap("test", kPage);
    char* const one = Bytes(heap.Allocate(0));
    char* const block = Bytes(heap.Allocate(24));
    EXPECT_EQ(block, one + 1);
    heap.Free(block);
    heap.Free(block);
    EXPECT_EQ(heap.Allocate(24), block);
    EXPECT_EQ(heap.Allocate(24), block + 24);  // the second release counted for nothing
    EXPECT_EQ(heap.Allocate(-1), nullptr);
    EXPECT_EQ(heap.Allocate(INT_MIN), nullptr);
    EXPECT_EQ(heap.GetAllocationCount(), 4u);
    EXPECT_EQ(heap.GetReuseCount(), 1u);
    EXPECT_EQ(heap.GetBytesUsed(), 49);
}

TEST(Heap, TheRestOfAPageServesUncarved) {
    CHeap heap("test", kPage);
    char* const first = Bytes(heap.Allocate(900));
    heap.Allocate(1500);  // a page of its own size; 100 bytes are left of the first
    char* const rest = Bytes(heap.Allocate(100));
    EXPECT_EQ(rest, first + 900);
    EXPECT_EQ(heap.GetBytesUsed(), 2400);
    EXPECT_FALSE(heap.IsValidHeapPtr(rest));
    heap.Free(rest);
    EXPECT_EQ(heap.Allocate(100), rest);
}

/// The global heap, too, gives out first what was freed last, although threads keep blocks to themselves. It
/// takes a process of its own to know where its pages begin.
TEST(Heap, TheRestOfAPageComesBeforeWhatAThreadKeeps) {
    const auto restComesFirst = [] {
        constexpr int kGlobalPage = 1000000, kRest = 100;
        char* const first = Bytes(CoreAllocate(kRest));
        CoreFree(first);
        char* const next = Bytes(CoreAllocate(17)) + 17;
        const int left = kGlobalPage - static_cast<int>(next - first);
        char* const large = Bytes(CoreAllocate(left - kRest));
        CoreAllocate(200000);  // a new page begins
        return large == next && CoreAllocate(kRest) == large + left - kRest;
    };
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::_Exit(restComesFirst() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(Heap, KnowsItsPointers) {
    CHeap heap("test", kPage), other("other", kPage);
    EXPECT_FALSE(heap.IsValidHeapPtr(nullptr));
    char* const block = Bytes(heap.Allocate(10));
    EXPECT_TRUE(heap.IsValidHeapPtr(block) && heap.IsValidHeapPtr(block + 8));
    EXPECT_FALSE(heap.IsValidHeapPtr(block + 9));  // the last carved byte
    EXPECT_FALSE(heap.IsValidHeapPtr(block - 1) || other.IsValidHeapPtr(block));
    int local = 0;
    for (void* foreign : {static_cast<void*>(&local), other.Allocate(10), static_cast<void*>(block + 1),
                          reinterpret_cast<void*>(UINTPTR_MAX), reinterpret_cast<void*>(1)}) {
        heap.Free(foreign);
    }
    heap.Free(block);
    EXPECT_TRUE(heap.IsValidHeapPtr(block));
    EXPECT_EQ(heap.Allocate(10), block);
    EXPECT_NE(heap.Allocate(10), nullptr);
}

TEST(Heap, ReAllocMovesAndClears) {
    for (const auto& [from, to] :
         {std::pair(16, 32), {32, 16}, {16, 16}, {16, 0}, {16, 3}, {5008, 6000}, {16, 2000}}) {
        for (const bool aligned : {false, true}) {
            SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to));
            CHeap heap("test", kPage);
            const auto oldSize = static_cast<std::size_t>(from), newSize = static_cast<std::size_t>(to);
            void* const p = aligned ? heap.AllocateAligned(oldSize) : heap.Allocate(from);
            std::memset(p, 'x', oldSize);
            char* const q = Bytes(heap.ReAlloc(p, to));
            ASSERT_NE(q, p);
            std::string expected(std::min(oldSize, newSize), 'x');
            expected.resize(std::max<std::size_t>(newSize, 1));
            EXPECT_EQ(std::string(q, expected.size()), expected);
            EXPECT_EQ(heap.ReAlloc(q, -1), nullptr);
            EXPECT_EQ(aligned ? heap.AllocateAligned(oldSize) : heap.Allocate(from), p);
        }
    }
}

TEST(Heap, BreachesAreReportedAndSurvived) {
    CrashRecorder crashes;
    CHeap heap;
    EXPECT_EQ(crashes.Last().SiteCode(), 0x0501B001u);
    EXPECT_STREQ(crashes.Last().File(), "Heap");
    EXPECT_STREQ(heap.GetName(), "");
    char* const p = Bytes(heap.Allocate(999999));
    EXPECT_EQ(heap.Allocate(1), p + 999999);
    heap.Free(nullptr);
    EXPECT_EQ(crashes.Last().SiteCode(), 0x0501B007u);
    CoreFree(nullptr);
    HeapDelete(nullptr);
    heap.Free(p);
    EXPECT_EQ(heap.ReAlloc(p, 10), nullptr);
    EXPECT_EQ(crashes.Last().SiteCode(), 0x0501B008u);
    EXPECT_EQ(heap.ReAlloc(nullptr, 10), nullptr);
    EXPECT_EQ(heap.ReAlloc(p + 1, 10), nullptr);
    EXPECT_EQ(heap.Allocate(999999), p);
    const std::string kUnknown = "Forced crash! \"Attempting to realloc an unknown pointer.\"";
    const std::string kNull = "Forced crash! \"Attempting to free a NULL ptr.\"";
    EXPECT_EQ(crashes.Messages(), (Texts{"Forced crash! \"Use initializing constructor\"", kNull, kNull,
                                         kUnknown, kUnknown, kUnknown}));
}

TEST(Heap, NamesAndPageSizes) {
    EXPECT_STREQ(CHeap(nullptr, kPage).GetName(), "");
    EXPECT_EQ(CHeap(std::string(300, 'n').c_str(), kPage).GetName(), std::string(259, 'n'));
    for (const int pageSize : {0, -1, INT_MIN, 1, 15, 17}) {
        CHeap heap("tiny", pageSize);
        std::map<int, void*> blocks;
        for (int size = 1; size < 100; ++size)
            blocks[size] = heap.Allocate(size);
        for (const auto& [size, block] : blocks)
            std::memset(block, 'x', static_cast<std::size_t>(size)), heap.Free(block);
        EXPECT_EQ(heap.Allocate(50), blocks[50]) << pageSize;
        EXPECT_NE(heap.AllocateAligned(50), nullptr);
    }
}

/// A literal model of the exact lane, to compare long random programs with.
struct Model {
    std::map<int, std::vector<char*>> freed;
    std::map<char*, int> live;
    char* position = nullptr;
    int left = kPage, used = 0;

    /// Checks the heap's answer to Allocate(size) and notes it.
    void Allocated(int size, char* p) {
        live[p] = size;
        if (auto& stack = freed[size]; !stack.empty()) {
            ASSERT_EQ(p, stack.back());
            return stack.pop_back();
        }
        if (left < size) {
            if (left > 0) freed[left].push_back(position);
            left = std::max(size, kPage);
        } else if (position) {
            ASSERT_EQ(p, position);
        }
        position = p + size;
        left -= size;
        used += size;
    }
};

TEST(Heap, AgreesWithTheModel) {
    std::minstd_rand random(1);
    CHeap heap("test", kPage);
    Model model;
    for (int i = 0; i < 20000; ++i) {
        const int size = static_cast<int>(random() % (random() % 16 ? 24 : 1200)) + 1;
        if (random() % 2 || model.live.empty()) {
            char* const p = Bytes(heap.Allocate(size));
            std::memset(p, size, static_cast<std::size_t>(size));
            ASSERT_NO_FATAL_FAILURE(model.Allocated(size, p)) << i;
        } else {
            const int among = std::min(static_cast<int>(model.live.size()), 50);
            const auto victim = std::next(model.live.begin(), static_cast<int>(random()) % among);
            ASSERT_EQ(victim->first[victim->second - 1], static_cast<char>(victim->second));
            heap.Free(victim->first);
            model.freed[victim->second].push_back(victim->first);
            model.live.erase(victim);
        }
        ASSERT_EQ(heap.GetBytesUsed(), model.used);
    }
}

TEST(Heap, AlignedBlocksSitBesideExactOnes) {
    CHeap heap("test", kPage);
    char* const five = Bytes(heap.Allocate(5));
    for (const std::size_t size : {0u, 1u, 16u, 17u, 999u, 5000u, 2000000u}) {
        SCOPED_TRACE(size);
        char* const p = Bytes(heap.AllocateAligned(size));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % 16, 0u);
        std::memset(p, 'x', size);
        EXPECT_TRUE(heap.IsValidHeapPtr(p));
        heap.Free(p + 8);
        heap.Free(p);
        heap.Free(p);
        EXPECT_EQ(heap.AllocateAligned(size), p);
        EXPECT_NE(heap.AllocateAligned(size), p);
    }
    EXPECT_EQ(heap.AllocateAligned(static_cast<std::size_t>(INT_MAX) + 1), nullptr);
    EXPECT_EQ(heap.AllocateAligned(SIZE_MAX), nullptr);
    EXPECT_EQ(heap.Allocate(4), five + 5);
}

struct Aware {
    virtual ~Aware() = default;
    BRENTA_HEAP_OPERATORS
    double value = 1.5;
};

TEST(Heap, ObjectsStayAligned) {
    CoreAllocate(1000000);  // what follows starts a page; these sizes are nobody else's, so they are carved
    char* const five = Bytes(CoreAllocate(3005));
    char* const four = Bytes(CoreAllocate(3004));
    EXPECT_EQ(four, five + 3005);
    auto* object = new Aware;
    auto* array = new Aware[3];
    for (const Aware* p : {object, array})
        EXPECT_TRUE(IsValidHeapPtr(p) && reinterpret_cast<std::uintptr_t>(p) % alignof(Aware) == 0);
    alignas(Aware) char place[sizeof(Aware)];
    (new (place) Aware)->~Aware();
    const int used = CoreHeapUsed();
    delete[] array;
    delete object;
    EXPECT_EQ(new Aware, object);
    CoreFree(object);
    EXPECT_EQ(CoreHeapUsed(), used);
    volatile std::size_t tooMany = std::size_t{1} << 40;
    EXPECT_EQ(new Aware[tooMany], nullptr);
    void* const other = CoreAllocate(8);
    EXPECT_EQ(CoreReAlloc(other, -1), nullptr);
    EXPECT_EQ(Bytes(CoreReAlloc(other, 16))[15], '\0');
}

TEST(Heap, ThreadsReuseWhatOthersKeep) {
    const int before = CoreHeapUsed();
    while (CoreHeapUsed() == before)  // until no block of this size is free
        CoreAllocate(463);
    std::atomic<int> step{0};
    void* kept = nullptr;
    std::thread keeper([&] {
        kept = CoreAllocate(463);
        CoreFree(kept);
        step = 1;
        while (step != 2)
            std::this_thread::yield();
        EXPECT_NE(CoreAllocate(463), kept);
    });
    while (step != 1)
        std::this_thread::yield();
    const int used = CoreHeapUsed();
    EXPECT_EQ(CoreAllocate(463), kept);
    EXPECT_EQ(CoreHeapUsed(), used);
    step = 2;
    keeper.join();
}

/// Frees the same two blocks on two threads, which may be the one that allocated them and another.
void FreeTwice(bool byOwner) {
    void *p = nullptr, *q = nullptr;
    std::atomic<int> ready{0};
    const auto allocate = [&] { p = CoreAllocate(77), q = HeapNew(96); };
    if (!byOwner) allocate();
    OnThreads(2u, [&](unsigned thread) {
        if (byOwner && thread == 0) allocate();
        for (++ready; ready != 2;)
            std::this_thread::yield();
        CoreFree(p), CoreFree(q);
    });
}

TEST(Heap, ADoubleFreeByTwoThreadsCountsOnce) {
    for (int round = 0; round < 400; ++round) {
        FreeTwice(round % 2 == 0);
        void* const exact[] = {CoreAllocate(77), CoreAllocate(77)};
        void* const aligned[] = {HeapNew(96), HeapNew(96)};
        ASSERT_TRUE(exact[0] != exact[1] && aligned[0] != aligned[1]);
        for (void* block : {exact[0], exact[1], aligned[0], aligned[1]})
            CoreFree(block);
    }
}

/// What a thread freed last it gets next, whoever allocated it.
TEST(Heap, GivesBackTheBlockOfAnotherThread) {
    void* const block = CoreAllocate(451);
    std::thread([=] {
        CoreFree(CoreAllocate(451));
        CoreFree(block);
        EXPECT_EQ(CoreAllocate(451), block);
    }).join();
}

// A thread makes blocks and lives on, another frees them, again and again: nothing is lost and nothing is
// given out twice.
TEST(Heap, BlocksFreedByOthersComeBack) {
    constexpr int kBlocks = 1000, kRounds = 100;
    std::vector<void*> blocks(2 * kBlocks);
    std::atomic<int> step{0};
    const auto inTurn = [&](int mine, auto&& work) {
        for (int round = 0; round < kRounds; ++round) {
            while (step != 2 * round + mine)
                std::this_thread::yield();
            work();
            ++step;
        }
    };
    std::vector<int> used;
    std::thread maker([&] {
        inTurn(0, [&] {
            for (int i = 0; i < 2 * kBlocks; ++i)
                blocks[static_cast<std::size_t>(i)] = i % 2 ? CoreAllocate(459) : HeapNew(480);
            EXPECT_EQ(std::set<void*>(blocks.begin(), blocks.end()).size(), blocks.size());
            used.push_back(CoreHeapUsed());
        });
    });
    inTurn(1, [&] { std::for_each(blocks.begin(), blocks.end(), CoreFree); });
    maker.join();
    EXPECT_LE(used.back() - used[1], 256 * 480);  // as many may still wait for the thread that made them
    EXPECT_EQ(used.back(), used[used.size() / 2]);
}

}  // namespace
}  // namespace brenta::test
