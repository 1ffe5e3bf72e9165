// Which names need a cell, and which may live in registers.
//
// A name means its innermost binding, also in the functions that are called while it is bound. But most names
// of locals are never used that way: a name that no function of the engine uses without having declared it
// itself can be seen by nobody but the function that declared it, and so its value can lie in a register of
// that function, which is bound and released for nothing. The others - called functions, global variables,
// names that one function takes from its callers - live in their cells, everywhere.
//
// That leaves what looks names up while scripts run: texts that are executed, and hosts. For them the locals
// are put into their cells for a while (Machine::Show).
#pragma once

#include <vector>

#include "script/code/local_names.h"
#include "script/code/shapes.h"
#include "script/engine_state.h"

namespace brenta {

class NameUse {
 public:
    explicit NameUse(const EngineState& state, NameCells& cells) : m_state(state), m_cells(cells) {}

    /// Looks at a function that is about to run, which need not be the engine's, and at the functions and
    /// classes that the engine has got since the last time.
    void Update(const FuncSymbol& function);
    /// Whether a name that a register was given for has turned out to need its cell, and nothing has been
    /// done about it yet.
    bool HasChanged() const { return m_hasChanged; }
    void NoteChangeDone() { m_hasChanged = false; }

    bool NeedsCell(const NameCell& cell) const {
        if (!m_state.useRegisterLocals) return true;
        return cell.index < m_flags.size() && (m_flags[cell.index] & kFree) != 0;
    }
    /// Notes that code was made that has this name in a register.
    void NoteRegister(const NameCell& cell) { FlagsOf(cell) |= kInRegister; }

    /// Whether a function stays a tree, with all its names in cells: its statements nest very deep, or one of
    /// them is something that only C++ code can have built.
    static bool RunsAsTree(const FuncSymbol& function);

 private:
    enum Flag : std::uint8_t { kFree = 1, kInRegister = 2 };

    /// Whether a declaration is executed whenever what follows it in its scope is.
    enum class Certainty { Certain, Conditional };

    void Add(const FuncSymbol& function);
    void AddClass(const ClassSymbol& cls);
    void AddStatement(const Statement* statement, Certainty certainty);
    void AddLoop(const IterationStatement& loop, Certainty certainty);
    void AddDeclaration(const DeclarationStatement& declaration, Certainty certainty);
    void AddExpression(const ExpressionStatement* expression, Wanted wanted);
    void Declare(const NameCell& cell, Certainty certainty);
    void DeclareFree(const NameCell& cell);
    std::uint8_t& FlagsOf(const NameCell& cell);

    const EngineState& m_state;
    NameCells& m_cells;
    LocalNames m_locals;
    std::vector<std::uint8_t> m_flags;  // by the index of the cell
    std::size_t m_symbolsSeen = 0;
    bool m_isTree = false;  // what is looked at runs as a tree
    bool m_hasChanged = false;
};

}  // namespace brenta
