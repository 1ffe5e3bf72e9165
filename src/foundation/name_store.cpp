#include "foundation/name_store.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "brenta/failure.h"

namespace brenta {

namespace {

constexpr std::size_t kOversizeReserve = 100;
constexpr std::uintptr_t kExhaustedSite = 0x0504C003;

std::size_t NodeSize(std::size_t length, std::size_t granule) {
    return (sizeof(NameNode) + length + 1 + granule - 1) / granule * granule;
}

}  // namespace

NameStore::NameStore(int pageSize)
    : m_places(static_cast<std::size_t>(std::max(pageSize, 0))),
      m_pageSize(static_cast<std::size_t>(std::max(pageSize, 0))) {}

NameStore::~NameStore() {
    for (int page = 0; page < m_places.GetCount(); ++page)
        delete[] m_places.Page(page);
}

int NameStore::GetPageCount() const {
    os::LockGuard guard(m_lock);
    return m_places.GetCount();
}

// ---------------------------------------------------------------------------------------------------------------------
// Interning

STRID NameStore::InternCounted(const char* text, std::size_t length) {
    const void* pNul = length != 0 ? std::memchr(text, 0, length) : nullptr;
    if (pNul) length = static_cast<std::size_t>(static_cast<const char*>(pNul) - text);
    return length != 0 ? Intern(text, length) : kNoName;
}

STRID NameStore::InternNew(const char* text, std::size_t length) {
    const NameNode* pNode = nullptr;
    const Outcome outcome = Enter(text, length, pNode);
    if (outcome == Outcome::Entered) return IdOf(*pNode);
    // The handler of a forced crash may use the table: the lock is free again.
    if (outcome == Outcome::PagesExhausted) {
        ForcedCrash(kExhaustedSite, "StringTable", __LINE__, "Forced crash! \"String space exhausted.\"");
    }
    return kNoName;
}

/// Enters a text that a search without the lock did not find, unless another thread was faster.
NameStore::Outcome NameStore::Enter(const char* text, std::size_t length, const NameNode*& pNode) {
    os::LockGuard guard(m_lock);
    pNode = m_index.Find(text, length);
    if (pNode) return Outcome::Entered;
    if (!m_index.Reserve()) return Outcome::NoMemory;
    NameNode* pNew = nullptr;
    const Outcome outcome = NewString(text, length, pNew);
    if (outcome == Outcome::Entered) m_index.Insert(*pNew);
    pNode = pNew;
    return outcome;
}

// ---------------------------------------------------------------------------------------------------------------------
// Pages and nodes

/// Carves the node of a text. The word in which the text ends is cleared first: that terminates the text and
/// fills the word up with zeros.
NameStore::Outcome NameStore::NewString(const char* text, std::size_t length, NameNode*& pNode) {
    const std::size_t needed = NodeSize(length, m_places.Granule());
    if (m_currentSize - m_used <= needed || m_used >= m_places.Reach()) {
        const Outcome outcome = NewPage(needed > m_pageSize ? needed + kOversizeReserve : m_pageSize);
        if (outcome != Outcome::Entered) return outcome;
    }
    char* pMemory = m_pCurrentPage + m_used;
    m_used += needed;
    std::memset(pMemory + (sizeof(NameNode) + length) / 8 * 8, 0, 8);
    pNode = ::new (pMemory) NameNode{HashName(text, length), length};
    std::memcpy(pNode->Text(), text, length);
    return Outcome::Entered;
}

/// Opens a page; what is left of the former one is abandoned.
NameStore::Outcome NameStore::NewPage(std::size_t size) {
    if (m_places.GetCount() >= NamePlaces::kMaxPages) return Outcome::PagesExhausted;
    char* pPage = new (std::nothrow) char[size];
    if (!pPage) return Outcome::NoMemory;
    m_places.AddPage(pPage);
    m_pCurrentPage = pPage;
    m_currentSize = size;
    m_used = 0;
    return Outcome::Entered;
}

}  // namespace brenta
