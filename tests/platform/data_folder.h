// What tests of settings share: an application-data folder of their own, and processes to disturb it.
#pragma once

#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <new>
#include <string>

#include "brenta/host.h"
#include "test_support.h"

namespace brenta::test {

/// While it lives, application data belong into an empty folder of the program, which is "tool".
class DataFolder {
 public:
    explicit DataFolder(const char* executable = "/bin/tool")
        : m_executable(executable), m_path(m_scratch / "data") {
        HostServices services;
        services.context = this;
        services.executablePath = [](void* self, CoreString& path) {
            return !(path = static_cast<DataFolder*>(self)->m_executable).IsEmpty();
        };
        services.applicationDataFolder = [](void* self, CoreString& path) {
            return !(path = static_cast<DataFolder*>(self)->m_path.c_str()).IsEmpty();
        };
        SetHostServices(services);
    }
    ~DataFolder() { SetHostServices({}); }
    DataFolder(const DataFolder&) = delete;
    DataFolder& operator=(const DataFolder&) = delete;

    /// From now on the folder is unknown.
    void Forget() { m_path.clear(); }
    std::string operator/(const char* name) const { return m_path + "/" + name; }

    /// Takes the right to write a file from this process, which goes on as a user who has no more rights than
    /// that. For forked processes.
    bool MakeReadOnly(const char* file) const {
        constexpr uid_t kNobody = 65534;
        bool isGood = chmod((*this / file).c_str(), 0444) == 0;
        if (geteuid() != 0) return isGood;
        isGood &= chown((m_scratch / "").c_str(), kNobody, kNobody) == 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_scratch / ""))
            isGood &= chown(entry.path().c_str(), kNobody, kNobody) == 0;
        return isGood && setuid(kNobody) == 0;
    }

 private:
    const Scratch m_scratch;
    const char* m_executable;
    std::string m_path;
};

/// Runs work() in a process of its own, whose status tells whether it returned true.
template <class Work>
pid_t Fork(const Work& work) {
    const pid_t child = fork();
    if (child == 0) _exit(work() ? 0 : 1);
    return child;
}

inline bool Succeeds(pid_t child) {
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// Runs work(0) to work(3) in four processes at once; false if any of them returned false.
template <class Work>
bool SucceedInFourProcesses(const Work& work) {
    pid_t children[4];
    for (int i = 0; i < 4; ++i)
        children[i] = Fork([&] { return work(i); });
    return std::ranges::count_if(children, Succeeds) == 4;
}

/// Ends the process, wherever it is, after so many microseconds.
inline void KillAfter(pid_t child, std::uint_fast32_t microseconds) {
    usleep(static_cast<useconds_t>(microseconds));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

/// A number that forked processes share.
class SharedFlag {
 public:
    SharedFlag() {
        void* const place =
            mmap(nullptr, sizeof(*m_pNumber), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        m_pNumber = ::new (place) std::atomic<int>(0);
    }
    ~SharedFlag() { munmap(m_pNumber, sizeof(*m_pNumber)); }
    SharedFlag(const SharedFlag&) = delete;
    SharedFlag& operator=(const SharedFlag&) = delete;

    int Get() const { return m_pNumber->load(); }
    void Set(int number) const { m_pNumber->store(number); }
    /// False after ten seconds.
    bool WaitFor(int number) const {
        for (int i = 0; i < 100000 && Get() != number; ++i)
            usleep(100);
        return Get() == number;
    }

 private:
    std::atomic<int>* m_pNumber;
};

inline unsigned int RightsOf(const std::string& path) {
    return static_cast<unsigned int>(std::filesystem::status(path).permissions());
}

}  // namespace brenta::test
