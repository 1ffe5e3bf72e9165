// CCoreScriptEngine: construction and environment, modules, commands, calls from the host.
#include "brenta/script.h"

#include <algorithm>
#include <new>

#include "brenta/failure.h"
#include "brenta/names.h"
#include "foundation/numbers.h"
#include "script/created_objects.h"
#include "script/parser.h"
#include "script/run_guard.h"
#include "script/symbol_access.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// EngineState

EngineState::EngineState(CCoreScriptEngine& engine) {
    owner = &symbols;
    // The executor keeps a reference to this object, not to its contents.
    engine.m_pState = this;
    executor = std::make_unique<Executor>(engine);
}

EngineState::~EngineState() = default;

// When a text goes, it must be able to leave its symbols here, also if memory has run out.
void EngineState::Own(CCoreSymbol* symbol) {
    std::unique_ptr<CCoreSymbol> owned(symbol);
    const std::size_t needed = symbols.size() + symbolsOfTexts + 1;
    if (symbols.capacity() < needed) symbols.reserve(std::max(needed, symbols.capacity() * 2));
    owner->push_back(std::move(owned));
    if (owner != &symbols) ++symbolsOfTexts;
}

CScriptMsgStream* EngineState::ExchangeStream(CCoreScriptEngine& engine, CScriptMsgStream* stream) {
    CScriptMsgStream* const former = engine.m_pMessages;
    engine.SetMsgStream(stream);
    return former;
}

// ---------------------------------------------------------------------------------------------------------
// Life

CCoreScriptEngine::CCoreScriptEngine(const TOrderedList<Var>& environment, CScriptMsgStream* stream)
    : CCoreScriptLexer(false, false), m_pState(nullptr) {
    SetMsgStream(stream);
    m_pState = new EngineState(*this);
    try {
        SetEnvironmentBlock(environment);
    } catch (const std::bad_alloc&) {
        m_pState->executor->ReportOutOfMemory();
    }
}

CCoreScriptEngine::~CCoreScriptEngine() {
    delete m_pState;
}

std::size_t CCoreScriptEngine::SizeOf() const {
    return sizeof(*this);
}

const char* CCoreScriptEngine::GetClassName() const {
    return "CCoreScriptEngine";
}

const char* CCoreScriptEngine::GetBaseClassName() const {
    return "CCoreScriptLexer";
}

void CCoreScriptEngine::SetMsgStream(CScriptMsgStream* stream) {
    m_pMessages = stream;
}

// ---------------------------------------------------------------------------------------------------------
// Environment

namespace {

bool AddEnvironmentValue(CCoreScriptEngine& engine, ClassSymbol& environment, const Var& value) {
    static constexpr char kWhere[] = "SetEnvironmentBlock:";
    const STRID name = value.GetName();
    for (TIter<DeclarationStatement*> at = environment.GetFirstMember(); at.Get() != nullptr; at.Next()) {
        if ((*at.Get())->GetSymbol()->GetName() != name) continue;
        engine.Messages().Error(kWhere, "'%s' already defined in environment.", StrPtr(name));
        return false;
    }
    auto symbol = MakeSymbol<ScriptSymbol>(name, value, nullptr);
    std::unique_ptr<DeclarationStatement> member(new DeclarationStatement(symbol.get(), nullptr, kNoName));
    if (member == nullptr) throw std::bad_alloc();
    engine.State().Own(symbol.release());
    if (!environment.AddMember(kWhere, &engine.Messages(), member.get())) return false;
    static_cast<void>(member.release());
    return true;
}

}  // namespace

bool CCoreScriptEngine::SetEnvironmentBlock(const TOrderedList<Var>& environment) {
    Messages();  // makes a silent one if there is none
    auto reflect = MakeSymbol<FuncSymbol>(StrId("reflect"));
    reflect->AddParam(nullptr, m_pMessages, StrId("value"));
    SymbolAccess::SetHome(*reflect, Cells());
    EnterGlobal(*this, *reflect);
    m_pState->Own(reflect.release());

    auto owned = MakeSymbol<ClassSymbol>(StrId("Env"), nullptr);
    ClassSymbol& env = *owned;
    m_pState->Own(owned.release());
    AddSymbol(env.GetName(), &env);
    for (TIter<Var> value(environment); value.Get() != nullptr; value.Next())
        if (!AddEnvironmentValue(*this, env, *value.Get())) return false;
    CCoreScriptable* const library = TrackCreated(CreateScriptableObject(StrId("CStdScriptLib")));
    return AddEnvironmentValue(*this, env, Var(library, StrId("StdLib")));
}

// ---------------------------------------------------------------------------------------------------------
// Modules

/// A text that is no sequence of tokens. The lexer has reported what it could not open; a character that
/// starts no token is left to us.
bool CCoreScriptEngine::ReportScanError() {
    if (m_scanError.line > 0) Messages().Error(m_scanError, "%s", "Syntax error.");
    m_scanError = ScriptPosition();
    return false;
}

bool CCoreScriptEngine::InjectScriptText(const char* name, const char* text, bool scan) {
    if (scan && !m_pState->executor->HasRoomForNames()) return false;
    if (CCoreScriptLexer::InjectScriptText(name, text, scan)) return true;
    return scan && ReportScanError();
}

bool CCoreScriptEngine::LoadScriptModule(const char* path) {
    return RunForHost(*this, [&] {
        if (!m_pState->executor->HasRoomForNames() || !IncludeScriptModule(path)) return false;
        return ScanInput() ? ParseScript() : ReportScanError();
    });
}

bool CCoreScriptEngine::InjectScript(const char* name, const char* text) {
    return RunForHost(*this, [&] { return InjectScriptText(name, text, true) && ParseScript(); });
}

// ---------------------------------------------------------------------------------------------------------
// Commands

