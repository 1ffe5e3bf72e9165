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

    // -------------------------------------------------------------------------------------------------------
    // The parser
    //
    // Modules and commands reach it by the operations above; a host has no reason to call it. It walks the
    // token list that a scan has left (GetFirstToken), by recursive descent, one function per construct:
    //
    //   entered     on the first token of the construct
    //   success     a new object that the caller owns (or true), the iterator on the last token of the
    //               construct; for an expression, and for what ends with one, on the terminator behind it,
    //               which is one of ; ) ] } or the end marker
    //   failure     null or false; the error is reported, nothing is left behind but symbols that were
    //               complete before, and the iterator stands anywhere
    //
    // A failure is reported where it is found, then once more by the construct whose expression or init
    // statement it was, and by nobody above. Brackets may nest 200 deep, statements 1000.
    //
    // Names are checked against the innermost scope only when they are declared as function, class, variable,
    // parameter or loop variable. What an expression names is looked up when it runs.

    /// Parses the token list as a module: functions, classes and global variables, which are executed at once.
    /// The list is empty afterwards, whatever the result. An empty list is a module without contents.
    bool ParseScript();

    /// Parses one statement of a function body or command. Leading `;` are skipped, so a lone `;` is never the
    /// body of anything: the statement behind it is.
    Statement* ParseStatement(TIter<ScriptToken*>& iter);

    /// Entered on `{`, leaves on `}`. Opens no scope of its own; ParseStatement and ParseFunction do.
    CompoundStatement* ParseCompoundStatement(TIter<ScriptToken*>& iter);

    /// Entered on `var`. With `global` the declaration is executed at once, and the caller may delete it: the
    /// symbol belongs to the engine.
    DeclarationStatement* ParseDeclaration(TIter<ScriptToken*>& iter, bool global);

    /// Entered on `function`, leaves on the `}` of the body. The caller owns the symbol and enters it.
    FuncSymbol* ParseFunction(TIter<ScriptToken*>& iter);

    /// Entered on `class`, leaves on `}`. Enters the class, which belongs to the engine.
    bool ParseClass(TIter<ScriptToken*>& iter);

    /// Entered on `if`. An `else if` is the else branch of the one before; chains may be of any length.
    ConditionalStatement* ParseConditionalStatement(TIter<ScriptToken*>& iter);

    /// Entered on `for`, `foreach` or `while`. Any other token is the forced crash "Unknown iteration
    /// statement.", then "Invalid iteration statement.".
    IterationStatement* ParseIterationStatement(TIter<ScriptToken*>& iter);

    /// Entered on `break`, `continue` (leaves on `;`) or `return` (leaves on the terminator of its expression).
    /// Any other token is the forced crash "Unknown jump statement.".
    JumpStatement* ParseJumpStatement(TIter<ScriptToken*>& iter);

    /// Entered on `print` or `execute`, leave on `)`.
    PrintStatement* ParsePrintStatement(TIter<ScriptToken*>& iter);
    ExecStatement* ParseExecStatement(TIter<ScriptToken*>& iter);

    /// Entered on `_halt`, stays there.
    HaltStatement* ParseHaltStatement(TIter<ScriptToken*>& iter);

    /// Parses an expression, which may be empty, up to its terminator.
    ExpressionStatement* ParseExpression(TIter<ScriptToken*>& iter);

    /// Moves to the next token. Behind the last: "Unexpected end-of-file." without a position. With `expected`
    /// other than 0 the token must be of that kind, see AssertToken. Null after the message.
    ScriptToken* Advance(TIter<ScriptToken*>& iter, TokId expected);

    /// Whether `token` is of the kind `expected`; if not: "Syntax error: expecting '%s', but found '%s'".
    bool AssertToken(ScriptToken* token, TokId expected);

    /// Whether `name` exists in any scope (`mustExist`; else "Symbol '%s' not defined."), or does not exist in
    /// the innermost scope (not `mustExist`; else "Symbol '%s' already defined."). `at` gives the position.
    bool AssertSymbolName(const ScriptToken* at, STRID name, bool mustExist);

    /// The message stream; a silent one that the engine owns is made when there is none.
    CScriptMsgStream& Messages();

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
