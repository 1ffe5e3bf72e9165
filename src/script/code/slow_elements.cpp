// Elements and members, the slow way: those not found where they were last time, lists that are shared, and
// objects of the host.
#include <utility>

#include "script/code/machine.h"
#include "script/place.h"

namespace brenta {
namespace {

using Node = ExpressionNode;

constexpr char kNoObject[] = "Expression does not evaluate to an object.";

void Remember(MemberSite& site, const ListBody& list, std::uint32_t index) {
    Shape* const former = site.shape;
    site.shape = RetainShape(list.shape);
    site.index = index;
    ReleaseShape(former);
}

MemberSite& SiteOf(const Instruction* pc) {
    return *reinterpret_cast<MemberSite*>(pc->b);
}

}  // namespace

bool Machine::SlowAppend(const Instruction* pc) {
    const Node& node = Note(pc);
    Value item = TakeA(pc);
    if (item.IsUndefined()) return m_executor.ReportUndefined(node);
    const ListLimit limit = AppendItem(D(pc), std::move(item));
    return limit == ListLimit::None || m_executor.FailOperator(node, OpErrorOf(limit));
}

// ---------------------------------------------------------------------------------------------------------
// Elements

bool Machine::SlowCheckContainer(const Instruction* pc) {
    const Node& node = Note(pc);
    if (A(pc).IsUndefined()) return m_executor.ReportUndefined(*node.left);
    return m_executor.CheckContainer(node, A(pc));
}

bool Machine::SlowGetElement(const Instruction* pc) {
    const Node& node = Note(pc);
    const Value container = TakeA(pc);
    const Value index = Take(B(pc), IsTemporary(pc->bFrom, pc->b));
    Value result;
    if (container.IsUndefined()) return m_executor.ReportUndefined(*node.left);
    if (index.IsUndefined())
        return m_executor.CheckContainer(node, container) && m_executor.ReportUndefined(*node.right);
    return m_executor.GetElementAt(node, container, index, result) &&
           StoreResult(m_frame->pc, std::move(result));
}

/// What the container is has been checked if its index was more than a variable; but the index may have run
/// code that changed it.
bool Machine::SlowSetElement(const Instruction* pc) {
    const Node& node = Note(pc);
    const Node& target = *node.left;
    Value& container = A(pc);
    const Value index = Take(B(pc), IsTemporary(pc->bFrom, pc->b));
    Value result;
    if (container.IsUndefined()) return m_executor.ReportUndefined(*target.left);
    if (!m_executor.CheckContainer(target, container)) return false;
    if (index.IsUndefined()) return m_executor.ReportUndefined(*target.right);
    if (container.IsList()) {
        std::uint32_t place = 0;
        return m_executor.FindElement(target, *container.List(), index, place) &&
               StoreElement(pc, container, place);
    }
    // An element of an object has a value, but no place.
    return m_executor.GetElementAt(target, Value(container), index, result) &&
           m_executor.Fail(node, kNoObject);
}

bool Machine::StoreElement(const Instruction* pc, Value& list, std::uint32_t index) {
    Value value = TakeStored(pc);
    return m_executor.StoreElement(m_frame->code->NodeAt(pc), list, {&index, 1}, value, nullptr);
}

// ---------------------------------------------------------------------------------------------------------
// Members

bool Machine::SlowGetMember(const Instruction* pc) {
    const Node& node = Note(pc);
    Value value = TakeA(pc);
    if (value.IsUndefined()) return m_executor.ReportUndefined(*node.left);
    if (value.IsList()) {
        const std::ptrdiff_t index = FindMember(*value.List(), SiteOf(pc).name);
        if (index < 0) return m_executor.Fail(node, kNoObject);
        Remember(SiteOf(pc), *value.List(), static_cast<std::uint32_t>(index));
        return StoreResult(pc, Value(value.List()->items[index]));
    }
    return m_executor.GetMember(node, false, value) && StoreResult(m_frame->pc, std::move(value));
}

bool Machine::SlowSetMember(const Instruction* pc) {
    const Node& node = Note(pc);
    Value& structure = A(pc);
    if (structure.IsUndefined()) return m_executor.ReportUndefined(*node.left->left);
    if (structure.IsList()) {
        const std::ptrdiff_t found = FindMember(*structure.List(), SiteOf(pc).name);
        if (found < 0) return m_executor.Fail(*node.left, kNoObject);
        const auto index = static_cast<std::uint32_t>(found);
        Remember(SiteOf(pc), *structure.List(), index);
        return StoreElement(pc, structure, index);
    }
    return m_executor.Fail(*node.left, kNoObject);
}

// ---------------------------------------------------------------------------------------------------------
// Members of the host's objects

bool Machine::GetProperty(const Instruction* pc) {
    void* const object = A(pc).Reference();
    if (object == nullptr) return SlowGetMember(pc);
    m_frame->pc = pc;
    Value value;
    if (!m_executor.RequestGet(object, SiteOf(pc).name, value)) return false;
    pc = m_frame->pc;
    if (D(pc).IsCounted() || value.IsCounted()) return StoreResult(pc, std::move(value));
    D(pc).SetPlain(value);
    return true;
}

bool Machine::SetProperty(const Instruction* pc) {
    const Node& node = Note(pc);
    void* const object = A(pc).Reference();
    if (object == nullptr) return m_executor.Fail(node, kNoObject);
    if (pc->n != TOK_ASSIGN) return CombineProperty(pc, object);
    Value value = TakeStored(pc);
    return m_executor.RequestSet(object, SiteOf(pc).name, value);
}

bool Machine::CombineProperty(const Instruction* pc, void* object) {
    Place place;
    place.kind = Place::Kind::Property;
    place.object = object;
    place.name = SiteOf(pc).name;
    Value value = TakeStored(pc);
    return m_executor.StoreProperty(m_frame->code->NodeAt(pc), place, value, nullptr);
}

}  // namespace brenta
