/// @file
/// The script engine: loads script modules, calls their functions, evaluates command texts, and connects
/// scripts with objects of the host.
///
/// Use it to make an application programmable: an engine holds everything that scripts have defined, the host
/// calls into it, and it calls back into the host through message streams and scriptable objects. Dimension
/// texts ("20mil+5mil") have an entry of their own in brenta/units.h.
///
///     struct Console : CScriptMsgStream {
///         void OutputPrintStream(const char* text) override { std::puts(text); }
///         void OutputErrStream(const char* text) override { std::fprintf(stderr, "%s\n", text); }
///     } console;
///     CCoreScriptEngine engine({}, &console);
///     engine.InjectScript("demo", "function Area(a, b) { return a * b; }");
///     Var area;
///     if (engine.Execute("Area(6, 7)", area, kUnitsNone)) std::printf("%d\n", area.GetInt());    // 42
///
/// The language is described in docs/language.md, what is surprising in it in docs/surprises.md.
///
/// What goes in
/// ------------
/// *Modules* hold functions, classes and global variables. LoadScriptModule reads one from a file and
/// InjectScript takes one as text; any number of them share one global scope. A name that is defined already
/// is an error, so a module can be loaded once per engine.
///
/// *Commands* (Execute) hold statements, one or more, and have a value: that of the last expression among
/// them. They run in the global scope, so what a command declares is there for the next.
///
/// *The environment* is what the host gives scripts to work with: the constructor takes a list of named
/// values, and scripts find each as a member of `Env`. Objects go there as references:
///
///     Board board;                                              // class Board : public CCoreScriptable
///     TOrderedList<Var> environment;
///     environment.Add(Var(&board, StrId("Board")));             // Env.Board.width, Env.Board.Route(net)
///     environment.Add(Var("4.0", StrId("Version")));            // Env.Version
///     CCoreScriptEngine engine(environment, &console);
///
/// `Env.StdLib`, the standard library (brenta/scriptable.h), is there by itself. Classes that scripts may
/// create objects of (`var d as CCoreXmlDom;`) are registered there too, once per process.
///
/// What comes out
/// --------------
/// Everything that scripts print, and every error, goes to the engine's message stream
/// (brenta/message_stream.h) while it happens; functions answer only true or false. An error text begins with
/// its position, "file(line): ", or with the operation that failed, "RunScript:"; the stream also has the
/// position as data. One error may cause a second message, "Function call failed.", at each call that it
/// passes on its way out.
///
/// A failure ends the call of the host that caused it, and nothing else: scopes, input and counters are put
/// back, and the engine is as usable as before. What had been defined or assigned before the failure stays.
/// Errors of scripts never raise a forced crash and never throw; running out of memory is an error like any
/// other ("Out of memory.").
///
/// Limits
/// ------
/// A script cannot bring its host down. Calls nest as deep as the thread's stack allows (more than 10,000 on
/// 8 MB) and end in "Call stack overflow."; so do `execute` texts and host objects that call back, at 100.
/// Texts are limited to 64 MiB, lists to 16 Mi elements and 1000 levels, expressions to 200 nested brackets,
/// statements to 1000 levels, chains a = b = c to 20 targets. A script that runs without end is stopped by
/// RequestStop.
///
/// Ownership and lifetime
/// ----------------------
/// The stream, the objects in the environment and symbols that the host adds stay the host's and must outlive
/// the engine. The engine owns the symbols and statements that it makes. Values are copied in both
/// directions; a function value (a Var named kFunctionName) is good as long as its engine. Objects that
/// scripts create are deleted by no engine: see CreateScriptableObject.
///
/// Texts in results and arguments are interned as they cross (brenta/names.h) and stay interned; one longer
/// than 1,000,000 bytes cannot cross and is an error.
///
/// Re-entry
/// --------
/// A scriptable object may use the engine that called it: run commands and functions, load modules (their
/// names go to the global scope). An inner run sees the names of the functions that are active, as every
/// function sees its callers' names.
///
/// Threads
/// -------
/// An engine is used by one thread at a time; which one may change from call to call. Different engines run
/// side by side and share nothing but the names, unless their hosts give them the same objects. Only
/// RequestStop and ClearStop may be called from anywhere, signal handlers included.
///
/// Cost
/// ----
/// Making an engine takes about ten microseconds (the token patterns are compiled), a short command some
/// hundred nanoseconds, a call from the host about 70 nanoseconds, one from script to script about 30, each
/// loop turn or simple statement 10 to 20. Names cost nothing to look up. A list or text is copied when one
/// of two variables that share it is changed; `x = x + e` and `x += e` append to it in place.
#pragma once

