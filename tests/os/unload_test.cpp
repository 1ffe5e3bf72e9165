// The shared library comes and goes in a living process and leaves nothing behind; sanitizer builds prove the
// latter.
#include <atomic>
#include <cstdlib>
#include <type_traits>

#include "brenta/failure.h"
#include "brenta/heap.h"
#include "brenta/names.h"
#include "brenta/script.h"
#include "brenta/string.h"
#include "brenta/units.h"
#include "os/footprint.h"
#include "test_support.h"

namespace brenta::test {
namespace {

/// The name of HeapNew, which tells the type behind std::size_t.
const char* const kHeapNew =
    std::is_same_v<std::size_t, unsigned long> ? "_ZN6brenta7HeapNewEm" : "_ZN6brenta7HeapNewEy";

/// Makes the library use what it builds on demand, on this thread and on one that has ended.
void Use(const LoadedLibrary& library) {
    const auto init = library.Find("_ZN6brenta15InitCoreLibraryEv", InitCoreLibrary);
    const auto allocate = library.Find("_ZN6brenta12CoreAllocateEi", CoreAllocate);
    const auto create = library.Find(kHeapNew, HeapNew);
    const auto release = library.Find("_ZN6brenta10HeapDeleteEPv", HeapDelete);
    const auto intern = library.Find<STRID(const char*)>("_ZN6brenta5StrIdEPKc", StrId);
    EXPECT_TRUE(init());
    const auto work = [&] {
        release(allocate(2000000));
        for (std::size_t size = 1; size < 600; ++size)
            release(create(size));
        EXPECT_NE(create(100), nullptr);  // left to the library
        EXPECT_NE(intern("name"), kNoName);
    };
    work();
    std::thread(work).join();
}

/// Uses the heap, names, strings and engines before main and behind its end, in every run of this program.
class AroundMain {
 public:
    AroundMain() { Check(false); }
    ~AroundMain() { Check(true); }
    AroundMain(const AroundMain&) = delete;
    AroundMain& operator=(const AroundMain&) = delete;

 private:
    static void Check(bool isLoaded) {
        const CoreString text(StrPtr(StrId("a name that needs a block")));
        HeapDelete(HeapNew(24));
        Var result;
        int length = 0;
        CCoreScriptEngine engine(TOrderedList<Var>(), nullptr);
        const bool good = text == "a name that needs a block" &&
                          engine.InjectScript("m", "function F(n) { return {n, \"s\" + n}; }") &&
                          engine.Execute("var l = F(6); l[0] * 7", result, kUnitsNone) &&
                          result.GetInt() == 42 && EvaluateUnit("1in", kMils, length, nullptr) == isLoaded;
        if (!good) std::_Exit(3);
    }
};
// Here the library is a part of the program: this comes before the engine that evaluates lengths.
[[gnu::init_priority(102)]] const AroundMain g_aroundMain;

TEST(Unload, TenTimes) {
    std::vector<Footprint> footprints;
    for (int i = 0; i < 10; ++i) {
        Use(LoadedLibrary(BRENTA_CORE_LIBRARY));
        EXPECT_FALSE(LoadedLibrary::IsPresent(BRENTA_CORE_LIBRARY)) << "still loaded";
        footprints.push_back(Footprint::Now());
    }
    // The loader and the C library have what they keep for themselves by the third time, but for a few bytes.
    EXPECT_TRUE(footprints[9].bytes == 0 || footprints[2].mappings == footprints[9].mappings);
    EXPECT_LT(footprints[9].bytes, footprints[2].bytes + 1024);
}

/// The process ends while a thread goes on working.
template <class Work>
void ExpectExitBeside(const Work& work) {
    EXPECT_EXIT(
        {
            std::atomic<int> turns{0};
            std::thread([&] {
                for (;; ++turns)
                    work();
            }).detach();
            while (turns < 1000)
                std::this_thread::yield();
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
}

TEST(Unload, NotBeforeTheProcessEnds) {
    const LoadedLibrary library(BRENTA_CORE_LIBRARY);
    Use(library);
    const auto create = library.Find(kHeapNew, HeapNew);
    const auto release = library.Find("_ZN6brenta10HeapDeleteEPv", HeapDelete);
    ExpectExitBeside([&] { release(create(24)); });
    for (int i = 0; i < 20; ++i)
        ExpectExitBeside([] {
            const CoreString text("a text that is long enough to need a block");
            CoreString copy(text);
            copy += text;
        });
}

}  // namespace
}  // namespace brenta::test
