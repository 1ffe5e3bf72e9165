#include "brenta/var.h"

#include <utility>

#include "brenta/dump.h"
#include "brenta/failure.h"
#include "brenta/scriptable.h"
#include "script/operand.h"
#include "script/value_limits.h"
#include "script/value_operand.h"
#include "script/var_access.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Construction, copying, destruction
//
// A host may nest lists as deep as it likes, so nothing here recurses along the depth. The items of a copy
// are made level by level: first without items of their own, then each nested list in turn. For destruction
// all nested items are moved, list by list and in constant time each, to the end of the outermost list, which
// is then flat.

Var::Var(STRID name) : m_name(name), m_kind(VarKind::Null), m_payload{0} {}

Var::Var(bool value, STRID name) : m_name(name), m_kind(VarKind::Bool), m_payload{value ? 1.0 : 0.0} {}

Var::Var(int value, STRID name) : m_name(name), m_kind(VarKind::Int), m_payload{static_cast<double>(value)} {}

Var::Var(double value, STRID name) : m_name(name), m_kind(VarKind::Float), m_payload{value} {}

Var::Var(STRID text, STRID name) : m_name(name), m_kind(VarKind::String) {
    m_payload.text = text;
}

Var::Var(const char* text, STRID name) : Var(StrId(text), name) {}

Var::Var(void* object, STRID name) : m_name(name), m_kind(VarKind::Reference) {
    m_payload.object = object;
}

Var::Var(CCoreScriptable* object, STRID name) : Var(static_cast<void*>(object), name) {}

Var::Var(const TOrderedList<Var>& items, STRID name) : m_name(name), m_kind(VarKind::List), m_payload{0} {
    CopyItems(items);
}

Var::Var(const Var& other) : m_name(other.m_name), m_kind(other.m_kind), m_payload(other.m_payload) {
    if (!other.m_items.IsEmpty()) CopyItems(other.m_items);
}

Var::Var(Var&& other) noexcept
    : m_name(other.m_name),
      m_kind(std::exchange(other.m_kind, VarKind::Null)),
      m_items(std::move(other.m_items)),
      m_payload(other.m_payload) {}

Var::~Var() {
    if (!m_items.IsEmpty()) DropItems();
}

namespace {

struct CopyTask {
    const TOrderedList<Var>* from;
    TOrderedList<Var>* to;
};

}  // namespace

void Var::CopyItems(const TOrderedList<Var>& from) {
    TStack<CopyTask> waiting;
    CopyTask task{&from, &m_items};
    while (true) {
        bool isNested = false;
        for (const Var& item : *task.from) {
            if (item.m_items.IsEmpty()) {
                task.to->Add(item);
                continue;
            }
            Var shell(item.m_name);
            shell.m_kind = item.m_kind;
            task.to->Add(shell);
            isNested = true;
        }
        // Without memory the copy has fewer items.
        TIter<Var> copies(*task.to);
        if (isNested) {
            for (const Var& item : *task.from) {
                if (copies.Get() == nullptr) break;
                if (!item.m_items.IsEmpty()) waiting.Push({&item.m_items, &copies.Get()->m_items});
                copies.Next();
            }
        }
        if (waiting.IsEmpty()) return;
        task = waiting.Top();
        waiting.Pop();
    }
}

void Var::DropItems() {
    TOrderedList<Var> flat(std::move(m_items));
    TIter<Var> iter(flat);
    if (iter.Get() == nullptr) return;
    do {
        if (!iter.Get()->m_items.IsEmpty()) flat.Splice(std::move(iter.Get()->m_items));
    } while (iter.Next());
}

// ---------------------------------------------------------------------------------------------------------
// Assignment

Var& Var::operator=(const Var& other) {
    if (this == &other) return *this;
    // Plain values need no copy in between: nothing of this Var goes before the other has been read.
    if (other.m_items.IsEmpty()) {
        const STRID name = other.m_name;
        const VarKind kind = other.m_kind;
        const Payload payload = other.m_payload;
        BecomeScalar(kind) = payload;
        m_name = name;
        return *this;
    }
    return *this = Var(other);
}

Var& Var::operator=(Var&& other) noexcept {
    if (this == &other) return *this;
    Var taken(std::move(other));
    m_name = taken.m_name;
    m_kind = taken.m_kind;
    m_payload = taken.m_payload;
    std::swap(m_items, taken.m_items);
    return *this;
}

Var& Var::operator=(const TOrderedList<Var>& items) {
    return *this = Var(items, m_name);
}

Var& Var::operator=(void* object) {
    VarAccess::SetObject(*this, object);
    return *this;
}

Var& Var::operator=(CCoreScriptable* object) {
    return *this = static_cast<void*>(object);
}

Var& Var::operator=(STRID text) {
    VarAccess::SetText(*this, text);
    return *this;
}

Var& Var::operator=(const char* text) {
    return *this = StrId(text);
}

// ---------------------------------------------------------------------------------------------------------
// Reading

namespace {

/// A text longer than a CoreString can hold is cut.
constexpr std::size_t kTextLimit = 0x7FFFFFF0;

void ReportNullReads(int count) {
    for (; count > 0; --count)
        ForcedCrash(0, "Var", __LINE__, "Forced crash! \"Unknown var type.\"");
}

}  // namespace

double Var::NumberByRules() const {
    return NumberOf(OperandOf(*this));
}

int Var::GetInt() const {
    int nullReads = 0;
    const int result = IntOf(OperandOf(*this), nullReads);
    ReportNullReads(nullReads);
    return result;
}

bool Var::GetBool() const {
    int nullReads = 0;
    const bool result = BoolOf(OperandOf(*this), nullReads);
    ReportNullReads(nullReads);
    return result;
}

STRID Var::GetString() const {
    if (m_kind == VarKind::String) return m_payload.text;
    CoreString text;
    TextSink sink(text, kTextLimit);
    AddText(OperandOf(*this), sink);
    ReportNullReads(sink.NullReads());
    return StrId(text);
}

void Var::Print(CoreString& out) const {
    TextSink sink(out, kTextLimit - static_cast<std::size_t>(out.GetLength()));
    AddPrinted(OperandOf(*this), sink);
    ReportNullReads(sink.NullReads());
}

void* Var::GetRef() const {
    return m_kind == VarKind::Reference ? m_payload.object : nullptr;
}

// ---------------------------------------------------------------------------------------------------------
// Lists

Var* Var::GetMember(STRID name) const {
    for (TIter<Var> iter(m_items); iter.Get() != nullptr; iter.Next())
        if (iter.Get()->m_name == name) return iter.Get();
    return nullptr;
}

TIter<Var> Var::GetListIter() const {
    return TIter<Var>(m_items);
}

void Var::AddItem(const Var& element) {
    // Copied into a list of its own first: the element may be this list or lie within it.
    TOrderedList<Var> one;
    one.Add(element);
    m_items.Splice(std::move(one));
}

void Var::Add(const Var& element) {
    if (m_kind == VarKind::Null) m_kind = VarKind::List;
    if (m_kind == VarKind::List) AddItem(element);
}

}  // namespace brenta
