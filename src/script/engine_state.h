// What an engine holds beside its public face: the parser's counters, the executor, the symbols it owns.
#pragma once

#include <atomic>
#include <memory>
#include <utility>
#include <vector>

#include "brenta/script.h"

namespace brenta {

struct EngineState {
    explicit EngineState(CCoreScriptEngine& engine);
    ~EngineState();

    // --- parser
    int statementDepth = 0;
    int expressionDepth = 0;
    bool openStatement = false;  ///< the statement parsed last ended before a terminator that is not its own
    bool limitReported = false;  ///< a nesting limit was met: the constructs around it stay silent
    int moduleDepth = 0;         ///< scope depth at which a module's own names are parsed; 0: no module is
    bool checkOnly = false;      ///< parse without executing global declarations (CheckScriptModule)
    /// Called before a token list is parsed, when set; sees the complete list (CheckScriptModule).
    void (*inspectTokens)(TIter<ScriptToken*> first, void* context) = nullptr;
    void* inspectContext = nullptr;

    // --- executor
    std::unique_ptr<Executor> executor;
    int nestedRuns = 0;  ///< execute texts and host calls in progress
    std::atomic<bool> stopRequested{false};

    // --- ownership: scopes never own symbols; all but parameters live here until the engine dies, except
    // that what a text of statements declares lives with the text (ParsedText)
    using SymbolList = std::vector<std::unique_ptr<CCoreSymbol>>;
    void Own(CCoreSymbol* symbol) {
        std::unique_ptr<CCoreSymbol> owned(symbol);
        owner->push_back(std::move(owned));
    }
    SymbolList symbols;
    SymbolList* owner = &symbols;  ///< where Own puts them now
};

}  // namespace brenta
