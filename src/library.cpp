// All static objects of the library, in the order in which they come up: the global heap, the global string
// table, the string heap object, the registered classes, and then, as the library's entry point, the
// library-wide script engine.
//
// Nothing here depends on when the system runs which constructor. Each foundation object is built by whoever
// asks for it first, under a lock that needs no construction; the two keepers below merely see to it that all
// are there once the library is loaded, in the stated order.
//
// Going is less symmetric. When a process ends, its other threads may still be running and the host's own
// static objects may still hold strings and nodes, so everything stays as it is and the system takes it back.
// Only when the library is unloaded from a living process are the objects destroyed, in reverse order: the
// engine first, and the foundation behind every other static object of the library, local ones included. (A
// program that was linked to the library, has never had a second thread and never calls InitCoreLibrary ends
// as if it unloaded it: by then nothing is left that could use it.)
#include <atomic>
#include <cstddef>
#include <mutex>
#include <new>
#include <optional>
#include <typeinfo>

#include "brenta/framework.h"
#include "brenta/heap.h"
#include "brenta/names.h"
#include "brenta/string.h"
#include "foundation/extension_module.h"
#include "foundation/heap_core.h"
#include "foundation/library_statics.h"
#include "foundation/name_store.h"
#include "foundation/string_blocks.h"
#include "foundation/thread_store.h"
#include "os/os.h"
#include "script/created_objects.h"
#include "script/library_engine.h"
#include "script/std_lib.h"
#include "xml/dom_factories.h"

namespace brenta {

// Every thread reads the pointer all the time, and would wait for its cache line whenever one takes a lock
// that shares it.
constexpr std::size_t kCacheLine = 64;
alignas(kCacheLine) constinit os::Lock g_globalHeapLock;
alignas(kCacheLine) constinit os::Lock g_stringHeapLock;
alignas(kCacheLine) constinit os::Lock g_stringTableLock;
alignas(kCacheLine) constinit std::atomic<HeapCore*> g_pGlobalCore{nullptr};

/// The global heap. Its CHeap outlives the core, so that late callers meet an empty heap and no ruin.
struct GlobalHeapParts {
    static constexpr int kPageSize = 1000000;

    GlobalHeapParts() : core(std::in_place, "global_heap", kPageSize, g_globalHeapLock), heap(&*core) {
        core->m_hasThreadStores = ThreadStore::StartAll();
        core->m_hasExactCaches = core->m_hasThreadStores && os::FenceAllThreads();
        g_pGlobalCore.store(&*core, std::memory_order_release);
    }
    void Close() {
        g_pGlobalCore.store(nullptr, std::memory_order_release);
        heap.m_pCore = nullptr;
        ThreadStore::EndAll();
        core.reset();
    }

    std::optional<HeapCore> core;
    CHeap heap;
};

namespace {

constexpr int kTablePageSize = 1024000;

/// Room for a static object that is built on demand, and destroyed on demand or never.
template <class T>
class Place {
 public:
    /// The object; null before Build.
    T* Get() const { return m_pObject.load(std::memory_order_acquire); }

    template <class... Arguments>
    void Build(Arguments&&... arguments) {
        m_pObject.store(::new (m_room) T(static_cast<Arguments&&>(arguments)...), std::memory_order_release);
    }

    void Destroy() {
        if (T* object = m_pObject.exchange(nullptr)) object->~T();
    }

 private:
    alignas(T) std::byte m_room[sizeof(T)] = {};
    std::atomic<T*> m_pObject{nullptr};
};

constinit Place<GlobalHeapParts> g_heap;
constinit Place<CStringTable> g_strings;
constinit Place<CStringHeap> g_stringHeap;

/// What a thread holds while it forks the process. The other threads do not exist in the child, where nobody
/// could give back what they held; so nobody does.
struct HeldForFork {
    HeldForFork() { ThreadStore::PauseOthers(); }
    ~HeldForFork() { ThreadStore::ResumeOthers(); }

    os::LockGuard heap{g_globalHeapLock};
    os::LockGuard stringHeap{g_stringHeapLock};
    os::LockGuard stringTable{g_stringTableLock};
    os::LockGuard names{NameStore::Of(GlobalStrings())->GetLock()};
};
constinit std::recursive_mutex g_forking;  // the standard one that needs no construction everywhere
constinit std::optional<HeldForFork> g_heldForFork;

void BeforeFork() {
    g_forking.lock();
    g_heldForFork.emplace();
}

void AfterFork() {
    g_heldForFork.reset();
    g_forking.unlock();
}

/// Keeps the foundation: first to come, last to go.
class FoundationKeeper {
 public:
    FoundationKeeper() {
        GlobalHeap();
        GlobalStrings();
        g_stringHeap.Build();
        if (NameStore::Of(GlobalStrings())) os::WatchForks(&BeforeFork, &AfterFork);
    }
    ~FoundationKeeper() {
        if (!os::LibraryIsUnloading()) {
            // Should the library go all the same, no thread that ends later may look for its code.
            ThreadStore::ForgetThreads();
            BlockCache::ForgetThreads();
            return;
        }
        g_stringHeap.Destroy();
        BlockCache::EndAll();
        g_strings.Destroy();
        g_heap.Get()->Close();
    }
};

/// What becomes of an object that a script created and nobody took over. A script may have put one element
/// or attribute into two trees, and both would delete it. These hold nothing but blocks of the global heap,
/// which is about to go as a whole: they are left to it.
void Dispose(CCoreScriptable* object) {
    const std::type_info& type = typeid(*object);
    if (type == typeid(CCoreXmlDomElement) || type == typeid(CCoreXmlDomAttribute)) return;
    if (auto* document = dynamic_cast<CCoreXmlDom*>(object)) document->RemoveDom();
    delete object;
}

/// The library's entry point: joins the chain of modules and keeps the library-wide engine.
class EntryPoint {
 public:
    EntryPoint() {
        if (!AfxInitExtensionModule(g_extensionModule)) return;
        CreateLibraryEngine();
    }
    ~EntryPoint() {
        if (!os::LibraryIsUnloading()) return;
        DestroyLibraryEngine();
        DisposeOfCreated(&Dispose);
        AfxTermExtensionModule(g_extensionModule);
    }
};

[[gnu::init_priority(101)]] const FoundationKeeper g_foundationKeeper;
// The factories of the scriptable classes; the class registered last is found first.
const CCoreXmlDomAttributeFactoryClass g_attributeFactory;
const CCoreXmlDomElementFactoryClass g_elementFactory;
const CCoreXmlDomFactoryClass g_documentFactory;
const CStdScriptLibFactoryClass g_stdScriptLibFactory;
const EntryPoint g_entryPoint;

}  // namespace

CHeap& GlobalHeap() {
    if (GlobalHeapParts* parts = g_heap.Get()) return parts->heap;
    const os::LockGuard guard(g_globalHeapLock);
    if (!g_heap.Get()) g_heap.Build();
    return g_heap.Get()->heap;
}

CStringTable& GlobalStrings() {
    if (CStringTable* table = g_strings.Get()) return *table;
    const os::LockGuard guard(g_stringTableLock);
    if (!g_strings.Get()) g_strings.Build("Global", kTablePageSize);
    return *g_strings.Get();
}

}  // namespace brenta
