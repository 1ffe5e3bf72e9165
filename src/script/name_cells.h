// Shallow binding: one cell per name and table holds the name's current value; scopes are marks on one undo
// log.
//
// Binding a name pushes what the cell held onto the log and writes the new value into the cell; leaving a
// scope rolls the log back to the scope's mark. So a look-up is one load at an address known at parse time,
// "is it in the top scope" is a comparison of depths, and recursion gives every activation its own parameters
// and locals for free. There is one truth for host and engine: CCoreSymbolTable is a face of this class.
//
// A log entry is 32 bytes: it names the cell by its index, not its address, which leaves room for the depth
// in the same word, and it does not say what was bound - that is in the cell, or in the next entry for the
// same cell, when somebody asks (TopSymbols, ValueOf), which only hosts and dumps do.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "brenta/symbols.h"
#include "script/value.h"

namespace brenta {

/// The current binding of a name. The address is stable for the table's life.
struct NameCell {
    Value value = Value::Undefined();
    CCoreSymbol* symbol = nullptr;  ///< null: the name is not bound
    std::uint32_t depth = 0;        ///< scope depth of the binding, 1 = global; 0: not bound
    std::uint32_t index = 0;        ///< place in the table; NameCells::NameOf
};

class NameCells {
 public:
    NameCells();
    ~NameCells();
    NameCells(const NameCells&) = delete;
    NameCells& operator=(const NameCells&) = delete;

    /// The cell of a name, made on first use.
    NameCell& CellOf(STRID name);
    /// The cell of a name if it has one, else null.
    NameCell* FindCell(STRID name) const;
    STRID NameOf(const NameCell& cell) const { return m_names[cell.index]; }
    std::size_t CellCount() const { return m_names.size(); }
    NameCell& CellAt(std::uint32_t index) const { return m_chunks[index / kChunkSize][index % kChunkSize]; }

    void PushScope() {
        m_marks.push_back(m_logSize);
        ++m_depth;
    }
    /// Rolls back to the top scope's mark. On an empty stack: "Assertion failed! m_pHead", nothing changes.
    void PopScope() {
        if (m_depth <= 1) return PopGlobalScope();
        RollBackTo(m_marks.back());
        m_marks.pop_back();
        --m_depth;
    }
    int Depth() const { return static_cast<int>(m_depth); }
    /// Pops scopes until `depth` are left.
    void PopTo(int depth) {
        while (Depth() > depth && m_depth > 0)
            PopScope();
    }

    /// Binds `cell` in the top scope; a binding that the name has there is replaced until the scope ends.
    /// There must be a scope.
    void Bind(NameCell& cell, CCoreSymbol* symbol, Value value) {
        if (m_logSize == m_logCapacity) GrowLog(m_logSize + 1);
        new (&m_pLog[m_logSize++]) Entry{std::move(cell.value), cell.symbol, cell.index, cell.depth};
        cell.value = std::move(value);
        cell.symbol = symbol;
        cell.depth = m_depth;
    }
    /// Binds in the global scope even when inner scopes are open; inner bindings of the name stay in front.
    /// Marks taken before stay good.
    void BindGlobal(NameCell& cell, CCoreSymbol* symbol, Value value);
    /// Whether the name is bound in the global scope, in front or behind inner bindings.
    bool IsGlobal(const NameCell& cell) const;
    bool IsInTopScope(const NameCell& cell) const { return cell.depth == m_depth && cell.symbol != nullptr; }

    /// Whether any binding that there is, in front or not, is of that symbol.
    bool IsBound(const CCoreSymbol& symbol) const;

    /// The symbols of the top scope in the order added.
    void TopSymbols(TOrderedList<CCoreSymbol*>& out) const;
    std::size_t Mark() const { return m_logSize; }
    /// Unbinds what was bound in the top scope after position `mark` of the log, keeping the scope.
    void RollBackTo(std::size_t mark) {
        while (m_logSize > mark)
            Undo(m_pLog[--m_logSize]);
    }
    /// Undoes the newest binding.
    void UndoLast() { Undo(m_pLog[--m_logSize]); }

    /// Scopes that are taken off, with their bindings, to be opened again. Those taken last come first.
    class Taken {
     public:
        /// Makes room for what the innermost `scopes` scopes of `cells` hold.
        void Reserve(const NameCells& cells, std::size_t scopes);
        bool IsEmpty() const { return m_loose.empty(); }

     private:
        friend class NameCells;
        struct Loose {
            NameCell* cell;  ///< null: a scope begins
            CCoreSymbol* symbol;
            Value value;
        };
        std::vector<Loose> m_loose;
    };
    /// Takes the top scope off. Waits for no memory if there is room in `taken`.
    void TakeScope(Taken& taken);
    /// Opens the scope taken last. Waits for no memory if as many scopes and bindings were there before.
    void PutScope(Taken& taken);
    /// So many more bindings and scopes can be made without waiting for memory.
    void Reserve(std::size_t bindings, std::size_t scopes);

    /// Names may be bound elsewhere than in their cells, by somebody who can put them there. Whoever looks
    /// names up for a host asks for it first.
    class Hidden {
     public:
        virtual void Show() = 0;

     protected:
        ~Hidden() = default;
    };
    void SetHidden(Hidden* hidden) { m_pHidden = hidden; }
    void ShowHidden() const {
        if (m_pHidden != nullptr) m_pHidden->Show();
    }

    /// The value that `symbol` holds in its innermost binding, null when it is not bound.
    Value* ValueOf(const CCoreSymbol& symbol);

    /// Binds in this table's global scope what the other one has bound in its own, in the same order. The
    /// values are copied through, so that the two tables may be used by different threads.
    void CopyGlobals(const NameCells& other);

 private:
    static constexpr std::uint32_t kChunkSize = 128;

    /// What a cell held before a binding.
    struct Entry {
        Value value;
        CCoreSymbol* symbol;
        std::uint32_t cell;
        std::uint32_t depth;
    };
    static_assert(sizeof(Entry) == 32);

    /// One slot of the index of names (open addressing); one without cell is free.
    struct Slot {
        STRID name = kNoName;
        NameCell* cell = nullptr;
    };

    /// What a log entry bound: the symbol and its value, wherever they are now.
    struct Binding {
        CCoreSymbol* symbol;
        Value* value;
        std::uint32_t cell;
        std::uint32_t depth;
    };

    void Undo(Entry& entry) {
        NameCell& cell = CellAt(entry.cell);
        cell.value = std::move(entry.value);
        cell.symbol = entry.symbol;
        cell.depth = entry.depth;
    }
    /// What the log entries from `first` to before `last` bound, oldest first; then, if asked for, what was
    /// bound late in the global scope. `first` 0 if so.
    std::vector<Binding> BindingsFrom(std::size_t first, std::size_t last, bool withLate) const;
    void PopGlobalScope();
    void GrowLog(std::size_t needed);
    void GrowIndex();
    std::size_t SlotOf(STRID name) const;
    NameCell& AddCell(STRID name);

    std::uint32_t m_depth = 0;
    std::vector<std::size_t> m_marks;
    Entry* m_pLog = nullptr;
    std::size_t m_logSize = 0;
    std::size_t m_logCapacity = 0;
    std::vector<std::unique_ptr<NameCell[]>> m_chunks;
    std::vector<STRID> m_names;  // by cell index
    std::vector<Slot> m_slots;   // a power of two of them
    Hidden* m_pHidden = nullptr;
    std::vector<std::uint32_t> m_late;  // cells bound by BindGlobal under open scopes, in order
};

}  // namespace brenta
