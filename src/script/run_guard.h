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

/// The smaller frame around a statement that a host, or the parser in the midst of a token list, runs by
/// itself.
class StatementGuard {
 public:
    explicit StatementGuard(CCoreScriptEngine& engine)
        : m_executor(*engine.State().executor),
          m_cells(engine.Cells()),
          m_run(m_executor.EnterRun(Executor::RunKind::Host)),
          m_depth(m_cells.Depth()) {}
    ~StatementGuard() {
        m_cells.PopTo(m_depth);
        m_executor.LeaveRun(m_run);
    }
    StatementGuard(const StatementGuard&) = delete;
    StatementGuard& operator=(const StatementGuard&) = delete;

 private:
    Executor& m_executor;
    NameCells& m_cells;
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

/// The same for a statement. What `work` answers stands for a failure by its zero.
template <class Work>
auto RunStatement(CCoreScriptEngine& engine, Work work) -> decltype(work(*engine.State().executor)) {
    Executor& executor = *engine.State().executor;
    try {
        const StatementGuard guard(engine);
        return work(executor);
    } catch (const std::bad_alloc&) {
        executor.ReportOutOfMemory();
        return {};
    }
}

}  // namespace brenta
