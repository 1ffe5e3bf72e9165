#include "brenta/scriptable.h"

#include <atomic>
#include <new>

#include "os/os.h"
#include "script/created_objects.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Objects

bool CCoreScriptable::ScriptAction(IOB&) {
    return false;
}

CCoreScriptable::~CCoreScriptable() {
    ForgetCreated(this);
}

void AdoptScriptable(const CCoreScriptable* object) {
    if (object != nullptr) ForgetCreated(object);
}

// ---------------------------------------------------------------------------------------------------------
// Classes

namespace {

/// The registry: a list of entries, newest first. It is constant-initialised, so classes may register from
/// any static constructor, and takes nothing from the library's heap, so it may go at any time. Entries are
/// only ever put in front, which lets readers walk without a lock.
class ScriptClassFactory {
 public:
    constexpr ScriptClassFactory() = default;
    ~ScriptClassFactory() {
        if (!os::LibraryIsUnloading()) return;
        Entry* entry = m_pHead.exchange(nullptr);
        while (entry != nullptr) {
            Entry* next = entry->next;
            delete entry;
            entry = next;
        }
    }
    ScriptClassFactory(const ScriptClassFactory&) = delete;
    ScriptClassFactory& operator=(const ScriptClassFactory&) = delete;

    void Register(STRID name, ScriptableCreator create) {
        if (create == nullptr) return;
        auto* entry = new (std::nothrow) Entry{name, create, m_pHead.load(std::memory_order_relaxed)};
        if (entry == nullptr) return;
        while (!m_pHead.compare_exchange_weak(entry->next, entry, std::memory_order_release,
                                              std::memory_order_relaxed)) {
        }
    }

    ScriptableCreator Find(STRID name) const {
        for (const Entry* entry = m_pHead.load(std::memory_order_acquire); entry != nullptr;
             entry = entry->next)
            if (entry->name == name) return entry->create;
        return nullptr;
    }

 private:
    struct Entry {
        STRID name;
        ScriptableCreator create;
        Entry* next;
    };

    std::atomic<Entry*> m_pHead{nullptr};
};

constinit ScriptClassFactory g_classes;

}  // namespace

CScriptFactoryBase::~CScriptFactoryBase() = default;

void RegisterScriptableClass(const char* name, ScriptableCreator create) {
    g_classes.Register(StrId(name), create);
}

CCoreScriptable* CreateScriptableObject(STRID className) {
    const ScriptableCreator create = g_classes.Find(className);
    return create == nullptr ? nullptr : create();
}

bool IsScriptableClass(STRID className) {
    return g_classes.Find(className) != nullptr;
}

}  // namespace brenta