void ConvertToLength(Var& value, CoreUnits units) {
    if (units == kUnitsNone) return;
    if (units < kInches || units > kMillimeters) {
        ForcedCrash(0, "CoreScripting", __LINE__, "Forced crash! \"Unknown UnitType\"");
        return;
    }
    value = DoubleToInt(value.GetFloat() * GetUnitFactor(units));
}

bool CCoreScriptEngine::RunCommand(const char* text, Value& value, bool& unitsSeen) {
    if (!InjectScriptText("cmd:", text, true)) return false;
    unitsSeen = m_unitsSeen;
    ParsedText command(*this);
    TIter<ScriptToken*> iter = GetFirstToken();
    if (!command.Parse(iter, StatementSequence::Command)) return false;
    FlushTokens();
    return m_pState->executor->RunCommand(command.Statements(), value);
}

bool EngineState::Execute(CCoreScriptEngine& engine, const char* text, Var& result, bool& unitsSeen) {
    // The text may be the result's own.
    const CoreString copy(text);
    const bool isWhole = copy.GetLength() == CoreString::GetLength(text);
    result = Var();
    return RunForHost(engine, [&] {
        if (!isWhole) throw std::bad_alloc();
        Value value;
        return engine.RunCommand(copy, value, unitsSeen) && engine.m_pState->executor->ToHost(value, result);
    });
}

bool CCoreScriptEngine::Execute(const char* text, Var& result, CoreUnits units) {
    bool unitsSeen = false;
    if (!EngineState::Execute(*this, text, result, unitsSeen)) return false;
    if (!unitsSeen) ConvertToLength(result, units);
    return true;
}

// ---------------------------------------------------------------------------------------------------------
// Calls

namespace {

/// Puts the arguments on the stack, calls `work(executor, first, value)` and hands the value over, whatever
/// the outcome.
template <class Work>
bool CallForHost(CCoreScriptEngine& engine, const TOrderedList<Var>& arguments, Var& result, Work work) {
    Value value;
    const bool succeeded = RunForHost(engine, [&] {
        Executor& executor = *engine.State().executor;
        const std::size_t first = executor.ArgumentMark();
        for (TIter<Var> at(arguments); at.Get() != nullptr; at.Next()) {
            Value argument;
            if (!executor.FromHost(*at.Get(), argument)) return false;
            executor.PushArgument(std::move(argument));
        }
        const bool called = work(executor, first, value);
        return executor.ToHost(value, result) && called;
    });
    if (!succeeded && value.IsNull()) result = Var();
    return succeeded;
}

/// What a function reference of a host refers to; null after a message.
FuncSymbol* FunctionOf(CCoreScriptEngine& engine, const Var& callee) {
    auto* const symbol = static_cast<CCoreSymbol*>(callee.GetRef());
    if (symbol != nullptr && symbol->GetKind() == SymbolKind::Function)
        return static_cast<FuncSymbol*>(symbol);
    const STRID name = symbol != nullptr ? symbol->GetName() : kNoName;
    engine.Messages().Error("RunScript:", "Symbol '%s' is not a function.", StrPtr(name));
    return nullptr;
}

}  // namespace

bool CCoreScriptEngine::RunScript(const char* function, Var& result, const TOrderedList<Var>& arguments,
                                  bool quiet) {
    CCoreSymbol* const symbol = GetSymbol(StrId(function), false);
    if (symbol != nullptr && symbol->GetKind() == SymbolKind::Function)
        return ExecuteFunction(Var(symbol, kFunctionName), arguments, result);
    result = Var();
    if (quiet) return false;
    const char* const name = function != nullptr ? function : "";
    if (symbol == nullptr) {
        Messages().Error("RunScript:", "function '%s' not defined.", name);
    } else {
        Messages().Error("RunScript:", "'%s' is not a function.", name);
    }
    return false;
}

bool CCoreScriptEngine::ExecuteFunction(const Var& callee, const TOrderedList<Var>& arguments, Var& result) {
    return CallForHost(*this, arguments, result, [&](Executor& executor, std::size_t first, Value& value) {
        if (callee.GetName() == kFunctionName) {
            FuncSymbol* const function = FunctionOf(*this, callee);
            return function != nullptr && executor.CallFunction(*function, first, value);
        }
        Value object;
        return executor.FromHost(callee, object) &&
               executor.CallMethod(object, callee.GetName(), first, value);
    });
}

bool CCoreScriptEngine::IntrinsicFunction(const Var& callee, const TOrderedList<Var>& arguments,
                                          Var& result) {
    return CallForHost(*this, arguments, result, [&](Executor& executor, std::size_t first, Value& value) {
        Value number;
        return executor.FromHost(callee, number) &&
               executor.CallIntrinsic(number, callee.GetName(), first, value);
    });
}

void CCoreScriptEngine::RequestStop() {
    m_pState->stopRequested.store(true, std::memory_order_relaxed);
}

void CCoreScriptEngine::ClearStop() {
    m_pState->stopRequested.store(false, std::memory_order_relaxed);
}

// ---------------------------------------------------------------------------------------------------------
// Descriptions

bool CCoreScriptEngine::Reflect(const Var& value) {
    return RunForHost(*this, [&] {
        Value own;
        return m_pState->executor->FromHost(value, own) && m_pState->executor->Reflect(own);
    });
}

void CCoreScriptEngine::DumpSymbolTable() {
    for (TIter<CCoreSymbol*> at = GetFirstSymbol(); at.Get() != nullptr; at.Next()) {
        if ((*at.Get())->GetKind() == SymbolKind::Other) continue;
        DumpFormatter out;
        static_cast<const ScriptSymbol*>(*at.Get())->GetValue().Dump(out, true);
        out.Dump(true);
    }
}

}  // namespace brenta
