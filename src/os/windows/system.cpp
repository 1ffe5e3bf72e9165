// Windows: the clock and what the system tells of itself.
#include "os/system.h"

#include <time.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <vector>

#include "os/os.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <psapi.h>

namespace brenta::os {

namespace {

constexpr std::int64_t kTicksPerSecond = 10'000'000;  // of file times, which count 100 nanoseconds each

std::int64_t Ticks(const FILETIME& time) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(time.dwHighDateTime) << 32 |
                                     time.dwLowDateTime);
}

std::int64_t NowTicks() {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    return Ticks(now);
}

/// The release that is really there; others are told an old one by the system's usual function.
RTL_OSVERSIONINFOW Release() {
    RTL_OSVERSIONINFOW release{};
    release.dwOSVersionInfoSize = sizeof release;
    using GetVersion = LONG(WINAPI*)(RTL_OSVERSIONINFOW*);
    const HMODULE system = GetModuleHandleA("ntdll.dll");
    const auto getVersion =
        system
            ? reinterpret_cast<GetVersion>(reinterpret_cast<void*>(GetProcAddress(system, "RtlGetVersion")))
            : nullptr;
    if (getVersion) getVersion(&release);
    return release;
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// Clocks

long long CurrentTime() {
    constexpr std::int64_t kSinceSixteenHundred = 11'644'473'600;  // 1601 to 1970, in seconds
    return NowTicks() / kTicksPerSecond - kSinceSixteenHundred;
}

LocalDate LocalDateOf(long long secondsSince1970) {
    const __time64_t moment = secondsSince1970;
    tm local{};
    if (_localtime64_s(&local, &moment) != 0) return {};
    return {local.tm_sec, local.tm_min, local.tm_hour, local.tm_mday, local.tm_mon, local.tm_year + 1900};
}

std::int64_t SteadyNanoseconds() {
    constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
    LARGE_INTEGER frequency, count;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&count);
    // In two steps, so that nothing overflows.
    const std::int64_t seconds = count.QuadPart / frequency.QuadPart,
                       rest = count.QuadPart % frequency.QuadPart;
    return seconds * kNanosecondsPerSecond + rest * kNanosecondsPerSecond / frequency.QuadPart;
}

std::int64_t ProcessorNanoseconds() {
    constexpr std::int64_t kNanosecondsPerTick = 100;
    FILETIME start, end, kernel, user;
    if (!GetProcessTimes(GetCurrentProcess(), &start, &end, &kernel, &user)) return 0;
    return (Ticks(kernel) + Ticks(user)) * kNanosecondsPerTick;
}

long long ProcessAge() {
    FILETIME start, end, kernel, user;
    if (!GetProcessTimes(GetCurrentProcess(), &start, &end, &kernel, &user)) return 0;
    return std::max<std::int64_t>(0, NowTicks() - Ticks(start)) / kTicksPerSecond;
}

long long IdleTime() {
    LASTINPUTINFO input{};
    input.cbSize = sizeof input;
    if (!GetLastInputInfo(&input)) return -1;
    return (GetTickCount() - input.dwTime) / 1000;  // both wrap around together
}

// ---------------------------------------------------------------------------------------------------------------------
// The machine and its system

MemoryFacts QueryMemory() {
    MemoryFacts memory;
    MEMORYSTATUSEX machine{};
    machine.dwLength = sizeof machine;
    if (GlobalMemoryStatusEx(&machine)) {
        memory.physicalTotal = machine.ullTotalPhys;
        memory.physicalFree = machine.ullAvailPhys;
        // The system counts the physical memory in.
        memory.swapTotal =
            machine.ullTotalPageFile - std::min(machine.ullTotalPageFile, machine.ullTotalPhys);
        memory.swapFree = machine.ullAvailPageFile - std::min(machine.ullAvailPageFile, machine.ullAvailPhys);
        memory.swapFree = std::min(memory.swapFree, memory.swapTotal);
    }
    PROCESS_MEMORY_COUNTERS process{};
    if (GetProcessMemoryInfo(GetCurrentProcess(), &process, sizeof process)) {
        memory.processUsed = process.WorkingSetSize;
        memory.processPeak = process.PeakWorkingSetSize;
    }
    return memory;
}

int ProcessorCount() {
    DWORD_PTR own = 0, machine = 0;
    if (GetProcessAffinityMask(GetCurrentProcess(), &own, &machine) && own != 0) return std::popcount(own);
    // On machines with several groups of processors there is no one mask.
    return std::max(1, static_cast<int>(GetActiveProcessorCount(ALL_PROCESSOR_GROUPS)));
}

std::string SystemName() {
    constexpr DWORD kFirstBuildOfEleven = 22000;
    constexpr char kTen[] = "Windows 10", kEleven[] = "Windows 11";
    char text[256];
    DWORD size = sizeof text;
    if (RegGetValueA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", "ProductName",
                     RRF_RT_REG_SZ, nullptr, text, &size) != ERROR_SUCCESS)
        return "Windows";
    std::string name(text);
    // The registry goes on calling it by its predecessor's name.
    const std::size_t ten = name.find(kTen);
    if (ten != std::string::npos && Release().dwBuildNumber >= kFirstBuildOfEleven)
        name.replace(ten, sizeof kTen - 1, kEleven);
    return name;
}

std::string SystemVersion() {
    const RTL_OSVERSIONINFOW release = Release();
    if (release.dwMajorVersion == 0) return "";
    return std::to_string(release.dwMajorVersion) + "." + std::to_string(release.dwMinorVersion) + "." +
           std::to_string(release.dwBuildNumber);
}

int WindowsRelease() {
    const RTL_OSVERSIONINFOW release = Release();
    return static_cast<int>(release.dwMajorVersion * 100 + release.dwMinorVersion);
}

bool IsAdministrator() {
    SID_IDENTIFIER_AUTHORITY authority = {SECURITY_NT_AUTHORITY};
    PSID administrators = nullptr;
    if (!AllocateAndInitializeSid(&authority, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS, 0, 0,
                                  0, 0, 0, 0, &administrators))
        return false;
    BOOL isMember = FALSE;
    const BOOL known = CheckTokenMembership(nullptr, administrators, &isMember);
    FreeSid(administrators);
    return known && isMember;
}

bool IsRemoteSession() {
    return GetSystemMetrics(SM_REMOTESESSION) != 0;
}

std::string FileVersion(const char* path) {
    const std::string file = NativePath(path);
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeA(file.c_str(), &ignored);
    std::vector<char> resource(size);
    void* found = nullptr;
    UINT length = 0;
    if (size == 0 || !GetFileVersionInfoA(file.c_str(), 0, size, resource.data()) ||
        !VerQueryValueA(resource.data(), "\\", &found, &length) || length < sizeof(VS_FIXEDFILEINFO))
        return "";
    const auto& info = *static_cast<const VS_FIXEDFILEINFO*>(found);
    char text[64];
    std::snprintf(text, sizeof text, "%u.%u.%u.%u", static_cast<unsigned>(HIWORD(info.dwFileVersionMS)),
                  static_cast<unsigned>(LOWORD(info.dwFileVersionMS)),
                  static_cast<unsigned>(HIWORD(info.dwFileVersionLS)),
                  static_cast<unsigned>(LOWORD(info.dwFileVersionLS)));
    return text;
}

}  // namespace brenta::os
