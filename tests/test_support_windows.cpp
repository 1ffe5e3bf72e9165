#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstdlib>

#include "test_support.h"

namespace brenta::test {

const bool kIsWindows = true;

void SetVariable(const char* name, const char* value) {
    _putenv_s(name, value ? value : "");
    SetEnvironmentVariableA(name, value);  // the one above knows no empty values
}

LoadedLibrary::LoadedLibrary(const char* path) : m_handle(LoadLibraryA(path)) {
    EXPECT_TRUE(IsLoaded()) << GetLastError();
}

LoadedLibrary::~LoadedLibrary() {
    EXPECT_TRUE(FreeLibrary(static_cast<HMODULE>(m_handle)));
}

void* LoadedLibrary::Address(const char* name) const {
    void* const address = reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(m_handle), name));
    EXPECT_NE(address, nullptr) << name;
    return address;
}

bool LoadedLibrary::IsPresent(const char* path) {
    return GetModuleHandleA(path) != nullptr;
}

}  // namespace brenta::test
