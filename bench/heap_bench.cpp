// The global heap beside the general allocator and mimalloc.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <vector>

#include "brenta/heap.h"
#include "families.h"
#include "mimalloc_peer.h"
#include "workload.h"

namespace brenta::bench {
namespace {

struct Brenta {
    static void* Allocate(std::size_t size) { return CoreAllocate(static_cast<int>(size)); }
    static void Free(void* p) { CoreFree(p); }
};

struct BrentaObjects {
    static void* Allocate(std::size_t size) { return HeapNew(size); }
    static void Free(void* p) { HeapDelete(p); }
};

struct Malloc {
    static void* Allocate(std::size_t size) { return std::malloc(size); }
    static void Free(void* p) { std::free(p); }
};

/// A block comes and goes.
template <class Heap>
long Pairs() {
    constexpr int kTimes = 1000000;
    for (int i = 0; i < kTimes; ++i) {
        void* p = Heap::Allocate(24);
        benchmark::DoNotOptimize(p);
        Heap::Free(p);
    }
    return kTimes;
}

/// A thousand blocks of 1 to 256 bytes are alive; at each step one of them makes room for another.
template <class Heap>
long MixedSizes() {
    constexpr int kTimes = 500000;
    std::vector<void*> blocks(1024, nullptr);
    std::uint32_t state = 1;
    for (int i = 0; i < kTimes; ++i) {
        state = state * 1664525u + 1013904223u;
        void*& p = blocks[state >> 22];
        if (p != nullptr) Heap::Free(p);
        p = Heap::Allocate((state >> 8 & 255) + 1);
        *static_cast<char*>(p) = 1;
    }
    long alive = 0;
    for (void* p : blocks) {
        if (p == nullptr) continue;
        ++alive;
        Heap::Free(p);
    }
    return alive;
}

/// Chains of nodes are built, walked and dropped from the head.
template <class Heap>
long ListNodes() {
    struct Node {
        Node* pNext;
        long value;
        long more;
    };
    long sum = 0;
    for (int round = 0; round < 100; ++round) {
        Node* pHead = nullptr;
        for (long i = 0; i < 5000; ++i) {
            auto* node = static_cast<Node*>(Heap::Allocate(sizeof(Node)));
            *node = {pHead, i, round};
            pHead = node;
        }
        for (const Node* node = pHead; node != nullptr; node = node->pNext)
            sum += node->value;
        while (pHead != nullptr) {
            Node* const next = pHead->pNext;
            Heap::Free(pHead);
            pHead = next;
        }
    }
    return sum;
}

void Add(const std::string& name, long (*ours)(), long (*libc)(), long (*mimalloc)()) {
    Workloads().push_back({"heap", name, "malloc", 1.0, Side(ours), Side(libc)});
    if (Mimalloc::Load()) Workloads().push_back({"heap", name, "mimalloc", 1.2, Side(ours), Side(mimalloc)});
}

}  // namespace

void AddHeapWorkloads() {
    Add("pairs", Pairs<Brenta>, Pairs<Malloc>, Pairs<Mimalloc>);
    Add("mixed sizes", MixedSizes<Brenta>, MixedSizes<Malloc>, MixedSizes<Mimalloc>);
    Add("list nodes", ListNodes<Brenta>, ListNodes<Malloc>, ListNodes<Mimalloc>);
    Add("pairs of objects", Pairs<BrentaObjects>, Pairs<Malloc>, Pairs<Mimalloc>);
    Add("mixed objects", MixedSizes<BrentaObjects>, MixedSizes<Malloc>, MixedSizes<Mimalloc>);
    Add("list objects", ListNodes<BrentaObjects>, ListNodes<Malloc>, ListNodes<Mimalloc>);
}

}  // namespace brenta::bench
