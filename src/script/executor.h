// The tree tier: runs statement trees on the engine's values and name cells.
//
// One executor per engine. The Execute functions of the statement classes are thin boundaries over Run; what
// happens behind them works on Values, never on Vars, and looks no name up: the nodes of an expression hold
// the cells of the names they mention and the values of their constants.
//
// Depth. A tree is as deep along its left as its text is long, so nobody recurses to the left: EvaluateSpine
// goes down in a loop and comes back up by the nodes' parent links. Recursion is left for right operands,
// groups, arguments, nested statements and calls, and every one of these roads passes a place that compares
// the stack left with a reserve (StackIsLow). A script that goes too deep gets "Call stack overflow." once,
// at the place where it happened, and the engine goes on working. The functions on the road of a call are
// kept lean for the same reason: what is rare or bulky (messages, requests to host objects) stands in
// functions of its own.
//
// References. Storage is never held by pointer while script code may run. An assignment first finds out where
// it stores - a variable, or a path of elements below one, or a property of an object - as a Place, and walks
// the path again when the time comes to store (assign.cpp).
//
// Failure. A function that returns false (or EXEC_FAILED) has had its message reported, or is silent by rule.
// Scopes, arguments and counters are not cleaned up on the way out: the run guard of the entry point does it
// for all of them (run_guard.h), std::bad_alloc included.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "brenta/script.h"
#include "script/engine_state.h"
#include "script/name_cells.h"
#include "script/sub_expression.h"
#include "script/value.h"
#include "script/value_operators.h"

namespace brenta {

class Machine;
struct Place;

class Executor {
 public:
    using Node = ExpressionStatement::SubExpr;

    explicit Executor(CCoreScriptEngine& engine);
    ~Executor();
    Executor(const Executor&) = delete;
    Executor& operator=(const Executor&) = delete;

    // --- statements (execute_statements.cpp)

    ExecStatus Run(const Statement& statement, Value& result);
    /// Runs the statements of a command in the scope that is open.
    bool RunCommand(const CompoundStatement& command, Value& result);
    /// Appends what `print` shows of a value; what a message would cut off is not collected.
    OpError AppendOutput(const Value& value, CoreString& text);

    // --- calls (call.cpp). Arguments are the values on the argument stack from `first` on; a call that is
    // made takes them off.

    std::size_t ArgumentMark() const { return m_arguments.size(); }
    void PushArgument(Value argument) { m_arguments.push_back(std::move(argument)); }
    bool CallFunction(FuncSymbol& function, std::size_t first, Value& result);
    /// Calls what is no function: a method of an object, an intrinsic method of a number.
    bool CallMethod(const Value& object, STRID name, std::size_t first, Value& result);
    bool CallIntrinsic(const Value& number, STRID name, std::size_t first, Value& result);
    bool Reflect(const Value& value);

    /// Values across the engine's boundary. False after a message: a text too long to become a name, a list
    /// beyond the limits.
    bool ToHost(const Value& value, Var& out, STRID name = kNoName);
    bool FromHost(const Var& var, Value& value);
    bool FromHostByRules(const Var& var, Value& value);
    /// Whether the table of names has room for what a script brings. False after a message.
    bool HasRoomForNames();

    // --- objects (construct.cpp)

    /// Runs the initialisers of a new instance, which holds its members' declared values: those of the bases
    /// first. `next` is the place of the first member, and is moved on.
    bool ConstructMembers(const ClassSymbol& cls, Value& instance, std::size_t& next);

    // --- for the run guard (run_guard.cpp)

    /// What a run has of its own and a nested run must not disturb.
    struct RunState {
        std::uintptr_t stackFloor;
        std::size_t argumentMark;
        int functionDepth;
        bool calleeIsMethod;
        std::size_t showMark;
    };
    /// A run for a host begins outside all functions; one for `execute` stays where it is.
    enum class RunKind { Host, Text };
    RunState EnterRun(RunKind kind);
    void LeaveRun(const RunState& outer);
    bool StackIsLow() const {
        return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) < m_stackFloor;
    }
    void ReportOverflow();
    void ReportOutOfMemory();

 private:
    friend class Machine;
    class ShowMark;
    class PooledRequest;
    struct RequestParts;

    CScriptMsgStream& Messages() const { return *m_engine.m_pMessages; }
    bool Fail(const Node& at, const char* text);
    bool FailOperator(const Node& at, OpError error);
    bool FailLimit(const ScriptPosition& at, const char* text);
    bool Overflow(const Node& at) { return FailLimit(at.Position(), "Call stack overflow."); }
    ExecStatus Overflow(const Statement& at);
    void OpenPendingScope() {
        if (!m_scopeIsPending) return;
        m_cells.PushScope();
        m_scopeIsPending = false;
    }
    bool StopRequested() const { return m_state.stopRequested.load(std::memory_order_relaxed); }
    bool Interrupted(const ScriptPosition& at);

    // Statements.
    ExecStatus RunDeclaration(const DeclarationStatement& declaration);
    bool BindDeclared(const DeclarationStatement& declaration);
    ExecStatus RunCompound(const CompoundStatement& block, Value& result);
    ExecStatus RunExpression(const ExpressionStatement& expression, Value& result);
    ExecStatus RunConditional(const ConditionalStatement& statement, Value& result);
    ExecStatus RunIteration(const IterationStatement& loop, Value& result);
    ExecStatus RunLoop(const IterationStatement& loop, Value& result);
    ExecStatus RunForeach(const IterationStatement& loop, Value& result);
    ExecStatus RunJump(const JumpStatement& jump, Value& result);
    ExecStatus RunPrint(const PrintStatement& print);
    ExecStatus RunExec(const ExecStatement& statement, Value& result);
    ExecStatus RunText(const Value& value, const ExecStatement& statement, Value& result);
    ExecStatus RunParsed(const CoreString& text, const ExecStatement& statement, Value& result);
    bool MayGoOn(const IterationStatement& loop, ExecStatus& status);
    bool PrintValue(const Node& at, const Value& value);
    bool EvaluateCondition(const ExpressionStatement* condition, bool& holds);
    bool EvaluateForEffect(const Node* root);
    bool EvaluateTree(const Node* root, Value& value);

