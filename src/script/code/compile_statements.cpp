// Statements. Between two of them no temporary is in use.
#include "script/code/compiler.h"
#include "script/code/constants.h"

namespace brenta {
namespace {

using Node = ExpressionNode;

const Node* RootOf(const ExpressionStatement* expression) {
    return expression != nullptr ? expression->GetRoot() : nullptr;
}

bool StartsAsNull(const DeclarationStatement& declaration) {
    return declaration.GetArraySize() == 0 && declaration.GetSymbol()->GetClass() == nullptr &&
           declaration.GetScriptableClass() == kNoName;
}

/// The assignment that initialises a variable; null if there is none.
const Node* InitialiserOf(const DeclarationStatement& declaration) {
    const Node* root = RootOf(declaration.GetAssignmentStatement());
    return root != nullptr && root->nodeClass == NodeClass::Assign ? root : nullptr;
}

}  // namespace

void Compiler::CompileStatement(const Statement* statement) {
    if (statement == nullptr) return;
    switch (statement->GetStatementType()) {
        case STMT_DECLARATION:
            return CompileDeclaration(static_cast<const DeclarationStatement&>(*statement));
        case STMT_COMPOUND:
            return CompileBlock(static_cast<const CompoundStatement&>(*statement), true);
        case STMT_EXPRESSION:
            return CompileForEffect(static_cast<const ExpressionStatement*>(statement));
        case STMT_CONDITIONAL:
            return CompileConditional(static_cast<const ConditionalStatement&>(*statement));
        case STMT_ITERATION:
            return CompileLoop(static_cast<const IterationStatement&>(*statement));
        case STMT_JUMP:
            return CompileJump(static_cast<const JumpStatement&>(*statement));
        case STMT_PRINT:
            return CompilePrint(static_cast<const PrintStatement&>(*statement));
        case STMT_EXEC:
            return CompileExec(static_cast<const ExecStatement&>(*statement));
        case STMT_HALT:
            Emit(Op::Halt, nullptr);
            return;
    }
}

/// The locals of a block inside a function give up what they hold at its end: a list that is still held
/// elsewhere cannot grow in place. A function's own are released when it returns.
void Compiler::CompileBlock(const CompoundStatement& block, bool isInner) {
    OpenScope(BindsCells(block));
    const std::int64_t firstLocal = m_nextLocal;
    for (TIter<Statement*> at = block.GetFirstStatement(); at.Get() != nullptr; at.Next())
        CompileStatement(*at.Get());
    if (isInner) EmitClear(firstLocal);
    if (m_code->scopes[m_scopes.back()].isOpened) EmitPopScopes(1);
    CloseScope();
}

// ---------------------------------------------------------------------------------------------------------
// Declarations

void Compiler::CompileDeclaration(const DeclarationStatement& declaration) {
    const Node* initialiser = InitialiserOf(declaration);
    NameCell& cell = *declaration.GetCell();
    const std::int64_t place = NewLocal();
    if (!StartsAsNull(declaration)) NotePoint();
    if (NeedsCell(cell)) {
        Emit(Op::Declare, initialiser, 0, Fixed(&declaration));
    } else {
        DeclareSlot(cell, declaration.GetSymbol(), place);
        if (StartsAsNull(declaration)) {
            if (initialiser != nullptr && InitialiseAtOnce(*initialiser, cell, place)) return;
            EmitLoad(nullptr, place, Fixed(&kNullConstant));
        } else {
            Emit(Op::DeclareSlot, initialiser, place, Fixed(&declaration));
        }
    }
    if (initialiser != nullptr) CompileAssignment(*initialiser);
}

/// `var x = constant`, which nobody can tell from an empty x that is assigned to.
bool Compiler::InitialiseAtOnce(const Node& initialiser, const NameCell& cell, std::int64_t place) {
    const bool isPlain =
        initialiser.kind == TOK_ASSIGN && initialiser.left != nullptr && initialiser.left->IsVariable() &&
        initialiser.left->cell == &cell && initialiser.right != nullptr &&
        initialiser.right->nodeClass == NodeClass::Constant && initialiser.right->IsPlainOperand();
    if (isPlain) EmitLoad(initialiser.right, place, Place(*initialiser.right));
    return isPlain;
}

// ---------------------------------------------------------------------------------------------------------
// Branches and loops

void Compiler::CompileConditional(const ConditionalStatement& statement) {
    Label end;
    const Statement* rest = &statement;
    while (rest != nullptr && rest->GetStatementType() == STMT_CONDITIONAL) {
        const auto& branch = static_cast<const ConditionalStatement&>(*rest);
        Label otherwise;
        CompileCondition(branch.GetCondition(), otherwise);
        CompileStatement(branch.GetThen());
        rest = branch.GetElse();
        if (rest != nullptr) EmitJump(Op::Jump, end);
        Bind(otherwise);
    }
    CompileStatement(rest);
    Bind(end);
}

/// The condition is tested on entry and, at the end of each turn, once more.
void Compiler::CompileLoop(const IterationStatement& statement) {
    if (statement.GetKind() == TOK_FOREACH) return CompileForeach(statement);
    CompileStatement(statement.GetInit());
    Loop loop{m_loop, m_openScopes, {}, {}};
    m_loop = &loop;
    const std::size_t top = Here();
    m_lastLabel = top;
    CompileCondition(statement.GetCondition(), loop.breaks);
    const std::size_t body = Here();
    m_lastLabel = body;
    CompileStatement(statement.GetBody());
    if (statement.GetKind() == TOK_FOR) {
        Bind(loop.continues);
        CompileForEffect(statement.GetStep());
    }
    const ExpressionStatement* at =
        statement.GetCondition() != nullptr ? statement.GetCondition() : statement.GetStep();
    if (!loop.continues.empty()) Bind(loop.continues);
    CompileRepeat(statement.GetCondition(), RootOf(at), top, body);
    Bind(loop.breaks);
    m_loop = loop.outer;
}

void Compiler::CompileForeach(const IterationStatement& statement) {
    const std::int64_t list = NewLocal();
    const std::int64_t count = NewLocal();
    NameCell& cell = *statement.GetCell();
    const bool inCell = NeedsCell(cell);
    const std::int64_t element = NewLocal();
    OpenScope(inCell);
    EmitLoad(nullptr, element, Fixed(&kNullConstant));
    if (inCell) {
        Emit(Op::BindCell, nullptr, element, Fixed(&cell), Fixed(statement.GetVariable()));
    } else {
        DeclareSlot(cell, statement.GetVariable(), element);
    }
    CompileExpression(statement.GetStep(), list);
    EmitLoad(nullptr, count, Fixed(&kZeroConstant));
    Loop loop{m_loop, m_openScopes, {}, {}};
    m_loop = &loop;
    EmitJump(Op::Jump, loop.continues);
    const std::size_t body = Here();
    if (inCell) Emit(Op::SetCell, nullptr, 0, Register(element), Fixed(&cell));
    CompileStatement(statement.GetBody());
    Bind(loop.continues);
    const std::int32_t distance = DistanceTo(body);
    Emit(Op::NextElement, RootOf(statement.GetStep()), element, Register(list), Register(count)).n = distance;
    Bind(loop.breaks);
    EmitClear(list);
    if (m_code->scopes[m_scopes.back()].isOpened) EmitPopScopes(1);
    CloseScope();
    m_loop = loop.outer;
}

// ---------------------------------------------------------------------------------------------------------
// Jumps

void Compiler::CompileJump(const JumpStatement& jump) {
    if (jump.GetKind() == TOK_BREAK) return EmitBreak();
    if (jump.GetKind() == TOK_CONTINUE) return EmitContinue();
    const Node* root = RootOf(jump.GetResult());
    if (root == nullptr) {
        EmitPopScopes(m_openScopes);
        Emit(Op::ReturnNothing, nullptr).d = m_code->localBytes;
        return;
    }
    const std::int64_t top = m_top;
    EmitReturn(root, ResultOf(*root));
    m_top = top;
}

/// What `return` gives. A variable in a cell is read before its scope goes.
Compiler::Operand Compiler::ResultOf(const Node& root) {
    if (root.IsPlainOperand() && (Place(root).from == kFrame || m_openScopes == 0)) return Place(root);
    const std::int64_t result = NewTemporary();
    CompileRoot(root, result);
    return Register(result);
}

void Compiler::EmitReturn(const Node* node, Operand result) {
    EmitPopScopes(m_openScopes);
    Emit(result.from == kFrame ? Op::Return : Op::ReturnCopy, node, m_code->localBytes, result);
}

void Compiler::EmitBreak() {
    if (m_loop == nullptr) return EmitMisplaced(TOK_BREAK);
    EmitPopScopes(m_openScopes - m_loop->openScopes);
    EmitJump(Op::Jump, m_loop->breaks);
}

void Compiler::EmitContinue() {
    if (m_loop == nullptr) return EmitMisplaced(TOK_CONTINUE);
    EmitPopScopes(m_openScopes - m_loop->openScopes);
    EmitJump(Op::Jump, m_loop->continues);
}

void Compiler::EmitMisplaced(TokId kind) {
    Emit(Op::Misplaced, nullptr).n = kind;
}

void Compiler::EmitPopScopes(int count) {
    if (count > 0) Emit(Op::PopScopes, nullptr).n = count;
}

void Compiler::EmitClear(std::int64_t firstLocal) {
    const auto count = (m_nextLocal - firstLocal) / static_cast<std::int64_t>(sizeof(Value));
    if (count == 0) return;
    Instruction& clear = Emit(Op::Clear, nullptr);
    clear.d = firstLocal;
    clear.n = static_cast<std::int32_t>(count);
}

// ---------------------------------------------------------------------------------------------------------
// print and execute

void Compiler::CompilePrint(const PrintStatement& statement) {
    const Node* root = RootOf(statement.GetExpression());
    if (root == nullptr) return;
    const std::int64_t value = NewTemporary();
    CompileRoot(*root, value);
    NotePoint();
    Emit(Op::Print, root, 0, Register(value));
    m_top = value;
}

/// A text may break out of the loop around it, or return from the function: the ways on are laid out behind
/// the instruction, one jump for each.
void Compiler::CompileExec(const ExecStatement& statement) {
    const std::int64_t text = NewTemporary();
    CompileExpression(statement.GetExpression(), text);
    NotePoint();
    Emit(Op::Execute, RootOf(statement.GetExpression()), text, Fixed(&statement));
    Label ways[4];
    for (Label& way : ways)
        EmitJump(Op::Jump, way);
    Bind(ways[1]);
    EmitBreak();
    Bind(ways[2]);
    EmitContinue();
    Bind(ways[3]);
    EmitReturn(nullptr, Register(text));
    Bind(ways[0]);
    m_top = text;
}

}  // namespace brenta
