// The inside of a Var, for the conversions between Var and Value, the operators and the dump.
#pragma once

#include "brenta/var.h"

namespace brenta {

class VarAccess {
 public:
    static double Number(const Var& var) { return var.m_payload.number; }
    static STRID Text(const Var& var) { return var.m_payload.text; }
    static void* Object(const Var& var) { return var.m_payload.object; }
    static TOrderedList<Var>& Items(Var& var) { return var.m_items; }

    /// Turns a Var of any kind into one of this kind; its name stays, its items go.
    /// An anonymous number, of any of the numeric kinds.
    static void ResetToNumber(Var& var, VarKind kind, double number) {
        Reset(var);
        var.m_kind = kind;
        var.m_payload.number = number;
    }
    /// An anonymous null.
    static void Reset(Var& var) {
        if (var.m_kind == VarKind::List) SetNull(var);
        var.m_kind = VarKind::Null;
        var.m_name = kNoName;
    }
    static void SetNull(Var& var) { var.BecomeScalar(VarKind::Null).number = 0; }
    static void SetBool(Var& var, bool value) { var.BecomeScalar(VarKind::Bool).number = value ? 1 : 0; }
    static void SetInt(Var& var, int value) { var.BecomeScalar(VarKind::Int).number = value; }
    static void SetFloat(Var& var, double value) { var.BecomeScalar(VarKind::Float).number = value; }
    static void SetText(Var& var, STRID text) { var.BecomeScalar(VarKind::String).text = text; }
    static void SetObject(Var& var, void* object) { var.BecomeScalar(VarKind::Reference).object = object; }
    static void SetEmptyList(Var& var) { var.BecomeScalar(VarKind::List).number = 0; }
};

/// Walks the items of one list; waits on a stack while the walk is a level further down.
class VarCursor {
 public:
    VarCursor() = default;
    explicit VarCursor(const Var& list) : m_pNext(list.GetListIter().m_pPos) {}

    static bool IsList(const Var& item) { return item.GetKind() == VarKind::List; }
    bool IsFirst() const { return m_isFirst; }
    bool IsAtEnd() const { return m_pNext == nullptr; }
    const Var& Next() {
        const Var& item = m_pNext->m_value;
        m_pNext = m_pNext->m_pNext;
        m_isFirst = false;
        return item;
    }

 private:
    const TNode<Var>* m_pNext = nullptr;
    bool m_isFirst = true;
};

}  // namespace brenta
