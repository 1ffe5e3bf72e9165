// Register code: what the bodies of functions are lowered to.
//
// An instruction has up to three operands. `d` is always a register, named by its distance in bytes from the
// frame's base. `a` and `b` are places of values, wherever these lie: each is an offset from an origin, which
// is the frame's base for registers, and 0 for the values of name cells and constants, whose addresses never
// change. So one form of an instruction serves parameters, locals, temporaries, variables in cells and
// constants alike. The most frequent have further forms, which need not ask for the origins: with registers
// as operands, with a register and a fixed place, and (`Number`) with a small number instead of `b`.
//
// Registers. The parameters come first, then a register for every local, then the temporaries, which are used
// as a stack. A register that is not in use never holds a counted value: whoever takes a value out of a
// temporary leaves nothing behind. So an instruction may write to any register that is not counted, and what
// is counted is a variable's text or list, which takes the slow way with its rules and its release. And
// nothing has to be known about temporaries to clean up after a failure.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

#include "script/sub_expression.h"
#include "script/value.h"
#include "script/value_memory.h"

namespace brenta {

enum class Op : std::uint8_t {
    // Values. `n` not 0: `a` is a temporary, which gives its value away.
    Load,        ///< d = a, whatever d held
    LoadNumber,  ///< d = the number b, whatever d held
    Store,       ///< the variable d = a, by the rules of assignment
    StoreCell,   ///< the variable in the cell `b` = a, by the rules of assignment
    SetCell,     ///< the value of the cell `b` = a, whatever it held
    Clear,       ///< frees `n` registers from d on

    // Operators.
    Add,
    Subtract,
    Multiply,
    Divide,
    Remainder,
    AddRegisters,  ///< these where both operands are registers
    SubtractRegisters,
    MultiplyRegisters,
    AddFixed,  ///< and these where only a is
    MultiplyFixed,
    AddNumber,
    SubtractNumber,
    RemainderNumber,
    Binary,   ///< d = a (operator `n`) b
    Unary,    ///< d = (operator `n`) a
    Combine,  ///< the variable d (compound assignment `n`)= a
    CombineCell,
    AddToCell,  ///< the variable in the cell `b` += the number d
    Grow,       ///< x = x + a ... where x holds a text or list, see Machine::Grow; `b` terms
    Term,       ///< an operand of Grow

    // Jumps; `n` is the distance. `Jump` goes forward, `Repeat` back.
    Jump,
    Repeat,
    JumpUnless,
    JumpUnlessEqual,
    JumpUnlessUnequal,
    JumpUnlessLess,
    JumpUnlessGreater,
    JumpUnlessAtMost,
    JumpUnlessAtLeast,
    JumpUnlessEqualNumber,
    JumpUnlessUnequalNumber,
    JumpUnlessLessNumber,
    JumpUnlessGreaterNumber,
    JumpUnlessAtMostNumber,
    JumpUnlessAtLeastNumber,
    RepeatIfEqual,  ///< these six go back
    RepeatIfUnequal,
    RepeatIfLess,
    RepeatIfGreater,
    RepeatIfAtMost,
    RepeatIfAtLeast,
    StepRepeatIfLess,  ///< d = d + the number a; back if d < b
    StepRepeatIfAtMost,

    // Lists, structures and objects.
    NewList,         ///< d = an empty list
    Append,          ///< d gets a as another element
    CheckContainer,  ///< whether a can have a subscript
    GetElement,      ///< d = a[b]
    SetElement,      ///< a[b] (assignment `n`)= d, which may lie anywhere
    GetMember,       ///< d = a.member; `b` is a MemberSite
    SetMember,       ///< a.member (assignment `n`)= d, which may lie anywhere
    AddToMember,     ///< a.member = a.member + the number d
    NextElement,     ///< d = the next element of the list a, of which the int b have been; back if there is

