#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>

#include "platform/child.h"

namespace brenta {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kNoProgram = 127;

// ---------------------------------------------------------------------------------------------------------
// In the child

void ResetSignals() {
    struct sigaction byDefault = {};
    byDefault.sa_handler = SIG_DFL;
    for (int signal = 1; signal < NSIG; ++signal)
        sigaction(signal, &byDefault, nullptr);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

void SetLimit(decltype(RLIMIT_CORE) which, rlim_t value) {
    rlimit limit = {};
    getrlimit(which, &limit);
    limit.rlim_cur = std::min(limit.rlim_max, value);
    limit.rlim_max = limit.rlim_cur;
    setrlimit(which, &limit);
}

/// The address space that the process has taken so far, in bytes.
rlim_t OwnSize() {
    char text[32] = {};
    const int file = open("/proc/self/statm", O_RDONLY | O_CLOEXEC);
    const ssize_t length = file < 0 ? 0 : read(file, text, sizeof text - 1);
    if (file >= 0) close(file);
    rlim_t pages = 0;
    for (ssize_t i = 0; i < length && text[i] >= '0' && text[i] <= '9'; ++i)
        pages = pages * 10 + static_cast<rlim_t>(text[i] - '0');
    return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

void Confine(int output, const ChildLimits& limits) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    ResetSignals();
    dup2(output, STDOUT_FILENO);
    fcntl(STDOUT_FILENO, F_SETFD, 0);
    const int nowhere = open("/dev/null", O_RDWR);
    dup2(nowhere, STDIN_FILENO);
    dup2(nowhere, STDERR_FILENO);
    close_range(STDERR_FILENO + 1, ~0U, 0);
    SetLimit(RLIMIT_CORE, 0);
    SetLimit(RLIMIT_CPU, static_cast<rlim_t>(limits.seconds) + 1);
    if (const rlim_t size = OwnSize()) SetLimit(RLIMIT_AS, size + limits.memoryBytes);
}

// ---------------------------------------------------------------------------------------------------------
// In this process

/// A child that is stopped, if it still runs, and waited for when the object goes.
class Child {
 public:
    Child(pid_t id, int output) : m_id(id), m_output(output) {}
    ~Child() {
        close(m_output);
        Stop();
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// Reads all that the child writes; 0 once that ended, else an error.
    int Collect(const ChildLimits& limits, std::string& output) const {
        const auto end = Clock::now() + std::chrono::seconds(limits.seconds);
        while (true) {
            if (const int error = WaitForOutput(end)) return error;
            char buffer[4096];
            const ssize_t length = read(m_output, buffer, sizeof buffer);
            if (length == 0) return 0;
            if (length < 0 && errno != EINTR) return errno;
            if (length > 0) output.append(buffer, static_cast<std::size_t>(length));
            if (output.size() > limits.outputBytes) return kChildCrashed;
        }
    }

    /// The exit status, kChildCrashed for any other end. A child whose output has ended is at its own end,
    /// unless it closed it to live on.
    int Wait() {
        const auto end = Clock::now() + std::chrono::seconds(1);
        int state = 0;
        pid_t ended = 0;
        while ((ended = waitpid(m_id, &state, WNOHANG)) == 0 && Clock::now() < end)
            poll(nullptr, 0, 1);
        if (ended == 0) return kChildCrashed;
        m_id = -1;
        // Where the host has children vanish by themselves, what it wrote is all there is to know.
        if (ended < 0) return 0;
        return WIFEXITED(state) ? WEXITSTATUS(state) : kChildCrashed;
    }

 private:
    int WaitForOutput(Clock::time_point end) const {
        while (true) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
            if (left <= 0) return kChildTimedOut;
            pollfd output = {m_output, POLLIN, 0};
            const int ready = poll(&output, 1, static_cast<int>(left));
            if (ready > 0) return 0;
            if (ready < 0 && errno != EINTR) return errno;
        }
    }

    void Stop() {
        if (m_id <= 0) return;
        kill(m_id, SIGKILL);
        while (waitpid(m_id, nullptr, 0) < 0 && errno == EINTR) {
        }
    }

    pid_t m_id;
    int m_output;
};

}  // namespace

ChildResult RunInChild(const std::function<int()>& work, const ChildLimits& limits) {
    ChildResult result;
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        result.error = errno;
        return result;
    }
    const pid_t id = fork();
    if (id == 0) {
        Confine(ends[1], limits);
        // What work throws must not run into the host's handlers, of which there is a copy here.
        const auto run = [&work]() noexcept { return work(); };
        _exit(run());
    }
    const int forkError = errno;
    close(ends[1]);
    if (id < 0) {
        close(ends[0]);
        result.error = forkError;
        return result;
    }
    Child child(id, ends[0]);
    result.error = child.Collect(limits, result.output);
    if (result.error == 0) result.status = child.Wait();
    if (result.status == kChildCrashed) result.error = kChildCrashed;
    return result;
}

ChildResult RunProgram(const char* const* arguments, const ChildLimits& limits) {
    return RunInChild(
        [arguments] {
            execvp(arguments[0], const_cast<char* const*>(arguments));
            return kNoProgram;
        },
        limits);
}

}  // namespace brenta
