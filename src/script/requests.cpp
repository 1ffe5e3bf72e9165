// Requests to host objects.
//
// The object may do anything, also call back into this engine: no pointer into values or arguments is held
// across a request. Whatever it answers becomes the expression's value, even when it refuses.
#include "script/code/machine.h"
#include "script/pooled_request.h"
#include "script/show_mark.h"
#include "script/value_operators.h"
#include "script/var_access.h"

namespace brenta {

bool Executor::FromHost(const Var& var, Value& value) {
    switch (var.GetKind()) {
        case VarKind::Int:
            value = Value::OfInt(static_cast<int>(VarAccess::Number(var)));
            return true;
        case VarKind::Float:
            value = Value::OfFloat(VarAccess::Number(var));
            return true;
        case VarKind::Null:
            value.Clear();
            return true;
        default:
            return FromHostByRules(var, value);
    }
}

bool Executor::FromHostByRules(const Var& var, Value& value) {
    ConversionLimit limit = ConversionLimit::None;
    value = FromVar(var, &limit);
    if (limit == ConversionLimit::None) return true;
    Messages().Error("RunScript:", "%s", OpErrorText(OpErrorOf(limit)));
    return false;
}

// ---------------------------------------------------------------------------------------------------------

inline bool Executor::Request(void* object, int action, STRID name, PooledRequest& request) {
    CCoreScriptable::IOB block;
    block.context = &m_engine.m_values;
    block.action = action;
    block.name = name;
    block.arguments = &request.Arguments();
    block.result = &request.Answer();
    OpenPendingScope();
    const std::int64_t depth = m_cells.Depth() - m_machine->AddedScopes();
    const ShowMark shown(*this);
    const bool granted = static_cast<CCoreScriptable*>(object)->ScriptAction(block);
    m_cells.PopTo(static_cast<int>(depth + m_machine->AddedScopes()));
    // A limit that a nested run met is the object's affair if it goes on as if nothing had happened.
    if (granted) m_unwindingSilently = false;
    return granted;
}

inline bool Executor::RequestValue(void* object, int action, STRID name, PooledRequest& request,
                                   Value& result) {
    const bool granted = Request(object, action, name, request);
    const Var& answer = request.Answer();
    if (answer.GetKind() != VarKind::Float) return FromHost(answer, result) && granted;
    result = Value::OfFloat(VarAccess::Number(answer));
    return granted;
}

bool Executor::RequestGet(void* object, STRID name, Value& result) {
    PooledRequest request(*this);
    return RequestValue(object, CCoreScriptable::kGet, name, request, result);
}

/// Takes the arguments.
bool Executor::RequestCall(void* object, STRID name, std::span<Value> arguments, Value& result) {
    PooledRequest request(*this);
    if (!request.SetArguments(arguments)) return false;
    for (Value& argument : arguments) {
        if (argument.IsCounted()) argument.Clear();
    }
    return RequestValue(object, CCoreScriptable::kCall, name, request, result);
}

void Executor::RequestDescription(void* object, DumpFormatter& out) {
    PooledRequest request(*this);
    Request(object, CCoreScriptable::kDescribe, kNoName, request);
    request.Answer().Dump(out, true);
}

bool Executor::RequestElement(void* object, const Value& index, Value& result) {
    PooledRequest request(*this);
    if (!request.SetArguments({&index, 1})) return false;
    return RequestValue(object, CCoreScriptable::kGet, kNoName, request, result);
}

/// The value that was set stays the expression's, unless the object answers with another one.
bool Executor::RequestSet(void* object, STRID name, Value& value) {
    PooledRequest request(*this);
    if (!request.SetArguments({&value, 1})) return false;
    const bool granted = Request(object, CCoreScriptable::kSet, name, request);
    const Var& answer = request.Answer();
    return (answer.GetKind() == VarKind::Null || FromHost(answer, value)) && granted;
}

void Executor::DropRequestParts() {
    // One by one: a long chain that destroys itself would need as much stack.
    while (m_requests)
        m_requests = std::move(m_requests->deeper);
}

}  // namespace brenta
