#include "script/created_objects.h"

#include <atomic>
#include <cstdint>
#include <unordered_set>

#include "os/lock.h"

namespace brenta {

namespace {

/// One part of the registry; objects are spread over the parts so that engines on different threads rarely
/// meet.
struct Part {
    os::Lock lock;
    std::unordered_set<const CCoreScriptable*> objects;
};

constexpr std::size_t kParts = 16;
constexpr std::size_t kCounters = 4096;

// Every scriptable object asks on its destruction whether it is in, and nearly all are not: documents are
// trees of scriptable elements that no script made. So each object in the registry is counted in one of many
// counters chosen by its address, and a counter of 0 answers without a lock. Whoever destroys an object that
// another thread entered has been handed it, which orders the two.
std::atomic<std::uint32_t> g_counters[kCounters];

std::size_t HashOf(const CCoreScriptable* object) {
    const auto address = reinterpret_cast<std::uintptr_t>(object);
    return static_cast<std::size_t>((address >> 4) * 0x9E3779B97F4A7C15u >> 32);
}

std::atomic<std::uint32_t>& CounterOf(const CCoreScriptable* object) {
    return g_counters[HashOf(object) % kCounters];
}

/// Lives until the process ends: objects may be destroyed by anybody's static destructors.
Part* Parts() {
    alignas(Part) static unsigned char memory[kParts * sizeof(Part)];
    static Part* const parts = [] {
        auto* first = reinterpret_cast<Part*>(memory);
        for (std::size_t i = 0; i < kParts; ++i)
            new (first + i) Part;
        return first;
    }();
    return parts;
}

Part& PartOf(const CCoreScriptable* object) {
    return Parts()[HashOf(object) / kCounters % kParts];
}

/// Any object of the part, taken out; null when there is none.
const CCoreScriptable* TakeOne(Part& part) {
    os::LockGuard guard(part.lock);
    if (part.objects.empty()) {
        std::unordered_set<const CCoreScriptable*>().swap(part.objects);  // its memory too
        return nullptr;
    }
    const CCoreScriptable* object = *part.objects.begin();
    part.objects.erase(part.objects.begin());
    CounterOf(object).fetch_sub(1, std::memory_order_relaxed);
    return object;
}

}  // namespace

CCoreScriptable* TrackCreated(CCoreScriptable* object) {
    if (object == nullptr) return nullptr;
    Part& part = PartOf(object);
    os::LockGuard guard(part.lock);
    if (part.objects.insert(object).second) CounterOf(object).fetch_add(1, std::memory_order_relaxed);
    return object;
}

void ForgetCreated(const CCoreScriptable* object) {
    if (CounterOf(object).load(std::memory_order_relaxed) == 0) return;
    Part& part = PartOf(object);
    os::LockGuard guard(part.lock);
    if (part.objects.erase(object) != 0) CounterOf(object).fetch_sub(1, std::memory_order_relaxed);
}

std::size_t CreatedCount() {
    std::size_t count = 0;
    for (std::size_t i = 0; i < kParts; ++i) {
        os::LockGuard guard(Parts()[i].lock);
        count += Parts()[i].objects.size();
    }
    return count;
}

// One at a time and without a lock: a destructor may delete further objects, which take themselves out.
void DisposeOfCreated(void (*dispose)(CCoreScriptable*)) {
    for (std::size_t i = 0; i < kParts; ++i)
        while (const CCoreScriptable* object = TakeOne(Parts()[i]))
            dispose(const_cast<CCoreScriptable*>(object));
}

}  // namespace brenta
