#include "script/run_guard.h"

#include "os/os.h"
#include "script/code/machine.h"
#include "script/pooled_request.h"
#include "script/value_limits.h"

namespace brenta {

RunGuard::RunGuard(CCoreScriptEngine& engine, Executor::RunKind kind)
    : m_state(engine.State()),
      m_cells(engine.Cells()),
      m_streams(engine),
      m_parser(m_state),
      m_run(m_state.executor->EnterRun(kind)),
      m_depth(m_cells.Depth()) {
    static_cast<ParserState&>(m_state) = ParserState();
    m_state.owner = &m_state.symbols;
    ++m_state.nestedRuns;
}

RunGuard::~RunGuard() {
    --m_state.nestedRuns;
    m_cells.PopTo(m_depth);
    m_state.executor->LeaveRun(m_run);
    static_cast<ParserState&>(m_state) = m_parser;
}

bool RunGuard::IsAllowed() const {
    return m_state.nestedRuns <= kMaxNestedRuns && !m_state.executor->StackIsLow();
}

// ---------------------------------------------------------------------------------------------------------

Executor::Executor(CCoreScriptEngine& engine)
    : m_engine(engine),
      m_state(engine.State()),
      m_cells(engine.Cells()),
      m_machine(std::make_unique<Machine>(*this)) {
    m_cells.SetHidden(m_machine.get());
}

Executor::~Executor() {
    m_cells.SetHidden(nullptr);
    DropRequestParts();
}

Executor::RunState Executor::EnterRun(RunKind kind) {
    OpenPendingScope();
    const RunState outer{m_stackFloor, m_arguments.size(), m_functionDepth, m_calleeIsMethod,
                         m_machine->ShowMark()};
    m_machine->Show();
    // A host may use the engine from one thread now and from another later.
    m_stackFloor = os::StackLimit();
    if (kind == RunKind::Host) m_functionDepth = 0;
    m_calleeIsMethod = false;
    return outer;
}

void Executor::LeaveRun(const RunState& outer) {
    m_stackFloor = outer.stackFloor;
    DropArguments(outer.argumentMark);
    m_functionDepth = outer.functionDepth;
    m_calleeIsMethod = outer.calleeIsMethod;
    m_machine->HideTo(outer.showMark);
    m_scopeIsPending = false;  // if it was, the scope was opened
    if (m_state.nestedRuns == 0) m_unwindingSilently = false;
}

void Executor::ReportOverflow() {
    m_unwindingSilently = m_state.nestedRuns > 0;
    Messages().Error("RunScript:", "%s", "Call stack overflow.");
}

void Executor::ReportOutOfMemory() {
    m_unwindingSilently = m_state.nestedRuns > 0;
    try {
        Messages().Error("", "%s", "Out of memory.");
    } catch (const std::bad_alloc&) {
        // Then the answer false has to do.
    }
}

}  // namespace brenta
