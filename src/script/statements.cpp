// The statement classes as objects: what they hold, what they destroy, how they dump. How they run stands in
// execute_statements.cpp.
#include "brenta/statements.h"

#include <utility>

#include "brenta/dump.h"
#include "foundation/lack_of_memory.h"
#include "script/expression_nodes.h"
#include "script/statement_count.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Statement

namespace {

constinit thread_local long t_count = 0;

}  // namespace

long CountStatements() {
    return t_count;
}

Statement::Statement(StatementType type) : m_type(type) {
    ++t_count;
}

Statement::~Statement() {
    --t_count;
}

// ---------------------------------------------------------------------------------------------------------
// ExpressionStatement

ExpressionStatement::ExpressionStatement() : Statement(STMT_EXPRESSION) {}

ExpressionStatement::~ExpressionStatement() {
    ExpressionNodes::Destroy(m_pNodes);
}

void ExpressionStatement::Clear() {
    m_pRoot = nullptr;
    ExpressionNodes::Destroy(std::exchange(m_pNodes, nullptr));
}

std::size_t ExpressionStatement::SizeOf() const {
    return sizeof(*this);
}

const char* ExpressionStatement::GetClassName() const {
    return "ExpressionStatement";
}

const char* ExpressionStatement::GetBaseClassName() const {
    return "Statement";
}

void ExpressionStatement::Dump(DumpFormatter& out) {
    out.Add("<expression>");
}

// ---------------------------------------------------------------------------------------------------------
// DeclarationStatement

DeclarationStatement::DeclarationStatement(ScriptSymbol* symbol, ExpressionStatement* expression,
                                           STRID scriptableClass)
    : Statement(STMT_DECLARATION),
      m_pSymbol(symbol),
      m_pExpression(expression),
      m_scriptableClass(scriptableClass) {}

DeclarationStatement::~DeclarationStatement() {
    delete m_pExpression;
}

std::size_t DeclarationStatement::SizeOf() const {
    return sizeof(*this);
}

const char* DeclarationStatement::GetClassName() const {
    return "DeclarationStatement";
}

const char* DeclarationStatement::GetBaseClassName() const {
    return "Statement";
}

void DeclarationStatement::Dump(DumpFormatter& out) {
    out.Add("<declaration_statement>\n");
}

// ---------------------------------------------------------------------------------------------------------
// CompoundStatement

CompoundStatement::CompoundStatement() : Statement(STMT_COMPOUND) {}

CompoundStatement::~CompoundStatement() {
    for (Statement* statement : m_statements) {
        delete statement;
    }
}

std::size_t CompoundStatement::SizeOf() const {
    return sizeof(*this);
}

const char* CompoundStatement::GetClassName() const {
    return "CompoundStatement";
}

const char* CompoundStatement::GetBaseClassName() const {
    return "Statement";
}

namespace {

/// Whether running a statement can bind a name in the scope that it runs in. An executed text has a block of
/// its own, but it is parsed in the scope around it.
bool MayBindInScope(const Statement* statement) {
    while (statement != nullptr) {
        switch (statement->GetStatementType()) {
            case STMT_DECLARATION:
            case STMT_EXEC:
                return true;
            case STMT_CONDITIONAL: {
                const auto* const branch = static_cast<const ConditionalStatement*>(statement);
                if (MayBindInScope(branch->GetThen())) return true;
                statement = branch->GetElse();
                break;
            }
            case STMT_ITERATION: {
                const auto* const loop = static_cast<const IterationStatement*>(statement);
                if (loop->GetKind() == TOK_FOREACH) return false;
                if (MayBindInScope(loop->GetInit())) return true;
                statement = loop->GetBody();
                break;
            }
            default:
                return false;
        }
    }
    return false;
}

}  // namespace

void CompoundStatement::AddStatement(Statement* statement) {
    if (statement == nullptr) return;
    AddOrThrow(m_statements, statement);
    m_mayBind = m_mayBind || MayBindInScope(statement);
}

TIter<Statement*> CompoundStatement::GetFirstStatement() const {
    return TIter<Statement*>(m_statements);
}

void CompoundStatement::Dump(DumpFormatter& out) {
    out.Push();
    for (Statement* statement : m_statements) {
        statement->Dump(out);
    }
    out.Outdent();
    out.NewLine();
    out.Add("}");
    out.NewLine();
}

// ---------------------------------------------------------------------------------------------------------
// ConditionalStatement

ConditionalStatement::ConditionalStatement(ExpressionStatement* condition, Statement* thenBranch,
                                           Statement* elseBranch)
    : Statement(STMT_CONDITIONAL), m_pCondition(condition), m_pThen(thenBranch), m_pElse(elseBranch) {}

