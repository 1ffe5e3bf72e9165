// The containers beside those of the standard library.
#include <list>
#include <memory>
#include <unordered_map>

#include "brenta/containers.h"
#include "families.h"
#include "workload.h"

namespace brenta::bench {
namespace {

/// Built, walked and dropped, `times` over.
long ListOurs(int size, int times) {
    long sum = 0;
    for (int round = 0; round < times; ++round) {
        TOrderedList<int> list;
        for (int i = 0; i < size; ++i)
            list.Add(i);
        for (const int value : list)
            sum += value;
    }
    return sum;
}

long ListTheirs(int size, int times) {
    long sum = 0;
    for (int round = 0; round < times; ++round) {
        std::list<int> list;
        for (int i = 0; i < size; ++i)
            list.push_back(i);
        for (const int value : list)
            sum += value;
    }
    return sum;
}

void AddList(const char* name, int size, int times) {
    Workloads().push_back({"containers", name, "std::list", 0.7, Side([=] { return ListOurs(size, times); }),
                           Side([=] { return ListTheirs(size, times); })});
}

constexpr int kKeys = 100000;

/// The keys of the maps: all different, without any order, some of them absent from the map.
int KeyAt(int i) {
    constexpr unsigned int kMask = 0x7FFFFFFF;
    unsigned int key = static_cast<unsigned int>(i) * 2654435769u & kMask;
    key = (key ^ key >> 15) * 2246822507u & kMask;
    return static_cast<int>(key ^ key >> 13);
}

using OurMap = TIntMap<int, int>;
using TheirMap = std::unordered_map<int, int>;

std::shared_ptr<OurMap> FillOurs() {
    auto map = std::make_shared<OurMap>(kKeys);
    for (int i = 0; i < kKeys; ++i)
        map->Add(KeyAt(i), i);
    return map;
}

std::shared_ptr<TheirMap> FillTheirs() {
    auto map = std::make_shared<TheirMap>();
    map->reserve(kKeys);
    for (int i = 0; i < kKeys; ++i)
        map->emplace(KeyAt(i), i);
    return map;
}

long LookUpOurs(const OurMap& map) {
    long sum = 0;
    for (int i = 0; i < 2 * kKeys; ++i) {
        int value = 0;
        if (map.Lookup(KeyAt(i), value)) sum += value;
    }
    return sum;
}

long LookUpTheirs(const TheirMap& map) {
    long sum = 0;
    for (int i = 0; i < 2 * kKeys; ++i) {
        const auto found = map.find(KeyAt(i));
        if (found != map.end()) sum += found->second;
    }
    return sum;
}

}  // namespace

void AddContainerWorkloads() {
    AddList("list of 100, 2000 times", 100, 2000);
    AddList("list of 10,000, 20 times", 10000, 20);
    AddList("list of 1,000,000", 1000000, 1);
    Workloads().push_back({"containers", "map insert", "std::unordered_map", 0.8,
                           Side([] { return FillOurs()->GetCount(); }),
                           Side([] { return FillTheirs()->size(); })});
    const auto ours = [] { return [map = FillOurs()] { return LookUpOurs(*map); }; };
    const auto theirs = [] { return [map = FillTheirs()] { return LookUpTheirs(*map); }; };
    Workloads().push_back(
        {"containers", "map look-up", "std::unordered_map", 0.8, Prepared(ours), Prepared(theirs)});
}

}  // namespace brenta::bench
