// Stops scripts that run too long: endless loops are legal, and a fuzz target has to come back.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "brenta/script.h"

namespace brenta::fuzz {

/// Asks an engine to stop when it has run too long: endless loops are legal.
class Watchdog {
 public:
    Watchdog() : m_thread([this] { Watch(); }) {}
    ~Watchdog() {
        {
            const std::lock_guard lock(m_mutex);
            m_done = true;
        }
        m_changed.notify_one();
        m_thread.join();
    }

    void Start(CCoreScriptEngine& engine) { Set(&engine); }
    void Stop() { Set(nullptr); }

 private:
    static constexpr std::chrono::milliseconds kPatience{20};

    void Set(CCoreScriptEngine* engine) {
        const std::lock_guard lock(m_mutex);
        m_pEngine = engine;
        m_deadline = std::chrono::steady_clock::now() + kPatience;
        m_changed.notify_one();
    }

    void Watch() {
        std::unique_lock lock(m_mutex);
        while (!m_done) {
            if (m_pEngine == nullptr) {
                m_changed.wait(lock);
            } else if (m_changed.wait_until(lock, m_deadline) == std::cv_status::timeout &&
                       m_pEngine != nullptr) {
                m_pEngine->RequestStop();
                m_deadline += kPatience;
            }
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    CCoreScriptEngine* m_pEngine = nullptr;
    std::chrono::steady_clock::time_point m_deadline;
    bool m_done = false;
    std::thread m_thread;
};

}  // namespace brenta::fuzz
