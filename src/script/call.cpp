// Calls: script functions, the intrinsic method of numbers, requests to host objects, `reflect`.
#include <utility>

#include "brenta/dump.h"
#include "brenta/names.h"
#include "foundation/library_statics.h"
#include "foundation/numbers.h"
#include "script/code/function_plan.h"
#include "script/code/machine.h"
#include "script/executor.h"
#include "script/pooled_request.h"
#include "script/show_mark.h"
#include "script/value_limits.h"

namespace brenta {

namespace {

using Node = Executor::Node;

FunctionPlan* MakePlan(FuncSymbol& function, NameCells& cells) {
    auto plan = std::make_unique<FunctionPlan>();
    plan->cells = &cells;
    plan->isReflect = function.GetName() == StrId("reflect");
    for (TIter<ScriptSymbol*> at = function.GetFirstParam(); at.Get() != nullptr; at.Next())
        plan->parameters.push_back({&cells.CellOf((*at.Get())->GetName()), *at.Get()});
    SymbolAccess::SetPlan(function, plan.get(), [](FunctionPlan* old) { delete old; });
    return plan.release();
}

/// Texts that leave the engine become names, and the table of names must not fill up with them.
const char* ProblemAsNames(const Value& value) {
    if (value.IsString() && value.String()->length > kMaxNameLength) return "String too long.";
    if (!value.IsList()) return nullptr;
    for (std::uint32_t i = 0; i < value.List()->length; ++i) {
        const Value& item = value.List()->items[i];
        const char* problem = item.IsCounted() ? ProblemAsNames(item) : nullptr;
        if (problem != nullptr) return problem;
    }
    return nullptr;
}

}  // namespace

bool Executor::ToHost(const Value& value, Var& out, STRID name) {
    if (value.IsCounted()) {
        if (!HasRoomForNames()) return false;
        if (const char* problem = ProblemAsNames(value)) {
            m_unwindingSilently = true;
            Messages().Error("RunScript:", "%s", problem);
            return false;
        }
    }
    ToVar(value, name, out);
    return true;
}

bool Executor::HasRoomForNames() {
    if (GlobalStrings().GetPageCount() < kMaxNamePages) return true;
    m_unwindingSilently = true;
    Messages().Error("RunScript:", "%s", "String space exhausted.");
    return false;
}

// ---------------------------------------------------------------------------------------------------------
// Call nodes

/// `value` is the callee and becomes the result.
bool Executor::EvaluateCall(const Node& node, Value& value) {
    if (node.left == nullptr) return Fail(node, "Missing l-value.");
    const bool isMethod = std::exchange(m_calleeIsMethod, false);
    const std::size_t first = ArgumentMark();
    if (node.right != nullptr && !CollectItems(*node.right, false, nullptr)) return false;
    if (StopRequested()) return Interrupted(node.Position());
    if (value.IsFunction() && !isMethod)
        return CallFunction(*value.Function(), first, value) || ReportCall(node, kNoName);
    const STRID name = NameOfCallee(*node.left);
    return CallMethod(value, name, first, value) || ReportCall(node, name);
}

/// The name of a callee that is no function: of a method, or of the variable or element that is called.
STRID Executor::NameOfCallee(const Node& callee) {
    const Node* name = callee.kind == TOK_MEMBER ? callee.right : &callee;
    return name != nullptr && name->kind == ID ? name->name : kNoName;
}

bool Executor::ReportCall(const Node& node, STRID name) {
    if (m_unwindingSilently) return false;
    if (name == kNoName) return Fail(node, "Function call failed.");
    Messages().Error(node.Position(), "Function call '%s' failed.", StrPtr(name));
    return false;
}

// ---------------------------------------------------------------------------------------------------------
// Script functions

bool Executor::CallFunction(FuncSymbol& function, std::size_t first, Value& result) {
    FunctionPlan* plan = PrepareCall(function, m_arguments.size() - first);
    if (plan == nullptr) return false;
    if (plan->isReflect) return CallReflect(first, result);
    if (!m_state.useRegisterTier || !m_machine->Prepare(function, *plan))
        return CallTree(function, *plan, first, result);
    result.Clear();
    const bool called = m_machine->Run(function, *plan, first, result);
    DropArguments(first);
    return called;
}

bool Executor::CallTree(FuncSymbol& function, const FunctionPlan& plan, std::size_t first, Value& result) {
    const ShowMark shown(*this);
    m_machine->Show();
    m_cells.PushScope();
    std::size_t argument = first;
    for (const FunctionPlan::Parameter& parameter : plan.parameters)
        m_cells.Bind(*parameter.cell, parameter.symbol, std::move(m_arguments[argument++]));
    DropArguments(first);
    result.Clear();
    ExecStatus status = EXEC_OK;
    if (const CompoundStatement* body = function.GetBody()) {
        ++m_functionDepth;
        status = RunCompound(*body, result);
        --m_functionDepth;
    }
    m_cells.PopScope();
    if (status == EXEC_RETURN) return true;
    // Statements have used the slot for their own values; only `return` gives a function one.
    result.Clear();
    return status == EXEC_OK || ReportMisplacedJump(status);
}

/// The plan of a function that may be called with so many arguments. Null after a message.
FunctionPlan* Executor::PrepareCall(FuncSymbol& function, std::size_t supplied) {
    FunctionPlan* plan = SymbolAccess::Plan(function);
    if (plan == nullptr || plan->cells != &m_cells) {
        const NameCells* const home = SymbolAccess::Home(function);
        if (plan != nullptr || (home != nullptr && home != &m_cells)) {
            // Another engine's function: the names in it are not ours.
            Messages().Error("RunScript:", "Symbol '%s' is not a function.", StrPtr(function.GetName()));
            return nullptr;
        }
        plan = MakePlan(function, m_cells);
    }
    if (supplied == plan->parameters.size()) return plan;
    Messages().Error("RunScript:", "function '%s' has %d parameters, but %d were supplied.",
                     StrPtr(function.GetName()), static_cast<int>(plan->parameters.size()),
                     static_cast<int>(supplied));
    return nullptr;
}

bool Executor::ReportMisplacedJump(ExecStatus status) {
    if (status == EXEC_BREAK) Messages().Error("RunScript:", "%s", "Misplaced 'break' statement.");
    if (status == EXEC_CONTINUE) Messages().Error("RunScript:", "%s", "Misplaced 'continue' statement.");
    return false;
}

bool Executor::CallReflect(std::size_t first, Value& result) {
    const Value value(m_arguments[first]);
    DropArguments(first);
    result.Clear();
    return Reflect(value);
}

/// A refused description is printed all the same: it is what the object had to say.
bool Executor::Reflect(const Value& value) {
    const ShowMark shown(*this);
    DumpFormatter out;
    if (value.IsFunction()) {
        value.Function()->Dump(out);
    } else if (value.IsList()) {
        const ListBody& list = *value.List();
        for (std::uint32_t i = 0; i < list.length; ++i) {
            Var element;
            if (!ToHost(list.items[i], element, ItemName(list, i))) return false;
            element.Dump(out, false);
        }
    } else if (value.IsReference() && value.Reference() != nullptr) {
        RequestDescription(value.Reference(), out);
    }
    CoreString text;
    out.GetString(text);
    Messages().Print("%s", text());
    return true;
}

// ---------------------------------------------------------------------------------------------------------
// Methods

bool Executor::CallMethod(const Value& object, STRID name, std::size_t first, Value& result) {
    if (!object.IsReference()) return CallIntrinsic(object, name, first, result);
    void* const target = object.Reference();
    if (target == nullptr) {
        Messages().Error("RunScript:", "Symbol '%s' is set to a valid object.", StrPtr(name));
        return false;
    }
    const bool granted = RequestCall(target, name, std::span(m_arguments).subspan(first), result);
    DropArguments(first);
    return granted;
}

bool Executor::CallIntrinsic(const Value& number, STRID name, std::size_t first, Value& result) {
    static constexpr char kWhere[] = "IntrinsicFunction:";
    if (!number.IsNumeric() || name != StrId("Round")) {
        Messages().Error(kWhere, "%s", "Unrecognized intrinsic function.");
        return false;
    }
    if (m_arguments.size() - first != 1) {
        Messages().Error(kWhere, "%s", "Round takes 1 argument.");
        return false;
    }
    const double step = NumberOf(m_arguments[first]);
    if (!(step > 0)) {
        Messages().Error(kWhere, "%s", "Round argument must be greater than 0.");
        return false;
    }
    // Truncated, not floored: -1.2 rounds to 0 and -1.6 to -1.
    const int steps = DoubleToInt((NumberOf(number) + step * 0.5) / step);
    DropArguments(first);
    result = Value::OfFloat(step * steps);
    return true;
}

}  // namespace brenta
