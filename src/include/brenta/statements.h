/// @file
/// The statement classes: what a parsed script consists of, and how it runs.
///
/// The parser of CCoreScriptEngine (brenta/script.h) turns tokens into a tree of these objects, one class per
/// kind of statement; running a script is calling Execute on the tree. A host needs this header only to look
/// at what was parsed - to dump a function's body, to write a tool that reads scripts:
///
///     auto* function = dynamic_cast<FuncSymbol*>(engine.GetSymbol(StrId("Main"), false));
///     for (TIter<Statement*> at = function->GetBody()->GetFirstStatement(); at.Get() != nullptr; at.Next())
///     {
///         if ((*at.Get())->GetStatementType() == STMT_JUMP) ++jumps;
///     }
///     DumpFormatter text;
///     function->GetBody()->Dump(text);                      // " {\n    <jump_statement>\n ..."
///
/// Ownership. A statement owns the statements and expressions it was constructed with and destroys them; null
/// is allowed wherever a part may be missing. Symbols belong to the engine or to the symbol they are part of,
/// never to a statement. A tree may be dropped at any time while it does not run; names that it has declared
/// stay declared.
///
/// A tree is bound to the engine that parsed it: its expressions know the places where that engine keeps the
/// values of names. Destroy it before the engine, and execute it with no other.
///
/// Size. Blocks of any length, else-if chains of any length and expressions of millions of terms are
/// ordinary; nothing here recurses along them. Nesting is limited by the parser (1000 statements, 200
/// brackets), and destruction recurses along it.
///
/// Statements are allocated from the library's global heap. They are used by one thread at a time.
#pragma once

#include <cstddef>

#include "brenta/containers.h"
#include "brenta/detail/class_name.h"
#include "brenta/export.h"
#include "brenta/heap.h"
#include "brenta/lexer.h"
#include "brenta/names.h"
#include "brenta/symbols.h"
#include "brenta/var.h"

namespace brenta {

class CCoreScriptEngine;
class DumpFormatter;
class ExpressionNodes;  // internal: the arena of one expression's nodes
class Executor;         // internal: runs statements

/// The kind of a statement. The values are fixed.
enum StatementType : int {
    STMT_DECLARATION = 1,  ///< DeclarationStatement: var x = 1;
    STMT_COMPOUND,         ///< CompoundStatement: { ... }
    STMT_EXPRESSION,       ///< ExpressionStatement: f(x);
    STMT_CONDITIONAL,      ///< ConditionalStatement: if (c) ... else ...
    STMT_ITERATION,        ///< IterationStatement: for, foreach, while
    STMT_JUMP,             ///< JumpStatement: break, continue, return
    STMT_PRINT,            ///< PrintStatement: print(x)
    STMT_EXEC,             ///< ExecStatement: execute(text)
    STMT_HALT,             ///< HaltStatement: _halt
};

/// How a statement ended. The values are fixed.
enum ExecStatus : int {
    EXEC_FAILED = 0,    ///< an error, reported already or silent by rule; everything unwinds
    EXEC_OK = 1,        ///< go on with the next statement
    EXEC_CONTINUE = 2,  ///< a `continue` on its way to its loop
    EXEC_BREAK = 3,     ///< a `break` on its way to its loop
    EXEC_RETURN = 4,    ///< a `return` on its way to its function; the result slot holds the value
};

// ---------------------------------------------------------------------------------------------------------
// The base

/// What all statements have in common.
class BRENTA_API Statement {
 public:
    /// `type` tells which derived class this is, for the life of the object.
    explicit Statement(StatementType type);
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    /// The size of the object in bytes, without its parts.
    virtual std::size_t SizeOf() const = 0;
    /// The class's own name, such as "PrintStatement".
    virtual const char* GetClassName() const = 0;
    /// "Statement" for every class derived from it.
    virtual const char* GetBaseClassName() const = 0;
    virtual ~Statement();

    /// Runs the statement in the engine's current scope. `result` is the caller's value slot: a `return` and
    /// an expression that stands as a statement write their value into it, and every statement hands the same
    /// slot to its parts. Errors go to the engine's message stream.
    virtual ExecStatus Execute(CCoreScriptEngine& engine, Var& result) = 0;

    /// Adds the statement's diagnostic text: a tag that is fixed for each class, except that a block shows
    /// its statements and `execute` its expression.
    virtual void Dump(DumpFormatter& out) = 0;

    /// Which of the classes below this is; tells them apart without asking for run-time types.
    StatementType GetStatementType() const { return m_type; }

    BRENTA_HEAP_OPERATORS

