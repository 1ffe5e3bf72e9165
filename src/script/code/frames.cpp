// Entering the machine, leaving it, and showing locals to others.
#include <algorithm>
#include <atomic>
#include <new>
#include <utility>

#include "script/code/compiler.h"
#include "script/code/machine.h"
#include "script/show_mark.h"

namespace brenta {
namespace {

/// How deep calls can go. The stacks take memory only as far as they are used.
constexpr std::size_t kMaxRegisters = std::size_t{1} << 20;
constexpr std::size_t kMaxFrames = kMaxRegisters + 1;

// The form of a function's code with all locals in cells takes a few temporaries more, one for each operator
// that an expression nests at most - and the parser lets it nest some thousand. A frame that is converted
// when the registers are all in use finds them here.
constexpr std::size_t kConversionRegisters = std::size_t{1} << 16;

/// Nobody's epoch twice, not even another engine's.
std::uint64_t NextEpoch() {
    static std::atomic<std::uint64_t> last{0};
    return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

/// A return to the frame of an entry goes on at the second.
constexpr Instruction kExit[2] = {{Op::Exit, kFrame, kFixed, kFixed, 0, 0, 0, 0},
                                  {Op::Exit, kFrame, kFixed, kFixed, 0, 0, 0, 0}};

}  // namespace

Machine::Machine(Executor& executor)
    : m_executor(executor),
      m_cells(executor.m_cells),
      m_stop(executor.m_state.stopRequested),
      m_names(executor.m_state, executor.m_cells),
      m_epoch(NextEpoch()) {}

/// Made at the first call. Zeroed memory is full of registers that hold nothing. One block for both stacks is
/// so large that an allocator takes it fresh from the system, zeroed without being touched.
void Machine::Reserve() {
    if (m_memory != nullptr) return;
    constexpr std::size_t kRegisterBytes = (kMaxRegisters + kConversionRegisters) * sizeof(Value);
    m_memory.reset(static_cast<char*>(std::calloc(kRegisterBytes + kMaxFrames * sizeof(Frame), 1)));
    if (m_memory == nullptr) throw std::bad_alloc();
    m_registersEnd = m_memory.get() + kMaxRegisters * sizeof(Value);
    m_firstFrame = reinterpret_cast<Frame*>(m_memory.get() + kRegisterBytes);
    m_framesEnd = m_firstFrame + kMaxFrames;
    m_frame = m_firstFrame;
    m_shownFrame = m_frame;
    *m_frame = {kExit, m_memory.get(), nullptr};
}

bool Machine::Prepare(FuncSymbol& function, FunctionPlan& plan) {
    if (plan.epoch == m_epoch) return true;
    if (plan.runsAsTree) return false;
    Reserve();
    if (m_names.Update(function)) {
        m_epoch = NextEpoch();
        Convert(m_shownFrame + 1, m_frame);
    }
    const LocalsIn form = m_executor.m_state.useRegisterLocals ? LocalsIn::Registers : LocalsIn::Cells;
    std::unique_ptr<FunctionCode> code = Compiler::Compile(function, m_cells, m_names, form);
    plan.runsAsTree = code == nullptr;
    if (plan.runsAsTree) return false;
    if (plan.code != nullptr && m_frame != m_firstFrame) m_retired.push_back(std::move(plan.code));
    plan.code = std::move(code);
    plan.entry = plan.code->instructions.data();
    plan.frameBytes = plan.code->frameBytes;
    plan.parameterCount = function.GetParamCount();
    plan.epoch = m_epoch;
    return true;
}

// ---------------------------------------------------------------------------------------------------------
// Entries

class Machine::Entry {
 public:
    Entry(Machine& machine, char* base)
        : m_machine(machine),
          m_executor(machine.m_executor),
          m_base(base),
          m_frame(machine.m_frame),
          m_showMark(machine.ShowMark()),
          m_depth(machine.m_cells.Depth()),
          m_scopeIsPending(std::exchange(m_executor.m_scopeIsPending, false)) {
        ++m_executor.m_functionDepth;
        machine.m_cells.PushScope();
        machine.PushFrame(base, nullptr);
        machine.m_frame->pc = kExit;
    }
    /// Also when memory has run out in the midst of a call.
    ~Entry() {
        m_machine.HideTo(m_showMark);
        const Frame& top = *m_machine.m_frame;
        if (top.code != nullptr) {
            for (char* at = m_base; at != top.base + top.code->frameBytes; at += sizeof(Value))
                reinterpret_cast<Value*>(at)->Clear();
        }
        m_machine.m_frame = m_frame;
        m_machine.m_cells.PopTo(m_depth);
        --m_executor.m_functionDepth;
        m_executor.m_scopeIsPending = m_scopeIsPending;
        if (m_frame == m_machine.m_firstFrame) m_machine.m_retired.clear();
    }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

