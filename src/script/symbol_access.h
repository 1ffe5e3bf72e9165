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
    /// The value that a new binding of `symbol` starts with: a function for a FuncSymbol, the initial value
    /// of other script symbols (converted once and then shared), null for a host's own kinds of symbol.
    static Value StartValue(CCoreSymbol& symbol);

    /// A new object of a class; a copy of the one the class keeps, so it costs nothing until it is changed,
    /// and all objects of a class share their members' names.
    static const Value& Instance(const ClassSymbol& cls);

    /// The table that the names in a function were looked up in when it was parsed; for a function that was
    /// not parsed, the one it was bound in last. Null if there is none.
    static const NameCells* Home(const FuncSymbol& function) {
        return function.m_pHome != nullptr ? function.m_pHome : Table(function);
    }
    static void SetHome(FuncSymbol& function, const NameCells& cells) { function.m_pHome = &cells; }

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
    /// The declared value of a member, with the name under which it stands in an object.
    static const Value& InitialValue(const ScriptSymbol& symbol);
    static STRID MemberName(const ScriptSymbol& symbol);
    /// Appends the value of a new member to a class's own value, bound or not.
    static void AppendMemberValue(ClassSymbol& cls, ScriptSymbol& member);
    /// Objects that classes keep were made before something they are made of changed.
    static void NoteClassChange();

    /// The table a symbol was bound in last, null when there is none or it is gone.
    static NameCells* Table(const CCoreSymbol& symbol) {
        return symbol.m_link != nullptr ? symbol.m_link->cells : nullptr;
    }
};

}  // namespace brenta
