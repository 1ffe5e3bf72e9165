// What the process remembers of the thing that was asked for last.
#pragma once

#include <utility>

#include "os/lock.h"

namespace brenta {

/// One T for all threads, made on first use. It goes with the library's static objects; whoever uses it later
/// finds nothing, and makes a new one. T is a type of one source file, which thereby
/// has the cache to itself.
template <class T>
class ProcessCache {
 public:
    /// What `work` returns for the T, under the cache's lock.
    template <class Work>
    static auto With(Work work) {
        const os::LockGuard guard(m_lock);
        if (m_pValue == nullptr) m_pValue = new T;
        static_cast<void>(&m_keeper);  // which is made only if somebody names it
        return work(*m_pValue);
    }

 private:
    struct Keeper {
        ~Keeper() {
            const os::LockGuard guard(m_lock);
            delete std::exchange(m_pValue, nullptr);
        }
    };

    static inline constinit os::Lock m_lock;
    static inline constinit T* m_pValue = nullptr;
    static inline const Keeper m_keeper;
};

}  // namespace brenta
