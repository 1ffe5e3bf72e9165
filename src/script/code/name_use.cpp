#include "script/code/name_use.h"

#include <algorithm>

namespace brenta {
namespace {

/// Far below what the parser lets pass: the compiler recurses.
constexpr int kMaxDepth = 100;

int DepthOf(const Statement* statement, int limit);

int DepthOfBlock(const CompoundStatement& block, int limit) {
    int depth = 0;
    for (TIter<Statement*> at = block.GetFirstStatement(); at.Get() != nullptr && depth < limit; at.Next())
        depth = std::max(depth, DepthOf(*at.Get(), limit));
    return depth;
}

int DepthOfBranches(const ConditionalStatement* branch, int limit) {
    int depth = 0;
    const Statement* rest = branch;
    while (rest != nullptr && rest->GetStatementType() == STMT_CONDITIONAL && depth < limit) {
        branch = static_cast<const ConditionalStatement*>(rest);
        depth = std::max(depth, DepthOf(branch->GetThen(), limit));
        rest = branch->GetElse();
    }
    return std::max(depth, DepthOf(rest, limit));
}

/// A loop that begins with anything but a declaration or an expression ignores how that ended.
bool IsOrdinary(const IterationStatement& loop) {
    if (loop.GetKind() == TOK_FOREACH) return loop.GetCell() != nullptr && loop.GetVariable() != nullptr;
    const Statement* init = loop.GetInit();
    return init == nullptr || init->GetStatementType() == STMT_DECLARATION ||
           init->GetStatementType() == STMT_EXPRESSION;
}

/// How deep statements nest, as far as it is below the limit, which stands also for what is not ordinary.
int DepthOf(const Statement* statement, int limit) {
    if (statement == nullptr || limit == 0) return 0;
    switch (statement->GetStatementType()) {
        case STMT_COMPOUND:
            return 1 + DepthOfBlock(static_cast<const CompoundStatement&>(*statement), limit - 1);
        case STMT_CONDITIONAL:
            return 1 + DepthOfBranches(static_cast<const ConditionalStatement*>(statement), limit - 1);
        case STMT_ITERATION: {
            const auto& loop = static_cast<const IterationStatement&>(*statement);
            if (!IsOrdinary(loop)) return limit;
            return 1 + std::max(DepthOf(loop.GetInit(), limit - 1), DepthOf(loop.GetBody(), limit - 1));
        }
        case STMT_DECLARATION: {
            const auto& declaration = static_cast<const DeclarationStatement&>(*statement);
            return declaration.GetCell() != nullptr && declaration.GetSymbol() != nullptr ? 1 : limit;
        }
        default:
            return 1;
    }
}

}  // namespace

bool NameUse::RunsAsTree(const FuncSymbol& function) {
    return DepthOf(function.GetBody(), kMaxDepth) >= kMaxDepth;
}

void NameUse::Update(const FuncSymbol& function) {
    m_locals.Reset();
    for (; m_symbolsSeen < m_state.symbols.size(); ++m_symbolsSeen) {
        const CCoreSymbol& symbol = *m_state.symbols[m_symbolsSeen];
        if (symbol.GetKind() == SymbolKind::Function) Add(static_cast<const FuncSymbol&>(symbol));
        if (symbol.GetKind() == SymbolKind::Class) AddClass(static_cast<const ClassSymbol&>(symbol));
    }
    Add(function);
}

void NameUse::Add(const FuncSymbol& function) {
    m_isTree = RunsAsTree(function);
    m_locals.Open();
    for (TIter<ScriptSymbol*> at = function.GetFirstParam(); at.Get() != nullptr; at.Next())
        Declare(m_cells.CellOf((*at.Get())->GetName()), Certainty::Certain);
    AddStatement(function.GetBody(), Certainty::Certain);
    m_locals.Close();
}

/// The initialisers of members run as trees, whenever an object is made.
void NameUse::AddClass(const ClassSymbol& cls) {
    m_isTree = true;
    for (TIter<DeclarationStatement*> at = cls.GetFirstMember(); at.Get() != nullptr; at.Next()) {
        DeclareFree(m_cells.CellOf((*at.Get())->GetSymbol()->GetName()));
        AddExpression((*at.Get())->GetAssignmentStatement(), Wanted::Effect);
    }
    for (TIter<FuncSymbol*> at = cls.GetFirstFunction(); at.Get() != nullptr; at.Next())
        Add(**at.Get());
}

// ---------------------------------------------------------------------------------------------------------
// Statements

void NameUse::AddStatement(const Statement* statement, Certainty certainty) {
    if (statement == nullptr) return;
    switch (statement->GetStatementType()) {
        case STMT_DECLARATION:
            return AddDeclaration(static_cast<const DeclarationStatement&>(*statement), certainty);
        case STMT_COMPOUND: {
            const auto& block = static_cast<const CompoundStatement&>(*statement);
            m_locals.Open();
            for (TIter<Statement*> at = block.GetFirstStatement(); at.Get() != nullptr; at.Next())
                AddStatement(*at.Get(), Certainty::Certain);
            return m_locals.Close();
        }
        case STMT_EXPRESSION:
            return AddExpression(static_cast<const ExpressionStatement*>(statement), Wanted::Effect);
        case STMT_CONDITIONAL: {
            while (statement != nullptr && statement->GetStatementType() == STMT_CONDITIONAL) {
                const auto& branch = static_cast<const ConditionalStatement&>(*statement);
                AddExpression(branch.GetCondition(), Wanted::Value);
                AddStatement(branch.GetThen(), Certainty::Conditional);
                statement = branch.GetElse();
            }
            return AddStatement(statement, Certainty::Conditional);
        }
        case STMT_ITERATION:
            return AddLoop(static_cast<const IterationStatement&>(*statement), certainty);
        case STMT_JUMP:
            return AddExpression(static_cast<const JumpStatement&>(*statement).GetResult(), Wanted::Value);
        case STMT_PRINT:
            return AddExpression(static_cast<const PrintStatement&>(*statement).GetExpression(),
                                 Wanted::Value);
        case STMT_EXEC:
            return AddExpression(static_cast<const ExecStatement&>(*statement).GetExpression(),
                                 Wanted::Value);
        case STMT_HALT:
            return;
    }
}

void NameUse::AddLoop(const IterationStatement& loop, Certainty certainty) {
    if (loop.GetKind() == TOK_FOREACH) {
        m_locals.Open();
        if (loop.GetCell() != nullptr) Declare(*loop.GetCell(), Certainty::Certain);
        AddExpression(loop.GetStep(), Wanted::Value);
        AddStatement(loop.GetBody(), Certainty::Conditional);
        return m_locals.Close();
    }
    AddStatement(loop.GetInit(), certainty);
    AddExpression(loop.GetCondition(), Wanted::Value);
    AddStatement(loop.GetBody(), Certainty::Conditional);
    AddExpression(loop.GetStep(), Wanted::Effect);
}

void NameUse::AddDeclaration(const DeclarationStatement& declaration, Certainty certainty) {
    if (declaration.GetCell() != nullptr) Declare(*declaration.GetCell(), certainty);
    AddExpression(declaration.GetAssignmentStatement(), Wanted::Effect);
}

void NameUse::AddExpression(const ExpressionStatement* expression, Wanted wanted) {
    if (expression == nullptr || expression->GetRoot() == nullptr) return;
    const bool isTree = m_isTree || !IsLowered(*expression->GetRoot(), wanted);
    VisitNodes(expression->GetRoot(), [&](const ExpressionNode& node) {
        if (node.kind != ID || node.cell == nullptr) return;
        const bool isMember = node.parent != nullptr && node.parent->kind == TOK_MEMBER &&
                              node.parent->right == &node && node.IsLeaf();
        if (isMember) return;
        if (isTree || m_locals.Find(*node.cell) == LocalNames::kNone) DeclareFree(*node.cell);
    });
}

// ---------------------------------------------------------------------------------------------------------
// Names

/// A name that a scope declares twice, or perhaps, is left to the cells, which know what is bound.
void NameUse::Declare(const NameCell& cell, Certainty certainty) {
    if (m_isTree || certainty == Certainty::Conditional || m_locals.IsInTopScope(cell))
        return DeclareFree(cell);
    m_locals.Declare(cell, 0);
}

void NameUse::DeclareFree(const NameCell& cell) {
    std::uint8_t& flags = FlagsOf(cell);
    if ((flags & kFree) != 0) return;
    flags |= kFree;
    m_hasChanged = m_hasChanged || (flags & kInRegister) != 0;
}

std::uint8_t& NameUse::FlagsOf(const NameCell& cell) {
    if (cell.index >= m_flags.size()) m_flags.resize(cell.index + std::size_t{64});
    return m_flags[cell.index];
}

}  // namespace brenta
