// Dimension texts: StringToUnit, ValidateUnit, EvaluateUnit.
//
// They run on the library-wide engine, one at a time. Any text of the language is accepted, so a text may
// define variables that later texts see, print, and loop; nothing but its result and its messages come out.
#include <algorithm>
#include <cstdint>
#include <mutex>

#include "brenta/script.h"
#include "brenta/units.h"
#include "foundation/characters.h"
#include "script/engine_state.h"
#include "script/library_engine.h"

namespace brenta {
namespace {

/// Evaluation may take as long as a script likes, and may come back here from a host object that it asks
/// something. Not an os::Lock: that is for moments.
constinit std::recursive_mutex g_unitLock;

/// The turn of one text. A request to stop that came after the text before had ended is not for this one. The
/// turn of a text within another, by way of a host object, leaves the request for both.
class Turn {
 public:
    Turn() : m_lock(g_unitLock), m_pEngine(LibraryEngine()) {
        if (g_depth++ > 0) return;
        if (m_pEngine == nullptr) return;
        m_pEngine->State().interrupted = false;
        m_pEngine->ClearStop();
    }
    ~Turn() {
        if (--g_depth > 0 && IsInterrupted()) m_pEngine->RequestStop();
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    CCoreScriptEngine* Engine() const { return m_pEngine; }
    bool IsInterrupted() const { return m_pEngine != nullptr && m_pEngine->State().interrupted; }

 private:
    static constinit inline int g_depth = 0;  // the lock's

    const std::lock_guard<std::recursive_mutex> m_lock;
    CCoreScriptEngine* const m_pEngine;
};

/// Collects error messages, one a line.
class ErrorCollector : public CScriptMsgStream {
 public:
    explicit ErrorCollector(CoreString& text) : m_text(text) {}
    void OutputErrStream(const char* text) override {
        if (!m_text.IsEmpty()) m_text += '\n';
        m_text += text;
    }

 private:
    CoreString& m_text;
};

/// Makes an engine speak to another stream for a while.
class StreamOverride {
 public:
    StreamOverride(CCoreScriptEngine& engine, CScriptMsgStream& stream)
        : m_engine(engine), m_former(EngineState::ExchangeStream(engine, &stream)) {}
    ~StreamOverride() { EngineState::ExchangeStream(m_engine, m_former); }
    StreamOverride(const StreamOverride&) = delete;
    StreamOverride& operator=(const StreamOverride&) = delete;

 private:
    CCoreScriptEngine& m_engine;
    CScriptMsgStream* m_former;
};

CoreString LowerCase(const char* text) {
    CoreString lower(text);
    for (int i = 0; i < lower.GetLength(); ++i)
        lower[i] = ToLower(lower[i]);
    return lower;
}

/// A text that fails as typed is tried once more in lower case, for "10MIL", and then without a unit for bare
/// numbers. Tells whether the result is in internal units already.
bool Evaluate(const char* text, Var& result, bool& isInternal, CoreString* messages) {
    const Turn turn;
    CCoreScriptEngine* const engine = turn.Engine();
    if (messages != nullptr) messages->SetEmpty();
    if (text == nullptr || engine == nullptr) return false;
    CoreString first;
    CoreString second;
    {
        ErrorCollector collector(first);
        const StreamOverride stream(*engine, collector);
        if (EngineState::Execute(*engine, text, result, isInternal)) return true;
    }
    if (!turn.IsInterrupted()) {
        ErrorCollector collector(second);
        const StreamOverride stream(*engine, collector);
        const CoreString lower = LowerCase(text);
        const bool isWhole = lower.GetLength() == CoreString::GetLength(text);
        isInternal = true;
        if (isWhole && engine->Execute(lower, result, kUnitsNone)) return true;
        // What matters is the text as typed, unless it was the other one that ran.
        if (turn.IsInterrupted()) first = std::move(second);
    }
    if (messages != nullptr) *messages = std::move(first);
    return false;
}

/// Rounded to a multiple of 10, halves away from zero, and kept within the multiples of 10 that an int holds.
int RoundLength(int length) {
    constexpr std::int64_t kMost = 2'147'483'640;
    const std::int64_t wide = length;
    const std::int64_t rounded = (wide >= 0 ? wide + 5 : wide - 5) / 10 * 10;
    return static_cast<int>(std::clamp(rounded, -kMost, kMost));
}

}  // namespace

void StopUnitEvaluation() {
    if (CCoreScriptEngine* const engine = LibraryEngine()) engine->RequestStop();
}

bool EvaluateUnit(const char* text, CoreUnits defaultUnits, int& value, CoreString* messages) {
    Var result;
    value = 0;
    bool isInternal = false;
    if (!Evaluate(text, result, isInternal, messages)) return false;
    // No turn is held here: the handler of a forced crash may evaluate lengths on another thread.
    if (!isInternal) ConvertToLength(result, defaultUnits);
    if (result.GetKind() != VarKind::Null) value = RoundLength(result.GetInt());
    return true;
}

int StringToUnit(const char* text, CoreUnits defaultUnits) {
    int value = 0;
    EvaluateUnit(text, defaultUnits, value, nullptr);
    return value;
}

bool ValidateUnit(const char* text) {
    int value = 0;
    return EvaluateUnit(text, kUnitsNone, value, nullptr);
}

}  // namespace brenta