    // Calls.
    Call,        ///< calls a with `n` arguments from d on, where the result comes to lie
    FindMethod,  ///< d is an object: what its member `b` (a MemberSite) calls; d + 1 says what that is
    CallMethod,  ///< calls what FindMethod left in d, with the `n` arguments from d + 2 on; the result in d
    Return,      ///< returns the register a; the locals take up d bytes
    ReturnCopy,  ///< returns a, which is no register
    ReturnNothing,
    Exit,  ///< leaves the machine

    // Scopes and names.
    PushScope,
    PopScopes,    ///< `n` of them
    BindCell,     ///< binds the cell `a` to the symbol `b` with the value of the register d
    Declare,      ///< runs the declaration `a`, but for its initialiser, for a cell
    DeclareSlot,  ///< the same for the register d

    // Statements that are somebody else's affair.
    Evaluate,  ///< d = the expression at hand, as a tree
    Print,
    Execute,  ///< runs the text a; goes on 1 behind, 2 after a break, 3 after a continue, 4 after a return of
              ///< d
    Misplaced,  ///< a jump `n` that has nowhere to go to
    Halt,
};

/// Where the offset of an operand starts.
enum Origin : std::uint8_t { kFixed = 0, kFrame = 1 };

struct Instruction {
    Op op;
    Origin dFrom;  ///< for values to be stored; a result is in a register
    Origin aFrom;
    Origin bFrom;
    std::int32_t n;
    std::int64_t d;
    std::int64_t a;
    std::int64_t b;
};
static_assert(sizeof(Instruction) == 32);

/// A member that an instruction looks for, and where it was found last: in lists of that shape it is there.
struct MemberSite {
    explicit MemberSite(STRID member) : name(member) {}
    ~MemberSite() { ReleaseShape(shape); }
    MemberSite(const MemberSite&) = delete;
    MemberSite& operator=(const MemberSite&) = delete;

    STRID name;
    Shape* shape = nullptr;
    std::uint32_t index = 0;
};

/// A local that lives in a register: its name can be seen there by nobody but its function, see Slots.
struct Slot {
    NameCell* cell;
    CCoreSymbol* symbol;
    std::int64_t place;
    std::uint32_t from;  ///< index of the first instruction at which it is bound
};

/// A scope of a function, in the order in which they begin; scopes nest.
struct ScopeRecord {
    std::uint32_t begin;
    std::uint32_t end = 0;
    bool isOpened = false;  ///< it is a scope of the name cells, too
    std::vector<Slot> slots;

    bool Contains(std::uint32_t index) const { return begin <= index && index < end; }
};

/// Where the locals of a function are: in registers as far as their names allow it; or all in their cells, in
/// scopes that are all opened, exactly as in the tree tier. Temporaries are the same in both forms wherever
/// code of others may run.
enum class LocalsIn { Registers, Cells };

/// The code of a function.
struct FunctionCode {
    using Node = ExpressionStatement::SubExpr;

    std::vector<Instruction> instructions;
    std::vector<const Node*> nodes;  ///< for each instruction what it was made of; null for some
    std::vector<ScopeRecord> scopes;
    std::deque<MemberSite> sites;
    std::int64_t localBytes = 0;  ///< parameters and locals; the temporaries lie behind
    std::int64_t frameBytes = 0;

    /// The instructions at which code of others may run, and whether the callees of calls were loaded first;
    /// in the order of the text, so that the two forms of a function's code can be compared.
    std::vector<std::uint32_t> points;
    std::vector<bool> loadedCallees;
    const FuncSymbol* function = nullptr;
    LocalsIn form = LocalsIn::Registers;
    std::unique_ptr<FunctionCode> inCells;  ///< the other form, see Machine::Convert

    std::uint32_t IndexOf(const Instruction* at) const {
        return static_cast<std::uint32_t>(at - instructions.data());
    }
    const Node& NodeAt(const Instruction* at) const { return *nodes[IndexOf(at)]; }
    bool IsTemporary(std::int64_t place) const { return place >= localBytes; }
};

}  // namespace brenta
