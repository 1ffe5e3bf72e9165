/// @file
/// Lock, the short adaptive re-entrant lock of the foundation, and LockGuard, the only way to take it.
///
///     constinit os::Lock g_tableLock;      // at namespace scope: usable before main and after exit
///
///     void Add() {
///         os::LockGuard guard(g_tableLock);
///         ...
///     }
///
/// It is made for sections of a few dozen instructions: a thread that finds it taken spins for a moment and
/// then sleeps. While the process has one thread nothing is taken at all. A Lock is constant-initialised and
/// needs no destruction. Sections must not start threads, and must not raise a forced crash, whose handler
/// may do anything.
#pragma once

#include <atomic>
#include <cstdint>

namespace brenta::os {

/// Non-zero while the process certainly has one thread only; of the platform.
extern const char* const kSingleThreadFlag;

/// Whether the process certainly has one thread only. A thread that has once seen false may see true again
/// when it is the last one left.
inline bool SingleThreaded() {
    return *kSingleThreadFlag != 0;
}

class Lock {
 public:
    constexpr Lock() = default;
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

 private:
    friend class LockGuard;

    void Acquire();
    void Release();
    void AcquireContended();

    std::atomic<std::uint32_t> m_taken{0};
    std::uint32_t m_depth = 0;  // further entries of the owner
    std::atomic<std::uintptr_t> m_owner{0};
    std::atomic<std::uint32_t> m_sleepers{0};
};

/// Holds a Lock for its own lifetime.
class LockGuard {
 public:
    explicit LockGuard(Lock& lock) : m_pLock(SingleThreaded() ? nullptr : &lock) {
        if (m_pLock) m_pLock->Acquire();
    }
    ~LockGuard() {
        if (m_pLock) m_pLock->Release();
    }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

 private:
    Lock* m_pLock;
};

/// Makes all other threads of the process pass a full memory fence, wherever they are; takes microseconds.
/// False if the system cannot. Of the platform.
bool FenceAllThreads();

/// A lock for what has one owner and hardly any other visitor. The owner enters and leaves with plain stores;
/// a visitor pays for both by making the owner's processor pass a fence. Only one visitor at a time may try.
class OwnersLock {
 public:
    /// The owner enters; false while there is a visitor.
    bool Enter() {
        m_inside.store(true, std::memory_order_relaxed);
        // The processor may still look before the store is seen; a visitor's fence ends that uncertainty.
        std::atomic_signal_fence(std::memory_order_seq_cst);
        if (!m_visited.load(std::memory_order_acquire)) return true;
        Leave();
        return false;
    }
    void Leave() { m_inside.store(false, std::memory_order_release); }

    /// A visitor enters, when the owner has left; false if the system cannot do it.
    bool Visit();
    void EndVisit() { m_visited.store(false, std::memory_order_release); }

 private:
    std::atomic<bool> m_inside{false};
    std::atomic<bool> m_visited{false};
};

/// Sleeps while `word` holds `value`, until woken, but no longer than about so many milliseconds, less than
/// 1000. Of the platform.
void SleepWhile(const std::atomic<std::uint32_t>& word, std::uint32_t value, std::uint32_t milliseconds);

/// Wakes one thread that sleeps on `word`. Of the platform.
void WakeOne(const std::atomic<std::uint32_t>& word);

}  // namespace brenta::os
