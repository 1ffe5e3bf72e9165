// Two threads that each do a share of work, beside one thread that does one share: the ratio is 1 where they
// do not meet at all.
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "brenta/containers.h"
#include "brenta/heap.h"
#include "brenta/names.h"
#include "brenta/script.h"
#include "brenta/string.h"
#include "families.h"
#include "workload.h"

namespace brenta::bench {
namespace {

using Share = long (*)();

long RunInOneThread(Share share) {
    long result = 0;
    std::thread([&] { result = share(); }).join();
    return result;
}

/// What both threads returned, or -1 if they disagree.
long RunInTwoThreads(Share share) {
    long results[2] = {};
    std::thread first([&] { results[0] = share(); });
    std::thread second([&] { results[1] = share(); });
    first.join();
    second.join();
    return results[0] == results[1] ? results[0] : -1;
}

/// What the machine itself allows: threads that have nothing to meet at.
long CountAlone() {
    std::uint32_t state = 1;
    for (int i = 0; i < 3000000; ++i)
        state = state * 1664525u + 1013904223u;
    return static_cast<long>(state);
}

long RunEngine() {
    CCoreScriptEngine engine(TOrderedList<Var>(), nullptr);
    engine.InjectScript(
        "share",
        "function F(a) { return a % 7; } function Main() { var s = 0; var t = \"\"; var l = {0};"
        " for (var i = 0; i < 20000; i = i + 1) { s = s + F(i); t = t + \"x\"; l = l + i; } return s; }");
    Var result;
    engine.RunScript("Main", result, TOrderedList<Var>(), false);
    return result.GetInt();
}

long EditStrings() {
    long sum = 0;
    for (int i = 0; i < 100000; ++i) {
        CoreString text("a text that is too long to lie in the object");
        text += " and grows";
        const CoreString copy(text);
        text.Replace("text", "string");
        sum += copy.GetLength() + text.GetLength();
    }
    return sum;
}

/// The same names in both threads, so that half of the first ones are entered by each.
long LookUpNames() {
    long sum = 0;
    for (int i = 0; i < 300000; ++i) {
        const std::string name = "PIN" + std::to_string(i % 10000);
        sum += *StrPtr(StrId(name.c_str()));
    }
    return sum;
}

long BuildLists() {
    long sum = 0;
    for (int round = 0; round < 300; ++round) {
        TOrderedList<int> list;
        for (int i = 0; i < 1000; ++i)
            list.Add(i);
        sum += list.GetCount();
    }
    return sum;
}

long UseHeap() {
    std::vector<void*> blocks(256, nullptr);
    long count = 0;
    for (unsigned int i = 0; i < 300000; ++i) {
        void*& p = blocks[i * 7919 % blocks.size()];
        if (p != nullptr) CoreFree(p);
        p = CoreAllocate(static_cast<int>(i * 31 % 128 + 1));
        count += p != nullptr;
    }
    for (void* p : blocks)
        if (p != nullptr) CoreFree(p);
    return count;
}

long DoAll() {
    return RunEngine() + EditStrings() + LookUpNames() + BuildLists() + UseHeap();
}

/// By the clock on the wall, which shows all waiting, that for other programs too; and by the processor's
/// time, which shows what two threads cost each other whatever else the machine does.
void Add(const std::string& name, Share share) {
    const ContenderMaker both = Side([share] { return RunInTwoThreads(share); });
    const ContenderMaker one = Side([share] { return RunInOneThread(share); });
    const ContenderMaker oneTwice = Side([share] {
        RunInOneThread(share);
        return RunInOneThread(share);
    });
    constexpr double kLimit = 2 / 1.8;
    Workloads().push_back({"threads", name, "one thread", kLimit, both, one, Clock::Wall});
    Workloads().push_back({"threads", name + ", processor", "one thread twice", kLimit, both, oneTwice});
}

}  // namespace

void AddThreadWorkloads() {
    Add("nothing shared", CountAlone);
    Add("engines", RunEngine);
    Add("strings", EditStrings);
    Add("names", LookUpNames);
    Add("lists", BuildLists);
    Add("heap", UseHeap);
    Add("all of these", DoAll);
}

}  // namespace brenta::bench
