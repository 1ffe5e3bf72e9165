// How time grows with the work.
#include <memory>
#include <string>

#include "brenta/containers.h"
#include "brenta/heap.h"
#include "brenta/names.h"
#include "brenta/script.h"
#include "brenta/string.h"
#include "brenta/units.h"
#include "families.h"
#include "growth.h"

namespace brenta::bench {
namespace {

/// `work(size)` returns a number that is not looked at: that ten small results make a large one would be
/// chance.
template <class Work>
void Add(const char* name, int size, Work work) {
    AddGrowth("growth", name, size, [work](int count, int) { return [work, count] { work(count); }; });
}

long BuildText(int size) {
    CoreString text;
    for (int i = 0; i < size; ++i)
        text += 'a';
    return text.GetLength();
}

long ReplaceAll(int size) {
    CoreString text;
    for (int i = 0; i < size; ++i)
        text += "ab";
    return text.Replace("b", "bb");
}

long BuildList(int size) {
    TOrderedList<int> list;
    for (int i = 0; i < size; ++i)
        list.Add(i);
    return list.GetCount();
}

long FillMap(int size) {
    TIntMap<int, int> map(size);
    for (int i = 0; i < size; ++i)
        map.Add(i, i);
    return map.GetCount();
}

/// Blocks of all sizes up to 200 bytes, all alive at once.
long FillHeap(int size) {
    TSimpleList<void*> blocks;
    for (int i = 0; i < size; ++i)
        blocks.Add(CoreAllocate(i % 200 + 1));
    for (void* block : blocks)
        CoreFree(block);
    return size;
}

long EnterNames(int size) {
    CStringTable table("growth", 1024000);
    for (int i = 0; i < size; ++i)
        table.StrId(std::to_string(i).c_str());
    return static_cast<long>(table.GetNameCount());
}

long EvaluateSum(int terms) {
    std::string text = "1mil";
    for (int i = 1; i < terms; ++i)
        text += "+1mil";
    return StringToUnit(text.c_str(), kMils);
}

bool RunScript(const std::string& source, int size) {
    CCoreScriptEngine engine(TOrderedList<Var>(), nullptr);
    TOrderedList<Var> arguments;
    arguments.Add(Var(size, kNoName));
    Var result;
    return engine.InjectScript("growth", source.c_str()) &&
           engine.RunScript("Main", result, arguments, false);
}

void AddScript(const char* name, int size, const char* source) {
    Add(name, size, [source](int turns) { return RunScript(source, turns); });
}

bool LoadFunctions(int size) {
    std::string source;
    for (int i = 0; i < size; ++i)
        source += "function F" + std::to_string(i) + "(a, b) { var c = a * 2; return b - c; }\n";
    CCoreScriptEngine engine(TOrderedList<Var>(), nullptr);
    return engine.InjectScript("growth", source.c_str());
}

}  // namespace

void AddGrowthWorkloads() {
    Add("append 10^6 characters", 100000, BuildText);
    Add("replace 10^6 times", 100000, ReplaceAll);
    Add("list of 10^6", 100000, BuildList);
    Add("map of 10^6", 100000, FillMap);
    Add("10^6 blocks alive", 100000, FillHeap);
    Add("10^6 new names", 100000, EnterNames);
    Add("dimension text of 10^4 terms", 1000, EvaluateSum);
    AddScript("script loop", 100000,
              "function Main(n) { var i = 0; while (i < n) { i = i + 1; } return i; }");
    AddScript("script list", 10000,
              "function Main(n) { var l = {0}; for (var i = 0; i < n; i = i + 1) { l = l + i; } return n; }");
    AddScript(
        "script string", 10000,
        "function Main(n) { var s = \"\"; for (var i = 0; i < n; i = i + 1) { s = s + \"ab\"; } return n; }");
    Add("load 10^4 functions", 1000, LoadFunctions);
}

}  // namespace brenta::bench
