// What an engine holds beside its public face: the parser's counters, the executor, the symbols it owns.
#pragma once

#include <atomic>
#include <memory>
#include <utility>
#include <vector>

#include "brenta/script.h"

namespace brenta {

using SymbolList = std::vector<std::unique_ptr<CCoreSymbol>>;

/// What a parse has of its own; a nested run starts with a fresh one and puts the outer one back.
struct ParserState {
    int statementDepth = 0;
    int expressionDepth = 0;
    bool openStatement = false;   ///< the statement parsed last ended before a terminator that is not its own
    bool limitReported = false;   ///< a nesting limit was met: the constructs around it stay silent
    int moduleDepth = 0;          ///< scope depth at which a module's own names are parsed; 0: no module is
    SymbolList* owner = nullptr;  ///< where EngineState::Own puts symbols now
};

struct EngineState : ParserState {
    using SymbolList = brenta::SymbolList;

    explicit EngineState(CCoreScriptEngine& engine);
    ~EngineState();
    EngineState(const EngineState&) = delete;
    EngineState& operator=(const EngineState&) = delete;

    /// Sends an engine's messages elsewhere for a while: returns the stream that was set, which has to be set
    /// again before the new one ends.
    static CScriptMsgStream* ExchangeStream(CCoreScriptEngine& engine, CScriptMsgStream* stream);

    /// CCoreScriptEngine::Execute without a unit; tells whether a number of the text had one.
    static bool Execute(CCoreScriptEngine& engine, const char* text, Var& result, bool& unitsSeen);

    // --- checking without running (CheckScriptModule)
    bool checkOnly = false;  ///< parse without executing global declarations
    /// Called before a module is parsed, when set, with the complete token list.
    void (*inspectTokens)(const TIter<ScriptToken*>& first, void* context) = nullptr;
    void* inspectContext = nullptr;

    // --- running
    std::unique_ptr<Executor> executor;
    /// Whether functions run as register code; if not, their statement trees are walked, which gives the same
    /// values, messages and prints. A function keeps to the tier that it was entered in.
    bool useRegisterTier = true;
    /// Whether register code has locals in registers where it can; if not, all names are in their cells. To
    /// be set before a function runs.
    bool useRegisterLocals = true;
    int nestedRuns = 0;                      ///< runs for hosts and `execute` texts in progress
    std::atomic<bool> stopRequested{false};  ///< written by any thread and by signal handlers
    bool interrupted = false;                ///< a run was stopped by such a request; set back by who cares
    static_assert(std::atomic<bool>::is_always_lock_free);

    // --- ownership: scopes never own symbols; all but parameters live here until the engine dies, except
    // that what a text of statements declares lives with the text (ParsedText)
    void Own(CCoreSymbol* symbol);
    SymbolList symbols;  ///< has room for those of the texts, too
    std::size_t symbolsOfTexts = 0;
};

/// A command's value as a length: its number times the unit's factor, in internal units; as it is for
/// kUnitsNone. May raise a forced crash.
void ConvertToLength(Var& value, CoreUnits units);

}  // namespace brenta
