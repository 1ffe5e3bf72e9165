// The loop of the machine.
//
// When you edit it: 1. What can run code, report or fail stands in a slow way, which notes where the function
// is. 2. Nothing is kept in a local variable across a slow way that may call: the loop reads its frame anew.
// 3. An instruction that stores asks first whether the place holds a counted value. 4. An instruction that
// takes a counted value out of a temporary leaves it empty. 5. Every way back tests the stop flag.
#include "script/code/machine.h"

#include <functional>

#include "os/os.h"
#include "script/code/fast_operators.h"
#include "script/symbol_access.h"

namespace brenta {

using fast::Holds;

namespace {

/// The element that the member at hand names, if it is where it was last time.
Value* MemberAt(const Value& structure, const Instruction* pc) {
    if (!structure.IsList()) return nullptr;
    const MemberSite& site = *reinterpret_cast<const MemberSite*>(pc->b);
    const ListBody& list = *structure.List();
    return list.shape == site.shape && site.index < list.length && site.shape != nullptr
               ? &list.items[site.index]
               : nullptr;
}

/// Moves what a function returns to the first register. Nothing else of the frame is needed any more.
void TakeResult(Value& first, Value& result) {
    if (&first == &result) return;
    first.Swap(result);
    if (result.IsCounted()) result.Clear();
}

}  // namespace

bool Machine::Loop() {
    const Instruction* pc = m_frame->pc;
    char* base = m_frame->base;
    std::intptr_t origins[2] = {0, reinterpret_cast<std::intptr_t>(base)};

    const auto d = [&]() __attribute__((always_inline))->Value& {
        return *reinterpret_cast<Value*>(base + pc->d);
    };
    const auto a = [&]() __attribute__((always_inline))->Value& {
        return *reinterpret_cast<Value*>(origins[pc->aFrom] + pc->a);
    };
    const auto b = [&]() __attribute__((always_inline))->Value& {
        return *reinterpret_cast<Value*>(origins[pc->bFrom] + pc->b);
    };
    const auto stored = [&]() __attribute__((always_inline))->Value& {
        return *reinterpret_cast<Value*>(origins[pc->dFrom] + pc->d);
    };
    const auto registerA = [&]() __attribute__((always_inline))->Value& {
        return *reinterpret_cast<Value*>(base + pc->a);
    };

    const auto registerB = [&]() __attribute__((always_inline))->Value& {
        return *reinterpret_cast<Value*>(base + pc->b);
    };
    const auto fixedB = [&]() __attribute__((always_inline))->Value& {
        return *reinterpret_cast<Value*>(pc->b);
    };

    // The next instruction, or a jump: each is false after a failure.
    const auto next = [&](bool done) __attribute__((always_inline)) {
        ++pc;
        return done;
    };
    const auto jumpUnless = [&](Holds holds) __attribute__((always_inline)) {
        bool result = holds == Holds::Yes;
        if (holds == Holds::Unknown && !SlowRelation(pc, result)) return false;
        pc += result ? 1 : pc->n;
        return true;
    };
    const auto repeatIf = [&](Holds holds) __attribute__((always_inline)) {
        if (StopRequested()) return Interrupted(pc);
        bool result = holds == Holds::Yes;
        if (holds == Holds::Unknown && !SlowRelation(pc, result)) return false;
        pc += result ? pc->n : 1;
        return true;
    };
    // The sum that the next instruction would compute, and the test of the one behind it.
    const auto stepRepeatIf = [&](auto relation) __attribute__((always_inline)) {
        Value& variable = d();
        const Value& limit = b();
        const std::int64_t sum = variable.Int() + pc->a;
        const bool isSimple = fast::AreInts(variable, limit) && sum == static_cast<std::int32_t>(sum);
        if (!isSimple || StopRequested()) return next(true);
        variable.SetInt(static_cast<std::int32_t>(sum));
        pc += relation(sum, limit.Int()) ? pc->n : 3;
        return true;
    };
    // Back to the caller with the result in the first register; the locals are released.
    const auto leaveFrame = [&]() __attribute__((always_inline)) {
        for (char *at = base + sizeof(Value), *end = base + pc->d; at < end; at += sizeof(Value)) {
            Value& local = *reinterpret_cast<Value*>(at);
            if (local.IsCounted()) local.Clear();
        }
        --m_frame;
        base = m_frame->base;
        origins[kFrame] = reinterpret_cast<std::intptr_t>(base);
        pc = m_frame->pc + 1;
    };
    // Behind a routine that may have let others run, and perhaps converted the frame. Where it goes on is
    // read from memory only then: all that follows would have to wait for it.
    std::uint32_t conversions = m_conversions;
    const auto goOn = [&](bool done) __attribute__((always_inline)) {
        if (m_conversions != conversions) {
            conversions = m_conversions;
            pc = m_frame->pc;
        }
        ++pc;
        return done;
    };
    const auto resume = [&](const Instruction* at) __attribute__((always_inline)) {
        pc = at;
        return at != nullptr;
    };

    constexpr std::equal_to<> kEqual;
    constexpr std::not_equal_to<> kUnequal;
    constexpr std::less<> kLess;
    constexpr std::greater<> kGreater;
    constexpr std::less_equal<> kAtMost;
    constexpr std::greater_equal<> kAtLeast;

    bool going = true;
    while (going) {
        switch (pc->op) {
            case Op::Load: {
                Value& from = a();
                if (from.IsCounted() || from.IsUndefined() || d().IsCounted()) {
                    going = next(SlowLoad(pc));
                    break;
                }
                d().SetPlain(from);
                ++pc;
                break;
            }
            case Op::LoadNumber:
                d().SetInt(static_cast<std::int32_t>(pc->b));
                ++pc;
                break;
            case Op::Store: {
                Value& from = a();
                if (from.IsCounted() || from.IsUndefined() || d().IsCounted()) {
                    going = next(SlowStore(pc));
                    break;
                }
                d().SetPlain(from);
                ++pc;
                break;
            }
            case Op::StoreCell: {
                Value& from = a();
                Value& variable = reinterpret_cast<NameCell*>(pc->b)->value;
                if (from.IsCounted() || from.IsUndefined() || !variable.IsPlainScalar()) {
                    going = next(SlowStoreCell(pc));
                    break;
                }
                variable.SetPlain(from);
                ++pc;
                break;
            }
            case Op::SetCell:
                reinterpret_cast<NameCell*>(pc->b)->value = std::move(a());
                ++pc;
                break;
            case Op::Clear:
                for (Value *at = &d(), *end = at + pc->n; at != end; ++at)
                    at->Clear();
                ++pc;
                break;

            case Op::Add:
                going = next(fast::Add(a(), b(), d()) || SlowBinary(pc));
                break;
            case Op::Subtract:
                going = next(fast::Subtract(a(), b(), d()) || SlowBinary(pc));
                break;
            case Op::Multiply:
                going = next(fast::Multiply(a(), b(), d()) || SlowBinary(pc));
                break;
            case Op::Divide:
                going = next(fast::Divide(a(), b(), d()) || SlowBinary(pc));
                break;
            case Op::Remainder:
                going = next(fast::Remainder(a(), b(), d()) || SlowBinary(pc));
                break;
            case Op::AddRegisters:
                going = next(fast::Add(registerA(), registerB(), d()) || SlowBinary(pc));
                break;
            case Op::SubtractRegisters:
                going = next(fast::Subtract(registerA(), registerB(), d()) || SlowBinary(pc));
                break;
            case Op::MultiplyRegisters:
                going = next(fast::Multiply(registerA(), registerB(), d()) || SlowBinary(pc));
                break;
            case Op::AddFixed:
                going = next(fast::Add(registerA(), fixedB(), d()) || SlowBinary(pc));
                break;
            case Op::MultiplyFixed:
                going = next(fast::Multiply(registerA(), fixedB(), d()) || SlowBinary(pc));
                break;
            case Op::AddNumber:
                going = next(fast::AddNumber(registerA(), pc->b, d()) || SlowBinary(pc));
                break;
            case Op::SubtractNumber:
                going = next(fast::AddNumber(registerA(), -pc->b, d()) || SlowBinary(pc));
                break;
            case Op::RemainderNumber:
                going = next(fast::RemainderNumber(registerA(), pc->b, d()) || SlowBinary(pc));
                break;
            case Op::Binary:
                going = next(fast::IntOperator(pc->n, a(), b(), d()) ||
                             fast::BoolOperator(pc->n, a(), b(), d()) || SlowBinary(pc));
                break;
            case Op::Unary:
                going = next(SlowUnary(pc));
                break;
            case Op::Combine:
                going = next((pc->n == TOK_ADD_ASSIGN && fast::Add(d(), a(), d())) || SlowCombine(pc));
                break;
            case Op::CombineCell:
                going = next(SlowCombineCell(pc));
                break;
            case Op::AddToCell: {
                Value& variable = reinterpret_cast<NameCell*>(pc->b)->value;
                pc += fast::AddNumber(variable, pc->d, variable) ? 3 : 1;
                break;
            }
            case Op::Grow:
                if (d().IsCounted()) {
                    going = resume(Grow(pc));
                    break;
                }
                pc += 1 + pc->b;
                break;
            case Op::Term:
                ++pc;
                break;

            case Op::Jump:
                pc += pc->n;
                break;
            case Op::Repeat:
                if (StopRequested()) return Interrupted(pc);
                pc += pc->n;
                break;
            case Op::JumpUnless: {
                bool holds = a().IsBool() && a().Int() != 0;
                if (!a().IsBool() && !SlowCondition(pc, holds)) return false;
                pc += holds ? 1 : pc->n;
                break;
            }
            case Op::JumpUnlessEqual:
                going = jumpUnless(fast::Relate(a(), b(), kEqual));
                break;
            case Op::JumpUnlessUnequal:
                going = jumpUnless(fast::Relate(a(), b(), kUnequal));
                break;
            case Op::JumpUnlessLess:
                going = jumpUnless(fast::Relate(a(), b(), kLess));
                break;
            case Op::JumpUnlessGreater:
                going = jumpUnless(fast::Relate(a(), b(), kGreater));
                break;
            case Op::JumpUnlessAtMost:
                going = jumpUnless(fast::Relate(a(), b(), kAtMost));
                break;
            case Op::JumpUnlessAtLeast:
                going = jumpUnless(fast::Relate(a(), b(), kAtLeast));
                break;
            case Op::JumpUnlessEqualNumber:
                going = jumpUnless(fast::Relate(registerA(), pc->b, kEqual));
                break;
            case Op::JumpUnlessUnequalNumber:
                going = jumpUnless(fast::Relate(registerA(), pc->b, kUnequal));
                break;
            case Op::JumpUnlessLessNumber:
                going = jumpUnless(fast::Relate(registerA(), pc->b, kLess));
                break;
            case Op::JumpUnlessGreaterNumber:
                going = jumpUnless(fast::Relate(registerA(), pc->b, kGreater));
                break;
            case Op::JumpUnlessAtMostNumber:
                going = jumpUnless(fast::Relate(registerA(), pc->b, kAtMost));
                break;
            case Op::JumpUnlessAtLeastNumber:
                going = jumpUnless(fast::Relate(registerA(), pc->b, kAtLeast));
                break;
            case Op::RepeatIfEqual:
                going = repeatIf(fast::Relate(a(), b(), kEqual));
                break;
            case Op::RepeatIfUnequal:
                going = repeatIf(fast::Relate(a(), b(), kUnequal));
                break;
            case Op::RepeatIfLess:
                going = repeatIf(fast::Relate(a(), b(), kLess));
                break;
            case Op::RepeatIfGreater:
                going = repeatIf(fast::Relate(a(), b(), kGreater));
                break;
            case Op::RepeatIfAtMost:
                going = repeatIf(fast::Relate(a(), b(), kAtMost));
                break;
            case Op::RepeatIfAtLeast:
                going = repeatIf(fast::Relate(a(), b(), kAtLeast));
                break;
            case Op::StepRepeatIfLess:
                going = stepRepeatIf(kLess);
                break;
            case Op::StepRepeatIfAtMost:
                going = stepRepeatIf(kAtMost);
                break;

            case Op::NewList:
                d() = Value::OfList(0);
                ++pc;
                break;
            case Op::Append:
                going = next(SlowAppend(pc));
                break;
            case Op::CheckContainer:
                going = next(a().IsList() || SlowCheckContainer(pc));
                break;
            case Op::GetElement: {
                const Value& list = a();
                if (pc->n != 0 || d().IsCounted() || !fast::HasElement(list, b())) {
                    going = goOn(SlowGetElement(pc));
                    break;
                }
                d() = list.List()->items[b().Int()];
                ++pc;
                break;
            }
            case Op::SetElement: {
                const Value& list = a();
                if (pc->n != TOK_ASSIGN || !fast::HasElement(list, b())) {
                    going = goOn(SlowSetElement(pc));
                    break;
                }
                Value& element = list.List()->items[b().Int()];
                if (!fast::IsPlainStore(list, element, stored())) {
                    going = goOn(SlowSetElement(pc));
                    break;
                }
                element.SetPlain(stored());
                ++pc;
                break;
            }
            case Op::GetMember: {
                const Value* member = MemberAt(a(), pc);
                if (member == nullptr || pc->n != 0 || d().IsCounted()) {
                    going = goOn(a().IsReference() ? GetProperty(pc) : SlowGetMember(pc));
                    break;
                }
                d() = *member;
                ++pc;
                break;
            }
            case Op::SetMember: {
                Value* member = MemberAt(a(), pc);
                if (member == nullptr || pc->n != TOK_ASSIGN || !fast::IsPlainStore(a(), *member, stored())) {
                    going = goOn(a().IsReference() ? SetProperty(pc) : SlowSetMember(pc));
                    break;
                }
                member->SetPlain(stored());
                ++pc;
                break;
            }
            case Op::AddToMember: {
                Value* member = MemberAt(a(), pc);
                const bool isInt = member != nullptr && a().IsUnshared() && member->IsInt();
                pc += isInt && fast::StoreInt(member->Int() + pc->d, *member) ? 4 : 1;
                break;
            }
            case Op::NextElement: {
                const Value& list = a();
                const auto index = static_cast<std::uint32_t>(b().Int());
                if (index > 0 && StopRequested()) return Interrupted(pc);
                if (!list.IsList() || index >= list.List()->length) {
                    ++pc;
                    break;
                }
                d() = list.List()->items[index];
                b().SetInt(static_cast<std::int32_t>(index + 1));
                pc += pc->n;
                break;
            }

            case Op::Call: {
                const Value& callee = a();
                const FunctionPlan* plan =
                    callee.IsFunction() ? SymbolAccess::Plan(*callee.Function()) : nullptr;
                char* window = base + pc->d;
                if (plan == nullptr || plan->epoch != m_epoch || plan->parameterCount != pc->n ||
                    !HasRoom(window, plan->frameBytes) || StopRequested()) {
                    going = resume(SlowCall(pc));
                    break;
                }
                m_frame->pc = pc;
                PushFrame(window, plan->code.get());
                base = window;
                origins[kFrame] = reinterpret_cast<std::intptr_t>(base);
                pc = plan->entry;
                break;
            }
            case Op::FindMethod:
                going = next(FindMethod(pc));
                break;
            case Op::CallMethod:
                going = goOn(CallMethod(pc));
                break;
            case Op::Return:
                TakeResult(*reinterpret_cast<Value*>(base), registerA());
                leaveFrame();
                break;
            case Op::ReturnCopy: {
                const Value& result = a();
                if (result.IsUndefined()) return SlowLoad(pc);
                *reinterpret_cast<Value*>(base) = result;
                leaveFrame();
                break;
            }
            case Op::ReturnNothing:
                reinterpret_cast<Value*>(base)->Clear();
                leaveFrame();
                break;
            case Op::Exit:
                return true;

            case Op::PushScope:
                m_cells.PushScope();
                ++pc;
                break;
            case Op::PopScopes:
                m_cells.PopTo(m_cells.Depth() - pc->n);
                ++pc;
                break;
            case Op::BindCell:
                m_cells.Bind(*reinterpret_cast<NameCell*>(pc->a), reinterpret_cast<CCoreSymbol*>(pc->b),
                             std::move(d()));
                ++pc;
                break;
            case Op::Declare:
                going = goOn(Declare(pc));
                break;
            case Op::DeclareSlot:
                going = goOn(DeclareSlot(pc));
                break;

            case Op::Evaluate:
                going = goOn(Evaluate(pc));
                break;
            case Op::Print:
                going = goOn(Print(pc));
                break;
            case Op::Execute:
                going = resume(Execute(pc));
                break;
            case Op::Misplaced:
                return ReportMisplaced(pc);
            case Op::Halt:
                if (os::DebuggerAttached()) os::BreakIntoDebugger();
                ++pc;
                break;
            default:
                __builtin_unreachable();
        }
    }
    return false;
}

}  // namespace brenta
