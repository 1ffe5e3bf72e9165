// The frame around everything that a host, or a script through `execute`, makes an engine do.
#pragma once

#include <new>

#include "script/executor.h"
#include "script/stream_guard.h"

namespace brenta {

/// Gives a run an input, a token list and parser counters of its own, and puts back what was there before, on
/// every way out: after a failure in the midst of anything the engine is as usable as after a success. What a
/// run has bound in the scope that it began in stays; scopes that it left open are closed.
class RunGuard {
 public:
    RunGuard(CCoreScriptEngine& engine, Executor::RunKind kind);
    ~RunGuard();
    RunGuard(const RunGuard&) = delete;
    RunGuard& operator=(const RunGuard&) = delete;

    /// False if runs are nested too deeply or too little stack is left; nothing is reported.
    bool IsAllowed() const;

 private:
    EngineState& m_state;
    NameCells& m_cells;
    StreamGuard m_streams;
    const ParserState m_parser;
    const Executor::RunState m_run;
    const int m_depth;
};

/// What a host's call of an engine goes through: `work` runs guarded and answers success. Nothing is thrown.
template <class Work>
bool RunForHost(CCoreScriptEngine& engine, Work work) {
    Executor& executor = *engine.State().executor;
    try {
        const RunGuard guard(engine, Executor::RunKind::Host);
        if (guard.IsAllowed()) return work();
        executor.ReportOverflow();
    } catch (const std::bad_alloc&) {
        executor.ReportOutOfMemory();
    }
    return false;
}

}  // namespace brenta
