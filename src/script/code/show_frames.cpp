// Showing locals to others, and hiding them again.
//
// While they are shown, the scopes of a frame are exactly those of the form of its code that has all locals
// in cells: each scope is opened, with what it has bound in cells and behind that the locals from the
// registers. To get there, what the open scopes of the frames hold is taken off the log and put back in the
// same order, with the other scopes among them. So a frame that cannot go on with its locals in registers
// need not be moved once more: it only takes the other form of its code, in the midst of an instruction at
// which others have run.
//
// The frames that are not shown are those of one entry, with nothing else's scopes among theirs, and above
// one that has all its locals in cells there may be others, but none below it. Only the upper few get their
// locals back; the others, to which control returns later or never, take the other form of their code at
// once. So a text that is executed deep in a recursion does not cost as much as all the calls under way.
#include <algorithm>
#include <cstddef>

#include "script/code/compiler.h"
#include "script/code/machine.h"

namespace brenta {
namespace {

/// How many frames, at most, get their locals back. Calls that do not recurse are hardly nested deeper.
constexpr std::ptrdiff_t kKeptFrames = 32;

/// Calls `visit` for the scopes that are open at an instruction, the outermost first.
template <class Visit>
void FromOutermost(const FunctionCode& code, std::uint32_t index, Visit visit) {
    for (const ScopeRecord& scope : code.scopes)
        if (scope.Contains(index)) visit(scope);
}

/// The same, the innermost first.
template <class Visit>
void FromInnermost(const FunctionCode& code, std::uint32_t index, Visit visit) {
    for (auto scope = code.scopes.rbegin(); scope != code.scopes.rend(); ++scope)
        if (scope->Contains(index)) visit(*scope);
}

/// The slots that are bound there stand in front.
std::size_t CountSlots(const ScopeRecord& scope, std::uint32_t index) {
    const auto behind = std::partition_point(scope.slots.begin(), scope.slots.end(),
                                             [&](const Slot& slot) { return slot.from <= index; });
    return static_cast<std::size_t>(behind - scope.slots.begin());
}

}  // namespace

/// The first of the frames that are not shown which has locals in registers; behind the last if none has.
Machine::Frame* Machine::FirstInRegisters() const {
    Frame* first = m_frame + 1;
    while (first - 1 > m_shownFrame && first[-1].code != nullptr &&
           first[-1].code->form == LocalsIn::Registers)
        --first;
    return first;
}

/// Gets all the memory that it takes to move the locals of frames into cells, to leave them there, and to
/// move them back. How many scopes are open.
std::size_t Machine::GetReady(const Frame* first, const Frame* last) {
    std::size_t slots = 0;
    std::size_t scopes = 0;
    std::size_t opened = 0;
    for (const Frame* frame = first; frame <= last; ++frame) {
        FunctionCode& code = *frame->code;
        if (code.inCells == nullptr) code.inCells = Compiler::CompileInCells(code, m_cells, m_names);
        const std::uint32_t index = code.IndexOf(frame->pc);
        FromOutermost(code, index, [&](const ScopeRecord& scope) {
            slots += CountSlots(scope, index);
            ++(scope.isOpened ? opened : scopes);
        });
    }
    m_cells.Reserve(slots, scopes);
    m_taken.Reserve(m_cells, opened);
    return opened;
}

void Machine::MoveToCells(const Frame* first, const Frame* last) {
    const std::size_t opened = GetReady(first, last);
    for (const Frame* frame = last; opened > 0 && frame >= first; --frame) {
        FromInnermost(*frame->code, frame->code->IndexOf(frame->pc), [&](const ScopeRecord& scope) {
            if (scope.isOpened) m_cells.TakeScope(m_taken);
        });
    }
    for (const Frame* frame = first; frame <= last; ++frame) {
        FromOutermost(*frame->code, frame->code->IndexOf(frame->pc), [&](const ScopeRecord& scope) {
            if (scope.isOpened) {
                m_cells.PutScope(m_taken);
            } else {
                m_cells.PushScope();
                ++m_addedScopes;
            }
            BindSlots(*frame, scope);
        });
    }
}

/// Undoes MoveToCells. In the opposite order, so that of several bindings of a name each finds its own value.
void Machine::MoveBack(const Frame* first, const Frame* last) {
    for (const Frame* frame = last; frame >= first; --frame) {
        FromInnermost(*frame->code, frame->code->IndexOf(frame->pc), [&](const ScopeRecord& scope) {
            UnbindSlots(*frame, scope);
            if (scope.isOpened) return m_cells.TakeScope(m_taken);
            m_cells.PopScope();
            --m_addedScopes;
        });
    }
    for (const Frame* frame = first; !m_taken.IsEmpty() && frame <= last; ++frame) {
        FromOutermost(*frame->code, frame->code->IndexOf(frame->pc), [&](const ScopeRecord& scope) {
            if (scope.isOpened) m_cells.PutScope(m_taken);
        });
    }
}

void Machine::BindSlots(const Frame& frame, const ScopeRecord& scope) {
    const std::size_t count = CountSlots(scope, frame.code->IndexOf(frame.pc));
    for (std::size_t i = 0; i < count; ++i) {
        const Slot& slot = scope.slots[i];
        Value& value = *reinterpret_cast<Value*>(frame.base + slot.place);
        m_cells.Bind(*slot.cell, slot.symbol, std::move(value));
    }
}

void Machine::UnbindSlots(const Frame& frame, const ScopeRecord& scope) {
    for (std::size_t i = CountSlots(scope, frame.code->IndexOf(frame.pc)); i-- > 0;) {
        const Slot& slot = scope.slots[i];
        Value& value = *reinterpret_cast<Value*>(frame.base + slot.place);
        value = std::move(slot.cell->value);
        m_cells.UndoLast();
    }
}

/// Lets frames whose locals are in their cells go on in the form of their code that has them there. A frame
/// that is not at a point is failing, and runs no further.
void Machine::Convert(Frame* first, Frame* last) {
    ++m_conversions;
    for (Frame* frame = first; frame <= last; ++frame) {
        const FunctionCode& code = *frame->code;
        const std::uint32_t index = code.IndexOf(frame->pc);
        const auto point = std::lower_bound(code.points.begin(), code.points.end(), index);
        const bool isAtPoint = point != code.points.end() && *point == index;
        frame->code = code.inCells.get();
        frame->pc = frame->code->instructions.data();
        if (isAtPoint)
            frame->pc += frame->code->points[static_cast<std::size_t>(point - code.points.begin())];
    }
}

void Machine::Show() {
    if (m_frame == m_shownFrame) return;
    Frame* const first = FirstInRegisters();
    Frame* const kept = m_frame - first < kKeptFrames ? first : m_frame + 1 - kKeptFrames;
    if (m_shown.size() == m_shown.capacity()) m_shown.reserve(m_shown.size() * 2 + 1);
    MoveToCells(first, m_frame);
    if (first < kept) Convert(first, kept - 1);
    m_shown.push_back({m_shownFrame, kept, m_frame, m_cells.Depth(), m_cells.Mark(), m_epoch});
    m_shownFrame = m_frame;
}

/// What others have bound meanwhile stays bound, in the innermost scope. A host may even have closed scopes
/// that are not its own; then nobody knows the names that were in them.
void Machine::Hide() {
    const Shown shown = m_shown.back();
    m_shown.pop_back();
    m_shownFrame = shown.below;
    m_cells.PopTo(shown.depth);
    const bool isAsShown = m_cells.Depth() == shown.depth && m_cells.Mark() == shown.mark;
    while (m_cells.Depth() < shown.depth)
        m_cells.PushScope();
    if (isAsShown && shown.epoch == m_epoch) return MoveBack(shown.first, shown.last);
    if (shown.first <= shown.last) Convert(shown.first, shown.last);
}

}  // namespace brenta
