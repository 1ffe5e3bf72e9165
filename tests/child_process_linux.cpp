#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "child_process.h"

namespace brenta::test {

// A copy of this process, so that what the library holds meanwhile is in it, too.
ChildProcess ChildWork::Start(const Texts& words) const {
    const pid_t child = fork();
    if (child == 0) _exit(m_function(words) ? 0 : 1);
    EXPECT_GT(child, 0) << m_name;
    return ChildProcess(child);
}

bool ChildProcess::Succeeds() {
    const auto child = static_cast<pid_t>(std::exchange(m_system, 0));
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void ChildProcess::Kill() {
    if (m_system > 0) kill(static_cast<pid_t>(m_system), SIGKILL);
    Succeeds();
}

}  // namespace brenta::test
