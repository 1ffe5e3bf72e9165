// What a declaration makes: structures of a class, arrays of them, objects of registered classes.
//
// The parser has built the value that each execution starts with, so a new instance is a copy of it, shared
// until it is written, whose members are then initialised one by one.
#include <utility>

#include "brenta/names.h"
#include "script/created_objects.h"
#include "script/run_guard.h"
#include "script/show_mark.h"
#include "script/symbol_access.h"

namespace brenta {
namespace {

const Executor::Node* InitialiserOf(const DeclarationStatement& declaration) {
    const ExpressionStatement* expression = declaration.GetAssignmentStatement();
    const Executor::Node* root = expression != nullptr ? expression->GetRoot() : nullptr;
    return root != nullptr && root->nodeClass == NodeClass::Assign ? root : nullptr;
}

}  // namespace

NameCell& Executor::CellOf(NameCell* known, const CCoreSymbol& symbol) {
    return known != nullptr ? *known : m_cells.CellOf(symbol.GetName());
}

ExecStatus Executor::RunDeclaration(const DeclarationStatement& declaration) {
    if (!BindDeclared(declaration)) return EXEC_FAILED;
    const Node* initialiser = InitialiserOf(declaration);
    return initialiser == nullptr || Assign(*initialiser, nullptr) ? EXEC_OK : EXEC_FAILED;
}

/// Everything about a declaration but its initialiser.
bool Executor::BindDeclared(const DeclarationStatement& declaration) {
    ScriptSymbol* const symbol = declaration.m_pSymbol;
    if (symbol == nullptr) return false;
    NameCell& cell = CellOf(declaration.m_pCell, *symbol);
    if (m_cells.IsInTopScope(cell)) return false;
    m_cells.Bind(cell, symbol, SymbolAccess::StartValue(*symbol));
    if (symbol->GetClass() == nullptr && declaration.m_scriptableClass == kNoName) return true;
    Value value(cell.value);
    if (!ConstructDeclared(declaration, value)) return false;
    cell.value = std::move(value);
    return true;
}

/// Fills the declared value of an `as` declaration: one instance, or an array of them.
bool Executor::ConstructDeclared(const DeclarationStatement& declaration, Value& value) {
    const ClassSymbol* cls = declaration.m_pSymbol->GetClass();
    if (declaration.m_arraySize == 0) return ConstructOne(cls, declaration.m_scriptableClass, value);
    const std::uint32_t length = value.IsList() ? value.List()->length : 0;
    for (std::uint32_t i = 0; i < length; ++i) {
        Value element(value.List()->items[i]);
        if (!ConstructOne(cls, declaration.m_scriptableClass, element)) return false;
        ReplaceItem(value, i, std::move(element));
    }
    return true;
}

bool Executor::ConstructOne(const ClassSymbol* cls, STRID registered, Value& value) {
    if (cls != nullptr) return !value.IsList() || Construct(*cls, value);
    const ShowMark shown(*this);
    value = Value::OfReference(TrackCreated(CreateScriptableObject(registered)));
    return true;
}

bool Executor::Construct(const ClassSymbol& cls, Value& instance) {
    // Nothing but the scopes of functions stands above those of a function whose locals are not shown.
    const ShowMark shown(*this);
    m_machine->Show();
    std::size_t next = 0;
    return ConstructMembers(cls, instance, next);
}

/// Bases first; `next` is the place of the next member in the instance.
bool Executor::ConstructMembers(const ClassSymbol& cls, Value& instance, std::size_t& next) {
    if (StackIsLow()) return FailLimit(ScriptPosition(), "Call stack overflow.");
    if (cls.GetBase() != nullptr && !ConstructMembers(*cls.GetBase(), instance, next)) return false;
    const bool outerIsPending = std::exchange(m_scopeIsPending, false);
    m_cells.PushScope();
    for (TIter<DeclarationStatement*> at = cls.GetFirstMember(); at.Get() != nullptr; at.Next()) {
        if (next >= instance.List()->length) break;
        if (!ConstructMember(**at.Get(), instance, next++)) return false;
    }
    m_cells.PopScope();
    m_scopeIsPending = outerIsPending;
    return true;
}

bool Executor::ConstructMember(const DeclarationStatement& member, Value& instance, std::size_t place) {
    ScriptSymbol& symbol = *member.m_pSymbol;
    NameCell& cell = CellOf(member.m_pCell, symbol);
    m_cells.Bind(cell, &symbol, SymbolAccess::StartValue(symbol));
    Value value(instance.List()->items[place]);
    const Node* initialiser = InitialiserOf(member);
    if (symbol.GetClass() != nullptr || member.m_scriptableClass != kNoName) {
        if (!ConstructDeclared(member, value)) return false;
        cell.value = value;
    } else if (initialiser == nullptr) {
        return true;
    }
    if (symbol.GetClass() == nullptr && initialiser != nullptr && !Assign(*initialiser, &value)) return false;
    const ListLimit limit = ReplaceItem(instance, place, std::move(value));
    if (limit == ListLimit::None) return true;
    return FailLimit(initialiser != nullptr ? initialiser->Position() : ScriptPosition(),
                     OpErrorText(OpErrorOf(limit)));
}

// ---------------------------------------------------------------------------------------------------------

bool DeclarationStatement::Construct(CCoreScriptEngine& engine, ClassSymbol* cls, TIter<Var>& members) {
    if (cls == nullptr) return true;
    return RunStatement(engine, [&](Executor& executor) {
        Value instance = Value::OfList(0);
        for (TIter<Var> at = members; at.Get() != nullptr; at.Next()) {
            Value member;
            if (!executor.FromHost(*at.Get(), member)) return false;
            AppendItem(instance, std::move(member), at.Get()->GetName());
        }
        std::size_t constructed = 0;
        const bool complete = executor.ConstructMembers(*cls, instance, constructed);
        for (std::size_t i = 0; i < constructed; ++i, members.Next())
            ToVar(instance.List()->items[i], members.Get()->GetName(), *members.Get());
        return complete;
    });
}

}  // namespace brenta
