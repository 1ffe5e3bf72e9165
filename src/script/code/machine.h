// The register tier: runs functions as register code, in one loop.
//
// Frames. All registers lie on one stack that never moves, each function's where its caller has put the
// arguments; a second stack says what each frame runs and where it is. A call of a script function within a
// script takes no native stack. That is left for what goes through a host object, an executed text, or an
// expression that is evaluated as a tree: then the machine is entered once more, above the frames in use. So
// it is for a call for which no registers are left, if not so many calls are nested: it gets another block.
//
// Slow ways. The loop does what is common: numbers, elements and members that are where they were last time,
// calls of functions whose code is there. All else it hands to a routine that does the whole instruction by
// the rules that the tree tier has, so that there is one truth for values and messages.
//
// Failures. A routine that fails has reported it, or is silent by rule. The frames of this entry are left,
// each call adding its message, and every counted register of theirs is freed.
//
// Showing. While a text is executed, or a host looks at names, the locals that live in registers must be
// found under their names: Show moves those of all frames into their cells, the outermost first, and HideTo
// moves them back, but for frames far below. Whoever runs code for a host or a text brackets it so. Should
// they have left something that code with locals in registers cannot see - a variable bound in a running
// function's scope, a module that uses a name which so far nobody used freely - the locals stay in their
// cells, and the frames go on in the other form of their code, which has all locals there. HideTo runs on the
// way out of failures, also when memory has run out, so it needs none: Show gets ready whatever it may need.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "script/code/function_plan.h"
#include "script/code/name_use.h"
#include "script/executor.h"

namespace brenta {

class Machine final : public NameCells::Hidden {
 public:
    using Node = ExpressionNode;

    explicit Machine(Executor& executor);
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    /// Makes the code of a function if there is none that is still good. False if it runs as a tree.
    bool Prepare(FuncSymbol& function, FunctionPlan& plan);
    /// Calls a prepared function with the arguments from `first` on, as many as it has parameters.
    bool Run(FuncSymbol& function, const FunctionPlan& plan, std::size_t first, Value& result);

    /// Shows the locals of all frames, those that are shown already excepted.
    void Show() override;
    std::size_t ShowMark() const { return m_shown.size(); }
    /// The scopes of functions that have been opened on behalf of others: a caller of others goes back to the
    /// depth it had, and what has been added to this meanwhile.
    std::int64_t AddedScopes() const { return m_addedScopes; }
    void HideTo(std::size_t mark) {
        while (m_shown.size() > mark)
            Hide();
    }

 private:
    struct Frame {
        const Instruction* pc;  ///< where the function is, while others run
        char* base;
        FunctionCode* code;  ///< null: the frame of an entry, which is no function's
    };

    /// One Show.
    struct Shown {
        Frame* below;  ///< the last frame before the first that was shown
        Frame* first;  ///< those whose locals will be moved back; none if `first` is behind `last`
        Frame* last;
        int depth;         ///< of the scopes, with those that were opened
        std::size_t mark;  ///< of the log behind what was shown
        std::uint64_t epoch;
    };

    /// What one entry has of its own, put back on every way out.
    class Entry;

    // The loop (machine.cpp).
    bool Loop();
    bool StopRequested() const { return m_stop.load(std::memory_order_relaxed); }

    // Frames (frames.cpp).
    using Block = std::unique_ptr<char, decltype(&std::free)>;
    static Block AllocateZeroed(std::size_t bytes);
    void Reserve();
    std::size_t FurtherBytes(const FunctionPlan& plan) const;
    /// Every frame has registers, so that there are enough frames for them.
    bool HasRoom(const char* base, std::int64_t bytes) const { return m_registersEnd - base >= bytes; }
    char* FreeRegisters() const;
    void PushFrame(char* base, FunctionCode* code) {
        ++m_frame;
        m_frame->base = base;
        m_frame->code = code;
    }
    void ReportCalls(const Frame* entry);
    bool Overflow(const FuncSymbol& function);

    // Showing (show_frames.cpp).
    Frame* FirstInRegisters() const;
    std::size_t GetReady(const Frame* first, const Frame* last);
    void MoveToCells(const Frame* first, const Frame* last);
    void MoveBack(const Frame* first, const Frame* last);
    void BindSlots(const Frame& frame, const ScopeRecord& scope);
    void UnbindSlots(const Frame& frame, const ScopeRecord& scope);
    void Convert(Frame* first, Frame* last);
    void Hide();

