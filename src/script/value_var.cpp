// The boundary between the engine's values and Vars.
#include <cstring>
#include <new>

#include "foundation/lack_of_memory.h"
#include "script/value.h"
#include "script/value_limits.h"
#include "script/value_memory.h"
#include "script/var_access.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// To a Var

namespace {

/// Fills a Var of any kind; a list is left empty for the caller to fill.
void StoreShallow(const Value& value, Var& out) {
    switch (value.GetTag()) {
        case Tag::Undefined:
        case Tag::Null:
            return VarAccess::SetNull(out);
        case Tag::Bool:
            return VarAccess::SetBool(out, value.Int() != 0);
        case Tag::Int:
            return VarAccess::SetInt(out, static_cast<int>(value.Int()));
        case Tag::Float:
            return VarAccess::SetFloat(out, value.Float());
        case Tag::Function:
            out.SetName(kFunctionName);
            return VarAccess::SetObject(out, value.Function());
        case Tag::Reference:
            return VarAccess::SetObject(out, value.Reference());
        case Tag::String: {
            const std::string_view text = value.Text();
            const STRID id = StrId(text.data(), value.String()->length);
            // A text that begins with a NUL has no name, either.
            if (id == kNoName && !text.empty() && text[0] != '\0') throw std::bad_alloc();
            return VarAccess::SetText(out, id);
        }
        case Tag::List:
            return VarAccess::SetEmptyList(out);
    }
}

/// The depth of what a script builds is bounded, and so is the recursion. Elements are added without their
/// own first, because adding copies.
void FillList(const ListBody& list, TOrderedList<Var>& out) {
    Var shell;
    for (std::uint32_t i = 0; i < list.length; ++i) {
        shell.SetName(ItemName(list, i));
        StoreShallow(list.items[i], shell);
        AddOrThrow(out, shell);
    }
    if (list.nested == 0) return;
    TIter<Var> added(out);
    for (std::uint32_t i = 0; i < list.length && added.Get() != nullptr; ++i, added.Next())
        if (list.items[i].IsList()) FillList(*list.items[i].List(), VarAccess::Items(*added.Get()));
}

}  // namespace

void ToVar(const Value& value, STRID name, Var& out) {
    out.SetName(name);
    StoreShallow(value, out);
    if (value.IsList()) FillList(*value.List(), VarAccess::Items(out));
}

Var ToVar(const Value& value, STRID name) {
    Var result;
    ToVar(value, name, result);
    return result;
}

// ---------------------------------------------------------------------------------------------------------
// From a Var

namespace {

/// One conversion. Lists of structures that a host built one by one come out sharing one shape: each new
/// shape is compared with the one before.
class VarReader {
 public:
    ~VarReader() { ReleaseShape(m_pLastShape); }

    Value Read(const Var& var, std::uint32_t depth) {
        switch (var.GetKind()) {
            case VarKind::Null:
                break;
            case VarKind::Bool:
                return Value::OfBool(VarAccess::Number(var) != 0);
            case VarKind::Int:
                return Value::OfInt(static_cast<int>(VarAccess::Number(var)));
            case VarKind::Float:
                return Value::OfFloat(VarAccess::Number(var));
            case VarKind::String:
                return ReadText(VarAccess::Text(var));
            case VarKind::Reference:
                return ReadObject(var);
            case VarKind::List:
                return ReadList(var, depth + 1);
        }
        return Value();
    }

    ConversionLimit Limit() const { return m_limit; }

 private:
    Value ReadText(STRID id) {
        const std::string_view text = StrPtr(id);
        if (text.size() <= kMaxStringLength) return Value::OfString(text);
        m_limit = ConversionLimit::StringTooLong;
        return Value();
    }

    static Value ReadObject(const Var& var) {
        void* object = VarAccess::Object(var);
        // The only references whose name says what they point to; all others are objects.
        if (var.GetName() == kFunctionName) return Value::OfFunction(static_cast<FuncSymbol*>(object));
        return Value::OfReference(object);
    }

    Value ReadList(const Var& var, std::uint32_t depth) {
        if (depth > kMaxListDepth) {
            m_limit = ConversionLimit::ListTooDeep;
            return Value();
        }
        // Counting the items first would be a walk of its own over a chain of nodes.
        Value list = Value::OfList(0);
        for (const Var& item : var.GetList()) {
            const STRID name = item.GetName() == kFunctionName ? kNoName : item.GetName();
            Value value = Read(item, depth);
            if (m_limit != ConversionLimit::None) return Value();
            if (AppendItem(list, std::move(value), name) == ListLimit::None) continue;
            m_limit = ConversionLimit::ListTooLarge;
            return Value();
        }
        ShareShape(*list.List());
        return list;
    }

    void ShareShape(ListBody& list) {
        Shape* shape = list.shape;
        if (shape == nullptr) return;
        const Shape* last = m_pLastShape;
        const bool isSame = last != nullptr && last->size == shape->size &&
                            std::memcmp(last->names, shape->names, shape->size * sizeof(STRID)) == 0;
        if (isSame) {
            ReleaseShape(shape);
            list.shape = RetainShape(m_pLastShape);
        } else {
            ReleaseShape(m_pLastShape);
            m_pLastShape = RetainShape(shape);
        }
    }

    ConversionLimit m_limit = ConversionLimit::None;
    Shape* m_pLastShape = nullptr;
};

}  // namespace

Value FromVar(const Var& var, ConversionLimit* limit) {
    VarReader reader;
    Value value = reader.Read(var, 0);
    if (limit != nullptr) *limit = reader.Limit();
    return value;
}

}  // namespace brenta
