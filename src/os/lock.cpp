#include "os/lock.h"

#include <algorithm>
#include <thread>

namespace brenta::os {

namespace {

constexpr int kSpins = 100;
constexpr std::uint32_t kLongestSleep = 64;  // milliseconds

/// A number that no other live thread has.
std::uintptr_t ThisThread() {
    static constinit thread_local char t_identity = 0;
    return reinterpret_cast<std::uintptr_t>(&t_identity);
}

/// Tells the processor that this is a spin loop.
void Relax() {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
}

}  // namespace

void Lock::Acquire() {
    const std::uintptr_t self = ThisThread();
    std::uint32_t expected = 0;
    if (!m_taken.compare_exchange_strong(expected, 1, std::memory_order_acquire, std::memory_order_relaxed)) {
        // Only the owner itself can read its own number here, so no order is needed.
        if (m_owner.load(std::memory_order_relaxed) == self) {
            ++m_depth;
            return;
        }
        AcquireContended();
    }
    m_owner.store(self, std::memory_order_relaxed);
}

void Lock::AcquireContended() {
    for (int i = 0; i < kSpins; ++i) {
        Relax();
        std::uint32_t expected = 0;
        if (m_taken.load(std::memory_order_relaxed) == 0 &&
            m_taken.compare_exchange_weak(expected, 1, std::memory_order_acquire,
                                          std::memory_order_relaxed)) {
            return;
        }
    }
    m_sleepers.fetch_add(1);
    // Longer each time: a thousand sleepers that look every millisecond would leave the owner no processor.
    for (std::uint32_t limit = 1; m_taken.exchange(1, std::memory_order_acquire) != 0;) {
        SleepWhile(m_taken, 1, limit);
        limit = std::min(2 * limit, kLongestSleep);
    }
    m_sleepers.fetch_sub(1, std::memory_order_relaxed);
}

/// Leaving costs a plain store, where an atomic exchange would cost as much as entering. The price: the look
/// at the sleepers may come before the store is seen by a thread that is just going to sleep, which then is
/// not woken. That is why sleeps end by themselves.
void Lock::Release() {
    if (m_depth > 0) {
        --m_depth;
        return;
    }
    m_owner.store(0, std::memory_order_relaxed);
    m_taken.store(0, std::memory_order_release);
    if (m_sleepers.load(std::memory_order_relaxed) != 0) WakeOne(m_taken);
}

bool OwnersLock::Visit() {
    m_visited.store(true, std::memory_order_relaxed);
    if (!FenceAllThreads()) {
        EndVisit();
        return false;
    }
    while (m_inside.load(std::memory_order_acquire))
        std::this_thread::yield();
    return true;
}

}  // namespace brenta::os
