// Variables and functions; classes are in class_symbol.cpp.
//
// A symbol's initial value has two readers: hosts want a Var, bindings want a Value that can be shared. Most
// symbols never need both, and the Var of an array of a million elements is best never made, so a symbol
// keeps the form it was given and makes the other when somebody asks.
#include "brenta/symbols.h"

#include "brenta/dump.h"
#include "brenta/lexer.h"
#include "brenta/statements.h"
#include "foundation/lack_of_memory.h"
#include "script/symbol_access.h"
#include "script/var_access.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// CCoreSymbol

CCoreSymbol::CCoreSymbol(STRID name, SymbolKind kind) : m_name(name), m_kind(kind) {}

CCoreSymbol::~CCoreSymbol() = default;

std::size_t CCoreSymbol::SizeOf() const {
    return sizeof(*this);
}

const char* CCoreSymbol::GetClassName() const {
    return "CCoreSymbol";
}

const char* CCoreSymbol::GetBaseClassName() const {
    return "none";
}

void CCoreSymbol::Dump(DumpFormatter&) const {}

// What a script sees under a name. A function is not its symbol's value, which is null.
Value SymbolAccess::StartValue(CCoreSymbol& symbol) {
    switch (symbol.GetKind()) {
        case SymbolKind::Other:
            return Value();
        case SymbolKind::Function:
            return Value::OfFunction(static_cast<FuncSymbol*>(&symbol));
        case SymbolKind::Variable:
        case SymbolKind::Class:
            return InitialValue(static_cast<ScriptSymbol&>(symbol));
    }
    return Value();
}

// ---------------------------------------------------------------------------------------------------------
// ScriptSymbol

ScriptSymbol::ScriptSymbol(STRID name, SymbolKind kind)
    : CCoreSymbol(name, kind), m_initial(name), m_current(name) {}

ScriptSymbol::ScriptSymbol(STRID name, const Var& initial, ClassSymbol* cls)
    : ScriptSymbol(name, SymbolKind::Variable) {
    m_pClass = cls;
    if (cls != nullptr) {
        SetStart(Value(SymbolAccess::Instance(*cls)));
    } else {
        m_initial = initial;
    }
}

namespace {

Value ArrayOf(const Value& element, int size) {
    Value list = Value::OfList(0);
    if (size > 0) RepeatItem(static_cast<std::size_t>(size), element, list);
    return list;
}

}  // namespace

ScriptSymbol::ScriptSymbol(STRID name, ClassSymbol* cls, int arraySize)
    : ScriptSymbol(name, SymbolKind::Variable) {
    m_pClass = cls;
    m_arraySize = arraySize > 0 ? arraySize : 0;
    SetStart(ArrayOf(cls == nullptr ? Value() : SymbolAccess::Instance(*cls), arraySize));
}

ScriptSymbol::ScriptSymbol(STRID name, const Var& element, int arraySize)
    : ScriptSymbol(name, SymbolKind::Variable) {
    m_arraySize = arraySize > 0 ? arraySize : 0;
    SetStart(ArrayOf(FromVar(element), arraySize));
}

ScriptSymbol::~ScriptSymbol() {
    delete m_pStart;
}

std::size_t ScriptSymbol::SizeOf() const {
    return sizeof(*this);
}

const char* ScriptSymbol::GetClassName() const {
    return "ScriptSymbol";
}

const char* ScriptSymbol::GetBaseClassName() const {
    return "CCoreSymbol";
}

void ScriptSymbol::Dump(DumpFormatter& out) const {
    out += "Var symbol ";
    GetValue().Dump(out, true);
}

void ScriptSymbol::SetStart(Value&& value) {
    if (m_pStart == nullptr) m_pStart = new Value;
    *m_pStart = std::move(value);
    m_initial = Var(GetName());
    m_hasInitial = false;
}

const Var& ScriptSymbol::GetInitialValue() const {
    if (!m_hasInitial) ToVar(*m_pStart, GetName(), m_initial);
    m_hasInitial = true;
    return m_initial;
}

const Value& SymbolAccess::InitialValue(const ScriptSymbol& symbol) {
    if (symbol.m_pStart == nullptr) symbol.m_pStart = new Value(FromVar(symbol.m_initial));
    return *symbol.m_pStart;
}

namespace {

/// What a symbol holds in its innermost binding; null when it is not bound.
Value* BoundValue(const CCoreSymbol& symbol) {
    NameCells* table = SymbolAccess::Table(symbol);
    return table == nullptr ? nullptr : table->ValueOf(symbol);
}

}  // namespace

