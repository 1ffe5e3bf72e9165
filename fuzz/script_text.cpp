// Any bytes as a module, whose Main is called, and as a command: whatever they do, the engine must come back,
// and afterwards answer 1 + 1 with 2. A forced crash aborts by itself.
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>

#include "brenta/framework.h"
#include "brenta/host.h"
#include "brenta/script.h"

namespace {

using brenta::CCoreScriptEngine;
using brenta::Var;

constexpr std::size_t kMaxInput = 4096;
constexpr std::chrono::milliseconds kPatience{20};

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

/// Nobody answers prompts, and no document is saved.
void CutOffTheWorld() {
    brenta::HostServices services;
    services.showMessage = [](void*, const char*, unsigned int) { return brenta::IDNO; };
    brenta::SetHostServices(services);
    for (const char* name : {"CCoreXmlDom", "CCoreXmlDomElement", "CCoreXmlDomAttribute"}) {
        brenta::RegisterScriptableClass(name, &brenta::CreateCStdScriptLibObject);
    }
}

template <class Run>
void RunGuarded(Watchdog& watchdog, Run run) {
    brenta::CScriptMsgStream silence;
    CCoreScriptEngine engine(brenta::TOrderedList<Var>(), &silence);
    watchdog.Start(engine);
    run(engine);
    watchdog.Stop();
    engine.ClearStop();
    Var two;
    if (!engine.Execute("1 + 1", two, brenta::kUnitsNone) || two.GetInt() != 2) std::abort();
    if (engine.GetScopeDepth() != 1) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool cutOff = (CutOffTheWorld(), true);
    static Watchdog watchdog;
    if (!cutOff || size > kMaxInput) return 0;
    const std::string text(reinterpret_cast<const char*>(data), size);
    RunGuarded(watchdog, [&text](CCoreScriptEngine& engine) {
        Var result;
        engine.InjectScript("module", text.c_str());
        engine.RunScript("Main", result, brenta::TOrderedList<Var>(), true);
    });
    RunGuarded(watchdog, [&text](CCoreScriptEngine& engine) {
        Var result;
        engine.Execute(text.c_str(), result, brenta::kMils);
    });
    return 0;
}
