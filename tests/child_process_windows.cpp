#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "child_process.h"
#include "os/os.h"

namespace brenta::test {

namespace {

bool HasEnded(std::intptr_t process, DWORD& status) {
    const auto handle = reinterpret_cast<HANDLE>(process);
    const bool known = process != 0 && WaitForSingleObject(handle, INFINITE) == WAIT_OBJECT_0 &&
                       GetExitCodeProcess(handle, &status);
    if (process != 0) CloseHandle(handle);
    return known;
}

}  // namespace

// The test program itself, once more, which main leads to the work. Words hold no double quotes and end in no
// "\".
ChildProcess ChildWork::Start(const Texts& words) const {
    const std::string program = os::ExecutablePath();
    std::string line = "\"" + program + "\" --child-work " + m_name;
    for (const std::string& word : words)
        line += " \"" + word + "\"";
    STARTUPINFOA start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    const BOOL started = CreateProcessA(program.c_str(), line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                        nullptr, &start, &process);
    EXPECT_TRUE(started) << line;
    if (started) CloseHandle(process.hThread);
    return ChildProcess(reinterpret_cast<std::intptr_t>(process.hProcess));
}

bool ChildProcess::Succeeds() {
    DWORD status = 1;
    return HasEnded(std::exchange(m_system, 0), status) && status == 0;
}

void ChildProcess::Kill() {
    if (m_system != 0) TerminateProcess(reinterpret_cast<HANDLE>(m_system), 9);
    Succeeds();
}

}  // namespace brenta::test
