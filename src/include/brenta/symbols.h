/// @file
/// Script symbols - variables, functions, classes - and the table of nested scopes that holds them.
///
/// A script engine is a symbol table (CCoreScriptEngine derives from CCoreSymbolTable), so this is how a host
/// looks at what a script has defined, and how it adds names of its own. The classes can also be used without
/// an engine.
///
///     CCoreSymbolTable table;
///     ScriptSymbol grid(StrId("grid"), Var(250000, StrId("grid")), nullptr);
///     table.AddSymbol(StrId("grid"), &grid);
///     table.PushScope();
///     table.GetSymbol(StrId("grid"), true);          // null: the top scope has no such name
///     table.GetSymbol(StrId("grid"), false);         // &grid, from the scope beneath
///
/// Symbols and bindings. A symbol is what was declared: a name, a class perhaps, and the value that it starts
/// with. A *binding* is a symbol that has been added to a scope, together with its current value. One symbol
/// may be bound several times at once - each active call of a recursive function binds the function's
/// parameters anew - and each binding has a value of its own; when a scope is popped, its bindings end and
/// what was bound before shows again. ScriptSymbol::GetValue and SetValue work on the innermost binding.
///
/// Ownership. A table never owns the symbols that are added to it: popping a scope, or destroying the table,
/// deletes none. The engine owns those that its parser makes. What a module declares lives as long as the
/// engine. What the text of a command or of `execute` declares goes when that text has run, unless it is
/// still bound then: a command's global variables stay, as long as the engine, and the variables of blocks go
/// - do not keep pointers to these. A symbol that a host adds stays the host's and must stay alive while it
/// is bound. A symbol may outlive its table;
/// it then has its initial value again. Functions own their parameters and body, classes their members'
/// declarations and their functions.
///
/// Cost. Looking a name up takes constant time, whatever the number of scopes; so do adding and pushing.
/// Popping takes time in proportion to what the scope had bound. GetValue copies the current value out of the
/// table's own representation, which for a list means all its elements.
///
/// Threads. A table, and the symbols bound in it, are used by one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "brenta/containers.h"
#include "brenta/detail/class_name.h"
#include "brenta/export.h"
#include "brenta/heap.h"
#include "brenta/message_stream.h"
#include "brenta/names.h"
#include "brenta/var.h"

namespace brenta {

class ClassSymbol;
class CompoundStatement;
class DeclarationStatement;
class DumpFormatter;
class NameCells;      // internal: the current binding of every name
struct NameCell;      // internal
struct FunctionPlan;  // internal: what a call needs, prepared once
struct ScriptToken;   // a token of the script lexer (brenta/lexer.h)
struct TableLink;     // internal: a symbol's way to the table it was bound in
class Value;          // internal: the engine's own value

// ---------------------------------------------------------------------------------------------------------
// CCoreSymbol

/// What a symbol is; tells the classes below apart without asking for run-time types.
enum class SymbolKind : std::uint8_t {
    Other,     ///< a host's own class derived from CCoreSymbol
    Variable,  ///< ScriptSymbol
    Function,  ///< FuncSymbol
    Class,     ///< ClassSymbol
};

/// A name that can stand in a scope: the base of all symbols.
///
/// Symbols are compared by address and cannot be copied. Made with `new` they live on the library's heap.
class BRENTA_API CCoreSymbol {
 public:
    /// kNoName is allowed and is a name like any other.
    explicit CCoreSymbol(STRID name) : CCoreSymbol(name, SymbolKind::Other) {}
    CCoreSymbol(const CCoreSymbol&) = delete;
    CCoreSymbol& operator=(const CCoreSymbol&) = delete;

    /// The size of the object in bytes, the name of its class, the name of its base class or "none".
    virtual std::size_t SizeOf() const;
    virtual const char* GetClassName() const;
    virtual const char* GetBaseClassName() const;
    /// Only for symbols that are bound in no scope: a table would go on pointing to it.
    virtual ~CCoreSymbol();
    /// Adds a readable description of the symbol to `out`. The base adds nothing.
    virtual void Dump(DumpFormatter& out) const;

    /// The symbol's own name (kNoName if it has none), which need not be the one it was added to a scope
    /// under.
    STRID GetName() const { return m_name; }
    /// Which class the symbol is of; fixed for its life.
    SymbolKind GetKind() const { return m_kind; }

    BRENTA_HEAP_OPERATORS

 protected:
    CCoreSymbol(STRID name, SymbolKind kind);

 private:
    friend class SymbolAccess;  // internal

