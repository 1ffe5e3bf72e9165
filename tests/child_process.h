// Processes beside the test's own, for what only several of them, or one that is ended by force, can show.
#pragma once

#include <chrono>
#include <cstdint>

#include "test_support.h"

namespace brenta::test {

/// A process that does some ChildWork. One that nobody has waited for is ended with the object.
class ChildProcess {
 public:
    explicit ChildProcess(std::intptr_t system) : m_system(system) {}
    ChildProcess(ChildProcess&& other) noexcept : m_system(std::exchange(other.m_system, 0)) {}
    ChildProcess& operator=(ChildProcess&&) = delete;
    ~ChildProcess() { Kill(); }

    /// Waits for its end; whether the work has returned true.
    bool Succeeds();
    /// Ends it, wherever it is.
    void Kill();

 private:
    std::intptr_t m_system;  // 0 once it has ended
};

/// Work for processes of their own, known by its name; to be made before main. It has nothing of the test's
/// but the words that it is given.
class ChildWork {
 public:
    using Function = bool (*)(const Texts& words);

    ChildWork(const char* name, Function function);
    ChildWork(const ChildWork&) = delete;
    ChildWork& operator=(const ChildWork&) = delete;

    ChildProcess Start(const Texts& words) const;
    /// Starts four, each with its number, 0 to 3, as a further word; whether all succeed.
    bool SucceedsInFour(Texts words) const;

    /// What a started program does that is told so: returns the exit status, or -1 if `words` say nothing.
    static int RunWork(const Texts& words);

 private:
    const char* m_name;
    Function m_function;
};

/// A sign that processes give each other: a file that appears.
bool Signal(const std::string& path);
/// False after ten seconds.
bool WaitForSignal(const std::string& path);

}  // namespace brenta::test
