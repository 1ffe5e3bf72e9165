#include "xml/platform_memory_libxml2.h"

#include <libxml/globals.h>
#include <libxml/threads.h>
#include <libxml/xmlmemory.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "os/os.h"

namespace brenta {

namespace {

constinit thread_local bool t_lacked = false;

/// What a transform falls back on: blocks one behind the other, each behind a head of its own. The room costs
/// nothing until it is touched, and never goes, as libxml2 keeps or loses some of the blocks.
class Reserve {
 public:
    bool Owns(const void* block) const {
        return reinterpret_cast<std::uintptr_t>(block) - reinterpret_cast<std::uintptr_t>(m_heads) < kSize;
    }

    /// The first free room that is large enough; null if there is none. For one thread at a time.
    void* Take(std::size_t size) {
        const std::size_t units = size / sizeof(Head) + 2;  // with the head
        std::size_t at = 0;
        while (at < m_used && !MakeRoom(at, units))
            at += m_heads[at].units;
        if (at == m_used) {
            if (units > kUnits - m_used) return nullptr;
            m_heads[at].units = units;
            m_used += units;
        } else if (const std::size_t rest = std::exchange(m_heads[at].units, units) - units; rest > 0) {
            m_heads[at + units].units = rest;
            m_heads[at + units].isTaken.store(false, std::memory_order_relaxed);
        }
        m_heads[at].isTaken.store(true, std::memory_order_relaxed);
        return &m_heads[at + 1];
    }

    // For any thread.

    static void Release(void* block) {
        (static_cast<Head*>(block) - 1)->isTaken.store(false, std::memory_order_release);
    }
    /// What the block has room for.
    static std::size_t SizeOf(const void* block) {
        return ((static_cast<const Head*>(block) - 1)->units - 1) * sizeof(Head);
    }

 private:
    static constexpr std::size_t kSize = 1 << 20;
    struct alignas(std::max_align_t) Head {
        std::size_t units = 0;
        std::atomic<bool> isTaken{false};
    };
    static constexpr std::size_t kUnits = kSize / sizeof(Head);

    bool IsFree(std::size_t at) const { return !m_heads[at].isTaken.load(std::memory_order_acquire); }

    /// Joins a free room with those behind it; false if it is taken or too small all the same.
    bool MakeRoom(std::size_t at, std::size_t units) {
        if (!IsFree(at)) return false;
        for (std::size_t next; (next = at + m_heads[at].units) < m_used && IsFree(next);)
            m_heads[at].units += m_heads[next].units;
        return m_heads[at].units >= units;
    }

    Head m_heads[kUnits] = {};
    std::size_t m_used = 0;
};
constinit Reserve g_reserve{};

struct Touch {
    bool isAllowed = false;
    bool hasBeen = false;
    void (*stop)(void* context) = nullptr;
    void* context = nullptr;
};
constinit thread_local Touch t_touch;

/// Instead of a null pointer.
void* Refused(std::size_t size) {
    t_lacked = true;
    if (!t_touch.isAllowed) return nullptr;
    t_touch.hasBeen = true;
    if (t_touch.stop != nullptr) t_touch.stop(t_touch.context);
    return g_reserve.Take(size);
}

void Release(void* block) {
    if (!g_reserve.Owns(block)) return std::free(block);
    Reserve::Release(block);
}

void* Allocate(std::size_t size) {
    void* const block = std::malloc(size);
    return block != nullptr ? block : Refused(size);
}

/// XPath, for one, does not look after a stack of values that cannot grow: blocks of the system, too, move
/// into the reserve.
void* Resize(void* block, std::size_t size) {
    if (block == nullptr) return Allocate(size);
    const bool isReserved = g_reserve.Owns(block);
    if (!isReserved) {
        // A size of 0 would free the block.
        void* const resized = std::realloc(block, std::max<std::size_t>(size, 1));
        if (resized != nullptr) return resized;
    }
    const std::size_t room = isReserved ? Reserve::SizeOf(block) : os::BlockSize(block);
    if (size <= room) return block;
    void* const moved = isReserved ? Allocate(size) : Refused(size);
    if (moved == nullptr) return nullptr;
    std::memcpy(moved, block, room);
    Release(block);
    return moved;
}

char* Duplicate(const char* text) {
    const std::size_t size = std::strlen(text) + 1;
    void* const copy = Allocate(size);
    return copy != nullptr ? static_cast<char*>(std::memcpy(copy, text, size)) : nullptr;
}

/// Stands between libxml2 and the C library as long as this library is loaded. Blocks may come before and go
/// after, as they are the C library's own; a host that has given libxml2 another memory keeps it, unwatched.
class Watchman {
 public:
    Watchman() {
        xmlMemGet(&m_free, &m_malloc, &m_realloc, &m_strdup);
        if (m_malloc == &std::malloc) xmlMemSetup(&Release, &Allocate, &Resize, &Duplicate);
    }
    ~Watchman() {
        xmlFreeFunc free;
        xmlMallocFunc malloc;
        xmlReallocFunc realloc;
        xmlStrdupFunc strdup;
        xmlMemGet(&free, &malloc, &realloc, &strdup);
        if (malloc == &Allocate) xmlMemSetup(m_free, m_malloc, m_realloc, m_strdup);
    }
    Watchman(const Watchman&) = delete;
    Watchman& operator=(const Watchman&) = delete;

 private:
    xmlFreeFunc m_free = nullptr;
    xmlMallocFunc m_malloc = nullptr;
    xmlReallocFunc m_realloc = nullptr;
    xmlStrdupFunc m_strdup = nullptr;
};

const Watchman g_watchman;

}  // namespace

// What it lacks memory for it tells through a handler that it looks up in what it lacks, and so on without
// end. So the room has to be there before it asks: of the C library itself, for it asks that, by `calloc`,
// and so does the C library for its table of a thread's values. The rooms are too large for a cache that
// `calloc` does not look into, and more than are needed, as another thread may take one while they are free.
void ReadyXmlThread() {
    static constinit thread_local bool t_isReady = false;
    if (t_isReady || xmlIsMainThread() != 0) return;
    constexpr std::size_t kRoomSize = 4 * sizeof(xmlGlobalState);
    void* volatile rooms[16];  // or the compiler may leave out blocks that nobody uses
    bool isRoom = true;
    for (void* volatile& room : rooms) {
        void* const block = std::calloc(1, kRoomSize);
        room = block;
        isRoom = isRoom && block != nullptr;
    }
    for (void* const room : rooms)
        std::free(room);
    if (!isRoom) throw std::bad_alloc();
    t_isReady = xmlGetGlobalState() != nullptr;
    if (!t_isReady) throw std::bad_alloc();
}

XmlMemoryWatch::XmlMemoryWatch() {
    ReadyXmlThread();
    t_lacked = false;
}

bool XmlMemoryWatch::HasLacked() {
    return t_lacked;
}

XmlMemoryReserve::XmlMemoryReserve() {
    t_touch = {true, false, nullptr, nullptr};
}

XmlMemoryReserve::~XmlMemoryReserve() {
    t_touch = {};
}

bool XmlMemoryReserve::IsTouched() {
    return t_touch.hasBeen;
}

void XmlMemoryReserve::WhenTouched(void (*stop)(void* context), void* context) {
    t_touch.context = context;
    t_touch.stop = stop;
}

}  // namespace brenta
