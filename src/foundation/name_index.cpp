#include "foundation/name_index.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#include "os/os.h"

namespace brenta {

namespace {

constexpr std::size_t kInitialBuckets = 128;
constexpr std::size_t kPrefetchAhead = 2;
/// Bytes from which on an array is worth large pages: each name lands anywhere in it, and with small ones the
/// way to its page costs as much as the page.
constexpr std::size_t kLarge = 0x400000;

}  // namespace

NamePlaces::NamePlaces(std::size_t pageSize)
    : m_granuleBits(std::max(3, static_cast<int>(std::bit_width(pageSize)) - kOffsetBits)) {}

NameIndex::Buckets* NameIndex::Buckets::Create(std::size_t count, Buckets* pOlder) {
    // Zeroed memory straight from the system: the pages of a large array are touched only when names land in
    // them. All bits zero is the value-initialised state of a bucket.
    void* pMemory = std::calloc(count + 2, sizeof(Bucket));
    if (!pMemory) return nullptr;
    const std::size_t size = (count + 2) * sizeof(Bucket);
    if (size >= kLarge) os::PreferLargePages(pMemory, size);
    const auto address =
        (reinterpret_cast<std::uintptr_t>(pMemory) + sizeof(Bucket) - 1) / sizeof(Bucket) * sizeof(Bucket);
    return ::new (reinterpret_cast<void*>(address))
        Buckets{pMemory, pOlder, count - 1, 64 - std::countr_zero(count)};
}

bool NameIndex::Bucket::Add(std::uint32_t place, std::uint64_t tag) {
    const std::uint64_t tags = m_tags.load(std::memory_order_relaxed);
    if (!HasMore(tags)) {
        const std::size_t lane = (static_cast<std::size_t>(std::bit_width(tags)) + 7) / 8;
        m_nodes[lane].store(place, std::memory_order_release);
        m_tags.store(tags | tag << lane * 8, std::memory_order_release);
        return true;
    }
    const std::uint32_t more = m_moreTags.load(std::memory_order_relaxed);
    if (IsFull(more)) return false;
    const std::size_t lane = (static_cast<std::size_t>(std::bit_width(more)) + 7) / 8;
    m_nodes[kFirstLanes + lane].store(place, std::memory_order_release);
    m_moreTags.store(more | static_cast<std::uint32_t>(tag << lane * 8), std::memory_order_release);
    return true;
}

void NameIndex::Buckets::Enter(std::uint32_t place, std::uint64_t hash) {
    const std::size_t home = Home(hash);
    std::size_t number = home;
    while (!At(number).Add(place, Bucket::TagOf(hash)))
        number = Next(number, home);
}

/// Enters all nodes of an older array. A node's home grows with its old bucket, so both arrays are walked in
/// order; what would wait is the read of each node's hash, hence the prefetch.
void NameIndex::Buckets::TakeFrom(const Buckets& older, const NamePlaces& places) {
    for (std::size_t bucket = 0; bucket <= older.m_mask; ++bucket) {
        for (const auto& node : older.At((bucket + kPrefetchAhead) & older.m_mask).m_nodes) {
            const std::uint32_t place = node.load(std::memory_order_relaxed);
            if (place != 0) __builtin_prefetch(places.NodeAt(place));
        }
        for (const auto& node : older.At(bucket).m_nodes) {
            const std::uint32_t place = node.load(std::memory_order_relaxed);
            if (place != 0) Enter(place, places.NodeAt(place)->m_hash);
        }
    }
}

NameIndex::~NameIndex() {
    Buckets* pBuckets = m_pBuckets.load(std::memory_order_relaxed);
    while (pBuckets) {
        Buckets* pOlder = pBuckets->m_pOlder;
        std::free(pBuckets->m_pMemory);
        pBuckets = pOlder;
    }
}

const NameNode* NameIndex::FindLong(const char* text, std::size_t length) const {
    return Find(LongNameKey(text, length));
}

bool NameIndex::Reserve() {
    Buckets* pOld = m_pBuckets.load(std::memory_order_relaxed);
    if (pOld && GetCount() < pOld->Limit()) return true;
    Buckets* pNew = Buckets::Create(pOld ? (pOld->m_mask + 1) * 2 : kInitialBuckets, pOld);
    if (!pNew) return false;
    if (pOld) pNew->TakeFrom(*pOld, m_places);
    m_pBuckets.store(pNew, std::memory_order_release);
    return true;
}

void NameIndex::Insert(const NameNode& node) {
    m_pBuckets.load(std::memory_order_relaxed)->Enter(m_places.PlaceOf(node), node.m_hash);
    m_count.store(GetCount() + 1, std::memory_order_relaxed);
}

/// Two lanes of 16 bytes each, and at last the final 32 bytes once more, overlapping what the loop has seen:
/// every length from 17 up ends in the same straight code.
LongNameKey::LongNameKey(const char* text, std::size_t length) : m_pText(text), m_length(length) {
    using namespace names_detail;
    std::uint64_t even = kMix[0] ^ length;
    std::uint64_t odd = kMix[1];
    const char* p = text;
    for (std::size_t left = length; left > 32; left -= 32, p += 32) {
        even = Fold(Load<std::uint64_t>(p) ^ even, Load<std::uint64_t>(p + 8) ^ kMix[2]);
        odd = Fold(Load<std::uint64_t>(p + 16) ^ odd, Load<std::uint64_t>(p + 24) ^ kMix[3]);
    }
    const char* tail = text + length - 16;
    const char* head = length >= 32 ? tail - 16 : text;
    even = Fold(Load<std::uint64_t>(head) ^ even, Load<std::uint64_t>(head + 8) ^ kMix[2]);
    odd = Fold(Load<std::uint64_t>(tail) ^ odd, Load<std::uint64_t>(tail + 8) ^ kMix[3]);
    m_hash = Fold(even ^ kMix[3], odd ^ kMix[0]);
}

std::uint64_t HashName(const char* text, std::size_t length) {
    return length <= ShortNameKey::kLongest ? ShortNameKey(text, length).Hash()
                                            : LongNameKey(text, length).Hash();
}

}  // namespace brenta
