// The shared library comes and goes in a living process and leaves nothing behind; sanitizer builds prove the
// latter.
#include <dlfcn.h>

#include <atomic>
#include <cstdlib>

#include "brenta/failure.h"
#include "brenta/heap.h"
#include "brenta/names.h"
#include "brenta/string.h"
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

/// Uses the heap, names and strings before main and behind its end, in every run of this program.
class AroundMain {
 public:
    AroundMain() { Check(); }
    ~AroundMain() { Check(); }
    AroundMain(const AroundMain&) = delete;
    AroundMain& operator=(const AroundMain&) = delete;

 private:
    static void Check() {
        const CoreString text(StrPtr(StrId("a name that needs a block")));
        HeapDelete(HeapNew(24));
        if (text != "a name that needs a block") std::_Exit(3);
    }
};
[[gnu::init_priority(102)]] const AroundMain g_aroundMain;

TEST(Unload, TenTimes) {
    for (int i = 0; i < 10; ++i) {
        void* const library = Load();
        Use(library);
        EXPECT_EQ(dlclose(library), 0);
        EXPECT_EQ(dlopen(BRENTA_CORE_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "still loaded";
    }
}

TEST(Unload, NotBeforeTheProcessEnds) {
    void* const library = Load();
    Use(library);
    // A thread that goes on while the process ends.
    const auto create = Find(library, "_ZN6brenta7HeapNewEm", HeapNew);
    const auto release = Find(library, "_ZN6brenta10HeapDeleteEPv", HeapDelete);
    EXPECT_EXIT(
        {
            std::thread([=] {
                for (;;)
                    release(create(24));
            }).detach();
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
    dlclose(library);
}

TEST(Unload, NotWhileAThreadUsesStrings) {
    for (int i = 0; i < 20; ++i) {
        EXPECT_EXIT(
            {
                std::atomic<int> turns{0};
                std::thread([&turns] {
                    for (;; ++turns) {
                        const CoreString text("a text that is long enough to need a block");
                        CoreString copy(text);
                        copy += text;
                    }
                }).detach();
                while (turns < 1000)
                    std::this_thread::yield();
                std::exit(0);
            },
            testing::ExitedWithCode(0), "");
    }
}

}  // namespace
}  // namespace brenta::test
