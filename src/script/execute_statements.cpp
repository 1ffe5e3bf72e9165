// How statements run, and the boundary at which the statement classes' Execute meets the executor.
//
// The result slot. Every statement gets its caller's slot. An expression that stands as a statement leaves
// its value there, which a command's caller sees; inside a function nobody does, so there the value is not
// kept - it would also hold on to a text or list that the next statement wants to grow in place.
#include <utility>

#include "brenta/failure.h"
#include "os/os.h"
#include "script/parser.h"
#include "script/run_guard.h"
#include "script/show_mark.h"
#include "script/symbol_access.h"

namespace brenta {
namespace {

const Executor::Node* RootOf(const ExpressionStatement* expression) {
    return expression != nullptr ? expression->GetRoot() : nullptr;
}

/// The expression that tells where a statement stands, null if it has none.
const ExpressionStatement* ExpressionOf(const Statement& statement) {
    switch (statement.GetStatementType()) {
        case STMT_DECLARATION:
            return static_cast<const DeclarationStatement&>(statement).GetAssignmentStatement();
        case STMT_EXPRESSION:
            return static_cast<const ExpressionStatement*>(&statement);
        case STMT_CONDITIONAL:
            return static_cast<const ConditionalStatement&>(statement).GetCondition();
        case STMT_ITERATION: {
            const auto& loop = static_cast<const IterationStatement&>(statement);
            return loop.GetCondition() != nullptr ? loop.GetCondition() : loop.GetStep();
        }
        case STMT_JUMP:
            return static_cast<const JumpStatement&>(statement).GetResult();
        case STMT_PRINT:
            return static_cast<const PrintStatement&>(statement).GetExpression();
        case STMT_EXEC:
            return static_cast<const ExecStatement&>(statement).GetExpression();
        default:
            return nullptr;
    }
}

/// Statements do not keep their own position; the first expression in them has one.
ScriptPosition PositionOf(const Statement& statement) {
    const Statement* at = &statement;
    while (at->GetStatementType() == STMT_COMPOUND) {
        Statement* const* first = static_cast<const CompoundStatement*>(at)->GetFirstStatement().Get();
        if (first == nullptr) return {};
        at = *first;
    }
    const Executor::Node* root = RootOf(ExpressionOf(*at));
    return root != nullptr ? root->Position() : ScriptPosition();
}

}  // namespace

ExecStatus Executor::Run(const Statement& statement, Value& result) {
    switch (statement.GetStatementType()) {
        case STMT_DECLARATION:
            result.Clear();
            return RunDeclaration(static_cast<const DeclarationStatement&>(statement));
        case STMT_COMPOUND:
            return RunCompound(static_cast<const CompoundStatement&>(statement), result);
        case STMT_EXPRESSION:
            return RunExpression(static_cast<const ExpressionStatement&>(statement), result);
        case STMT_CONDITIONAL:
            return RunConditional(static_cast<const ConditionalStatement&>(statement), result);
        case STMT_ITERATION:
            return RunIteration(static_cast<const IterationStatement&>(statement), result);
        case STMT_JUMP:
            return RunJump(static_cast<const JumpStatement&>(statement), result);
        case STMT_PRINT:
            return RunPrint(static_cast<const PrintStatement&>(statement));
        case STMT_EXEC:
            return RunExec(static_cast<const ExecStatement&>(statement), result);
        case STMT_HALT:
            if (os::DebuggerAttached()) os::BreakIntoDebugger();
            return EXEC_OK;
    }
    return EXEC_FAILED;
}

ExecStatus Executor::RunCompound(const CompoundStatement& block, Value& result) {
    if (StackIsLow()) return Overflow(block);
    const int depth = m_cells.Depth();
    const bool outerIsPending = m_scopeIsPending;
    m_scopeIsPending = !block.MayBind();
    if (block.MayBind()) m_cells.PushScope();
    ExecStatus status = EXEC_OK;
    for (const Statement* statement : block.m_statements) {
        status = Run(*statement, result);
        if (status != EXEC_OK) break;
    }
    m_cells.PopTo(depth);
    m_scopeIsPending = outerIsPending;
    return status;
}

/// A command ends only by a failure; a break or return has nowhere to go to and is ignored. Its statements
/// run in the scope that is open, so what they declare stays.
bool Executor::RunCommand(const CompoundStatement& command, Value& result) {
    for (TIter<Statement*> at = command.GetFirstStatement(); at.Get() != nullptr; at.Next())
        if (Run(**at.Get(), result) == EXEC_FAILED) return false;
    return true;
}

ExecStatus Executor::RunExpression(const ExpressionStatement& expression, Value& result) {
    const Node* root = expression.GetRoot();
    if (root == nullptr) return EXEC_OK;
    if (m_functionDepth > 0) return EvaluateForEffect(root) ? EXEC_OK : EXEC_FAILED;
    result.Clear();
    return Evaluate(*root, result) ? EXEC_OK : EXEC_FAILED;
}

bool Executor::EvaluateForEffect(const Node* root) {
    if (root == nullptr) return true;
    if (root->nodeClass == NodeClass::Assign) return Assign(*root, nullptr);
    Value ignored;
    return Evaluate(*root, ignored);
}

/// An empty condition is false.
bool Executor::EvaluateCondition(const ExpressionStatement* condition, bool& holds) {
    const Node* root = RootOf(condition);
    holds = false;
    if (root == nullptr) return true;
    Value value;
    if (!Evaluate(*root, value)) return false;
    if (value.IsBool()) {
        holds = value.Int() != 0;
        return true;
    }
    const OpError error = BoolOf(value, holds);
    return error == OpError::None || FailOperator(*root, error);
}

/// Goes along an else-if chain in a loop.
ExecStatus Executor::RunConditional(const ConditionalStatement& statement, Value& result) {
    if (StackIsLow()) return Overflow(statement);
    const ConditionalStatement* at = &statement;
    while (true) {
        bool holds = false;
        if (!EvaluateCondition(at->GetCondition(), holds)) return EXEC_FAILED;
        const Statement* branch = holds ? at->GetThen() : at->GetElse();
        if (branch == nullptr) return EXEC_OK;
        if (holds || branch->GetStatementType() != STMT_CONDITIONAL) return Run(*branch, result);
        at = static_cast<const ConditionalStatement*>(branch);
    }
}

// ---------------------------------------------------------------------------------------------------------
// Loops

ExecStatus Executor::RunIteration(const IterationStatement& loop, Value& result) {
    if (StackIsLow()) return Overflow(loop);
    if (loop.GetKind() == TOK_FOREACH) return RunForeach(loop, result);
    return RunLoop(loop, result);
}

/// Whether a turn of the body that ended with `status` lets the loop go on; if not, `status` becomes the
/// loop's own.
bool Executor::MayGoOn(const IterationStatement& loop, ExecStatus& status) {
    if (status == EXEC_FAILED || status == EXEC_RETURN) return false;
    if (status == EXEC_BREAK) {
        status = EXEC_OK;
        return false;
    }
    if (!StopRequested()) return true;
    Interrupted(PositionOf(loop));
    status = EXEC_FAILED;
    return false;
}

ExecStatus Executor::RunLoop(const IterationStatement& loop, Value& result) {
    if (loop.GetInit() != nullptr && Run(*loop.GetInit(), result) == EXEC_FAILED) return EXEC_FAILED;
    const Node* step = loop.GetKind() == TOK_FOR ? RootOf(loop.GetStep()) : nullptr;
    while (true) {
        bool holds = false;
        if (!EvaluateCondition(loop.GetCondition(), holds)) return EXEC_FAILED;
        if (!holds) return EXEC_OK;
        ExecStatus status = loop.GetBody() != nullptr ? Run(*loop.GetBody(), result) : EXEC_OK;
        if (!MayGoOn(loop, status)) return status;
        if (!EvaluateForEffect(step)) return EXEC_FAILED;
    }
}

/// Walks the value that the collection has at the start: lists are shared until written, so holding it is
/// enough.
ExecStatus Executor::RunForeach(const IterationStatement& loop, Value& result) {
    ScriptSymbol* const variable = loop.m_pVariable;
    if (variable == nullptr) return EXEC_FAILED;
    const bool outerIsPending = std::exchange(m_scopeIsPending, false);
    m_cells.PushScope();
    NameCell& cell = CellOf(loop.m_pCell, *variable);
    m_cells.Bind(cell, variable, SymbolAccess::StartValue(*variable));
    Value collection;
    ExecStatus status = EvaluateTree(RootOf(loop.GetStep()), collection) ? EXEC_OK : EXEC_FAILED;
    const std::uint32_t length = status == EXEC_OK && collection.IsList() ? collection.List()->length : 0;
    for (std::uint32_t i = 0; i < length; ++i) {
        cell.value = collection.List()->items[i];
        status = loop.GetBody() != nullptr ? Run(*loop.GetBody(), result) : EXEC_OK;
        if (!MayGoOn(loop, status)) break;
        status = EXEC_OK;
    }
    m_cells.PopScope();
    m_scopeIsPending = outerIsPending;
    return status;
}

ExecStatus Executor::RunJump(const JumpStatement& jump, Value& result) {
    switch (jump.GetKind()) {
        case TOK_CONTINUE:
            return EXEC_CONTINUE;
        case TOK_BREAK:
            return EXEC_BREAK;
        case TOK_RETURN: {
            const Node* root = RootOf(jump.GetResult());
            if (root != nullptr || m_functionDepth > 0) result.Clear();
            if (root != nullptr && !Evaluate(*root, result)) return EXEC_FAILED;
            return EXEC_RETURN;
        }
        default:
            ForcedCrash(0, "CoreScriptStatement", __LINE__, "Forced crash! \"Unknown jump statement.\"");
            return EXEC_FAILED;
    }
}

// ---------------------------------------------------------------------------------------------------------
// print

/// Lists are printed element by element, nested ones too, without anything between. What the message stream
/// would cut off is not collected.
OpError Executor::AppendOutput(const Value& value, CoreString& text) {
    struct Position {
        const ListBody* list;
        std::uint32_t next;
    };
    std::vector<Position> open;
    const Value* item = &value;
    while (true) {
        if (item->IsList()) {
            open.push_back({item->List(), 0});
        } else if (item->IsFunction()) {
            return OpError::UnknownVarType;  // a function symbol's own value is null
        } else {
            const OpError error = AppendPrinted(*item, text, kMessageLimit);
            if (error == OpError::StringTooLong) return OpError::None;
            if (error != OpError::None) return error;
        }
        while (!open.empty() && open.back().next == open.back().list->length)
            open.pop_back();
        if (open.empty()) return OpError::None;
        item = &open.back().list->items[open.back().next++];
    }
}

ExecStatus Executor::RunPrint(const PrintStatement& print) {
    const Node* root = RootOf(print.GetExpression());
    if (root == nullptr) return EXEC_OK;
    Value value;
    if (!Evaluate(*root, value)) return EXEC_FAILED;
    return PrintValue(*root, value) ? EXEC_OK : EXEC_FAILED;
}

bool Executor::PrintValue(const Node& at, const Value& value) {
    CoreString text;
    const OpError error = AppendOutput(value, text);
    if (error != OpError::None) return FailOperator(at, error);
    const ShowMark shown(*this);
    Messages().Print("%s", text());
    return true;
}

// ---------------------------------------------------------------------------------------------------------
// execute

ExecStatus Executor::RunExec(const ExecStatement& statement, Value& result) {
    Value value;
    if (!EvaluateTree(RootOf(statement.GetExpression()), value)) return EXEC_FAILED;
    return RunText(value, statement, result);
}

ExecStatus Executor::RunText(const Value& value, const ExecStatement& statement, Value& result) {
    CoreString text;
    const OpError error = AppendText(value, text);
    if (error == OpError::None) return RunParsed(text, statement, result);
    FailOperator(*RootOf(statement.GetExpression()), error);
    return EXEC_FAILED;
}

/// The text is parsed in the running scope and runs in one new block of it.
ExecStatus Executor::RunParsed(const CoreString& text, const ExecStatement& statement, Value& result) {
    const RunGuard guard(m_engine, RunKind::Text);
    if (!guard.IsAllowed()) return Overflow(statement);
    if (!m_engine.InjectScriptText("execute:", text, true)) return EXEC_FAILED;
    ParsedText parsed(m_engine);
    TIter<ScriptToken*> iter = m_engine.GetFirstToken();
    if (!parsed.Parse(iter, StatementSequence::Text)) return EXEC_FAILED;
    m_engine.FlushTokens();
    return RunCompound(parsed.Statements(), result);
}

ExecStatus Executor::Overflow(const Statement& at) {
    FailLimit(PositionOf(at), "Call stack overflow.");
    return EXEC_FAILED;
}

// ---------------------------------------------------------------------------------------------------------
// The boundary

namespace {

ExecStatus ExecuteStatement(const Statement& statement, CCoreScriptEngine& engine, Var& result) {
    return RunStatement(engine, [&](Executor& executor) {
        Value value;
        if (!executor.FromHost(result, value)) return EXEC_FAILED;
        const ExecStatus status = executor.Run(statement, value);
        return executor.ToHost(value, result) ? status : EXEC_FAILED;
    });
}

}  // namespace

ExecStatus ExpressionStatement::Execute(CCoreScriptEngine& engine, Var& result) {
    return ExecuteStatement(*this, engine, result);
}

bool ExpressionStatement::EvalExpression(CCoreScriptEngine& engine, Var& value) {
    value = Var();
    return ExecuteStatement(*this, engine, value) == EXEC_OK;
}

ExecStatus DeclarationStatement::Execute(CCoreScriptEngine& engine, Var& result) {
    return ExecuteStatement(*this, engine, result);
}

ExecStatus CompoundStatement::Execute(CCoreScriptEngine& engine, Var& result) {
    return ExecuteStatement(*this, engine, result);
}

ExecStatus ConditionalStatement::Execute(CCoreScriptEngine& engine, Var& result) {
    return ExecuteStatement(*this, engine, result);
}

ExecStatus IterationStatement::Execute(CCoreScriptEngine& engine, Var& result) {
    return ExecuteStatement(*this, engine, result);
}

ExecStatus JumpStatement::Execute(CCoreScriptEngine& engine, Var& result) {
    return ExecuteStatement(*this, engine, result);
}

ExecStatus PrintStatement::Execute(CCoreScriptEngine& engine, Var& result) {
    return ExecuteStatement(*this, engine, result);
}

ExecStatus ExecStatement::Execute(CCoreScriptEngine& engine, Var& result) {
    return ExecuteStatement(*this, engine, result);
}

ExecStatus HaltStatement::Execute(CCoreScriptEngine& engine, Var& result) {
    return ExecuteStatement(*this, engine, result);
}

bool PrintStatement::Output(CCoreScriptEngine& engine, CoreString& text, const Var& value) {
    return RunStatement(engine, [&](Executor& executor) {
        Value own;
        if (!executor.FromHost(value, own)) return false;
        CoreString printed;
        const OpError error = executor.AppendOutput(own, printed);
        if (error != OpError::None) engine.Messages().Error("", "%s", OpErrorText(error));
        text += printed;
        return error == OpError::None;
    });
}

bool HaltStatement::Output(CCoreScriptEngine&, CoreString&, const Var&) {
    return true;
}

}  // namespace brenta
