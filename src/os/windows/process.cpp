// Windows: the process, its threads and its terminal.
#include <malloc.h>

#include <cstdio>

#include "os/os.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace brenta::os {

namespace {

constinit bool g_unloading = false;

}  // namespace

void WriteError(std::string_view text) {
    DWORD count = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text.data(), static_cast<DWORD>(text.size()), &count, nullptr);
}

// The C library would take every device for a terminal, "NUL" among them.
bool HasTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) != 0 &&
           GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

bool ReadTerminalLine(std::string& line) {
    line.clear();
    int c;
    while ((c = std::getchar()) != EOF && c != '\n')
        line += static_cast<char>(c);
    if (line.ends_with('\r')) line.pop_back();
    return c != EOF || !line.empty();
}

void RaiseForcedCrash(const ForcedCrashRecord& record) {
    const ULONG_PTR values[4] = {record.values[0], record.values[1], record.values[2], record.values[3]};
    RaiseException(record.code, record.flags, 4, values);
}

void FetchLastErrorText() {
    char* text = nullptr;
    constexpr DWORD kFlags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    FormatMessageA(kFlags, nullptr, GetLastError(), MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                   reinterpret_cast<char*>(&text), 0, nullptr);
    if (text) LocalFree(text);
}

bool DebuggerAttached() {
    return IsDebuggerPresent() != 0;
}

void BreakIntoDebugger() {
    DebugBreak();
}

std::uintptr_t StackLimit() {
    constexpr std::uintptr_t kReserve = 128 * 1024;
    ULONG_PTR low = 0;
    ULONG_PTR high = 0;
    GetCurrentThreadStackLimits(&low, &high);
    return low + kReserve;
}

bool RunOnStack(std::size_t stackSize, void (*work)(void* context), void* context) {
    struct Call {
        void (*work)(void* context);
        void* context;
    } call{work, context};
    const LPTHREAD_START_ROUTINE start = [](void* argument) -> DWORD {
        const Call& wanted = *static_cast<Call*>(argument);
        wanted.work(wanted.context);
        return 0;
    };
    const HANDLE thread =
        CreateThread(nullptr, stackSize, start, &call, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    if (thread == nullptr) return false;
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    return true;
}

bool ThreadEndHook::Open(void (*atThreadEnd)(void* value)) {
    const DWORD index = FlsAlloc(atThreadEnd);
    m_open = index != FLS_OUT_OF_INDEXES;
    m_key = index;
    return m_open;
}

void ThreadEndHook::Set(void* value) {
    if (m_open) FlsSetValue(static_cast<DWORD>(m_key), value);
}

// FlsFree calls the function for the values of all threads, here and now. At the end of the process these
// threads may be in the midst of their work, or have been ended in it and still hold the locks that the
// function waits for.
void ThreadEndHook::Close() {
    if (m_open.exchange(false) && LibraryIsUnloading()) FlsFree(static_cast<DWORD>(m_key));
}

bool LibraryIsUnloading() {
    return g_unloading;
}

bool WatchForks(void (*)(), void (*)()) {
    return true;
}

void KeepLoaded() {
    HMODULE self;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<const wchar_t*>(&KeepLoaded), &self);
}

void WatchProcessEnd() {
    // The system tells the two apart by itself.
}

void NoticeUnloading() {
    g_unloading = true;
}

// Large pages take a privilege that users do not have.
void PreferLargePages(void*, std::size_t) {}

std::size_t BlockSize(const void* block) {
    return _msize(const_cast<void*>(block));
}

}  // namespace brenta::os

/// Called by the system when the library comes and goes; `reserved` tells the end of the process from the
/// unloading by a living one.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void* reserved) {
    if (reason == DLL_PROCESS_DETACH && !reserved) brenta::os::NoticeUnloading();
    return TRUE;
}
