// What the engine needs of the symbols beyond their public face.
#pragma once

#include "brenta/symbols.h"
#include "script/name_cells.h"
#include "script/value.h"

namespace brenta {

/// A symbol's way to the table it was bound in last; the table empties it when it is destroyed.
struct TableLink {
    NameCells* cells = nullptr;
};

class SymbolAccess {
   public:
    /// The value that a new binding of `symbol` starts with: a function for a FuncSymbol, the initial value of
    /// other script symbols (converted once and then shared), null for a host's own kinds of symbol.
    static Value StartValue(CCoreSymbol& symbol);

    /// What a call of the function needs, prepared by the executor; null at first. The function deletes it
    /// with `destroy`.
    static FunctionPlan* Plan(const FuncSymbol& function) { return function.m_pPlan; }
    static void SetPlan(FuncSymbol& function, FunctionPlan* plan, void (*destroy)(FunctionPlan*));

    /// Tells a symbol which table it is bound in, so that its GetValue and SetValue find the binding. Needed
    /// only for symbols that are bound through NameCells directly and then shown to a host;
    /// CCoreSymbolTable does it in AddSymbol and in every look-up.
    static void Link(CCoreSymbol& symbol, const std::shared_ptr<TableLink>& link) {
        if (symbol.m_link != link) symbol.m_link = link;
    }
    static NameCells* Table(const CCoreSymbol& symbol) {
        return symbol.m_link != nullptr ? symbol.m_link->cells : nullptr;
    }
};

}  // namespace brenta
