// Calls that are not of a script function whose code is there, and what statements do by the tree tier's
// means.
#include <span>
#include <utility>

#include "os/os.h"
#include "script/code/machine.h"
#include "script/symbol_access.h"

namespace brenta {
// ---------------------------------------------------------------------------------------------------------
// Calls

/// The next instruction: the same once more when only the code was missing.
const Instruction* Machine::SlowCall(const Instruction* pc) {
    const Node& node = Note(pc);
    const Value callee(A(pc));
    const Instruction* const failed = nullptr;
    if (callee.IsUndefined()) return m_executor.ReportUndefined(*node.left), failed;
    if (StopRequested()) return m_executor.Interrupted(node.Position()), failed;
    if (!callee.IsFunction()) return CallObject(pc) ? m_frame->pc + 1 : failed;
    FuncSymbol& function = *callee.Function();
    FunctionPlan* const plan = m_executor.PrepareCall(function, static_cast<std::size_t>(pc->n));
    const bool isReady = plan != nullptr && !plan->isReflect && Prepare(function, *plan);
    if (isReady && HasRoom(m_frame->base + pc->d, plan->frameBytes)) return m_frame->pc;
    const bool called = plan != nullptr && CallNatively(m_frame->pc, function);
    return called || m_executor.ReportCall(node, kNoName) ? m_frame->pc + 1 : failed;
}

std::size_t Machine::PushArguments(Value* first, int count) {
    const std::size_t mark = m_executor.ArgumentMark();
    for (int i = 0; i < count; ++i)
        m_executor.PushArgument(std::move(first[i]));
    return mark;
}

/// `reflect`, functions that run as trees, and calls for which there are no registers left.
bool Machine::CallNatively(const Instruction* pc, FuncSymbol& function) {
    const std::size_t first = PushArguments(&D(pc), pc->n);
    Value result;
    if (!m_executor.CallFunction(function, first, result)) return false;
    D(m_frame->pc) = std::move(result);
    return true;
}

bool Machine::CallObject(const Instruction* pc) {
    const Node& node = m_frame->code->NodeAt(pc);
    Value value = TakeA(pc);
    const std::size_t first = PushArguments(&D(pc), pc->n);
    const STRID name = m_executor.NameOfCallee(*node.left);
    if (!m_executor.CallMethod(value, name, first, value)) return m_executor.ReportCall(node, name);
    D(m_frame->pc) = std::move(value);
    return true;
}

/// An element of a structure is called as what it is; any other object gets a request.
bool Machine::FindMethod(const Instruction* pc) {
    const Node& node = Note(pc);
    Value& callee = D(pc);
    const bool isMethod = !callee.IsList();
    if (!isMethod && !m_executor.GetMember(node, true, callee)) return false;
    (&callee)[1] = Value::OfBool(isMethod);
    return true;
}

bool Machine::RequestMethod(const Instruction* pc, STRID name) {
    Value* const window = &D(pc);
    const std::span arguments(window + 2, static_cast<std::size_t>(pc->n));
    if (StopRequested()) return m_executor.Interrupted(m_frame->code->NodeAt(pc).Position());
    Value value;
    if (!m_executor.RequestCall(window->Reference(), name, arguments, value))
        return m_executor.ReportCall(m_frame->code->NodeAt(m_frame->pc), name);
    D(m_frame->pc) = std::move(value);
    return true;
}

bool Machine::CallMethod(const Instruction* pc) {
    const Node& node = Note(pc);
    Value* const window = &D(pc);  // the callee, what it is, the arguments
    const bool isMethod = window[1].Int() != 0;
    if (isMethod && window[0].IsReference() && window[0].Reference() != nullptr)
        return RequestMethod(pc, m_executor.NameOfCallee(*node.left));
    Value value = std::move(window[0]);
    const std::size_t first = PushArguments(window + 2, pc->n);
    if (StopRequested()) return m_executor.Interrupted(node.Position());
    if (value.IsFunction() && !isMethod) {
        if (!m_executor.CallFunction(*value.Function(), first, value))
            return m_executor.ReportCall(node, kNoName);
    } else {
        const STRID name = m_executor.NameOfCallee(*node.left);
        if (!m_executor.CallMethod(value, name, first, value)) return m_executor.ReportCall(node, name);
    }
    D(m_frame->pc) = std::move(value);
    return true;
}

// ---------------------------------------------------------------------------------------------------------
// Declarations and trees

bool Machine::Declare(const Instruction* pc) {
    m_frame->pc = pc;
    return m_executor.BindDeclared(*reinterpret_cast<const DeclarationStatement*>(pc->a));
}

bool Machine::DeclareSlot(const Instruction* pc) {
    m_frame->pc = pc;
    const auto& declaration = *reinterpret_cast<const DeclarationStatement*>(pc->a);
    Value value(SymbolAccess::StartValue(*declaration.GetSymbol()));
    D(pc) = value;
    if (declaration.GetSymbol()->GetClass() == nullptr && declaration.GetScriptableClass() == kNoName)
        return true;
    if (!m_executor.ConstructDeclared(declaration, value)) return false;
    const bool isStillSlot = m_frame->pc->op == Op::DeclareSlot;
    (isStillSlot ? D(pc) : declaration.GetCell()->value) = std::move(value);
    return true;
}

bool Machine::Evaluate(const Instruction* pc) {
    const Node& node = Note(pc);
    if (pc->n != 0) return m_executor.EvaluateForEffect(&node);
    Value value;
    if (!m_executor.Evaluate(node, value)) return false;
    return StoreResult(m_frame->pc, std::move(value));
}

// ---------------------------------------------------------------------------------------------------------
// Statements

bool Machine::Print(const Instruction* pc) {
    return m_executor.PrintValue(Note(pc), TakeA(pc));
}

/// The four ways on stand behind the instruction, in the order of the outcomes.
const Instruction* Machine::Execute(const Instruction* pc) {
    m_frame->pc = pc;
    const auto& statement = *reinterpret_cast<const ExecStatement*>(pc->a);
    const Value text = std::move(D(pc));
    Value result;
    switch (m_executor.RunText(text, statement, result)) {
        case EXEC_OK:
            return m_frame->pc + 1;
        case EXEC_BREAK:
            return m_frame->pc + 2;
        case EXEC_CONTINUE:
            return m_frame->pc + 3;
        case EXEC_RETURN:
            D(m_frame->pc) = std::move(result);
            return m_frame->pc + 4;
        case EXEC_FAILED:
            break;
    }
    return nullptr;
}

bool Machine::ReportMisplaced(const Instruction* pc) {
    m_frame->pc = pc;
    return m_executor.ReportMisplacedJump(pc->n == TOK_BREAK ? EXEC_BREAK : EXEC_CONTINUE);
}

}  // namespace brenta
