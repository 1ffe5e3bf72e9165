// Windows: what Lock needs of the system.
#include "os/lock.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace brenta::os {

namespace {

// The system does not tell whether a process has one thread only.
constexpr char kNever = 0;

}  // namespace

const char* const kSingleThreadFlag = &kNever;

void SleepWhile(const std::atomic<std::uint32_t>& word, std::uint32_t value, std::uint32_t milliseconds) {
    WaitOnAddress(const_cast<std::atomic<std::uint32_t>*>(&word), &value, sizeof value, milliseconds);
}

void WakeOne(const std::atomic<std::uint32_t>& word) {
    WakeByAddressSingle(const_cast<std::atomic<std::uint32_t>*>(&word));
}

bool FenceAllThreads() {
    FlushProcessWriteBuffers();
    return true;
}

}  // namespace brenta::os
