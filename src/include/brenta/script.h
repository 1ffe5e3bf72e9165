/// @file
/// CCoreScriptEngine: loads script modules, calls their functions, evaluates command texts.
///
///     CScriptMsgStream* messages = ...;
///     TOrderedList<Var> environment;
///     CCoreScriptEngine engine(environment, messages);
///     Var result;
///     if (engine.Execute("20mil + 5mil", result, kMils)) use(result.GetInt());   // 250000
#pragma once

#include <cstddef>

#include "brenta/dump.h"
#include "brenta/export.h"
#include "brenta/lexer.h"
#include "brenta/message_stream.h"
#include "brenta/scriptable.h"
#include "brenta/statements.h"
#include "brenta/symbols.h"
#include "brenta/units.h"
#include "brenta/var.h"

namespace brenta {

struct EngineState;  // internal

class BRENTA_API CCoreScriptEngine : public CCoreScriptLexer {
   public:
    /// `stream` may be null (messages are dropped); it stays the caller's and must outlive the engine.
    CCoreScriptEngine(const TOrderedList<Var>& environment, CScriptMsgStream* stream);
    CCoreScriptEngine(const CCoreScriptEngine&) = delete;
    CCoreScriptEngine& operator=(const CCoreScriptEngine&) = delete;
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    ~CCoreScriptEngine() override;
    bool InjectScriptText(const char* name, const char* text, bool scan) override;
    bool LoadScriptModule(const char* path) override;

    // --- what a host calls
    bool InjectScript(const char* name, const char* text);
    bool RunScript(const char* function, Var& result, const TOrderedList<Var>& arguments, bool quiet);
    bool Execute(const char* text, Var& result, CoreUnits units);
    bool ExecuteFunction(const Var& callee, const TOrderedList<Var>& arguments, Var& result);
    bool IntrinsicFunction(const Var& callee, const TOrderedList<Var>& arguments, Var& result);
    /// Asks the running script to stop: the next loop turn or call fails with "Script interrupted.". May be called from
    /// any thread and from a signal handler. Without a running script the next one stops at once unless ClearStop runs.
    void RequestStop();
    void ClearStop();
    CScriptMsgStream* GetMsgStream() const { return m_pMessages; }

    // --- the parser; see the notes at each
    bool ParseScript();
    Statement* ParseStatement(TIter<ScriptToken*>& iter);
    CompoundStatement* ParseCompoundStatement(TIter<ScriptToken*>& iter);
    DeclarationStatement* ParseDeclaration(TIter<ScriptToken*>& iter, bool global);
    FuncSymbol* ParseFunction(TIter<ScriptToken*>& iter);
    bool ParseClass(TIter<ScriptToken*>& iter);
    ConditionalStatement* ParseConditionalStatement(TIter<ScriptToken*>& iter);
    IterationStatement* ParseIterationStatement(TIter<ScriptToken*>& iter);
    JumpStatement* ParseJumpStatement(TIter<ScriptToken*>& iter);
    PrintStatement* ParsePrintStatement(TIter<ScriptToken*>& iter);
    ExecStatement* ParseExecStatement(TIter<ScriptToken*>& iter);
    HaltStatement* ParseHaltStatement(TIter<ScriptToken*>& iter);
    ExpressionStatement* ParseExpression(TIter<ScriptToken*>& iter);
    ScriptToken* Advance(TIter<ScriptToken*>& iter, TokId expected);
    bool AssertToken(ScriptToken* token, TokId expected);
    bool AssertSymbolName(const ScriptToken* at, STRID name, bool mustExist);

    /// Internal: parser and executor state.
    EngineState& State() { return *m_pState; }

   private:
    friend class Executor;
    friend struct EngineState;
    void SetMsgStream(CScriptMsgStream* stream);
    bool SetEnvironmentBlock(const TOrderedList<Var>& environment);
    bool Reflect(const Var& value);
    void DumpSymbolTable();

    TOrderedList<Var> m_values;  // its address is the context of every scriptable request
    EngineState* m_pState;
};

/// A likely mistake that `CheckScriptModule` found: legal, but not what it looks like.
struct ScriptWarning {
    ScriptPosition position;
    CoreString text;  ///< what happens and what to write instead
};

/// Parses a module without running any of it. Errors go to `errors`; warnings are appended to `warnings` in source
/// order. True if there was no error.
BRENTA_API bool CheckScriptModule(const char* path, CScriptMsgStream& errors, TOrderedList<ScriptWarning>& warnings);

}  // namespace brenta