 private:
    StatementType m_type;
};

// ---------------------------------------------------------------------------------------------------------
// Expressions

/// An expression: a statement of its own, or part of another. Dumps as "<expression>".
///
/// The tree is built by priorities, not by a grammar: every token becomes a node that climbs from the node
/// placed last towards the root until it meets one of lower priority, becomes that node's right child and
/// takes what was there as its own left child; if it meets none it becomes the root, with the old root on its
/// left. So operators of equal priority group from the left, assignments included, and a bracketed group is
/// an operand because the brackets raise its priority. From this follow the language's habits:
///
///     a + b * c        (+ a (* b c))
///     a = b = c        (= (= a b) c)          both get the value of c when it runs
///     -x               (- _ x)                0 - x
///     2 * -3           (- (* 2) 3)            a sign binds only behind a weaker operator
///     f(1, 2)          (f() f (, 1 2))
///     x[1] y           ([] x (y 1))           two operands in a row are no error here
///
/// An expression ends before `;`, `)`, `]`, `}` and at the end of the text, and may be empty. A keyword, `++`
/// or a comma outside a list are parsed like operators and are errors only when they run.
class BRENTA_API ExpressionStatement : public Statement {
 public:
    struct SubExpr;  // one node; internal (script/sub_expression.h)

    /// An empty expression.
    ExpressionStatement();
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    ~ExpressionStatement() override;

    /// Evaluates into `result`. An empty expression leaves `result` as it is and is EXEC_OK.
    ExecStatus Execute(CCoreScriptEngine& engine, Var& result) override;
    void Dump(DumpFormatter& out) override;

    /// Replaces the expression by what the tokens from `iter` on say, and leaves `iter` on the terminator.
    /// False after an error message; the expression is empty then.
    bool ParseExpression(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter);

    /// Evaluates where a value is needed: like Execute, but an empty expression gives the null value. False
    /// after an error message.
    bool EvalExpression(CCoreScriptEngine& engine, Var& value);

    /// Appends the tree as text, operator first: "(= a (+ b 1))". A missing left operand is written "_", a
    /// missing right one is left out, texts stand in quotes, floats always have a point. Nothing for an empty
    /// expression. For tests and debugging.
    void Describe(CoreString& out) const;

    /// Whether there is no expression: none was parsed, or its text was empty, or it had an error.
    bool IsEmpty() const { return m_pRoot == nullptr; }
    /// The root of the tree, null for an empty expression; good for the life of the statement.
    SubExpr* GetRoot() const { return m_pRoot; }

 private:
    bool ParseSubExpression(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, SubExpr** root);
    bool ParsePostfix(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, TokId closing, int priorityBoost,
                      SubExpr** into);
    bool ParseListLiteral(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, SubExpr** current);
    bool ParseBracket(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, bool afterName,
                      SubExpr** current);
    bool ParseToken(CCoreScriptEngine& engine, const ScriptToken& token, SubExpr** current);
    void InsertSubExpression(SubExpr* node, SubExpr** current);
    SubExpr* NewNode(const ScriptToken& token, int kind);
    void Clear();

    SubExpr* m_pRoot = nullptr;
    ExpressionNodes* m_pNodes = nullptr;
};

// ---------------------------------------------------------------------------------------------------------
// Declarations

/// `var name [size] as Class = value;` in a function body, or as a member of a class. Dumps as
/// "<declaration_statement>".
///
/// The symbol holds the initial value - null, the class's structure, an object of the registered class, for
/// an array a list of `size` of these - and every execution binds the name anew in the innermost scope with a
/// copy of it, so recursion and loops get variables of their own. Then the expression runs, if its root is an
/// assignment: it is the whole `name = value`, while a plain `var name;` has just `name` and runs nothing.
class BRENTA_API DeclarationStatement : public Statement {
 public:
    /// Owns the expression (null: none), not the symbol. `scriptableClass` is the name of the registered
    /// class behind `as`; kNoName when there is none or when it is a class of the script.
    DeclarationStatement(ScriptSymbol* symbol, ExpressionStatement* expression, STRID scriptableClass);
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    ~DeclarationStatement() override;

    /// EXEC_FAILED, without a message, if the innermost scope has the name already.
    ExecStatus Execute(CCoreScriptEngine& engine, Var& result) override;
    void Dump(DumpFormatter& out) override;

    /// The declared symbol; it belongs to the engine.
    ScriptSymbol* GetSymbol() const { return m_pSymbol; }
    /// `name = value`, or just `name` (for an array with its subscript), which is not evaluated.
    ExpressionStatement* GetAssignmentStatement() const { return m_pExpression; }
    /// The name behind `as` when it is a registered class, kNoName otherwise.
    STRID GetScriptableClass() const { return m_scriptableClass; }
    /// The n of `var a[n]`, 0 for a plain variable.
    int GetArraySize() const { return m_arraySize; }
    /// Internal: where the engine keeps the current value of the name; null when made without the parser.
    NameCell* GetCell() const { return m_pCell; }

