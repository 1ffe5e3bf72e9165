// How the rules of the operators see a Var and a Value.
//
// Lists are printed here rather than in the rules, because each kind of value is walked in its own way. The
// walk keeps a stack of its own: a host may nest Vars as deep as it likes. It ends as soon as the sink is
// full, for a few shared lists can stand for more text than there is memory.
#include "script/value_operand.h"

#include <string_view>

#include "brenta/names.h"
#include "script/var_access.h"

namespace brenta {

namespace {

/// Prints nested lists without recursion. A TCursor walks the elements of one list; where the walk goes a
/// level down, it waits on a stack.
template <class TCursor>
void PrintNested(TCursor cursor, TextSink& out) {
    TStack<TCursor> outer;
    out.Add(kListOpen);
    while (!out.IsFull()) {
        if (cursor.IsAtEnd()) {
            out.Add(kListClose);
            if (outer.IsEmpty()) return;
            cursor = outer.Top();
            outer.Pop();
            continue;
        }
        if (!cursor.IsFirst()) out.Add(kListSeparator);
        const auto& item = cursor.Next();
        if (TCursor::IsList(item)) {
            outer.Push(cursor);
            cursor = TCursor(item);
            out.Add(kListOpen);
        } else {
            AddPrinted(OperandOf(item), out);
        }
    }
}

class ValueCursor {
 public:
    ValueCursor() = default;
    explicit ValueCursor(const Value& list) : ValueCursor(*list.List()) {}
    explicit ValueCursor(const ListBody& list) : m_pList(&list) {}
    static bool IsList(const Value& item) { return item.IsList(); }
    bool IsFirst() const { return m_index == 0; }
    bool IsAtEnd() const { return m_index == m_pList->length; }
    const Value& Next() { return m_pList->items[m_index++]; }

 private:
    const ListBody* m_pList = nullptr;
    std::uint32_t m_index = 0;
};

void PrintValueList(const void* list, TextSink& out) {
    PrintNested(ValueCursor(*static_cast<const ListBody*>(list)), out);
}

void PrintVarList(const void* list, TextSink& out) {
    PrintNested(VarCursor(*static_cast<const Var*>(list)), out);
}

std::size_t CountValueList(const void* list) {
    return static_cast<const ListBody*>(list)->length;
}

std::size_t CountVarList(const void* list) {
    return static_cast<std::size_t>(static_cast<const Var*>(list)->GetList().GetCount());
}

constexpr ListReader kValueListReader{&PrintValueList, &CountValueList};
constexpr ListReader kVarListReader{&PrintVarList, &CountVarList};

}  // namespace

Operand OperandOf(const Value& value) {
    Operand operand;
    switch (value.GetTag()) {
        case Tag::Undefined:
        case Tag::Null:
            break;
        case Tag::Bool:
            operand.kind = VarKind::Bool;
            operand.number = static_cast<double>(value.Int());
            break;
        case Tag::Int:
            operand.kind = VarKind::Int;
            operand.number = static_cast<double>(value.Int());
            break;
        case Tag::Float:
            operand.kind = VarKind::Float;
            operand.number = value.Float();
            break;
        // A function compares and prints as what it becomes at the boundary, a reference to its symbol.
        case Tag::Function:
        case Tag::Reference:
            operand.kind = VarKind::Reference;
            operand.object = value.Reference();
            break;
        case Tag::String:
            operand.kind = VarKind::String;
            operand.text = value.Text();
            break;
        case Tag::List:
            operand.kind = VarKind::List;
            operand.list = value.List();
            operand.hasItems = value.List()->length != 0;
            operand.reader = &kValueListReader;
            break;
    }
    return operand;
}

Operand OperandOf(const Var& var) {
    Operand operand;
    operand.kind = var.GetKind();
    switch (operand.kind) {
        case VarKind::Null:
            break;
        case VarKind::Bool:
        case VarKind::Int:
        case VarKind::Float:
            operand.number = VarAccess::Number(var);
            break;
        case VarKind::String:
            operand.text = StrPtr(VarAccess::Text(var));
            break;
        case VarKind::Reference:
            operand.object = VarAccess::Object(var);
            break;
        case VarKind::List:
            operand.list = &var;
            operand.hasItems = !var.GetList().IsEmpty();
            operand.reader = &kVarListReader;
            break;
    }
    return operand;
}

}  // namespace brenta
