// What stands behind a string table: pages, nodes carved from them, and the index that finds a text's node.
//
// Apart from CStringTable, because a class that is not exported can be reached without a detour, and a
// look-up is worth that.
#pragma once

#include <cstddef>
#include <string_view>

#include "brenta/names.h"
#include "foundation/name_index.h"
#include "os/lock.h"

namespace brenta {

class NameStore {
 public:
    /// `pageSize` in bytes; below 1 counts as 0.
    explicit NameStore(int pageSize);
    ~NameStore();
    NameStore(const NameStore&) = delete;
    NameStore& operator=(const NameStore&) = delete;

    /// The store of a table; null if there was no memory for it.
    static NameStore* Of(const CStringTable& table) { return table.m_pStore; }

    /// The name of a text that holds no NUL and is not empty. An absent one is entered; kNoName if there is
    /// no room, for want of pages after the forced crash. Any thread.
    STRID Intern(const char* text, std::size_t length) {
        const NameNode* pNode = m_index.Find(text, length);
        return pNode ? IdOf(*pNode) : InternNew(text, length);
    }

    /// The same for a text that may be empty and may hold a NUL, which then ends it early; nothing behind the
    /// NUL is read.
    STRID InternCounted(const char* text, std::size_t length);

    /// The same for a text that is readable up to its end: only one that is not found is searched for a NUL.
    STRID InternView(std::string_view text) {
        const NameNode* pNode = nullptr;
        if (text.size() > ShortNameKey::kLongest) {
            pNode = m_index.Find(text.data(), text.size());
        } else if (!text.empty()) {
            const ShortNameKey key(text.data(), text.size());
            if (!key.IsUnsafe()) pNode = m_index.Find(key);
        }
        return pNode ? IdOf(*pNode) : InternCounted(text.data(), text.size());
    }

    bool IsKnown(const char* text, std::size_t length) const { return m_index.Find(text, length) != nullptr; }

    os::Lock& GetLock() { return m_lock; }

    int GetPageCount() const;
    std::size_t GetNameCount() const { return m_index.GetCount(); }

 private:
    /// What came of the attempt to enter a name.
    enum class Outcome { Entered, PagesExhausted, NoMemory };

    static STRID IdOf(const NameNode& node) {
        return static_cast<STRID>(reinterpret_cast<std::uintptr_t>(node.Text()));
    }

    STRID InternNew(const char* text, std::size_t length);
    Outcome Enter(const char* text, std::size_t length, const NameNode*& pNode);
    Outcome NewString(const char* text, std::size_t length, NameNode*& pNode);
    Outcome NewPage(std::size_t size);

    NamePlaces m_places;
    NameIndex m_index{m_places};
    mutable os::Lock m_lock;  // guards everything but searches in the index
    const std::size_t m_pageSize;
    char* m_pCurrentPage = nullptr;
    std::size_t m_currentSize = 0;
    std::size_t m_used = 0;
};

}  // namespace brenta