#include <cstddef>

#include "brenta/detail/class_name.h"
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

// ---------------------------------------------------------------------------------------------------------
// The engine

/// See the head of this file. It is also the symbol table of what its scripts have defined (GetSymbol) and
/// the lexer that reads them.
class BRENTA_API CCoreScriptEngine : public CCoreScriptLexer {
 public:
    // -------------------------------------------------------------------------------------------------------
    // Life

    /// Makes the values of `environment` members of `Env`, under their names and in their order, and adds
    /// `StdLib`. Two values of one name end this with "'%s' already defined in environment."; the first of
    /// them stays, what follows it is missing, and so is StdLib.
    ///
    /// `stream` may be null, then messages go nowhere. It stays the caller's and must outlive the engine.
    CCoreScriptEngine(const TOrderedList<Var>& environment, CScriptMsgStream* stream);
    CCoreScriptEngine(const CCoreScriptEngine&) = delete;
    CCoreScriptEngine& operator=(const CCoreScriptEngine&) = delete;

    std::size_t SizeOf() const override;
    const char* GetClassName() const override;      ///< "CCoreScriptEngine"
    const char* GetBaseClassName() const override;  ///< "CCoreScriptLexer"
    /// Not while it runs: a host object must not destroy the engine that called it.
    ~CCoreScriptEngine() override;

    // -------------------------------------------------------------------------------------------------------
    // Modules

    /// Makes a text the current input, and scans it if asked to: CCoreScriptLexer's operation, with a report
    /// ("Syntax error.") where a character starts no token. A step of InjectScript, for hosts that look at
    /// the tokens themselves (GetFirstToken, then ParseScript).
    bool InjectScriptText(const char* name, const char* text, bool scan) override;

    /// Loads a module from a file and runs its global declarations. A path that does not open as it is, is
    /// looked for in the folder "Scripts" below the application-data folder; `include` is relative to the
    /// including file. True if everything was read, parsed and run; after a failure the functions, classes
    /// and variables before it stay defined.
    bool LoadScriptModule(const char* path) override;

    /// The same for a module given as text, with `name` for the file's name in messages. The text need not
    /// live on; null counts as "".
    bool InjectScript(const char* name, const char* text);

    // -------------------------------------------------------------------------------------------------------
    // Calls

    /// Calls the script function of that name. `arguments` are copied, and their names ignored; their number
    /// must be that of the parameters. `result` becomes what the function returns, and null if it returns
    /// nothing or fails.
    ///
    /// False if there is no such name ("function '%s' not defined.") or it is no function ("'%s' is not a
    /// function.") - with `quiet` without these messages - and if the call fails, as for ExecuteFunction.
    bool RunScript(const char* function, Var& result, const TOrderedList<Var>& arguments, bool quiet);

    /// Evaluates a command: one or more statements. `result` becomes the value of the last expression that
    /// ran as a statement (or behind a `return`), null if there was none or it was empty, and null after a
    /// failure. A stray `break`, `continue` or `return` does not end a command, and stray `;` and `)` between
    /// its statements are skipped.
    ///
    /// With a unit other than kUnitsNone, and unless the text contains a number with a unit suffix, the value
    /// is taken as a number of these units (of a text its leading number; of anything but numbers and texts
    /// 0) and becomes an int in internal units, cut toward zero: "10" in millimetres is 3937007. A value
    /// outside the enumeration raises the forced crash "Unknown UnitType" and, when resumed, converts
    /// nothing.
    ///
    /// A null text counts as "", whose value is null. `text` need not live on.
    bool Execute(const char* text, Var& result, CoreUnits units);

    /// Calls what `callee` stands for:
    ///
    ///     named kFunctionName     the script function that it refers to; false with "Symbol '%s' is not a
    ///                             function." for another symbol, "function '%s' has %d parameters, but %d
    ///                             were supplied.", "Misplaced 'break' statement." (or 'continue')
    ///     another reference       the object's method that has the Var's name; false when the object
    ///                             refuses. Null: "Symbol '%s' is set to a valid object."
    ///                             (which says the contrary of what it means)
    ///     any other value         IntrinsicFunction
    ///
    /// The messages begin with "RunScript:". `result` is set whatever the outcome; it may be `callee`.
    /// Calling the function `reflect` prints a description of its argument.
    bool ExecuteFunction(const Var& callee, const TOrderedList<Var>& arguments, Var& result);

