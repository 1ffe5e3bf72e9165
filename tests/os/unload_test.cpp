// The shared library comes and goes in a living process and leaves nothing behind; sanitizer builds prove the
// latter.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace {

/// Makes the library use what it builds on demand, on this thread and on one that has ended.
void Use(void* library) {
    using Init = bool (*)();
    using Allocate = void* (*)(int);
    using New = void* (*)(std::size_t);
    using Release = void (*)(void*);
    using Intern = std::uintptr_t (*)(const char*);
    const auto init = reinterpret_cast<Init>(dlsym(library, "_ZN6brenta15InitCoreLibraryEv"));
    const auto allocate = reinterpret_cast<Allocate>(dlsym(library, "_ZN6brenta12CoreAllocateEi"));
    const auto create = reinterpret_cast<New>(dlsym(library, "_ZN6brenta7HeapNewEm"));
    const auto release = reinterpret_cast<Release>(dlsym(library, "_ZN6brenta10HeapDeleteEPv"));
    const auto intern = reinterpret_cast<Intern>(dlsym(library, "_ZN6brenta5StrIdEPKc"));
    ASSERT_TRUE(init && allocate && create && release && intern);
    EXPECT_TRUE(init());
    const auto work = [&] {
        release(allocate(2000000));
        for (std::size_t size = 1; size < 600; ++size)
            release(create(size));
        EXPECT_NE(create(100), nullptr);  // left to the library
        EXPECT_NE(intern("name"), 0u);
    };
    work();
    std::thread(work).join();
}

TEST(Unload, TenTimes) {
    for (int i = 0; i < 10; ++i) {
        void* const library = dlopen(BRENTA_CORE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << dlerror();
        Use(library);
        EXPECT_EQ(dlclose(library), 0);
        EXPECT_EQ(dlopen(BRENTA_CORE_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "still loaded";
    }
}

TEST(Unload, NotBeforeTheProcessEnds) {
    void* const library = dlopen(BRENTA_CORE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    Use(library);
    // A thread that goes on while the process ends.
    const auto create = reinterpret_cast<void* (*)(std::size_t)>(dlsym(library, "_ZN6brenta7HeapNewEm"));
    const auto release = reinterpret_cast<void (*)(void*)>(dlsym(library, "_ZN6brenta10HeapDeleteEPv"));
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

}  // namespace