    STRID m_name;
    SymbolKind m_kind;
    std::shared_ptr<TableLink> m_link;  // the table it was bound in last
};

// ---------------------------------------------------------------------------------------------------------
// CCoreSymbolTable

/// A stack of scopes, each with the symbols added to it; look-up goes from the innermost scope outward.
///
/// All scopes on the stack are visible: a function that runs sees the names of its callers. A new table has
/// one scope, the global one, and keeps it as long as nobody pops it. On a table without scopes every
/// operation below except PushScope and GetScopeDepth raises the forced crash "Assertion failed! m_pHead"
/// (source "Templ"); if the handler resumes, PopScope and AddSymbol do nothing and look-ups find nothing.
class BRENTA_API CCoreSymbolTable {
 public:
    /// Pushes the global scope.
    CCoreSymbolTable();
    /// Copies what is bound in the other table's global scope, with the current values; inner scopes stay
    /// behind. The symbols themselves are shared by both tables.
    CCoreSymbolTable(const CCoreSymbolTable& other);
    /// The same after dropping all scopes of this table.
    CCoreSymbolTable& operator=(const CCoreSymbolTable& other);

    /// The size of the object in bytes, its class "CCoreSymbolTable" and its base "none"; the classes derived
    /// from it answer for themselves.
    virtual std::size_t SizeOf() const;
    virtual const char* GetClassName() const;
    virtual const char* GetBaseClassName() const;
    /// Ends all bindings; deletes no symbol.
    virtual ~CCoreSymbolTable();

    /// Opens a new, empty scope on top.
    void PushScope();
    /// Ends the bindings of the top scope and drops it. Symbols are not deleted.
    void PopScope();
    /// The number of scopes, 1 when only the global one is open.
    int GetScopeDepth() const;

    /// Binds `symbol` under `name` in the top scope, with its initial value. There is no check for
    /// duplicates: a later symbol of the same name hides the earlier one for the rest of the scope. A null
    /// symbol is not added.
    void AddSymbol(STRID name, CCoreSymbol* symbol);

    /// The symbol that a name means now: the innermost binding, or with `topScopeOnly` the one in the top
    /// scope. Null if there is none. The symbol stays its owner's.
    CCoreSymbol* GetSymbol(STRID name, bool topScopeOnly) const;

    /// Iterates over the symbols of the top scope in the order added, hidden ones included. The iterator
    /// walks a snapshot that the table keeps: it is good until the next call of this function.
    TIter<CCoreSymbol*> GetFirstSymbol();

    /// Internal: the bindings themselves.
    NameCells& Cells() const { return *m_pCells; }

    BRENTA_HEAP_OPERATORS

 private:
    bool AssertScope() const;

    NameCells* m_pCells;
    std::shared_ptr<TableLink> m_link;
    TOrderedList<CCoreSymbol*> m_symbols;  // what GetFirstSymbol handed out last
};

// ---------------------------------------------------------------------------------------------------------
// Variables

/// A variable: a value and, for `as` declarations, its class.
class BRENTA_API ScriptSymbol : public CCoreSymbol {
 public:
    /// Without a class the initial value is a copy of `initial`, bound as null if it is a list beyond the
    /// limits of SetValue. With a class it is a new object of the class (Aggregate), a list named `name`;
    /// `initial` is then not used. The class stays its owner's and must outlive the symbol.
    ScriptSymbol(STRID name, const Var& initial, ClassSymbol* cls);

    /// An array: the initial value is a list, named `name`, of `arraySize` objects of the class, or of copies
    /// of `element`. A size below 1, or one that would exceed the limits below, gives an empty list.
    ScriptSymbol(STRID name, ClassSymbol* cls, int arraySize);
    ScriptSymbol(STRID name, const Var& element, int arraySize);

    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    ~ScriptSymbol() override;

    /// "Var symbol " and the dump of the value with names (Var::Dump).
    void Dump(DumpFormatter& out) const override;

    /// The value: while the symbol is bound in a scope, the current value of its innermost binding, named
    /// like the symbol; otherwise the initial value. The reference stays good until the next call on this
    /// symbol.
    const Var& GetValue() const;

    /// Stores a copy of `value` into the innermost binding, or, unbound, replaces the initial value. False,
    /// and nothing changes, for a list beyond the engine's limits (16,777,216 elements, 1000 levels, texts of
    /// 64 MiB).
    bool SetValue(const Var& value);

    /// The value that each new binding starts with; good until the symbol is changed or destroyed. That of a
    /// class object or an array is put together when this is first called.
    const Var& GetInitialValue() const;

    /// The class of an `as` declaration, null for untyped variables. It stays its owner's.
    ClassSymbol* GetClass() const { return m_pClass; }

    /// Of an array the number of elements, otherwise 0.
    int GetArraySize() const { return m_arraySize; }

    /// Appends to `out` what an object of the class holds: first the members of the base (the most basic
    /// class first), then those of the class in the order declared. A member that has a class becomes a
    /// nested object under the member's name; any other a copy of its declared value. Null adds nothing.
    ///
    /// An object has at most 16,777,216 values and 1000 levels: a member that would go beyond is null (ask
    /// ClassSymbol::GetInstanceWeight before). So is a member of a class that is being built.
    void Aggregate(ClassSymbol* cls, Var& out) const;

    /// If the value is a list: the symbol of the first element that is a function named `name`; null
    /// otherwise. The symbol stays its owner's.
    ScriptSymbol* GetMember(STRID name) const;

