// Lowers the body of a function to register code, in one walk over its statements.
//
// Expressions. What an operator needs on its left is computed first; the walk goes down the left operands in
// a loop, as these are as many as the text is long, and comes back up with the operand so far, which stays
// where it is as long as it is a variable or a constant and goes into a temporary from the first operator on.
// The value of the last operator goes where the whole expression's is wanted. A variable must have been read
// when the right operand runs: it is loaded into a temporary first if the right operand can run code, which
// might change it, or can fail, where the variable is in a cell and might not be defined.
//
// Locals are numbered by registers as they are declared; how many there can be is counted before, so that the
// temporaries have their place behind them.
#pragma once

#include <memory>
#include <vector>

#include "script/code/instruction.h"
#include "script/code/name_use.h"

namespace brenta {

class Compiler {
 public:
    using Node = ExpressionNode;

    /// Null for a function that is better run as a tree.
    static std::unique_ptr<FunctionCode> Compile(const FuncSymbol& function, NameCells& cells, NameUse& names,
                                                 LocalsIn form);
    /// The form with all locals in cells of a function whose code has them in registers.
    static std::unique_ptr<FunctionCode> CompileInCells(const FunctionCode& inRegisters, NameCells& cells,
                                                        NameUse& names);

 private:
    /// The place of an operand.
    struct Operand {
        Origin from;
        std::int64_t at;
    };
    using Label = std::vector<std::size_t>;  // the jumps to a place that is not yet known

    /// A loop around the statement at hand.
    struct Loop {
        Loop* outer;
        int openScopes;
        Label breaks;
        Label continues;
    };

    Compiler(const FuncSymbol& function, NameCells& cells, NameUse& names, LocalsIn form);
    bool NeedsCell(const NameCell& cell) const {
        return m_form == LocalsIn::Cells || m_names.NeedsCell(cell);
    }

    // Functions and scopes (compiler.cpp).
    void CompileFunction(const FuncSymbol& function);
    void BindParameters(const FuncSymbol& function);
    void DeclareSlot(NameCell& cell, CCoreSymbol* symbol, std::int64_t place);
    void OpenScope(bool bindsCells);
    void CloseScope();
    bool BindsCells(const Statement* statement) const;
    bool BindsCells(const CompoundStatement& block) const;

    // Statements (compile_statements.cpp).
    void CompileStatement(const Statement* statement);
    void CompileBlock(const CompoundStatement& block, bool isInner);
    void CompileDeclaration(const DeclarationStatement& declaration);
    bool InitialiseAtOnce(const Node& initialiser, const NameCell& cell, std::int64_t place);
    void CompileConditional(const ConditionalStatement& statement);
    void CompileLoop(const IterationStatement& statement);
    void CompileForeach(const IterationStatement& statement);
    void CompileJump(const JumpStatement& jump);
    void CompilePrint(const PrintStatement& statement);
    void CompileExec(const ExecStatement& statement);
    Operand ResultOf(const Node& root);
    void EmitReturn(const Node* node, Operand result);
    void EmitBreak();
    void EmitContinue();
    void EmitMisplaced(TokId kind);
    void EmitPopScopes(int count);
    void EmitClear(std::int64_t firstLocal);

    // Conditions (compile_conditions.cpp).
    void CompileCondition(const ExpressionStatement* condition, Label& otherwise);
    void CompileRelation(const Node& relation, Op jump, Op jumpNumber);
    void CompileRepeat(const ExpressionStatement* condition, const Node* at, std::size_t top,
                       std::size_t body);
    void FuseStep(const Node& relation, Op op, std::size_t body);

    // Expressions (compile_expressions.cpp).
    void CompileExpression(const ExpressionStatement* expression, std::int64_t d);
    void CompileForEffect(const ExpressionStatement* expression);
    void CompileRoot(const Node& root, std::int64_t d);
    void CompileTo(const Node& root, std::int64_t d);
    void CompileNode(const Node& node, Operand left, std::int64_t temporary, std::int64_t d);
    Operand Place(const Node& plain);
    Operand OperandOf(const Node& node);
    Operand CompileLeft(const Node& node);
    Operand CompileRight(const Node& node);
    bool MustLoadFirst(const Node& node);
    bool MustLoadCallee(const Node& call);
    void CompileBinary(const Node& node, Operand left, std::int64_t temporary, std::int64_t d);
    void CompileElement(const Node& node, Operand container, std::int64_t d);
    void CompileList(const Node& node, std::int64_t temporary, std::int64_t d);
    void CompileCallee(const Node& node, Operand object, std::int64_t temporary);
    void CompileCall(const Node& node, Operand callee, std::int64_t temporary, std::int64_t d);
    int CompileArguments(const Node* contents);
    MemberSite& NewSite(const Node& member);
    static bool IsSmallNumber(const Node* node);

    // Assignments (compile_assignments.cpp).
    void CompileAssignment(const Node& node);
    void AssignVariable(const Node& node);
    void AssignSum(const Node& node, const std::vector<const Node*>& terms);
    void AddToCell(const Node& node);
    void AssignElement(const Node& node);
    void AssignMember(const Node& node);
    void StoreTo(const Node& node, Operand value);
    Operand StoredValue(const Node& node, const Node* runsBetween);

    // Instructions.
    Instruction& Emit(Op op, const Node* node);
    /// The instruction that comes next may run code of others.
    void NotePoint() { m_code->points.push_back(static_cast<std::uint32_t>(Here())); }
    Instruction& Emit(Op op, const Node* node, std::int64_t d, Operand a);
    Instruction& Emit(Op op, const Node* node, std::int64_t d, Operand a, Operand b);
    void EmitLoad(const Node* node, std::int64_t d, Operand from);
    void EmitMove(const Node* node, std::int64_t d, Operand from);
    void EmitJump(Op op, Label& to);
    void Bind(Label& label);
    std::size_t Here() const { return m_code->instructions.size(); }
    std::int32_t DistanceTo(std::size_t target) const;

    // Registers.
    std::int64_t NewTemporary();
    std::int64_t NewLocal();
    bool IsTemporary(const Operand& operand) const {
        return operand.from == kFrame && m_code->IsTemporary(operand.at);
    }
    static Operand Register(std::int64_t at) { return {kFrame, at}; }
    static Operand Fixed(const void* address) {
        return {kFixed, static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(address))};
    }

    NameCells& m_cells;
    NameUse& m_names;
    const LocalsIn m_form;
    const FunctionCode* m_model = nullptr;  // the other form, if it is there
    std::unique_ptr<FunctionCode> m_code;
    LocalNames m_locals;
    std::int64_t m_nextLocal = 0;
    std::int64_t m_top = 0;             // where the next temporary will be
    std::vector<std::size_t> m_scopes;  // the open ones, as indices of the code's
    int m_openScopes = 0;               // how many of them the name cells have
    Loop* m_loop = nullptr;
    std::size_t m_lastLabel = 0;  // where a jump was bound to last
};

}  // namespace brenta
