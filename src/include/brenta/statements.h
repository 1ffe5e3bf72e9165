/// @file
/// The statement classes: what a parsed script consists of.
#pragma once

#include <cstddef>

#include "brenta/containers.h"
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

enum StatementType : int {
    STMT_DECLARATION = 1,
    STMT_COMPOUND,
    STMT_EXPRESSION,
    STMT_CONDITIONAL,
    STMT_ITERATION,
    STMT_JUMP,
    STMT_PRINT,
    STMT_EXEC,
    STMT_HALT,
};

enum ExecStatus : int {
    EXEC_FAILED = 0,
    EXEC_OK = 1,
    EXEC_CONTINUE = 2,
    EXEC_BREAK = 3,
    EXEC_RETURN = 4,
};

class BRENTA_API Statement {
   public:
    explicit Statement(StatementType type);
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    virtual std::size_t SizeOf() const = 0;
    virtual const char* GetClassName() const = 0;
    virtual const char* GetBaseClassName() const = 0;
    virtual ~Statement();
    virtual ExecStatus Execute(CCoreScriptEngine& engine, Var& result) = 0;
    virtual void Dump(DumpFormatter& out) = 0;

    StatementType GetStatementType() const { return m_type; }

    BRENTA_HEAP_OPERATORS

   private:
    StatementType m_type;
};

/// Declares the six overrides of a statement class.
#define BRENTA_STATEMENT_OVERRIDES                                   \
    std::size_t SizeOf() const override;                             \
    const char* GetClassName() const override;                       \
    const char* GetBaseClassName() const override;                   \
    ExecStatus Execute(CCoreScriptEngine& engine, Var& result) override; \
    void Dump(DumpFormatter& out) override;

class BRENTA_API ExpressionStatement : public Statement {
   public:
    struct SubExpr;  // one node; internal (script/sub_expression.h)

    ExpressionStatement();
    ~ExpressionStatement() override;
    BRENTA_STATEMENT_OVERRIDES

    bool ParseExpression(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter);
    bool EvalExpression(CCoreScriptEngine& engine, Var& value);
    /// The tree as text, operator first: "(= a (+ b 1))"; "" for an empty expression. For tests and debugging.
    void Describe(CoreString& out) const;
    bool IsEmpty() const { return m_pRoot == nullptr; }
    SubExpr* GetRoot() const { return m_pRoot; }

   private:
    bool ParseSubExpression(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, SubExpr** root);
    bool ParsePostfix(CCoreScriptEngine& engine, TIter<ScriptToken*>& iter, TokId closing, int priorityBoost, SubExpr** into);
    void InsertSubExpression(SubExpr* node, SubExpr** current);

    SubExpr* m_pRoot = nullptr;
    ExpressionNodes* m_pNodes = nullptr;
};

class BRENTA_API DeclarationStatement : public Statement {
   public:
    /// Owns the expression, not the symbol.
    DeclarationStatement(ScriptSymbol* symbol, ExpressionStatement* expression, STRID scriptableClass);
    ~DeclarationStatement() override;
    BRENTA_STATEMENT_OVERRIDES

    ScriptSymbol* GetSymbol() const { return m_pSymbol; }
    ExpressionStatement* GetAssignmentStatement() const { return m_pExpression; }
    STRID GetScriptableClass() const { return m_scriptableClass; }
    bool Construct(CCoreScriptEngine& engine, ClassSymbol* cls, TIter<Var>& members);

   private:
    friend class Executor;
    friend class CCoreScriptEngine;
    ScriptSymbol* m_pSymbol;
    ExpressionStatement* m_pExpression;
    STRID m_scriptableClass;
    NameCell* m_pCell = nullptr;  // the symbol's cell, when the parser knew it
    int m_arraySize = 0;          // the n of `var a[n]`, 0 without
};

class BRENTA_API CompoundStatement : public Statement {
   public:
    CompoundStatement();
    ~CompoundStatement() override;
    BRENTA_STATEMENT_OVERRIDES

    void AddStatement(Statement* statement);
    TIter<Statement*> GetFirstStatement() const;

   private:
    TOrderedList<Statement*> m_statements;
};

class BRENTA_API ConditionalStatement : public Statement {
   public:
    ConditionalStatement(ExpressionStatement* condition, Statement* thenBranch, Statement* elseBranch);
    ~ConditionalStatement() override;
    BRENTA_STATEMENT_OVERRIDES

    ExpressionStatement* GetCondition() const { return m_pCondition; }
    Statement* GetThen() const { return m_pThen; }
    Statement* GetElse() const { return m_pElse; }

   private:
    friend class CCoreScriptEngine;
    ExpressionStatement* m_pCondition;
    Statement* m_pThen;
    Statement* m_pElse;
};

class BRENTA_API IterationStatement : public Statement {
   public:
    IterationStatement(Statement* init, ExpressionStatement* condition, ExpressionStatement* step);
    IterationStatement(ScriptSymbol* variable, ExpressionStatement* collection);
    explicit IterationStatement(ExpressionStatement* condition);
    ~IterationStatement() override;
    BRENTA_STATEMENT_OVERRIDES

    void SetBody(Statement* body);
    TokId GetKind() const { return m_kind; }
    Statement* GetInit() const { return m_pInit; }
    ExpressionStatement* GetCondition() const { return m_pCondition; }
    /// The step of a `for`, the collection of a `foreach`.
    ExpressionStatement* GetStep() const { return m_pStep; }
    Statement* GetBody() const { return m_pBody; }
    ScriptSymbol* GetVariable() const { return m_pVariable; }

   private:
    friend class Executor;
    friend class CCoreScriptEngine;
    TokId m_kind;
    Statement* m_pInit;
    ExpressionStatement* m_pCondition;
    ExpressionStatement* m_pStep;
    Statement* m_pBody;
    ScriptSymbol* m_pVariable;
    NameCell* m_pCell = nullptr;  // the loop variable's cell, when the parser knew it
};

class BRENTA_API JumpStatement : public Statement {
   public:
    JumpStatement(TokId kind, ExpressionStatement* result);
    ~JumpStatement() override;
    BRENTA_STATEMENT_OVERRIDES

    TokId GetKind() const { return m_kind; }
    ExpressionStatement* GetResult() const { return m_pResult; }

   private:
    TokId m_kind;
    ExpressionStatement* m_pResult;
};

class BRENTA_API PrintStatement : public Statement {
   public:
    explicit PrintStatement(ExpressionStatement* expression);
    ~PrintStatement() override;
    BRENTA_STATEMENT_OVERRIDES

    ExpressionStatement* GetExpression() const { return m_pExpression; }
    bool Output(CCoreScriptEngine& engine, CoreString& text, const Var& value);

   private:
    ExpressionStatement* m_pExpression;
};

class BRENTA_API ExecStatement : public Statement {
   public:
    explicit ExecStatement(ExpressionStatement* expression);
    ~ExecStatement() override;
    BRENTA_STATEMENT_OVERRIDES

    ExpressionStatement* GetExpression() const { return m_pExpression; }

   private:
    ExpressionStatement* m_pExpression;
};

class BRENTA_API HaltStatement : public Statement {
   public:
    HaltStatement();
    ~HaltStatement() override;
    BRENTA_STATEMENT_OVERRIDES

    bool Output(CCoreScriptEngine& engine, CoreString& text, const Var& value);
};

#undef BRENTA_STATEMENT_OVERRIDES

}  // namespace brenta
