#include <dlfcn.h>

#include <cstdlib>

#include "test_support.h"

namespace brenta::test {

const bool kIsWindows = false;

void SetVariable(const char* name, const char* value) {
    value ? setenv(name, value, 1) : unsetenv(name);
}

bool Shell(const std::string& folder, const std::string& line) {
    return std::system(("cd '" + folder + "' && (" + line + "\n) >/dev/null 2>&1").c_str()) == 0;
}

LoadedLibrary::LoadedLibrary(const char* path) : m_handle(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
    EXPECT_TRUE(IsLoaded()) << dlerror();
}

LoadedLibrary::~LoadedLibrary() {
    EXPECT_EQ(dlclose(m_handle), 0);
}

void* LoadedLibrary::Address(const char* name) const {
    void* const address = dlsym(m_handle, name);
    EXPECT_NE(address, nullptr) << dlerror();
    return address;
}

bool LoadedLibrary::IsPresent(const char* path) {
    void* const handle = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
    if (handle) dlclose(handle);
    return handle != nullptr;
}

}  // namespace brenta::test