    // Expressions (evaluate.cpp).
    bool Evaluate(const Node& node, Value& value);
    bool EvaluateSpine(const Node& root, Value& value);
    bool Begin(const Node& node, Value& value);
    bool Continue(const Node& node, Value& value);
    bool ApplyToPlain(const Node& node, Value& value);
    bool Apply(const Node& node, const Value& left, const Value& right, Value& result);
    bool ApplyNested(const Node& node, Value& value);
    bool ApplyUnary(const Node& node, Value& value);
    bool EvaluateOperand(const Node& node, Value& value);
    bool LoadName(const Node& node, Value& value);
    bool ReportUndefined(const Node& name);
    bool BuildList(const Node& node, Value& list);
    bool CollectItems(const Node& contents, bool mayTrail, Value* list);
    bool CollectItem(const Node& item, Value* list);
    bool GetMember(const Node& node, bool isCallee, Value& value);
    bool GetElement(const Node& node, Value& value);
    bool GetElementAt(const Node& node, const Value& container, const Value& index, Value& value);
    bool CheckContainer(const Node& node, const Value& container);
    bool FindElement(const Node& node, const ListBody& list, const Value& index, std::uint32_t& place);

    // Calls (call.cpp, requests.cpp).
    bool EvaluateCall(const Node& node, Value& value);
    bool ReportCall(const Node& node, STRID name);
    static STRID NameOfCallee(const Node& callee);
    bool CallTree(FuncSymbol& function, const FunctionPlan& plan, std::size_t first, Value& result);
    FunctionPlan* PrepareCall(FuncSymbol& function, std::size_t supplied);
    bool CallReflect(std::size_t first, Value& result);
    bool ReportMisplacedJump(ExecStatus status);
    Value TakeArgument(std::size_t index) { return std::move(m_arguments[index]); }
    void DropArguments(std::size_t mark) { m_arguments.resize(mark); }
    bool Request(void* object, int action, STRID name, PooledRequest& request);
    bool RequestValue(void* object, int action, STRID name, PooledRequest& request, Value& result);
    void RequestDescription(void* object, DumpFormatter& out);
    void DropRequestParts();
    bool RequestCall(void* object, STRID name, std::span<Value> arguments, Value& result);
    bool RequestGet(void* object, STRID name, Value& result);
    bool RequestElement(void* object, const Value& index, Value& result);
    bool RequestSet(void* object, STRID name, Value& value);

    // Assignments (assign.cpp).
    bool Assign(const Node& node, Value* value, Place* reference = nullptr);
    bool AssignSum(const Node& node, Value& sum);
    bool AssignValue(const Node& node, Value& assigned, Value* value);
    bool AssignElement(const Node& node, Value& assigned, Value* value);
    bool AssignChain(const Node& node, Value& assigned, Value* value);
    bool EvaluatePlace(const Node& node, Value& value, Place& place);
    bool FindPlace(const Node& target, Place& place);
    bool StepIntoMember(const Node& node, bool isTarget, Place& place);
    bool StepIntoElement(const Node& node, Place& place);
    bool ReadPlace(const Place& place, Value& value);
    bool Store(const Node& node, const Place& place, Value& assigned, Value* value);
    bool StoreVariable(const Node& node, NameCell& cell, Value& assigned, Value* value);
    bool StoreElement(const Node& node, Value& root, std::span<const std::uint32_t> path, Value& assigned,
                      Value* value);
    bool StoreProperty(const Node& node, const Place& place, Value& assigned, Value* value);
    bool CombineElement(const Node& node, Value& root, std::span<const std::uint32_t> path,
                        const Value& assigned);
    bool Combine(const Node& node, Value& target, const Value& assigned);
    static bool FitsList(const Value& value);

    // Objects.
    NameCell& CellOf(NameCell* known, const CCoreSymbol& symbol);
    bool Construct(const ClassSymbol& cls, Value& instance);
    bool ConstructMember(const DeclarationStatement& member, Value& instance, std::size_t place);
    bool ConstructDeclared(const DeclarationStatement& declaration, Value& value);
    bool ConstructOne(const ClassSymbol* cls, STRID registered, Value& value);

    CCoreScriptEngine& m_engine;
    EngineState& m_state;
    NameCells& m_cells;
    std::unique_ptr<Machine> m_machine;
    std::uintptr_t m_stackFloor = 0;
    std::vector<Value> m_arguments;
    std::unique_ptr<RequestParts> m_requests;
    std::unique_ptr<RequestParts>* m_pRequests = &m_requests;  // where the next request takes its parts
    int m_functionDepth = 0;                                   // script functions running in this run
    bool m_calleeIsMethod = false;     // the member just evaluated is a method to be called, not an element
    bool m_scopeIsPending = false;     // the innermost block runs without a scope, see execute_statements.cpp
    bool m_unwindingSilently = false;  // a limit was met: the calls on the way out add no message
};

}  // namespace brenta
