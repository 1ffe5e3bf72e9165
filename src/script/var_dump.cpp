// The diagnostic dump of a Var. It must not fail: nulls show as nothing here, they are not read.
#include "brenta/dump.h"
#include "brenta/var.h"
#include "script/operand.h"
#include "script/value_limits.h"
#include "script/value_operand.h"
#include "script/var_access.h"

namespace brenta {

namespace {

/// The name of a value, for people: a function's marker is no name.
const char* NameText(const Var& var) {
    return var.GetName() == kFunctionName ? "function" : StrPtr(var.GetName());
}

void DumpBool(const Var& var, bool withName, DumpFormatter& out) {
    if (!withName) {
        out += var.GetBool() ? "true" : "false";
        return;
    }
    out += NameText(var);
    out += var.GetBool() ? " = true" : " = ";
    if (!var.GetBool()) out += "false";
}

void DumpScalar(const Var& var, bool withName, DumpFormatter& out) {
    if (var.GetKind() == VarKind::Bool) return DumpBool(var, withName, out);
    CoreString text;
    TextSink sink(text, kMaxStringLength);
    AddText(OperandOf(var), sink);
    if (withName) {
        out += NameText(var);
        out += " = ";
    }
    out += text;
}

}  // namespace

// Items are separated by line ends and the closing brace supplies the last one, so that no blank lines arise.
// Each level indents the next one, which makes the text of a deep nest quadratic: there is a bottom.
void Var::Dump(DumpFormatter& out, bool withNames) const {
    TStack<VarCursor> outer;
    VarCursor cursor;
    std::uint32_t depth = 0;
    const Var* item = this;
    while (true) {
        if (item->m_kind != VarKind::List) {
            DumpScalar(*item, withNames, out);
        } else {
            out += NameText(*item);
            if (item->m_items.IsEmpty() || depth == kMaxListDepth) {
                out += item->m_items.IsEmpty() ? " {}" : " {...}";
            } else {
                outer.Push(cursor);
                ++depth;
                cursor = VarCursor(*item);
                out.Push();
                item = &cursor.Next();
                continue;
            }
        }
        while (cursor.IsAtEnd() && !outer.IsEmpty()) {
            out.Outdent();
            out.NewLine();
            out += "}";
            cursor = outer.Top();
            outer.Pop();
            --depth;
        }
        out.NewLine();
        if (cursor.IsAtEnd()) return;
        item = &cursor.Next();
    }
}

}  // namespace brenta
