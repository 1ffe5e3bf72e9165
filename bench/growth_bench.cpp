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

/// `work(size)` returns what it has made.
template <class Work>
void Add(const char* name, int size, Work work) {
    AddGrowth("growth", name, size, [work](int count, int) { return [work, count] { return work(count); }; });
}

CoreString BuildText(int size) {
    CoreString text;
    for (int i = 0; i < size; ++i)
        text += 'a';
    return text;
}

CoreString ReplaceAll(int size) {
    CoreString text;
    for (int i = 0; i < size; ++i)
        text += "ab";
    text.Replace("b", "bb");
    return text;
}

TOrderedList<int> BuildList(int size) {
    TOrderedList<int> list;
    for (int i = 0; i < size; ++i)
        list.Add(i);
    return list;
}

std::shared_ptr<TIntMap<int, int>> FillMap(int size) {
    auto map = std::make_shared<TIntMap<int, int>>(size);
    for (int i = 0; i < size; ++i)
        map->Add(i, i);
    return map;
}

/// Blocks of all sizes up to 200 bytes, all alive at once.
class Blocks {
 public:
    explicit Blocks(int size) {
        for (int i = 0; i < size; ++i)
            m_blocks.Add(CoreAllocate(i % 200 + 1));
    }
    Blocks(Blocks&&) = default;
    ~Blocks() {
        for (void* block : m_blocks)
            CoreFree(block);
    }

 private:
    TSimpleList<void*> m_blocks;
};

std::shared_ptr<CStringTable> EnterNames(int size) {
    auto table = std::make_shared<CStringTable>("growth", 1024000);
    for (int i = 0; i < size; ++i)
        table->StrId(std::to_string(i).c_str());
    return table;
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

std::shared_ptr<CCoreScriptEngine> LoadFunctions(int size) {
    std::string source;
    for (int i = 0; i < size; ++i)
        source += "function F" + std::to_string(i) + "(a, b) { var c = a * 2; return b - c; }\n";
    auto engine = std::make_shared<CCoreScriptEngine>(TOrderedList<Var>(), nullptr);
    engine->InjectScript("growth", source.c_str());
    return engine;
}

}  // namespace

void AddGrowthWorkloads() {
    Add("append 10^6 characters", 100000, BuildText);
    Add("replace 10^6 times", 100000, ReplaceAll);
    Add("list of 10^6", 100000, BuildList);
    Add("map of 10^6", 100000, FillMap);
    Add("10^6 blocks alive", 100000, [](int size) { return Blocks(size); });
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