    /// Runs the initialisers of a new instance's members, `cls`'s bases first, and stores their values
    /// through `members`, which stands on the first member and is moved on. False after an error message.
    bool Construct(CCoreScriptEngine& engine, ClassSymbol* cls, TIter<Var>& members);

 private:
    friend class Executor;
    friend class CCoreScriptEngine;
    ScriptSymbol* m_pSymbol;
    ExpressionStatement* m_pExpression;
    STRID m_scriptableClass;
    NameCell* m_pCell = nullptr;
    int m_arraySize = 0;
};

// ---------------------------------------------------------------------------------------------------------
// Blocks and branches

/// `{ ... }`, the body of a function, the statements of a command. Runs its statements in order in a scope of
/// its own, up to the first whose status is not EXEC_OK, and gives that status. Dumps its statements,
/// indented.
class BRENTA_API CompoundStatement : public Statement {
 public:
    /// An empty block.
    CompoundStatement();
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    ~CompoundStatement() override;

    /// EXEC_OK for a block that is empty or ran to its end. The scope is closed on every way out.
    ExecStatus Execute(CCoreScriptEngine& engine, Var& result) override;
    void Dump(DumpFormatter& out) override;

    /// Appends a statement and takes it over. Null is ignored.
    void AddStatement(Statement* statement);
    /// An iterator on the first statement; good until the next AddStatement.
    TIter<Statement*> GetFirstStatement() const;
    /// Internal: whether one of its statements can bind a name in the block's own scope.
    bool MayBind() const { return m_mayBind; }

 private:
    friend class Executor;
    TOrderedList<Statement*> m_statements;
    bool m_mayBind = false;
};

/// `if (condition) then else ...`. An empty condition counts as false; the branch's status is passed on.
/// Dumps as "<conditional_statement>".
class BRENTA_API ConditionalStatement : public Statement {
 public:
    /// Takes all three over; `elseBranch` may be null. In an else-if chain the else branch is the next
    /// ConditionalStatement; follow such a chain in a loop.
    ConditionalStatement(ExpressionStatement* condition, Statement* thenBranch, Statement* elseBranch);
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    ~ConditionalStatement() override;

    /// The status of the branch taken, so that a break or return in it travels on; EXEC_OK when there is
    /// none, EXEC_FAILED when the condition fails or is null.
    ExecStatus Execute(CCoreScriptEngine& engine, Var& result) override;
    void Dump(DumpFormatter& out) override;

    /// The parts stay the statement's, here and in the classes below.
    ExpressionStatement* GetCondition() const { return m_pCondition; }
    /// The branch for a true condition.
    Statement* GetThen() const { return m_pThen; }
    /// Null without an `else`.
    Statement* GetElse() const { return m_pElse; }

 private:
    friend class CCoreScriptEngine;
    ExpressionStatement* m_pCondition;
    Statement* m_pThen;
    Statement* m_pElse;
};

// ---------------------------------------------------------------------------------------------------------
// Loops and jumps

/// `for (init; condition; step) body`, `while (condition) body` and `foreach (variable in collection) body`.
/// Dumps as "<iteration_statement>".
///
/// `for` and `while` have no scope of their own: what the init statement declares stays declared behind the
/// loop. An empty condition is false. `foreach` binds its variable in a scope around the whole loop and walks
/// the elements that the collection has at the start; what is not a list has none.
class BRENTA_API IterationStatement : public Statement {
 public:
    /// A `for`; the expressions may be empty. The body comes with SetBody.
    IterationStatement(Statement* init, ExpressionStatement* condition, ExpressionStatement* step);
    /// A `foreach`. The symbol stays the engine's.
    IterationStatement(ScriptSymbol* variable, ExpressionStatement* collection);
    /// A `while`.
    explicit IterationStatement(ExpressionStatement* condition);
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    ~IterationStatement() override;

    /// EXEC_OK when the loop ends by its condition or by a break; EXEC_RETURN when the body returns;
    /// EXEC_FAILED when any part fails. CCoreScriptEngine::RequestStop makes it fail between two turns.
    ExecStatus Execute(CCoreScriptEngine& engine, Var& result) override;
    void Dump(DumpFormatter& out) override;

    /// Takes the body over and destroys the one before.
    void SetBody(Statement* body);