    /// The methods of plain values, of which there is one: a number named "Round" with a step greater than 0
    /// gives the multiple of the step that is nearest to the number, as a float. Ties go up, and negative
    /// numbers are cut toward zero after half a step has been added: -1.2 by 1 is 0, -1.6 is -1.
    ///
    /// False with "Unrecognized intrinsic function.", "Round takes 1 argument." or "Round argument must be
    /// greater than 0.", each behind "IntrinsicFunction:".
    bool IntrinsicFunction(const Var& callee, const TOrderedList<Var>& arguments, Var& result);

    // -------------------------------------------------------------------------------------------------------
    // Interruption

    /// Asks the running script to stop: its next loop turn or call fails with "Script interrupted.", and the
    /// host's call that ran it returns false. The request is used up by that. May be called from any thread
    /// and from a signal handler. When no script runs, the next one that loops or calls is stopped, unless
    /// ClearStop comes first.
    void RequestStop();

    /// Takes a request back that has not been met yet. Call it before a run that a late request, meant for
    /// the one before, must not stop.
    void ClearStop();

    // -------------------------------------------------------------------------------------------------------
    // Messages

    /// The stream that the host gave, or the silent one that the engine made for itself.
    CScriptMsgStream* GetMsgStream() const { return m_pMessages; }

    /// The same as a reference.
    CScriptMsgStream& Messages();

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

    /// Parses the token list as a module: functions, classes and global variables, which are executed at
    /// once. The list is empty afterwards, whatever the result. An empty list is a module without contents.
    bool ParseScript();

    /// Parses one statement of a function body or command. Leading `;` are skipped, so a lone `;` is never
    /// the body of anything: the statement behind it is.
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

    /// Entered on `break`, `continue` (leaves on `;`) or `return` (leaves on the terminator of its
    /// expression). Any other token is the forced crash "Unknown jump statement.".
    JumpStatement* ParseJumpStatement(TIter<ScriptToken*>& iter);

    /// Entered on `print` or `execute`, leave on `)`.
    PrintStatement* ParsePrintStatement(TIter<ScriptToken*>& iter);
    ExecStatement* ParseExecStatement(TIter<ScriptToken*>& iter);

    /// Entered on `_halt`, stays there.
    HaltStatement* ParseHaltStatement(TIter<ScriptToken*>& iter);

    /// Parses an expression, which may be empty, up to its terminator.
    ExpressionStatement* ParseExpression(TIter<ScriptToken*>& iter);

    /// Moves to the next token. Behind the last: "Unexpected end-of-file." without a position. With
    /// `expected` other than 0 the token must be of that kind, see AssertToken. Null after the message.
    ScriptToken* Advance(TIter<ScriptToken*>& iter, TokId expected);

    /// Whether `token` is of the kind `expected`; if not: "Syntax error: expecting '%s', but found '%s'".
    bool AssertToken(ScriptToken* token, TokId expected);

    /// Whether `name` exists in any scope (`mustExist`; else "Symbol '%s' not defined."), or does not exist
    /// in the innermost scope (not `mustExist`; else "Symbol '%s' already defined."). `at` gives the
    /// position.
    bool AssertSymbolName(const ScriptToken* at, STRID name, bool mustExist);

    /// Internal: parser and executor state.
    EngineState& State() { return *m_pState; }

 private:
    friend class Executor;
    friend struct EngineState;

    void SetMsgStream(CScriptMsgStream* stream);
    bool SetEnvironmentBlock(const TOrderedList<Var>& environment);
    bool ReportScanError();
    bool RunCommand(const char* text, Value& value, bool& unitsSeen);
    bool Reflect(const Var& value);
    void DumpSymbolTable();

    TOrderedList<Var> m_values;  // its address is the context of every scriptable request
    EngineState* m_pState;
};

// ---------------------------------------------------------------------------------------------------------
// Checking

/// A likely mistake in a script: legal, but not what it looks like (docs/surprises.md).
struct ScriptWarning {
    ScriptPosition position;
    CoreString text;  ///< what happens, and what to write instead
};

/// Parses a module, and what it includes, without running any of it: no global declaration is evaluated and
/// no object asked for anything (array sizes that are no constants count as 1). Errors go to `errors`;
/// warnings are appended to `warnings` in the order of the text. True if there was no error. Any thread.
BRENTA_API bool CheckScriptModule(const char* path, CScriptMsgStream& errors,
                                  TOrderedList<ScriptWarning>& warnings);

}  // namespace brenta