    // The slow ways. Each does what `pc` says; false or null after a failure (slow_operators.cpp).
    bool SlowLoad(const Instruction* pc);
    bool SlowStore(const Instruction* pc);
    bool SlowStoreCell(const Instruction* pc);
    bool SlowBinary(const Instruction* pc);
    bool AppendToSelf(const Instruction* pc);
    bool SlowUnary(const Instruction* pc);
    bool SlowCombine(const Instruction* pc);
    bool SlowCombineCell(const Instruction* pc);
    /// Whether the relation at hand holds. Numbers as right operands come separately.
    bool SlowRelation(const Instruction* pc, bool& holds);
    bool SlowCondition(const Instruction* pc, bool& holds);
    const Instruction* Grow(const Instruction* pc);
    bool Apply(const Node& node, const Value& left, const Value& right, Value& result);
    bool StoreResult(const Instruction* pc, Value result);
    bool Interrupted(const Instruction* pc);

    // Lists and objects (slow_elements.cpp).
    bool SlowAppend(const Instruction* pc);
    bool SlowCheckContainer(const Instruction* pc);
    bool SlowGetElement(const Instruction* pc);
    bool SlowSetElement(const Instruction* pc);
    bool SlowGetMember(const Instruction* pc);
    bool GetProperty(const Instruction* pc);
    bool SetProperty(const Instruction* pc);
    bool SlowSetMember(const Instruction* pc);
    bool StoreElement(const Instruction* pc, Value& list, std::uint32_t index);
    bool CombineProperty(const Instruction* pc, void* object);

    // Calls and statements (slow_calls.cpp).
    const Instruction* SlowCall(const Instruction* pc);
    bool CallNatively(const Instruction* pc, FuncSymbol& function);
    bool CallObject(const Instruction* pc);
    bool FindMethod(const Instruction* pc);
    bool CallMethod(const Instruction* pc);
    bool RequestMethod(const Instruction* pc, STRID name);
    std::size_t PushArguments(Value* first, int count);
    bool Declare(const Instruction* pc);
    bool DeclareSlot(const Instruction* pc);
    bool Evaluate(const Instruction* pc);
    bool Print(const Instruction* pc);
    const Instruction* Execute(const Instruction* pc);
    bool ReportMisplaced(const Instruction* pc);

    // What the slow ways share. The code of others may look at the frame, so the frame is told where it is;
    // and it may have to be converted, so whoever has let others run goes on where the frame says.
    const Node& Note(const Instruction* pc) {
        m_frame->pc = pc;
        return m_frame->code->NodeAt(pc);
    }
    Value& Register(std::int64_t place) const { return *reinterpret_cast<Value*>(m_frame->base + place); }
    Value& D(const Instruction* pc) const { return Register(pc->d); }
    Value& A(const Instruction* pc) const { return Operand(pc->aFrom, pc->a); }
    Value& B(const Instruction* pc) const { return Operand(pc->bFrom, pc->b); }
    Value& Operand(Origin from, std::int64_t at) const {
        return from == kFrame ? Register(at) : *reinterpret_cast<Value*>(at);
    }
    bool IsTemporary(Origin from, std::int64_t at) const {
        return from == kFrame && m_frame->code->IsTemporary(at);
    }
    /// The operand a, moved if it is a temporary.
    Value TakeA(const Instruction* pc) const { return Take(A(pc), IsTemporary(pc->aFrom, pc->a)); }
    /// The value to be stored.
    Value TakeStored(const Instruction* pc) const {
        return Take(Operand(pc->dFrom, pc->d), IsTemporary(pc->dFrom, pc->d));
    }
    static Value Take(Value& value, bool isTemporary) {
        return isTemporary ? Value(std::move(value)) : Value(value);
    }
    void DropA(const Instruction* pc) const {
        if (IsTemporary(pc->aFrom, pc->a)) A(pc).Clear();
    }
    void DropB(const Instruction* pc) const {
        if (IsTemporary(pc->bFrom, pc->b)) B(pc).Clear();
    }

    Executor& m_executor;
    NameCells& m_cells;
    const std::atomic<bool>& m_stop;
    NameUse m_names;
    std::uint64_t m_epoch;
    Block m_memory{nullptr, &std::free};  // registers, then frames
    const char* m_registersEnd = nullptr;
    const Frame* m_framesEnd = nullptr;
    Frame* m_firstFrame = nullptr;  // stands below all entries
    Frame* m_frame = nullptr;       // of the function that runs
    Frame* m_shownFrame = nullptr;  // up to here all frames are shown
    std::vector<Shown> m_shown;
    NameCells::Taken m_taken;
    std::int64_t m_addedScopes = 0;
    std::uint32_t m_conversions = 0;                       // counts calls of Convert
    std::vector<std::unique_ptr<FunctionCode>> m_retired;  // replaced, but frames may run it
};

}  // namespace brenta