    /// TOK_FOR, TOK_FOREACH or TOK_WHILE.
    TokId GetKind() const { return m_kind; }
    /// The init statement of a `for`, null for the others.
    Statement* GetInit() const { return m_pInit; }
    /// The condition of a `for` or `while`, null for a `foreach`.
    ExpressionStatement* GetCondition() const { return m_pCondition; }
    /// The step of a `for`, the collection of a `foreach`, null for a `while`.
    ExpressionStatement* GetStep() const { return m_pStep; }
    /// The body, null before SetBody.
    Statement* GetBody() const { return m_pBody; }
    /// The variable of a `foreach`, null for the others.
    ScriptSymbol* GetVariable() const { return m_pVariable; }
    /// Internal: where the engine keeps the variable's current value; null when made without the parser.
    NameCell* GetCell() const { return m_pCell; }

 private:
    friend class Executor;
    friend class CCoreScriptEngine;
    TokId m_kind;
    Statement* m_pInit = nullptr;
    ExpressionStatement* m_pCondition = nullptr;
    ExpressionStatement* m_pStep = nullptr;
    Statement* m_pBody = nullptr;
    ScriptSymbol* m_pVariable = nullptr;
    NameCell* m_pCell = nullptr;
};

/// `break`, `continue`, `return` and `return value`. Dumps as "<jump_statement>".
class BRENTA_API JumpStatement : public Statement {
 public:
    /// `kind` is TOK_BREAK, TOK_CONTINUE or TOK_RETURN; `result` is the expression of a return, which may be
    /// empty, and null for the others.
    JumpStatement(TokId kind, ExpressionStatement* result);
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    ~JumpStatement() override;
    /// The status that travels; an unknown kind is the forced crash "Unknown jump statement.", then
    /// EXEC_FAILED.
    ExecStatus Execute(CCoreScriptEngine& engine, Var& result) override;
    void Dump(DumpFormatter& out) override;

    /// TOK_BREAK, TOK_CONTINUE or TOK_RETURN.
    TokId GetKind() const { return m_kind; }
    /// What a return returns, perhaps empty; null for the others.
    ExpressionStatement* GetResult() const { return m_pResult; }

 private:
    TokId m_kind;
    ExpressionStatement* m_pResult;
};

// ---------------------------------------------------------------------------------------------------------
// The other statements

/// `print(x)`: sends a value's printed form to the engine's message stream. Dumps as "<print_statement>".
class BRENTA_API PrintStatement : public Statement {
 public:
    /// An empty expression prints nothing.
    explicit PrintStatement(ExpressionStatement* expression);
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    ~PrintStatement() override;

    /// EXEC_FAILED when the expression fails or its value cannot be printed (it is null).
    ExecStatus Execute(CCoreScriptEngine& engine, Var& result) override;
    void Dump(DumpFormatter& out) override;

    /// What is printed; null when made without.
    ExpressionStatement* GetExpression() const { return m_pExpression; }

    /// Appends the printed form of a value: of a list the elements one behind the other, nested ones too,
    /// without brackets; of a function the value of its symbol. At most 60,000 bytes are appended. False
    /// after an error message.
    bool Output(CCoreScriptEngine& engine, CoreString& text, const Var& value);

 private:
    ExpressionStatement* m_pExpression;
};

/// `execute(text)`: parses a text as statements and runs them in a new block of the current scope. Dumps as
/// "execute: " and its expression.
class BRENTA_API ExecStatement : public Statement {
 public:
    /// An empty expression executes the empty text.
    explicit ExecStatement(ExpressionStatement* expression);
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    ~ExecStatement() override;

    /// Parses the text anew each time. The symbols that it declares go when it has run. The result is the
    /// status of the text's statements, so that a `return` in it leaves the function around; EXEC_FAILED
    /// when the text cannot be parsed.
    ExecStatus Execute(CCoreScriptEngine& engine, Var& result) override;
    void Dump(DumpFormatter& out) override;

    /// What gives the text; null when made without.
    ExpressionStatement* GetExpression() const { return m_pExpression; }

 private:
    ExpressionStatement* m_pExpression;
};

/// `_halt`: stops in the debugger when one is attached, otherwise does nothing. Dumps as "<halt_statement>".
class BRENTA_API HaltStatement : public Statement {
 public:
    HaltStatement();
    std::size_t SizeOf() const override;
    const char* GetClassName() const override;
    const char* GetBaseClassName() const override;
    ~HaltStatement() override;
    /// EXEC_OK, always.
    ExecStatus Execute(CCoreScriptEngine& engine, Var& result) override;
    void Dump(DumpFormatter& out) override;

    /// Does nothing and succeeds.
    bool Output(CCoreScriptEngine& engine, CoreString& text, const Var& value);
};

}  // namespace brenta
