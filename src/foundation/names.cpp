#include "brenta/names.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

#include "brenta/failure.h"
#include "foundation/characters.h"
#include "foundation/intern.h"
#include "foundation/library_statics.h"
#include "foundation/name_index.h"
#include "foundation/text_compare.h"
#include "os/lock.h"

namespace brenta {

namespace {

constexpr int kMaxPages = 1500;
constexpr std::size_t kOversizeReserve = 100;
constexpr std::uintptr_t kExhaustedSite = 0x0504C003;

STRID IdOf(const NameNode* pNode) {
    return pNode ? static_cast<STRID>(reinterpret_cast<std::uintptr_t>(pNode->Text())) : kNoName;
}

std::size_t NodeSize(std::size_t length) {
    return (sizeof(NameNode) + length + 1 + 7) / 8 * 8;
}

/// The length of a text that ends at its first NUL or after `limit` bytes; nothing behind either is read.
std::size_t BoundedLength(const char* text, std::size_t limit) {
    const void* pNul = std::memchr(text, 0, limit);
    return pNul ? static_cast<std::size_t>(static_cast<const char*>(pNul) - text) : limit;
}

/// What came of the attempt to enter a name.
enum class Outcome { Entered, PagesExhausted, NoMemory };

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// Pages and nodes

struct CStringTable::Contents {
    explicit Contents(int pageSize) : m_pageSize(static_cast<std::size_t>(std::max(pageSize, 0))) {}
    ~Contents();

    Outcome NewPage(std::size_t size);
    Outcome NewString(const NameKey& key, NameNode*& pNode);
    Outcome InternNew(const NameKey& key, NameIndex::Probe probe, const NameNode*& pNode);

