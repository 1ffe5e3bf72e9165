#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstdlib>

#include "platform/written_file.h"
#include "test_support.h"

namespace brenta::test {

const bool kIsWindows = true;

void SetVariable(const char* name, const char* value) {
    _putenv_s(name, value ? value : "");
    SetEnvironmentVariableA(name, value);  // the one above knows no empty values
}

// The shell of the system below Wine, whose programs can be started but not waited for: the line tells its
// end.
bool Shell(const std::string& folder, const std::string& line) {
    const std::string status = folder + "/shell.status";
    std::ofstream(folder + "/shell.line", std::ios::binary)
        << "(" << line << "\n) >/dev/null 2>&1\necho $? >shell.new\nmv shell.new shell.status\n";
    char command[] = "sh shell.line";
    STARTUPINFOA start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    if (!CreateProcessA("Z:\\bin\\sh", command, nullptr, nullptr, FALSE, 0, nullptr, folder.c_str(), &start,
                        &process))
        return false;
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    const std::string told = Awaited(status);
    EXPECT_NE(told, "") << line << " does not end";
    std::filesystem::remove(status);
    return told == "0\n";
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
