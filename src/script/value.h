// The engine's own values: 16 bytes, two 8-byte words {tag, payload}.
//
// Var is the public value and costs 48 bytes and an interned text; inside the engine every variable,
// temporary and list element is a Value. The two meet only at the boundary (ToVar, FromVar).
//
//   tag        payload
//   Undefined  -                       a name cell without a binding
//   Null       -                       the empty value
//   Bool       integer 0 or 1
//   Int        sign-extended 64-bit word holding an int32
//   Float      double
//   Function   FuncSymbol*
//   Reference  void* (a CCoreScriptable*)
//   String     StringBody*             counted, immutable while shared, not interned
//   List       ListBody*               counted, shared until written; member names held once, in its shape
//
// "Counted" is tag >= String. Counts are plain integers: a value belongs to one engine and so to one thread
// at a time. Copies move the two words one by one: a 16-byte vector copy of a value whose halves were just
// written as words stalls store forwarding on current processors (measured as a third of a call's time).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "brenta/names.h"
#include "brenta/var.h"

namespace brenta {

class FuncSymbol;
class Value;

/// A counted text; `length` bytes and a terminator follow the header.
struct StringBody {
    std::uint32_t count;
    std::uint32_t length;
    std::uint32_t capacity;
    char bytes[1];
};

/// The member names of a structure, shared by all structures built alike. Elements behind `size` are
/// anonymous.
struct Shape {
    std::uint32_t count;
    std::uint32_t size;
    STRID names[1];
};

/// A counted list. `weight` is the number of elements in all nested lists, `depth` the levels below and with
/// this one; both bound what a script can build by sharing (limits in value_limits.h).
struct ListBody {
    std::uint32_t count;
    std::uint32_t length;
    std::uint32_t capacity;
    std::uint32_t depth;
    std::uint64_t weight;
    Shape* shape;
    Value* items;
};

enum class Tag : std::uint64_t {
    Undefined = 0,
    Null = 1,
    Bool = 2,
    Int = 3,
    Float = 4,
    Function = 5,
    Reference = 6,
    String = 8,
    List = 9
};

class Value {
 public:
    Value() : m_tag(Tag::Null), m_word(0) {}
    Value(const Value& other) : m_tag(other.m_tag), m_word(other.m_word) {
        if (IsCounted()) Retain();
    }
    Value(Value&& other) noexcept : m_tag(other.m_tag), m_word(other.m_word) { other.m_tag = Tag::Null; }
    ~Value() {
        if (IsCounted()) Release();
    }
    Value& operator=(const Value& other) {
        if (this != &other) {
            Value copy(other);
            Swap(copy);
        }
        return *this;
    }
    Value& operator=(Value&& other) noexcept {
        Swap(other);
        return *this;
    }
    void Swap(Value& other) noexcept;
    void Clear() {
        if (IsCounted()) Release();
        m_tag = Tag::Null;
        m_word = 0;
    }

    static Value Undefined();
    static Value OfBool(bool value);
    static Value OfInt(int value);
    static Value OfFloat(double value);
    static Value OfFunction(FuncSymbol* function);
    static Value OfReference(void* object);
    /// Null memory gives the null value: the caller checks the limit before (value_limits.h).
    static Value OfString(std::string_view text);
    static Value OfList(std::size_t capacity);

    Tag GetTag() const { return m_tag; }
    bool IsCounted() const { return m_tag >= Tag::String; }
    bool IsNull() const { return m_tag <= Tag::Null; }
    bool IsNumeric() const { return m_tag >= Tag::Bool && m_tag <= Tag::Float; }
    bool IsInt() const { return m_tag == Tag::Int; }
    bool IsString() const { return m_tag == Tag::String; }
    bool IsList() const { return m_tag == Tag::List; }
    bool IsReference() const { return m_tag == Tag::Reference; }
    bool IsFunction() const { return m_tag == Tag::Function; }

    std::int64_t Int() const { return m_word; }
    double Float() const;
    FuncSymbol* Function() const { return reinterpret_cast<FuncSymbol*>(m_word); }
    void* Reference() const { return reinterpret_cast<void*>(m_word); }
    StringBody* String() const { return reinterpret_cast<StringBody*>(m_word); }
    ListBody* List() const { return reinterpret_cast<ListBody*>(m_word); }
    std::string_view Text() const { return {String()->bytes, String()->length}; }

 private:
    void Retain() const;
    void Release();

    Tag m_tag;
    std::int64_t m_word;
};

static_assert(sizeof(Value) == 16);

// --- lists (value_list.cpp). An index is always below the length; the list is detached first when it is
// shared.

/// Appends, keeping weight and depth. False when a limit is reached (nothing changed).
enum class ListLimit { None, TooLarge, TooDeep };
ListLimit AppendItem(Value& list, Value item, STRID name = kNoName);
/// Replaces element `index`, keeping its name.
ListLimit ReplaceItem(Value& list, std::size_t index, Value item);
/// The element's name, kNoName when anonymous.
STRID ItemName(const ListBody& list, std::size_t index);
/// Index of the first element named `name`, -1 when there is none.
std::ptrdiff_t FindMember(const ListBody& list, STRID name);
/// Makes the list's body unshared, so that its elements may be written through List()->items. Weight and
/// depth must be restored with RecomputeWeight by whoever then stores lists into it; ReplaceItem does all
/// this for one element.
void Detach(Value& list);

// --- the boundary (value_var.cpp)

/// `name` becomes the Var's name; a function becomes a reference named kFunctionName holding the FuncSymbol*.
Var ToVar(const Value& value, STRID name = kNoName);
/// The value of a Var; names of list elements are kept in the shape, the Var's own name is dropped. A
/// reference named kFunctionName becomes a function.
Value FromVar(const Var& var);

}  // namespace brenta
