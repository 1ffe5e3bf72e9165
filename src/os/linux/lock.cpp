// Linux: what Lock needs of the system. The C library itself keeps the flag of the single thread.
#include "os/lock.h"

#include <linux/futex.h>
#include <linux/membarrier.h>
#include <sys/single_threaded.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

namespace brenta::os {

const char* const kSingleThreadFlag = &__libc_single_threaded;

void SleepWhile(const std::atomic<std::uint32_t>& word, std::uint32_t value, std::uint32_t milliseconds) {
    const timespec limit = {0, static_cast<long>(milliseconds) * 1000000};
    syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, value, &limit, nullptr, 0);
}

void WakeOne(const std::atomic<std::uint32_t>& word) {
    syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

bool FenceAllThreads() {
    static const bool registered =
        syscall(SYS_membarrier, MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED, 0, 0) == 0;
    return registered && syscall(SYS_membarrier, MEMBARRIER_CMD_PRIVATE_EXPEDITED, 0, 0) == 0;
}

}  // namespace brenta::os