 protected:
    ScriptSymbol(STRID name, SymbolKind kind);
    void SetStart(Value&& value);

 private:
    friend class SymbolAccess;

    // The initial value in its two forms; at least one is there, the other is made when somebody asks.
    mutable Var m_initial;
    mutable Value* m_pStart = nullptr;
    mutable bool m_hasInitial = true;
    bool m_isMember = false;  // declares a member of some class
    int m_arraySize = 0;
    ClassSymbol* m_pClass = nullptr;
    mutable Var m_current;  // what GetValue handed out last
};

// ---------------------------------------------------------------------------------------------------------
// Functions

/// A function: its parameters and its body. Its own value is null; what a script sees under its name is a
/// reference to the function.
class BRENTA_API FuncSymbol : public ScriptSymbol {
 public:
    /// No parameters, no body. Calling a function without body succeeds and gives null.
    explicit FuncSymbol(STRID name);
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    /// Deletes parameters and body.
    ~FuncSymbol() override;

    /// "function symbol ", the name, the parameters as "(a, b)", a line end, then the dump of the body.
    void Dump(DumpFormatter& out) const override;

    /// Appends a parameter, a symbol whose initial value is the int 0. A second parameter of the same name is
    /// refused: false, and the error "Parameter '%s' already defined." at the token's place. `at` may be null
    /// (no place), `messages` too (no message).
    bool AddParam(const ScriptToken* at, CScriptMsgStream* messages, STRID name);
    /// The number of parameters, 0 or more; constant time.
    int GetParamCount() const { return m_paramCount; }
    /// The parameters in the order added; they stay the function's.
    TIter<ScriptSymbol*> GetFirstParam() const;

    /// The body, which stays the function's; null if it has none.
    CompoundStatement* GetBody() const { return m_pBody; }
    /// Takes ownership of `body` (which may be null) and deletes the former one.
    void SetBody(CompoundStatement* body);

 private:
    friend class SymbolAccess;

    void DropPlan();

    TOrderedList<ScriptSymbol*> m_params;
    int m_paramCount = 0;
    CompoundStatement* m_pBody = nullptr;
    const NameCells* m_pHome = nullptr;  // the table that the names in it are in; null: a host has made it
    FunctionPlan* m_pPlan = nullptr;
    void (*m_pDeletePlan)(FunctionPlan*) = nullptr;
};

// ---------------------------------------------------------------------------------------------------------
// Classes

/// A class: its members, its functions and its base. Its own value is a list of the declared members' values
/// in order, without those of the base.
class BRENTA_API ClassSymbol : public ScriptSymbol {
 public:
    /// `base` may be null; it stays its owner's and must outlive the class.
    ClassSymbol(STRID name, ClassSymbol* base);
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    /// Deletes members and functions.
    ~ClassSymbol() override;

    /// "Class symbol ", the name, " inherits " and the base's name if there is one; then, one level deeper,
    /// the dump of the value without names.
    void Dump(DumpFormatter& out) const override;

    /// Appends a member: its declaration, and the declared value to the class's own value (also to the
    /// bound one, if the class is in scope). A second member of the same name in this class is refused:
    /// false, and the error "Member '%s' already defined in class '%s'" with `where` in front. A name that
    /// only the base has is accepted; by name the base's member is found first.
    ///
    /// The class takes ownership of what it accepts (not of the declared symbol); what it refuses, and null,
    /// stays the caller's. `messages` may be null, `where` too.
    bool AddMember(const char* where, CScriptMsgStream* messages, DeclarationStatement* member);

    /// Appends a function. A second one of the same name is refused with "Function '%s' already defined in
    /// class '%s'"; ownership as for AddMember.
    bool AddFunction(const char* where, CScriptMsgStream* messages, FuncSymbol* function);

    /// Members and functions in the order added; they stay the class's.
    TIter<DeclarationStatement*> GetFirstMember() const;
    TIter<FuncSymbol*> GetFirstFunction() const;
    /// The class that this one inherits from; null if there is none. It stays its owner's.
    ClassSymbol* GetBase() const { return m_pBase; }

    /// How many values an object of this class would hold, nested ones included; stops counting at 2^62.
    std::uint64_t GetInstanceWeight() const;
    /// How many levels of lists an object of this class would have, itself included; stops counting at 2^30.
    std::uint32_t GetInstanceDepth() const;

 private:
    friend class SymbolAccess;
    friend class InstanceBuilder;  // internal

    ClassSymbol* m_pBase;
    TOrderedList<DeclarationStatement*> m_members;
    TOrderedList<FuncSymbol*> m_functions;
    // An object of the class, which new ones are copies of, and what it would weigh without limits.
    mutable Value* m_pInstance = nullptr;
    mutable std::uint64_t m_instanceEpoch = 0;
    mutable std::uint64_t m_weight = 0;
    mutable std::uint32_t m_depth = 0;
    mutable bool m_isBuilding = false;
};

}  // namespace brenta
