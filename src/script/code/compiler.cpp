#include "script/code/compiler.h"

#include "script/symbol_access.h"

namespace brenta {
namespace {

constexpr std::int64_t kRegisterSize = sizeof(Value);

int CountLocals(const Statement* statement);

int CountLocals(const CompoundStatement& block) {
    int count = 0;
    for (TIter<Statement*> at = block.GetFirstStatement(); at.Get() != nullptr; at.Next())
        count += CountLocals(*at.Get());
    return count;
}

/// How many registers the locals of a statement can take; a walk through a list takes two of its own.
int CountLocals(const Statement* statement) {
    int count = 0;
    while (statement != nullptr && statement->GetStatementType() == STMT_CONDITIONAL) {
        const auto& branch = static_cast<const ConditionalStatement&>(*statement);
        count += CountLocals(branch.GetThen());
        statement = branch.GetElse();
    }
    if (statement == nullptr) return count;
    switch (statement->GetStatementType()) {
        case STMT_DECLARATION:
            return count + 1;
        case STMT_COMPOUND:
            return count + CountLocals(static_cast<const CompoundStatement&>(*statement));
        case STMT_ITERATION: {
            const auto& loop = static_cast<const IterationStatement&>(*statement);
            return count + CountLocals(loop.GetInit()) + CountLocals(loop.GetBody()) +
                   (loop.GetKind() == TOK_FOREACH ? 3 : 0);
        }
        default:
            return count;
    }
}

}  // namespace

std::unique_ptr<FunctionCode> Compiler::Compile(const FuncSymbol& function, NameCells& cells, NameUse& names,
                                                LocalsIn form) {
    if (NameUse::RunsAsTree(function)) return nullptr;
    Compiler compiler(function, cells, names, form);
    compiler.CompileFunction(function);
    return std::move(compiler.m_code);
}

std::unique_ptr<FunctionCode> Compiler::CompileInCells(const FunctionCode& inRegisters, NameCells& cells,
                                                       NameUse& names) {
    Compiler compiler(*inRegisters.function, cells, names, LocalsIn::Cells);
    compiler.m_model = &inRegisters;
    compiler.CompileFunction(*inRegisters.function);
    return std::move(compiler.m_code);
}

Compiler::Compiler(const FuncSymbol& function, NameCells& cells, NameUse& names, LocalsIn form)
    : m_cells(cells), m_names(names), m_form(form), m_code(std::make_unique<FunctionCode>()) {
    m_code->function = &function;
    m_code->form = form;
    const CompoundStatement* const body = function.GetBody();
    const int locals = function.GetParamCount() + (body != nullptr ? CountLocals(*body) : 0);
    // At least one: so there are never more frames than registers.
    m_code->localBytes = std::max(locals, 1) * kRegisterSize;
    m_top = m_code->localBytes;
}

void Compiler::CompileFunction(const FuncSymbol& function) {
    BindParameters(function);
    const CompoundStatement* const body = function.GetBody();
    if (body != nullptr) CompileBlock(*body, false);
    EmitPopScopes(m_openScopes);
    Emit(Op::ReturnNothing, nullptr).d = m_code->localBytes;
    CloseScope();
    // The result lies where the first argument does, also when there is none.
    m_code->frameBytes = std::max(m_code->frameBytes, m_code->localBytes + kRegisterSize);
}

/// Arguments arrive in the first registers, where those stay whose names are not in cells.
void Compiler::BindParameters(const FuncSymbol& function) {
    bool bindsCells = false;
    for (TIter<ScriptSymbol*> at = function.GetFirstParam(); at.Get() != nullptr; at.Next())
        bindsCells = bindsCells || NeedsCell(m_cells.CellOf((*at.Get())->GetName()));
    OpenScope(bindsCells);
    for (TIter<ScriptSymbol*> at = function.GetFirstParam(); at.Get() != nullptr; at.Next()) {
        NameCell& cell = m_cells.CellOf((*at.Get())->GetName());
        const std::int64_t place = NewLocal();
        if (NeedsCell(cell)) {
            Emit(Op::BindCell, nullptr, place, Fixed(&cell), Fixed(*at.Get()));
        } else {
            DeclareSlot(cell, *at.Get(), place);
        }
    }
}

// ---------------------------------------------------------------------------------------------------------
// Scopes

void Compiler::DeclareSlot(NameCell& cell, CCoreSymbol* symbol, std::int64_t place) {
    m_names.NoteRegister(cell);
    m_locals.Declare(cell, place);
    m_code->scopes[m_scopes.back()].slots.push_back(
        {&cell, symbol, place, static_cast<std::uint32_t>(Here())});
}

/// A scope in which no cell is bound is none of the name cells'.
void Compiler::OpenScope(bool bindsCells) {
    const bool isOpened = bindsCells || m_form == LocalsIn::Cells;
    m_scopes.push_back(m_code->scopes.size());
    m_locals.Open();
    if (isOpened) {
        Emit(Op::PushScope, nullptr);
        ++m_openScopes;
    }
    m_code->scopes.push_back({static_cast<std::uint32_t>(Here()), 0, isOpened, {}});
}

/// The code that leaves the scope has been emitted, on every way out.
void Compiler::CloseScope() {
    ScopeRecord& scope = m_code->scopes[m_scopes.back()];
    scope.end = static_cast<std::uint32_t>(Here());
    if (scope.isOpened) --m_openScopes;
    m_scopes.pop_back();
    m_locals.Close();
}

/// Whether a statement of a block binds a cell in the block's own scope.
bool Compiler::BindsCells(const Statement* statement) const {
    while (statement != nullptr) {
        switch (statement->GetStatementType()) {
            case STMT_DECLARATION: {
                const auto& declaration = static_cast<const DeclarationStatement&>(*statement);
                return NeedsCell(*declaration.GetCell());
            }
            case STMT_CONDITIONAL: {
                const auto& branch = static_cast<const ConditionalStatement&>(*statement);
                if (BindsCells(branch.GetThen())) return true;
                statement = branch.GetElse();
                break;
            }
            case STMT_ITERATION: {
                const auto& loop = static_cast<const IterationStatement&>(*statement);
                if (loop.GetKind() == TOK_FOREACH) return false;
                if (BindsCells(loop.GetInit())) return true;
                statement = loop.GetBody();
                break;
            }
            default:
                return false;
        }
    }
    return false;
}

bool Compiler::BindsCells(const CompoundStatement& block) const {
    for (TIter<Statement*> at = block.GetFirstStatement(); at.Get() != nullptr; at.Next())
        if (BindsCells(*at.Get())) return true;
    return false;
}

// ---------------------------------------------------------------------------------------------------------
// Registers and instructions

std::int64_t Compiler::NewLocal() {
    const std::int64_t place = m_nextLocal;
    m_nextLocal += kRegisterSize;
    return place;
}

std::int64_t Compiler::NewTemporary() {
    const std::int64_t place = m_top;
    m_top += kRegisterSize;
    m_code->frameBytes = std::max(m_code->frameBytes, m_top);
    return place;
}

Instruction& Compiler::Emit(Op op, const Node* node) {
    m_code->instructions.push_back({op, kFrame, kFixed, kFixed, 0, 0, 0, 0});
    m_code->nodes.push_back(node);
    return m_code->instructions.back();
}

Instruction& Compiler::Emit(Op op, const Node* node, std::int64_t d, Operand a) {
    return Emit(op, node, d, a, {kFixed, 0});
}

Instruction& Compiler::Emit(Op op, const Node* node, std::int64_t d, Operand a, Operand b) {
    Instruction& instruction = Emit(op, node);
    instruction.aFrom = a.from;
    instruction.bFrom = b.from;
    instruction.d = d;
    instruction.a = a.at;
    instruction.b = b.at;
    return instruction;
}

void Compiler::EmitLoad(const Node* node, std::int64_t d, Operand from) {
    if (from.from == kFrame && from.at == d) return;
    if (node != nullptr && IsSmallNumber(node) && from.from == kFixed) {
        Emit(Op::LoadNumber, node, d, {kFixed, 0}).b = node->value.Int();
        return;
    }
    Emit(Op::Load, node, d, from).n = IsTemporary(from) ? 1 : 0;
}

/// The value of an expression goes to a temporary, or to the variable that it is assigned to.
void Compiler::EmitMove(const Node* node, std::int64_t d, Operand from) {
    if (m_code->IsTemporary(d)) return EmitLoad(node, d, from);
    Emit(Op::Store, node, d, from).n = IsTemporary(from) ? 1 : 0;
}

void Compiler::EmitJump(Op op, Label& to) {
    to.push_back(Here());
    Emit(op, nullptr);
}

/// Lets the jumps to a label lead here.
void Compiler::Bind(Label& label) {
    for (const std::size_t from : label)
        m_code->instructions[from].n = static_cast<std::int32_t>(Here() - from);
    if (!label.empty()) m_lastLabel = Here();
    label.clear();
}

/// From the instruction that comes next back to one that is there.
std::int32_t Compiler::DistanceTo(std::size_t target) const {
    return static_cast<std::int32_t>(target) - static_cast<std::int32_t>(Here());
}

}  // namespace brenta
