// The shared library comes and goes in a living process and leaves nothing behind; sanitizer builds prove the
// latter.
#include <dlfcn.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "brenta/failure.h"
#include "brenta/heap.h"
#include "brenta/names.h"
#include "brenta/script.h"
#include "brenta/string.h"
#include "brenta/units.h"
#include "test_support.h"

namespace brenta::test {
namespace {

void* Load() {
    void* const library = dlopen(BRENTA_CORE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(library, nullptr) << dlerror();
    return library;
}

/// The loaded library's function of the same type as one that this program has linked.
template <class Function>
Function* Find(void* library, const char* name, Function*) {
    const auto found = reinterpret_cast<Function*>(dlsym(library, name));
    EXPECT_NE(found, nullptr) << dlerror();
    return found;
}

/// Makes the library use what it builds on demand, on this thread and on one that has ended.
void Use(void* library) {
    const auto init = Find(library, "_ZN6brenta15InitCoreLibraryEv", InitCoreLibrary);
    const auto allocate = Find(library, "_ZN6brenta12CoreAllocateEi", CoreAllocate);
    const auto create = Find(library, "_ZN6brenta7HeapNewEm", HeapNew);
    const auto release = Find(library, "_ZN6brenta10HeapDeleteEPv", HeapDelete);
    const auto intern = Find<STRID(const char*)>(library, "_ZN6brenta5StrIdEPKc", StrId);
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

struct Footprint {
    Footprint() {
        std::ifstream maps("/proc/self/maps");
        mappings = std::count(std::istreambuf_iterator<char>(maps), {}, '\n');
    }
    std::ptrdiff_t mappings;
    std::size_t bytes = mallinfo2().uordblks;  // sanitizers answer 0
};

TEST(Unload, TenTimes) {
    std::vector<Footprint> footprints;
    for (int i = 0; i < 10; ++i) {
        void* const library = Load();
        Use(library);
        EXPECT_EQ(dlclose(library), 0);
        EXPECT_EQ(dlopen(BRENTA_CORE_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "still loaded";
        footprints.emplace_back();
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
    void* const library = Load();
    Use(library);
    const auto create = Find(library, "_ZN6brenta7HeapNewEm", HeapNew);
    const auto release = Find(library, "_ZN6brenta10HeapDeleteEPv", HeapDelete);
    ExpectExitBeside([&] { release(create(24)); });
    dlclose(library);
    for (int i = 0; i < 20; ++i)
        ExpectExitBeside([] {
            const CoreString text("a text that is long enough to need a block");
            CoreString copy(text);
            copy += text;
        });
}

}  // namespace
}  // namespace brenta::test
