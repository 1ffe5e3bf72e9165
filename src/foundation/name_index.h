// The index of a string table: from a text to the one node that holds it.
//
// A growing open-addressing table of buckets, one cache line each: up to twelve one-byte tags and the places
// of twelve nodes, each in 32 bits (NamePlaces), since the lines are what a look-up waits for. A search
// compares eight tags at once and reads a node only where the tag agrees, so a hit costs one line of the
// index and one node, and a miss almost never touches a node. A full bucket overflows into its twin, with
// which it shares a pair of lines, and then into the pairs behind; nothing is ever taken out, so the first
// bucket with a free lane ends a search.
//
// Readers take no lock. A writer stores the node, complete, in the next free lane and then publishes the
// lane's tag with release; a bucket changes in no other way, and nodes never change or move. A reader that
// misses a name being entered, or walks an array just outgrown, at worst finds nothing, and then asks again
// under the lock. Outgrown arrays may have readers at any time, so they are kept until the index is
// destroyed: each is half the size of the next, so all of them together take no more than the current one.
//
// Writers hold the table's lock. Growth re-enters the nodes by the hash stored in them; texts are not read
// again.
//
// What every look-up runs through stands here, inline.
#pragma once

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace brenta {

/// One interned text: two words, then the text and its terminator, filled up with zeros to a multiple of 8
/// bytes. The identifier is the address of the text.
struct NameNode {
    std::uint64_t m_hash;
    std::size_t m_length;

    char* Text() { return reinterpret_cast<char*>(this + 1); }
    const char* Text() const { return reinterpret_cast<const char*>(this + 1); }
};

/// Where a table's nodes are: in which of its pages, and how far from the page's start, both in 32 bits.
/// Pages are added under the table's lock, each before any node in it is entered.
class NamePlaces {
 public:
    static constexpr int kMaxPages = 1500;

    /// For pages of `pageSize` bytes.
    explicit NamePlaces(std::size_t pageSize);

    /// The distance of a node from the start of its page is less than this. A text that is longer than a page
    /// has one to itself, where others may follow it as long as they are within reach.
    std::size_t Reach() const { return std::size_t{1} << (kOffsetBits + m_granuleBits); }
    /// What it is a multiple of.
    std::size_t Granule() const { return std::size_t{1} << m_granuleBits; }

    void AddPage(char* pPage) { m_pages[m_count++] = pPage; }
    int GetCount() const { return m_count; }
    char* Page(int page) const { return m_pages[page]; }

    /// The place, never 0, of a node in the page added last.
    std::uint32_t PlaceOf(const NameNode& node) const {
        const auto offset = reinterpret_cast<const char*>(&node) - m_pages[m_count - 1];
        const auto page = static_cast<std::uint32_t>(m_count - 1);
        return (page << kOffsetBits | static_cast<std::uint32_t>(offset >> m_granuleBits)) + 1;
    }
    const NameNode* NodeAt(std::uint32_t place) const {
        const std::size_t offset = (place - 1) % (1u << kOffsetBits);
        const char* pNode = m_pages[(place - 1) >> kOffsetBits] + (offset << m_granuleBits);
        return reinterpret_cast<const NameNode*>(pNode);
    }

 private:
    static constexpr int kOffsetBits = 21;
    static_assert(kMaxPages < 1 << (32 - kOffsetBits));

    int m_granuleBits;
    int m_count = 0;
    char* m_pages[kMaxPages] = {};
};

/// A text of 1 to 16 bytes on its way through the index, as two words that contain all of it: comparing it
/// with a node means comparing them.
class ShortNameKey {
 public:
    static constexpr std::size_t kLongest = 16;

    ShortNameKey(const char* text, std::size_t length);

    std::uint64_t Hash() const;
    bool Equals(const NameNode& node) const;
    /// Whether a comparison could read beyond the node, because there is a NUL among 8 bytes or more.
    bool IsUnsafe() const;

 private:
    std::size_t m_length;
    std::uint64_t m_first;
    std::uint64_t m_last;
};

/// A longer text.
class LongNameKey {
 public:
    LongNameKey(const char* text, std::size_t length);

    std::uint64_t Hash() const { return m_hash; }
    bool Equals(const NameNode& node) const {
        return node.m_length == m_length && std::memcmp(node.Text(), m_pText, m_length) == 0;
    }

 private:
    const char* m_pText;
    std::size_t m_length;
    std::uint64_t m_hash;
};

/// The hash of a text of at least one byte.
std::uint64_t HashName(const char* text, std::size_t length);

class NameIndex {
    struct Buckets;

 public:
    explicit NameIndex(const NamePlaces& places) : m_places(places) {}
    ~NameIndex();
    NameIndex(const NameIndex&) = delete;
    NameIndex& operator=(const NameIndex&) = delete;

    /// The node of a text of at least one byte, or null. Any thread; the answer null is certain only under
    /// the table's lock.
    const NameNode* Find(const char* text, std::size_t length) const {
        return length <= ShortNameKey::kLongest ? Find(ShortNameKey(text, length)) : FindLong(text, length);
    }

    template <class TKey>
    const NameNode* Find(const TKey& key) const;

    /// Makes room for one more node; false, with nothing changed, if memory is exhausted. Under the lock.
    bool Reserve();

    /// Enters a complete node, in the page added last, whose text is absent and for which there is room.
    /// Under the lock.
    void Insert(const NameNode& node);

    std::size_t GetCount() const { return m_count.load(std::memory_order_relaxed); }

 private:
    static constexpr std::size_t kLanes = 12;
    static constexpr std::size_t kFirstLanes = 8;
    static constexpr std::uint64_t kEveryLane = 0x0101010101010101ull;

    /// One cache line. Tags are 1 to 255, 0 marks a free lane; lanes fill from the first.
    struct alignas(64) Bucket {
        std::atomic<std::uint64_t> m_tags;      // of the first lanes
        std::atomic<std::uint32_t> m_moreTags;  // of the others
        std::uint32_t m_unused;
        std::atomic<std::uint32_t> m_nodes[kLanes];

        static std::uint64_t TagOf(std::uint64_t hash) { return (hash & 0xFF) + ((hash & 0xFF) == 0); }
        static std::uint64_t LanesWith(std::uint64_t tags, std::uint64_t tag);
        static bool HasMore(std::uint64_t tags) { return tags >> 56 != 0; }
        static bool IsFull(std::uint32_t moreTags) { return moreTags >> 24 != 0; }
        /// Adds a node; false if there is no free lane.
        bool Add(std::uint32_t place, std::uint64_t tag);
    };

    /// One array of buckets; they follow this record. The home of a hash is made of its top bits, the tag of
    /// its low ones, so the two are independent.
    struct alignas(64) Buckets {
        void* m_pMemory;
        Buckets* m_pOlder;
        std::size_t m_mask;
        int m_shift;

        const Bucket& At(std::size_t bucket) const {
            return reinterpret_cast<const Bucket*>(this + 1)[bucket];
        }
        Bucket& At(std::size_t bucket) { return reinterpret_cast<Bucket*>(this + 1)[bucket]; }
        std::size_t Home(std::uint64_t hash) const { return static_cast<std::size_t>(hash >> m_shift); }
        std::size_t Limit() const { return (m_mask + 1) * kLanes / 8 * 7; }

        /// The bucket to search when `number` is full: its twin, then the next pair in the same order.
        std::size_t Next(std::size_t number, std::size_t home) const {
            const std::size_t twin = number ^ 1;
            return ((number ^ home) & 1) == 0 ? twin : (twin + 2) & m_mask;
        }

        static Buckets* Create(std::size_t count, Buckets* pOlder);
        void Enter(std::uint32_t place, std::uint64_t hash);
        void TakeFrom(const Buckets& older, const NamePlaces& places);
    };

    const NameNode* FindLong(const char* text, std::size_t length) const;
    template <class TKey>
    const NameNode* FindAmong(const std::atomic<std::uint32_t>* pNodes, std::uint64_t lanes,
                              const TKey& key) const;

    const NamePlaces& m_places;

    std::atomic<Buckets*> m_pBuckets{nullptr};
    std::atomic<std::size_t> m_count{0};
};

// ---------------------------------------------------------------------------------------------------------------------
// Hashing and comparing

namespace names_detail {

__extension__ typedef unsigned __int128 Product;

template <typename TWord>
inline std::uint64_t Load(const char* p) {
    TWord word;
    std::memcpy(&word, p, sizeof(word));
    return word;
}

/// Multiplies two words and folds the 128-bit product: every bit of either word reaches the result at both
/// ends.
inline std::uint64_t Fold(std::uint64_t a, std::uint64_t b) {
    const Product product = static_cast<Product>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

// Odd words with about as many ones as zeros, and no pattern that text has.
inline constexpr std::uint64_t kMix[4] = {0x9D3C6FA7B1E8524Dull, 0xC6A1F58B2E97D063ull, 0x5BE3D6094FC8A17Bull,
                                          0xE7194AD36C52B8F5ull};

/// A text of 1 to 7 bytes as one word, zeros behind it: the very word with which its node's text begins. The
/// loads overlap where needed and never leave the text.
inline std::uint64_t LoadShort(const char* p, std::size_t length) {
    if (length >= 4) return Load<std::uint32_t>(p) | Load<std::uint32_t>(p + length - 4) << (length - 4) * 8;
    return Load<std::uint8_t>(p) | Load<std::uint8_t>(p + length / 2) << length / 2 * 8 |
           Load<std::uint8_t>(p + length - 1) << (length - 1) * 8;
}

}  // namespace names_detail

inline ShortNameKey::ShortNameKey(const char* text, std::size_t length) : m_length(length) {
    using namespace names_detail;
    if (length >= 8) {
        m_first = Load<std::uint64_t>(text);
        m_last = Load<std::uint64_t>(text + length - 8);
    } else {
        m_first = m_last = LoadShort(text, length);
    }
}

inline std::uint64_t ShortNameKey::Hash() const {
    using namespace names_detail;
    return Fold(m_first ^ kMix[0], m_last + (m_length << 56 ^ kMix[1]));
}

/// Does without the node's length, and so without the node's first cache line: in a key without NUL, each
/// comparison that succeeds vouches for the bytes that the next one reads, and the terminator settles the
/// length.
inline bool ShortNameKey::Equals(const NameNode& node) const {
    using names_detail::Load;
    const char* text = node.Text();
    const std::size_t last = m_length >= 8 ? m_length - 8 : 0;
    return Load<std::uint64_t>(text) == m_first && Load<std::uint64_t>(text + last) == m_last &&
           text[m_length] == 0;
}

inline bool ShortNameKey::IsUnsafe() const {
    constexpr std::uint64_t kOnes = 0x0101010101010101ull;
    const std::uint64_t zeros = ((m_first - kOnes) & ~m_first) | ((m_last - kOnes) & ~m_last);
    return m_length >= 8 && (zeros & kOnes << 7) != 0;
}

// ---------------------------------------------------------------------------------------------------------------------
// Searching

/// A bit in the byte of every lane whose tag equals `tag`. A lane above such a one may be marked wrongly,
/// even a free one, if it differs in its lowest bit alone: one more comparison, no wrong answer. As the free
/// one may just be receiving its node, nodes are published with release themselves.
inline std::uint64_t NameIndex::Bucket::LanesWith(std::uint64_t tags, std::uint64_t tag) {
    const std::uint64_t differing = tags ^ kEveryLane * tag;
    return (differing - kEveryLane) & ~differing & kEveryLane << 7;
}

/// The node of the key among those in the marked lanes.
template <class TKey>
inline const NameNode* NameIndex::FindAmong(const std::atomic<std::uint32_t>* pNodes, std::uint64_t lanes,
                                            const TKey& key) const {
    for (; lanes != 0; lanes &= lanes - 1) {
        const std::uint32_t place = pNodes[std::countr_zero(lanes) / 8].load(std::memory_order_acquire);
        if (place == 0) continue;
        const NameNode* pNode = m_places.NodeAt(place);
        if (key.Equals(*pNode)) return pNode;
    }
    return nullptr;
}

template <class TKey>
inline const NameNode* NameIndex::Find(const TKey& key) const {
    const Buckets* pBuckets = m_pBuckets.load(std::memory_order_acquire);
    if (!pBuckets) return nullptr;
    const std::uint64_t hash = key.Hash();
    const std::uint64_t tag = Bucket::TagOf(hash);
    const std::size_t home = pBuckets->Home(hash);
    for (std::size_t number = home;; number = pBuckets->Next(number, home)) {
        const Bucket& bucket = pBuckets->At(number);
        const std::uint64_t tags = bucket.m_tags.load(std::memory_order_acquire);
        if (const NameNode* pNode = FindAmong(bucket.m_nodes, Bucket::LanesWith(tags, tag), key))
            return pNode;
        if (!Bucket::HasMore(tags)) return nullptr;
        const std::uint32_t more = bucket.m_moreTags.load(std::memory_order_acquire);
        // The upper half of the word stands for no lanes.
        const auto lanes = static_cast<std::uint32_t>(Bucket::LanesWith(more, tag));
        if (const NameNode* pNode = FindAmong(bucket.m_nodes + kFirstLanes, lanes, key)) return pNode;
        if (!Bucket::IsFull(more)) return nullptr;
    }
}

}  // namespace brenta