// The else branches of an else-if chain hang one under the other, and a chain may be as long as its author
// (or the program that wrote it) likes: each link gives up its else branch before it is deleted.
ConditionalStatement::~ConditionalStatement() {
    delete m_pCondition;
    delete m_pThen;
    Statement* rest = std::exchange(m_pElse, nullptr);
    while (rest != nullptr) {
        Statement* next = nullptr;
        if (rest->GetStatementType() == STMT_CONDITIONAL) {
            next = std::exchange(static_cast<ConditionalStatement*>(rest)->m_pElse, nullptr);
        }
        delete rest;
        rest = next;
    }
}

std::size_t ConditionalStatement::SizeOf() const {
    return sizeof(*this);
}

const char* ConditionalStatement::GetClassName() const {
    return "ConditionalStatement";
}

const char* ConditionalStatement::GetBaseClassName() const {
    return "Statement";
}

void ConditionalStatement::Dump(DumpFormatter& out) {
    out.Add("<conditional_statement>\n");
}

// ---------------------------------------------------------------------------------------------------------
// IterationStatement

IterationStatement::IterationStatement(Statement* init, ExpressionStatement* condition,
                                       ExpressionStatement* step)
    : Statement(STMT_ITERATION), m_kind(TOK_FOR), m_pInit(init), m_pCondition(condition), m_pStep(step) {}

IterationStatement::IterationStatement(ScriptSymbol* variable, ExpressionStatement* collection)
    : Statement(STMT_ITERATION), m_kind(TOK_FOREACH), m_pStep(collection), m_pVariable(variable) {}

IterationStatement::IterationStatement(ExpressionStatement* condition)
    : Statement(STMT_ITERATION), m_kind(TOK_WHILE), m_pCondition(condition) {}

IterationStatement::~IterationStatement() {
    delete m_pInit;
    delete m_pCondition;
    delete m_pStep;
    delete m_pBody;
}

void IterationStatement::SetBody(Statement* body) {
    if (body != m_pBody) delete std::exchange(m_pBody, body);
}

std::size_t IterationStatement::SizeOf() const {
    return sizeof(*this);
}

const char* IterationStatement::GetClassName() const {
    return "IterationStatement";
}

const char* IterationStatement::GetBaseClassName() const {
    return "Statement";
}

void IterationStatement::Dump(DumpFormatter& out) {
    out.Add("<iteration_statement>\n");
}

// ---------------------------------------------------------------------------------------------------------
// JumpStatement

JumpStatement::JumpStatement(TokId kind, ExpressionStatement* result)
    : Statement(STMT_JUMP), m_kind(kind), m_pResult(result) {}

JumpStatement::~JumpStatement() {
    delete m_pResult;
}

std::size_t JumpStatement::SizeOf() const {
    return sizeof(*this);
}

const char* JumpStatement::GetClassName() const {
    return "JumpStatement";
}

const char* JumpStatement::GetBaseClassName() const {
    return "Statement";
}

void JumpStatement::Dump(DumpFormatter& out) {
    out.Add("<jump_statement>\n");
}

// ---------------------------------------------------------------------------------------------------------
// PrintStatement

PrintStatement::PrintStatement(ExpressionStatement* expression)
    : Statement(STMT_PRINT), m_pExpression(expression) {}

PrintStatement::~PrintStatement() {
    delete m_pExpression;
}

std::size_t PrintStatement::SizeOf() const {
    return sizeof(*this);
}

const char* PrintStatement::GetClassName() const {
    return "PrintStatement";
}

const char* PrintStatement::GetBaseClassName() const {
    return "Statement";
}

void PrintStatement::Dump(DumpFormatter& out) {
    out.Add("<print_statement>\n");
}

// ---------------------------------------------------------------------------------------------------------
// ExecStatement

ExecStatement::ExecStatement(ExpressionStatement* expression)
    : Statement(STMT_EXEC), m_pExpression(expression) {}

ExecStatement::~ExecStatement() {
    delete m_pExpression;
}

std::size_t ExecStatement::SizeOf() const {
    return sizeof(*this);
}

const char* ExecStatement::GetClassName() const {
    return "ExecStatement";
}

const char* ExecStatement::GetBaseClassName() const {
    return "Statement";
}

void ExecStatement::Dump(DumpFormatter& out) {
    out.Add("execute: ");
    out.Push();
    if (m_pExpression != nullptr) m_pExpression->Dump(out);
    out.Pop();
}

// ---------------------------------------------------------------------------------------------------------
// HaltStatement

HaltStatement::HaltStatement() : Statement(STMT_HALT) {}

HaltStatement::~HaltStatement() = default;

std::size_t HaltStatement::SizeOf() const {
    return sizeof(*this);
}

const char* HaltStatement::GetClassName() const {
    return "HaltStatement";
}

const char* HaltStatement::GetBaseClassName() const {
    return "Statement";
}

void HaltStatement::Dump(DumpFormatter& out) {
    out.Add("<halt_statement>\n");
}

}  // namespace brenta