 private:
    Machine& m_machine;
    Executor& m_executor;
    char* const m_base;
    Frame* const m_frame;
    const std::size_t m_showMark;
    const int m_depth;
    const bool m_scopeIsPending;
};

char* Machine::FreeRegisters() const {
    return m_frame->base + (m_frame->code != nullptr ? m_frame->code->frameBytes : 0);
}

bool Machine::Run(FuncSymbol& function, const FunctionPlan& plan, std::size_t first, Value& result) {
    char* const base = FreeRegisters();
    // Two frames: the entry's and the function's.
    if (m_executor.StackIsLow() || m_frame + 2 >= m_framesEnd || !HasRoom(base, plan.frameBytes))
        return Overflow(function);
    // So the frames that are not shown are always those of one entry.
    const Executor::ShowMark shown(m_executor);
    Show();
    const Entry entry(*this, base);
    const Frame* const entryFrame = m_frame;
    for (std::int32_t i = 0; i < plan.parameterCount; ++i)
        reinterpret_cast<Value*>(base)[i] = m_executor.TakeArgument(first + static_cast<std::size_t>(i));
    PushFrame(base, plan.code.get());
    m_frame->pc = plan.entry;
    if (!Loop()) {
        ReportCalls(entryFrame);
        return false;
    }
    result = std::move(*reinterpret_cast<Value*>(base));
    return true;
}

bool Machine::Overflow(const FuncSymbol& function) {
    if (function.GetBody() == nullptr) return m_executor.FailLimit(ScriptPosition(), "Call stack overflow.");
    return m_executor.Overflow(*function.GetBody()) != EXEC_FAILED;
}

/// The calls that a failure has brought down, each saying so.
void Machine::ReportCalls(const Frame* entry) {
    for (const Frame* caller = m_frame - 1; caller > entry; --caller)
        m_executor.ReportCall(caller->code->NodeAt(caller->pc), kNoName);
}

// ---------------------------------------------------------------------------------------------------------
// Showing
//
// Locals shown count as bound outside the scope that is open, but for those of the innermost scope, which are
// in it: a text that declares one of these once more is told so. The frame of the first entry has opened a
// scope, so that none of them is taken for global.

namespace {

constexpr std::uint32_t kShownDepth = 2;

const ScopeRecord* InnermostScope(const FunctionCode& code, std::uint32_t index) {
    const ScopeRecord* innermost = nullptr;
    for (const ScopeRecord& scope : code.scopes)
        if (scope.Contains(index)) innermost = &scope;
    return innermost;
}

}  // namespace

void Machine::Show() {
    if (m_frame == m_shownFrame) return;
    m_shown.push_back({m_shownFrame, m_frame, m_cells.Depth(), 0, 0, m_epoch});
    for (const Frame* frame = m_shownFrame + 1; frame <= m_frame; ++frame)
        if (frame->code != nullptr) ShowFrame(*frame);
    m_shownFrame = m_frame;
    m_shown.back().depthShown = m_cells.Depth();
    m_addedScopes += m_cells.Depth() - m_shown.back().depth;
    m_shown.back().mark = m_cells.Mark();
}

void Machine::ShowFrame(const Frame& frame) {
    const std::uint32_t index = frame.code->IndexOf(frame.pc);
    const ScopeRecord* innermost = &frame == m_frame ? InnermostScope(*frame.code, index) : nullptr;
    for (const ScopeRecord& scope : frame.code->scopes) {
        if (!scope.Contains(index)) continue;
        if (&scope == innermost && !scope.isOpened) m_cells.PushScope();
        const auto depth = static_cast<std::uint32_t>(m_cells.Depth());
        ShowScope(frame, scope, &scope == innermost ? depth : kShownDepth);
    }
}

void Machine::ShowScope(const Frame& frame, const ScopeRecord& scope, std::uint32_t depth) {
    const std::uint32_t index = frame.code->IndexOf(frame.pc);
    for (const Slot& slot : scope.slots) {
        if (slot.from > index) continue;
        Value& value = *reinterpret_cast<Value*>(frame.base + slot.place);
        m_cells.BindAt(*slot.cell, slot.symbol, std::move(value), depth);
    }
}

/// In the opposite order, so that of several bindings of a name each finds its own value. What others have
/// bound meanwhile stays bound, in the innermost scope.
void Machine::Hide() {
    const Shown shown = m_shown.back();
    m_shown.pop_back();
    m_cells.PopTo(shown.depthShown);
    std::vector<NameCells::Loose> loose = m_cells.Unbind(shown.mark);
    for (const Frame* frame = shown.last; frame != shown.below; --frame)
        if (frame->code != nullptr) HideFrame(*frame);
    m_cells.PopTo(shown.depth);
    m_addedScopes -= shown.depthShown - shown.depth;
    m_shownFrame = shown.below;
    if (!loose.empty() || shown.epoch != m_epoch) Convert(shown.below + 1, shown.last);
    m_cells.Rebind(std::move(loose));
}

void Machine::HideFrame(const Frame& frame) {
    const std::uint32_t index = frame.code->IndexOf(frame.pc);
    for (auto scope = frame.code->scopes.rbegin(); scope != frame.code->scopes.rend(); ++scope)
        if (scope->Contains(index)) HideScope(frame, *scope);
}

void Machine::HideScope(const Frame& frame, const ScopeRecord& scope) {
    const std::uint32_t index = frame.code->IndexOf(frame.pc);
    for (auto slot = scope.slots.rbegin(); slot != scope.slots.rend(); ++slot) {
        if (slot->from > index) continue;
        Value& value = *reinterpret_cast<Value*>(frame.base + slot->place);
        value = std::move(slot->cell->value);
        m_cells.UndoLast();
    }
}

// ---------------------------------------------------------------------------------------------------------
// Converting
//
// The frames of one entry, which are not shown, with nothing else's scopes among theirs, go over to the other
// form of their code, in the midst of an instruction at which others have run. Their scopes are taken off the
// log and put back in the same order, with those that had not been opened, and with the locals from the
// registers in them.

void Machine::Convert(Frame* first, Frame* last) {
    ++m_conversions;
    std::vector<std::vector<NameCells::Loose>> bindings;
    for (const Frame* frame = last; frame >= first; --frame)
        if (frame->code != nullptr) CollectBindings(*frame, bindings);
    for (Frame* frame = first; frame <= last; ++frame)
        if (frame->code != nullptr) ConvertFrame(*frame, bindings);
}

/// What the open scopes of a frame have bound, innermost first.
void Machine::CollectBindings(const Frame& frame, std::vector<std::vector<NameCells::Loose>>& bindings) {
    const std::uint32_t index = frame.code->IndexOf(frame.pc);
    for (auto scope = frame.code->scopes.rbegin(); scope != frame.code->scopes.rend(); ++scope) {
        if (!scope->Contains(index) || !scope->isOpened) continue;
        bindings.push_back(m_cells.Unbind(m_cells.TopMark()));
        m_cells.PopScope();
    }
}

void Machine::ConvertFrame(Frame& frame, std::vector<std::vector<NameCells::Loose>>& bindings) {
    FunctionCode& code = *frame.code;
    const std::uint32_t index = code.IndexOf(frame.pc);
    for (const ScopeRecord& scope : code.scopes) {
        if (!scope.Contains(index)) continue;
        m_cells.PushScope();
        if (!scope.isOpened) ++m_addedScopes;
        if (scope.isOpened) {
            m_cells.Rebind(std::move(bindings.back()));
            bindings.pop_back();
        }
        ShowScope(frame, scope, static_cast<std::uint32_t>(m_cells.Depth()));
    }
    const auto point = std::lower_bound(code.points.begin(), code.points.end(), index);
    const bool isAtPoint = point != code.points.end() && *point == index;
    // A function that is failing runs no further.
    if (code.form == LocalsIn::Cells || !isAtPoint) return;
    if (code.inCells == nullptr) code.inCells = Compiler::CompileInCells(code, m_cells, m_names);
    const std::uint32_t target = code.inCells->points[static_cast<std::size_t>(point - code.points.begin())];
    frame.code = code.inCells.get();
    frame.pc = frame.code->instructions.data() + target;
}

}  // namespace brenta
