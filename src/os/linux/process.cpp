// Linux: the process, its threads and its terminal.
#include <malloc.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "os/lock.h"
#include "os/os.h"

namespace brenta::os {

namespace {

// What the system calls when, and how the end of the process is told from unloading:
//
// - Unloading runs the functions of the library's own list, NoticeUnloading among them, and then the
//   destructors of the library's static objects.
// - The end of the process first runs what was registered to be called at exit, the latest first, and the
//   lists of the libraries are one such registration, made when the program starts. A ProcessEndNote that is
//   built after that is therefore destroyed before. (For one built while the library is loaded together with
//   the program it would be too late.)
constinit std::atomic<bool> g_processEnds{false};
constinit std::atomic<bool> g_unloading{false};
constinit std::atomic<bool> g_watched{false};

struct ProcessEndNote {
    ~ProcessEndNote() {
        if (!g_unloading) g_processEnds = true;
    }
};

// With threads but without a note the two cannot be told apart: then everything stays as it is.
[[gnu::destructor]] void NoticeUnloading() {
    if (!g_processEnds && (g_watched || SingleThreaded())) g_unloading = true;
}

/// The lowest address of the calling thread's stack; 0 if unknown.
std::uintptr_t StackBottom() {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) return 0;
    void* bottom = nullptr;
    std::size_t size = 0;
    const bool known = pthread_attr_getstack(&attributes, &bottom, &size) == 0;
    pthread_attr_destroy(&attributes);
    return known ? reinterpret_cast<std::uintptr_t>(bottom) : 0;
}

}  // namespace

void WriteError(std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(STDERR_FILENO, text.data(), text.size());
        if (count <= 0) return;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

bool HasTerminal() {
    return isatty(STDIN_FILENO) && isatty(STDERR_FILENO);
}

bool ReadTerminalLine(std::string& line) {
    line.clear();
    int c;
    while ((c = std::getchar()) != EOF && c != '\n')
        line += static_cast<char>(c);
    return c != EOF || !line.empty();
}

void RaiseForcedCrash(const ForcedCrashRecord& record) {
    char text[512];
    const int length = std::snprintf(text, sizeof text, "Forced crash 0x%08zX in %s, line %d: %s\n",
                                     record.SiteCode(), record.File(), record.Line(), record.Message());
    if (length > 0) WriteError({text, std::min(static_cast<std::size_t>(length), sizeof text - 1)});
    raise(SIGABRT);
    // A handler for the signal has returned, or it is ignored: end the process all the same.
    signal(SIGABRT, SIG_DFL);
    raise(SIGABRT);
    _exit(128 + SIGABRT);
}

void FetchLastErrorText() {
    // This system's texts are static; there is nothing to fetch and nothing to release.
}

bool DebuggerAttached() {
    std::FILE* const status = std::fopen("/proc/self/status", "re");
    if (!status) return false;
    char line[256];
    int tracer = 0;
    while (std::fgets(line, sizeof line, status)) {
        if (std::sscanf(line, "TracerPid: %d", &tracer) == 1) break;
    }
    std::fclose(status);
    return tracer != 0;
}

void BreakIntoDebugger() {
    raise(SIGTRAP);
}

std::uintptr_t StackLimit() {
    // Enough for the deepest chain of library and system functions that do not look at the limit themselves.
    constexpr std::uintptr_t kReserve = std::uintptr_t{128} * 1024;
    static constinit thread_local std::uintptr_t t_limit = 0;
    static constinit thread_local bool t_known = false;
    if (!t_known) {
        const std::uintptr_t bottom = StackBottom();
        t_limit = bottom ? bottom + kReserve : 0;
        t_known = true;
    }
    return t_limit;
}

bool RunOnStack(std::size_t stackSize, void (*work)(void* context), void* context) {
    struct Call {
        void (*work)(void* context);
        void* context;
    } call{work, context};
    const auto start = [](void* argument) -> void* {
        const Call& wanted = *static_cast<Call*>(argument);
        wanted.work(wanted.context);
        return nullptr;
    };
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) return false;
    pthread_t thread;
    const bool started = pthread_attr_setstacksize(&attributes, stackSize) == 0 &&
                         pthread_create(&thread, &attributes, start, &call) == 0;
    pthread_attr_destroy(&attributes);
    return started && pthread_join(thread, nullptr) == 0;
}

bool ThreadEndHook::Open(void (*atThreadEnd)(void* value)) {
    pthread_key_t key;
    m_open = pthread_key_create(&key, atThreadEnd) == 0;
    if (m_open) m_key = key;
    return m_open;
}

void ThreadEndHook::Set(void* value) {
    if (m_open) pthread_setspecific(static_cast<pthread_key_t>(m_key), value);
}

void ThreadEndHook::Close() {
    if (m_open) pthread_key_delete(static_cast<pthread_key_t>(m_key));
    m_open = false;
}

void PreferLargePages(void* memory, std::size_t size) {
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto start = (reinterpret_cast<std::uintptr_t>(memory) + page - 1) / page * page;
    const auto end = (reinterpret_cast<std::uintptr_t>(memory) + size) / page * page;
    if (start < end) madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE);
}

std::size_t BlockSize(const void* block) {
    return malloc_usable_size(const_cast<void*>(block));
}

bool LibraryIsUnloading() {
    return g_unloading;
}

bool WatchForks(void (*before)(), void (*after)()) {
    return pthread_atfork(before, after, after) == 0;
}

void KeepLoaded() {
    // Threads are waited for.
}

void WatchProcessEnd() {
    static const ProcessEndNote note;
    g_watched = true;
}

}  // namespace brenta::os