const Var& ScriptSymbol::GetValue() const {
    // A copy each time: the binding changes under the reference that callers hold.
    const Value* bound = BoundValue(*this);
    // What a script sees under a function's name is the function; the symbol's own value is its initial one.
    if (bound == nullptr || (bound->IsFunction() && bound->Function() == this)) return GetInitialValue();
    ToVar(*bound, GetName(), m_current);
    return m_current;
}

bool ScriptSymbol::SetValue(const Var& value) {
    ConversionLimit limit = ConversionLimit::None;
    Value own = FromVar(value, &limit);
    if (limit != ConversionLimit::None) return false;
    if (Value* bound = BoundValue(*this)) {
        *bound = std::move(own);
        return true;
    }
    m_initial = value;
    m_hasInitial = true;
    delete m_pStart;
    m_pStart = nullptr;
    // The objects that classes keep hold the former value.
    if (m_isMember) SymbolAccess::NoteClassChange();
    return true;
}

void ScriptSymbol::Aggregate(ClassSymbol* cls, Var& out) const {
    if (cls == nullptr) return;
    if (out.GetKind() == VarKind::Null) VarAccess::SetEmptyList(out);
    if (out.GetKind() != VarKind::List) return;
    Var object = ToVar(SymbolAccess::Instance(*cls));
    VarAccess::Items(out).Splice(std::move(VarAccess::Items(object)));
}

ScriptSymbol* ScriptSymbol::GetMember(STRID name) const {
    // Only a function's reference says by its name that it points to a symbol; all others point to objects.
    for (TIter<Var> iter = GetValue().GetListIter(); iter.Get() != nullptr; iter.Next()) {
        if (iter.Get()->GetName() != kFunctionName) continue;
        auto* symbol = static_cast<FuncSymbol*>(iter.Get()->GetRef());
        if (symbol != nullptr && symbol->GetName() == name) return symbol;
    }
    return nullptr;
}

// ---------------------------------------------------------------------------------------------------------
// FuncSymbol

FuncSymbol::FuncSymbol(STRID name) : ScriptSymbol(name, SymbolKind::Function) {}

FuncSymbol::~FuncSymbol() {
    DropPlan();
    delete m_pBody;
    for (ScriptSymbol* param : m_params)
        delete param;
}

std::size_t FuncSymbol::SizeOf() const {
    return sizeof(*this);
}

const char* FuncSymbol::GetClassName() const {
    return "FuncSymbol";
}

const char* FuncSymbol::GetBaseClassName() const {
    return "ScriptSymbol";
}

void FuncSymbol::Dump(DumpFormatter& out) const {
    out += "function symbol ";
    out += GetName();
    out += "(";
    const char* separator = "";
    for (const ScriptSymbol* param : m_params) {
        out += separator;
        out += param->GetName();
        separator = ", ";
    }
    out += ")\n";
    if (m_pBody != nullptr) m_pBody->Dump(out);
}

bool FuncSymbol::AddParam(const ScriptToken* at, CScriptMsgStream* messages, STRID name) {
    for (const ScriptSymbol* param : m_params) {
        if (param->GetName() != name) continue;
        if (messages == nullptr) return false;
        constexpr const char* kFormat = "Parameter '%s' already defined.";
        if (at == nullptr) {
            messages->Error("", kFormat, StrPtr(name));
        } else {
            messages->Error(ScriptPosition{at->file, at->line}, kFormat, StrPtr(name));
        }
        return false;
    }
    std::unique_ptr<ScriptSymbol> param(new ScriptSymbol(name, Var(0, name), nullptr));
    if (param == nullptr) throw std::bad_alloc();
    DropPlan();
    AddOrThrow(m_params, param.get());
    static_cast<void>(param.release());
    ++m_paramCount;
    return true;
}

TIter<ScriptSymbol*> FuncSymbol::GetFirstParam() const {
    return TIter<ScriptSymbol*>(m_params);
}

/// The plan looks at body and parameters, so it goes before they do.
void FuncSymbol::DropPlan() {
    if (m_pPlan != nullptr) m_pDeletePlan(m_pPlan);
    m_pPlan = nullptr;
}

void FuncSymbol::SetBody(CompoundStatement* body) {
    if (body == m_pBody) return;
    DropPlan();
    delete m_pBody;
    m_pBody = body;
}

void SymbolAccess::SetPlan(FuncSymbol& function, FunctionPlan* plan, void (*destroy)(FunctionPlan*)) {
    function.DropPlan();
    function.m_pPlan = plan;
    function.m_pDeletePlan = destroy;
}

}  // namespace brenta