    os::Lock m_lock;  // guards everything but searches in the index
    NameIndex m_index;
    const std::size_t m_pageSize;
    int m_pageCount = 0;
    char* m_pages[kMaxPages] = {};
    char* m_pCurrentPage = nullptr;
    std::size_t m_currentSize = 0;
    std::size_t m_used = 0;
};

CStringTable::Contents::~Contents() {
    for (int page = 0; page < m_pageCount; ++page)
        delete[] m_pages[page];
}

/// Opens a page; what is left of the former one is abandoned.
Outcome CStringTable::Contents::NewPage(std::size_t size) {
    if (m_pageCount >= kMaxPages) return Outcome::PagesExhausted;
    char* pPage = new (std::nothrow) char[size];
    if (!pPage) return Outcome::NoMemory;
    m_pages[m_pageCount++] = pPage;
    m_pCurrentPage = pPage;
    m_currentSize = size;
    m_used = 0;
    return Outcome::Entered;
}

/// Carves the node of a text. Its last word is cleared first: that terminates the text and fills the node up
/// with zeros.
Outcome CStringTable::Contents::NewString(const NameKey& key, NameNode*& pNode) {
    const std::size_t needed = NodeSize(key.Length());
    if (m_currentSize - m_used <= needed) {
        const Outcome outcome = NewPage(needed > m_pageSize ? needed + kOversizeReserve : m_pageSize);
        if (outcome != Outcome::Entered) return outcome;
    }
    char* pMemory = m_pCurrentPage + m_used;
    m_used += needed;
    std::memset(pMemory + needed - 8, 0, 8);
    pNode = ::new (pMemory) NameNode{key.Hash(), key.Length()};
    std::memcpy(pNode->Text(), key.Text(), key.Length());
    return Outcome::Entered;
}

/// Enters a text that a search without the lock did not find, unless another thread was faster.
Outcome CStringTable::Contents::InternNew(const NameKey& key, NameIndex::Probe probe,
                                          const NameNode*& pNode) {
    os::LockGuard guard(m_lock);
    pNode = m_index.Find(key, probe);
    if (pNode) return Outcome::Entered;
    if (!m_index.Reserve()) return Outcome::NoMemory;
    NameNode* pNew = nullptr;
    const Outcome outcome = NewString(key, pNew);
    if (outcome == Outcome::Entered) m_index.Insert(*pNew, probe);
    pNode = pNew;
    return outcome;
}

// ---------------------------------------------------------------------------------------------------------------------
// The table

CStringTable::CStringTable(const char* name, int pageSize)
    : m_name(), m_pContents(new (std::nothrow) Contents(pageSize)) {
    if (name) std::memcpy(m_name, name, BoundedLength(name, sizeof(m_name) - 1));
}

CStringTable::~CStringTable() {
    delete m_pContents;
}

STRID CStringTable::StrId(const char* text) {
    return text ? Intern(text, std::strlen(text)) : kNoName;
}

STRID CStringTable::StrId(const char* text, unsigned int length) {
    return text ? Intern(text, BoundedLength(text, length)) : kNoName;
}

STRID CStringTable::Intern(const char* text, std::size_t length) {
    if (length == 0 || !m_pContents) return kNoName;
    const NameKey key(text, length);
    NameIndex::Probe probe;
    const NameNode* pNode = m_pContents->m_index.Find(key, probe);
    if (pNode) return IdOf(pNode);

    // No text of the table holds a NUL, so only a text that was not found needs to be searched for one.
    const std::size_t bounded = BoundedLength(text, length);
    if (bounded < length) return Intern(text, bounded);

    // The handler of a forced crash may use the table, so the crash is raised with the lock released.
    if (m_pContents->InternNew(key, probe, pNode) == Outcome::PagesExhausted) {
        ForcedCrash(kExhaustedSite, "StringTable", __LINE__, "Forced crash! \"String space exhausted.\"");
    }
    return IdOf(pNode);
}

bool CStringTable::IsId(const char* text) const {
    if (!text || *text == 0 || !m_pContents) return false;
    NameIndex::Probe probe;
    return m_pContents->m_index.Find(NameKey(text, std::strlen(text)), probe) != nullptr;
}

int CStringTable::GetPageCount() const {
    if (!m_pContents) return 0;
    os::LockGuard guard(m_pContents->m_lock);
    return m_pContents->m_pageCount;
}

std::size_t CStringTable::GetNameCount() const {
    return m_pContents ? m_pContents->m_index.GetCount() : 0;
}

// ---------------------------------------------------------------------------------------------------------------------
// The global table

STRID StrId(const char* text) {
    return GlobalStrings().StrId(text);
}

STRID StrId(const char* text, unsigned int length) {
    return GlobalStrings().StrId(text, length);
}

STRID InternName(std::string_view text) {
    return GlobalStrings().Intern(text.data(), text.size());
}

bool StrPresent(const char* text) {
    return GlobalStrings().IsId(text);
}

int StrIdICmp(STRID first, STRID second) {
    return first == second ? 0 : CompareIgnoringCase(StrPtr(first), StrPtr(second));
}

bool IsStrIdUpper(STRID id) {
    const char* text = StrPtr(id);
    while (*text != 0 && !IsLower(*text))
        ++text;
    return *text == 0;
}

// ---------------------------------------------------------------------------------------------------------------------
// Keys

namespace {

/// 256 words of a fixed pseudo-random sequence (a Weyl sequence, scrambled), for the codes -128 to 127 in
/// this order. Keys may be stored by hosts, so the words must never change.
constexpr std::array<std::uint32_t, 256> MakeKeyTable() {
    std::array<std::uint32_t, 256> table{};
    std::uint64_t state = 0x2545F4914F6CDD1Dull;
    for (std::uint32_t& word : table) {
        state += 0x9E3779B97F4A7C15ull;
        std::uint64_t mixed = (state ^ state >> 29) * 0xBF58476D1CE4E5B9ull;
        mixed = (mixed ^ mixed >> 32) * 0x94D049BB133111EBull;
        word = static_cast<std::uint32_t>(mixed >> 32);
    }
    return table;
}

constexpr std::array<std::uint32_t, 256> kKeyTable = MakeKeyTable();

std::uint32_t KeyWord(char c) {
    return kKeyTable[static_cast<std::size_t>(static_cast<signed char>(c) + 128)];
}

}  // namespace

int StringKey(const char* text) {
    if (!text) return 0;
    std::uint32_t sum = 0;
    for (; *text != 0; ++text)
        sum += KeyWord(*text) + static_cast<std::uint32_t>(static_cast<signed char>(*text));
    return static_cast<int>(sum & 0x7FFFFFFFu);
}

int StringKey(const char* text, unsigned int length) {
    if (!text) return 0;
    std::uint32_t even = 0;
    std::uint32_t odd = 0;
    for (unsigned int pair = 0; pair + 1 < length; pair += 2) {
        even += KeyWord(text[pair]);
        odd += KeyWord(text[pair + 1]);
    }
    const std::uint32_t last = length % 2 != 0 ? KeyWord(text[length - 1]) : 0;
    const std::uint32_t sum = even + odd + last;
    return static_cast<int>(static_cast<std::int32_t>(sum) < 0 ? 0u - sum : sum);
}

}  // namespace brenta
