// Shallow binding: one cell per name and table holds the name's current value; scopes are marks on one undo
// log.
//
// Binding a name pushes what the cell held onto the log and writes the new value into the cell; leaving a
// scope rolls the log back to the scope's mark. So a look-up is one load at an address known at parse time,
// "is it in the top scope" is a comparison of depths, and recursion gives every activation its own parameters
// and locals for free. There is one truth for host and engine: CCoreSymbolTable is a face of this class.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
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
    STRID NameOf(const NameCell& cell) const;

    void PushScope();
    /// Rolls back to the top scope's mark. On an empty stack: "Assertion failed! m_pHead", nothing changes.
    void PopScope();
    int Depth() const;
    /// Pops scopes until `depth` are left.
    void PopTo(int depth);

    /// Binds `cell` in the top scope.
    void Bind(NameCell& cell, CCoreSymbol* symbol, Value value);
    /// Binds in the global scope even when inner scopes are open; inner bindings of the name stay in front.
    void BindGlobal(NameCell& cell, CCoreSymbol* symbol, Value value);
    bool IsInTopScope(const NameCell& cell) const { return cell.depth == m_depth && cell.symbol != nullptr; }

    /// The symbols of the top scope in the order added.
    void TopSymbols(TOrderedList<CCoreSymbol*>& out) const;
    /// Unbinds what was bound in the top scope after position `mark` of the log, keeping the scope.
    std::size_t Mark() const;
    void RollBackTo(std::size_t mark);
    /// The value that `symbol` holds in its innermost binding, null when it is not bound.
    Value* ValueOf(const CCoreSymbol& symbol);

 private:
    struct Entry;  // one undo record: cell and what it held
    struct Index;  // names to cells

    std::uint32_t m_depth = 0;
    std::vector<std::size_t> m_marks;
    std::vector<Entry> m_log;
    std::unique_ptr<Index> m_pIndex;
};

}  // namespace brenta
