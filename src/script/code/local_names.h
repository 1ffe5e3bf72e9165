// Which names a function has declared, at a point of its text.
#pragma once

#include <cstdint>
#include <vector>

#include "script/name_cells.h"

namespace brenta {

/// The declarations that are certain to have been executed at the point that a walk through a function has
/// reached, in the scopes that are open there. Each carries a number of the walker's, which Find gives back.
class LocalNames {
 public:
    static constexpr std::int64_t kNone = -1;

    void Open() { m_scopes.push_back(m_declared.size()); }
    void Close() {
        for (; m_declared.size() > m_scopes.back(); m_declared.pop_back())
            EntryOf(*m_declared.back().cell) = m_declared.back().outer;
        m_scopes.pop_back();
    }

    /// Closes all scopes, also those of a walk that has ended before its time.
    void Reset() {
        while (!m_scopes.empty())
            Close();
    }

    void Declare(const NameCell& cell, std::int64_t number) {
        Entry& entry = EntryOf(cell);
        m_declared.push_back({&cell, entry});
        entry = {number, m_scopes.size()};
    }
    /// The number of the innermost declaration; kNone when there is none.
    std::int64_t Find(const NameCell& cell) { return EntryOf(cell).number; }
    bool IsInTopScope(const NameCell& cell) { return EntryOf(cell).scope == m_scopes.size(); }

 private:
    struct Entry {
        std::int64_t number = kNone;
        std::size_t scope = 0;
    };
    struct Declared {
        const NameCell* cell;
        Entry outer;
    };

    Entry& EntryOf(const NameCell& cell) {
        if (cell.index >= m_entries.size()) m_entries.resize(cell.index + std::size_t{64});
        return m_entries[cell.index];
    }

    std::vector<Entry> m_entries;  // by the index of the cell
    std::vector<Declared> m_declared;
    std::vector<std::size_t> m_scopes;
};

}  // namespace brenta
