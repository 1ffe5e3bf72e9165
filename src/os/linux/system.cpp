// Linux: the clock and what the system tells of itself.
#include "os/system.h"

#include <limits.h>
#include <sched.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

#include "os/os.h"

namespace brenta::os {

namespace {

constexpr std::size_t kMostFacts = 65536;  // more than any of the system's text files has

/// A text file of the system; "" if there is none. (Those under /proc state no size.)
std::string FactsFrom(const char* path) {
    std::string text;
    return ReadWholeFile(path, text, kMostFacts) == FileStatus::Ok ? text : "";
}

/// What follows `key` in its line, the key at the line's start; "" if there is no such line.
std::string_view ValueOf(std::string_view text, std::string_view key) {
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        if (line.starts_with(key)) return line.substr(key.size());
        text.remove_prefix(std::min(text.size(), line.size() + 1));
    }
    return {};
}

/// The number of a line such as "MemTotal:  8052348 kB", in bytes.
std::uint64_t KilobytesOf(std::string_view text, std::string_view key) {
    return std::strtoull(std::string(ValueOf(text, key)).c_str(), nullptr, 10) * 1024;
}

std::int64_t Nanoseconds(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return now.tv_sec * std::int64_t{1000000000} + now.tv_nsec;
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// Clocks

long long CurrentTime() {
    return Nanoseconds(CLOCK_REALTIME) / 1000000000;
}

LocalDate LocalDateOf(long long secondsSince1970) {
    const time_t moment = secondsSince1970;
    tm local{};
    if (!localtime_r(&moment, &local)) return {};
    return {local.tm_sec, local.tm_min, local.tm_hour, local.tm_mday, local.tm_mon, local.tm_year + 1900};
}

std::int64_t SteadyNanoseconds() {
    return Nanoseconds(CLOCK_MONOTONIC);
}

std::int64_t ProcessorNanoseconds() {
    return Nanoseconds(CLOCK_PROCESS_CPUTIME_ID);
}

long long ProcessAge() {
    // The fields behind the program's name, which stands in brackets and may hold anything: the start, in
    // ticks since the system's own, is the 20th.
    constexpr int kFieldsBefore = 19;
    const std::string facts = FactsFrom("/proc/self/stat");
    std::string_view rest(facts);
    rest.remove_prefix(std::min(rest.size(), rest.rfind(')') + 2));  // npos + 2 is 1
    for (int i = 0; i < kFieldsBefore; ++i)
        rest.remove_prefix(std::min(rest.size(), rest.find(' ') + 1));  // npos + 1 is 0
    const long ticksPerSecond = sysconf(_SC_CLK_TCK);
    if (rest.empty() || ticksPerSecond <= 0) return 0;
    const long long start = std::strtoll(std::string(rest).c_str(), nullptr, 10) / ticksPerSecond;
    return std::max(0LL, Nanoseconds(CLOCK_BOOTTIME) / 1000000000 - start);
}

long long IdleTime() {
    // The system notes the last input of a terminal as the time when it was last read.
    for (const int file : {STDIN_FILENO, STDERR_FILENO, STDOUT_FILENO}) {
        struct stat info;
        if (isatty(file) && fstat(file, &info) == 0)
            return std::max(0LL, CurrentTime() - static_cast<long long>(info.st_atime));
    }
    return -1;
}

// ---------------------------------------------------------------------------------------------------------------------
// The machine and its system

MemoryFacts QueryMemory() {
    MemoryFacts memory;
    const std::string machine = FactsFrom("/proc/meminfo"), process = FactsFrom("/proc/self/status");
    memory.physicalTotal = KilobytesOf(machine, "MemTotal:");
    memory.physicalFree = KilobytesOf(machine, "MemAvailable:");
    memory.swapTotal = KilobytesOf(machine, "SwapTotal:");
    memory.swapFree = KilobytesOf(machine, "SwapFree:");
    memory.processUsed = KilobytesOf(process, "VmRSS:");
    memory.processPeak = KilobytesOf(process, "VmHWM:");
    return memory;
}

int ProcessorCount() {
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof allowed, &allowed) == 0) return CPU_COUNT(&allowed);
    return std::max(1, static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN)));
}

std::string SystemName() {
    const std::string facts = FactsFrom("/etc/os-release");
    std::string_view name = ValueOf(facts, "PRETTY_NAME=");
    if (name.size() >= 2 && name.front() == '"' && name.back() == '"') name = name.substr(1, name.size() - 2);
    utsname system{};
    if (name.empty() && uname(&system) == 0) return system.sysname;
    return std::string(name);
}

std::string SystemVersion() {
    utsname system{};
    return uname(&system) == 0 ? system.release : "";
}

int WindowsRelease() {
    return 0;
}

bool IsAdministrator() {
    return geteuid() == 0;
}

bool IsRemoteSession() {
    std::string connection;
    return GetEnvironment("SSH_CONNECTION", connection) && !connection.empty();
}

std::string FileVersion(const char* path) {
    constexpr std::string_view kMark = ".so.";
    char resolved[PATH_MAX];
    if (!realpath(NativePath(path).c_str(), resolved)) return "";
    std::string_view name(resolved);
    name.remove_prefix(name.rfind('/') + 1);
    const std::size_t mark = name.rfind(kMark);
    return mark == std::string_view::npos ? "" : std::string(name.substr(mark + kMark.size()));
}

}  // namespace brenta::os
