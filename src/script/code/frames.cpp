// Entering the machine and leaving it.
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

// Functions with very many locals use the registers up before so many calls are nested that scripts rely on.
// As long as there are no more than this, further registers are taken. Such a block must be large enough for
// allocators to take it fresh from the system, too.
constexpr std::ptrdiff_t kGrowingFrames = 1 << 14;
constexpr std::size_t kFurtherRegisters = std::size_t{1} << 21;

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
    m_memory = AllocateZeroed(kRegisterBytes + kMaxFrames * sizeof(Frame));
    m_registersEnd = m_memory.get() + kMaxRegisters * sizeof(Value);
    m_firstFrame = reinterpret_cast<Frame*>(m_memory.get() + kRegisterBytes);
    m_framesEnd = m_firstFrame + kMaxFrames;
    m_frame = m_firstFrame;
    m_shownFrame = m_frame;
    *m_frame = {kExit, m_memory.get(), nullptr};
}

Machine::Block Machine::AllocateZeroed(std::size_t bytes) {
    Block block(static_cast<char*>(std::calloc(bytes, 1)), &std::free);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

bool Machine::Prepare(FuncSymbol& function, FunctionPlan& plan) {
    if (plan.epoch == m_epoch) return true;
    if (plan.runsAsTree) return false;
    Reserve();
    m_names.Update(function);
    if (m_names.HasChanged()) {
        Frame* const first = FirstInRegisters();
        MoveToCells(first, m_frame);
        Convert(first, m_frame);
        m_epoch = NextEpoch();
        m_names.NoteChangeDone();
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
          m_registersEnd(machine.m_registersEnd),
          m_showMark(machine.ShowMark()),
          m_depth(machine.m_cells.Depth()),
          m_addedScopes(machine.m_addedScopes),
          m_scopeIsPending(m_executor.m_scopeIsPending) {
        machine.m_cells.PushScope();
        ++m_executor.m_functionDepth;
        m_executor.m_scopeIsPending = false;
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
        m_machine.m_registersEnd = m_registersEnd;
        m_machine.m_cells.PopTo(m_depth);
        m_machine.m_addedScopes = m_addedScopes;
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
    const char* const m_registersEnd;
    const std::size_t m_showMark;
    const int m_depth;
    const std::int64_t m_addedScopes;
    const bool m_scopeIsPending;
};

char* Machine::FreeRegisters() const {
    return m_frame->base + (m_frame->code != nullptr ? m_frame->code->frameBytes : 0);
}

/// How many bytes of registers a further block has for a function and those that it calls. There must be a
/// frame for each register.
std::size_t Machine::FurtherBytes(const FunctionPlan& plan) const {
    const auto frames = static_cast<std::size_t>(m_framesEnd - m_frame) - 2;
    const std::size_t registers = std::min(kFurtherRegisters, frames);
    return std::max(registers * sizeof(Value), static_cast<std::size_t>(plan.frameBytes));
}

bool Machine::Run(FuncSymbol& function, const FunctionPlan& plan, std::size_t first, Value& result) {
    const bool hasRoom = HasRoom(FreeRegisters(), plan.frameBytes);
    const bool mayGrow = m_frame - m_firstFrame < kGrowingFrames;
    // Two frames: the entry's and the function's.
    if (m_executor.StackIsLow() || m_frame + 2 >= m_framesEnd || !(hasRoom || mayGrow))
        return Overflow(function);
    Block further{nullptr, &std::free};
    const std::size_t bytes = hasRoom ? 0 : FurtherBytes(plan);
    if (!hasRoom) further = AllocateZeroed(bytes + kConversionRegisters * sizeof(Value));
    char* const base = hasRoom ? FreeRegisters() : further.get();
    // So the frames that are not shown are always those of one entry.
    const Executor::ShowMark shown(m_executor);
    Show();
    const Entry entry(*this, base);
    if (!hasRoom) m_registersEnd = base + bytes;
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

}  // namespace brenta
