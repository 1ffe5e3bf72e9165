/// @file
/// Script symbols - variables, functions, classes - and the table of nested scopes that holds them.
#pragma once

#include <cstddef>
#include <memory>

#include "brenta/containers.h"
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
class NameCells;          // internal: the current binding of every name
struct NameCell;          // internal
struct FunctionPlan;      // internal: what a call needs, prepared once
struct ScriptToken;       // a token of the script lexer (brenta/lexer.h)

class BRENTA_API CCoreSymbol {
   public:
    explicit CCoreSymbol(STRID name) : m_name(name) {}
    CCoreSymbol(const CCoreSymbol&) = delete;
    CCoreSymbol& operator=(const CCoreSymbol&) = delete;

    virtual std::size_t SizeOf() const;
    virtual const char* GetClassName() const;
    virtual const char* GetBaseClassName() const;
    virtual ~CCoreSymbol();
    virtual void Dump(DumpFormatter& out) const;

    STRID GetName() const { return m_name; }

    BRENTA_HEAP_OPERATORS

   private:
    STRID m_name;
};

class BRENTA_API CCoreSymbolTable {
   public:
    CCoreSymbolTable();
    CCoreSymbolTable(const CCoreSymbolTable& other);             ///< copies bindings of the global scope, not inner scopes
    CCoreSymbolTable& operator=(const CCoreSymbolTable& other);

    virtual std::size_t SizeOf() const;
    virtual const char* GetClassName() const;
    virtual const char* GetBaseClassName() const;
    virtual ~CCoreSymbolTable();

    void PushScope();
    void PopScope();
    int GetScopeDepth() const;
    void AddSymbol(STRID name, CCoreSymbol* symbol);
    CCoreSymbol* GetSymbol(STRID name, bool topScopeOnly) const;
    /// Iterates over the symbols of the top scope in the order added; good until the next call or change of scope.
    TIter<CCoreSymbol*> GetFirstSymbol();

    /// Internal: the bindings themselves.
    NameCells& Cells() const { return *m_pCells; }

    BRENTA_HEAP_OPERATORS

   private:
    NameCells* m_pCells;
    TOrderedList<CCoreSymbol*> m_symbols;
};

/// A variable: a value and, for `as` declarations, its class.
class BRENTA_API ScriptSymbol : public CCoreSymbol {
   public:
    ScriptSymbol(STRID name, const Var& initial, ClassSymbol* cls);
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    ~ScriptSymbol() override;
    void Dump(DumpFormatter& out) const override;

    /// The value: while the symbol is bound in a scope, the current value of its innermost binding; otherwise the value
    /// it was made with. The reference stays good until the next call on this symbol.
    const Var& GetValue() const;
    /// Stores into the innermost binding, or, unbound, replaces the initial value.
    void SetValue(const Var& value);
    /// The value that each new binding starts with.
    const Var& GetInitialValue() const { return m_value; }
    ClassSymbol* GetClass() const { return m_pClass; }
    void Aggregate(ClassSymbol* cls, Var& out) const;
    ScriptSymbol* GetMember(STRID name) const;

   private:
    friend class CCoreSymbolTable;
    friend class SymbolAccess;  // internal

    Var m_value;
    ClassSymbol* m_pClass;
    mutable Var m_current;                // what GetValue last handed out
    NameCells* m_pTable = nullptr;        // the table it was bound in last
};

class BRENTA_API FuncSymbol : public ScriptSymbol {
   public:
    explicit FuncSymbol(STRID name);
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    ~FuncSymbol() override;
    void Dump(DumpFormatter& out) const override;

    bool AddParam(const ScriptToken* at, CScriptMsgStream* messages, STRID name);
    int GetParamCount() const;
    TIter<ScriptSymbol*> GetFirstParam() const;
    CompoundStatement* GetBody() const { return m_pBody; }
    /// Takes ownership of `body`.
    void SetBody(CompoundStatement* body);

   private:
    friend class SymbolAccess;

    TOrderedList<ScriptSymbol*> m_params;
    CompoundStatement* m_pBody = nullptr;
    FunctionPlan* m_pPlan = nullptr;
};

class BRENTA_API ClassSymbol : public ScriptSymbol {
   public:
    ClassSymbol(STRID name, ClassSymbol* base);
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    ~ClassSymbol() override;
    void Dump(DumpFormatter& out) const override;

    /// Both take ownership of what they accept; what they refuse stays the caller's.
    bool AddMember(const char* where, CScriptMsgStream* messages, DeclarationStatement* member);
    bool AddFunction(const char* where, CScriptMsgStream* messages, FuncSymbol* function);
    TIter<DeclarationStatement*> GetFirstMember() const;
    TIter<FuncSymbol*> GetFirstFunction() const;
    ClassSymbol* GetBase() const { return m_pBase; }

   private:
    friend class SymbolAccess;

    ClassSymbol* m_pBase;
    TOrderedList<DeclarationStatement*> m_members;
    TOrderedList<FuncSymbol*> m_functions;
};

}  // namespace brenta
