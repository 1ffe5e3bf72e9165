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
//
// Shared bodies and writes. Whoever reads a list holds a count, whoever writes asks for a body of its own
// first (Detach), so a list can never come to hold itself: by the time it is stored into, the item to be
// stored holds a count of the old body, and the store goes into a copy. Bodies therefore form trees with
// shared branches, counting frees them all, and weight and depth are well defined.
//
// Memory. Bodies come from the general allocator, whose resizing in place is what makes growing texts and
// lists cheap; without memory std::bad_alloc is thrown, which the engine's entry points turn into a script
// error.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "brenta/names.h"
#include "brenta/var.h"

namespace brenta {

class FuncSymbol;
class Value;

/// A counted text; `length` bytes and a terminator follow the header. No NUL stands within the bytes.
struct StringBody {
    std::uint32_t count;
    std::uint32_t length;
    std::uint32_t capacity;  ///< bytes without the terminator
    char bytes[1];

    std::string_view Text() const { return {bytes, length}; }
};

/// The member names of a structure, shared by all structures built alike. Elements behind `size` are
/// anonymous. Two lists with the same shape have the same names at the same places, so a place found once can
/// be used again as long as the shape is the same. Whoever remembers a shape must hold a count of it
/// (value_memory.h), so that its address cannot become another's. Names are only ever added behind, and only
/// while nobody shares the shape.
struct Shape {
    std::uint32_t count;
    std::uint32_t size;
    std::uint32_t capacity;
    STRID names[1];
};

/// A counted list. `weight` is the number of elements in all nested lists, `depth` the levels below and with
/// this one; both bound what a script can build by sharing (limits in value_limits.h).
struct ListBody {
    std::uint32_t count;
    std::uint32_t length;
    std::uint32_t capacity;
    std::uint32_t depth;
    std::uint32_t nested;  ///< how many of the elements are lists
    union {
        std::uint64_t weight;
        ListBody* nextToFree;  ///< while the body waits for its release
    };
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
        // The other value may live in a list that only this one keeps alive: retain before release.
        if (other.IsCounted()) other.Retain();
        Replace(other.m_tag, other.m_word);
        return *this;
    }
    Value& operator=(Value&& other) noexcept {
        const Tag tag = other.m_tag;
        const std::int64_t word = other.m_word;
        other.m_tag = Tag::Null;
        Replace(tag, word);
        return *this;
    }
    void Swap(Value& other) noexcept {
        const Tag tag = m_tag;
        const std::int64_t word = m_word;
        m_tag = other.m_tag;
        m_word = other.m_word;
        other.m_tag = tag;
        other.m_word = word;
    }
    void Clear() { Replace(Tag::Null, 0); }
    /// A copy, where neither this value nor the other is counted.
    void SetPlain(const Value& other) {
        m_tag = other.m_tag;
        m_word = other.m_word;
    }
    void SetBool(bool value) { Replace(Tag::Bool, value ? 1 : 0); }
    void SetInt(int value) { Replace(Tag::Int, value); }
    void SetFloat(double value) { Replace(Tag::Float, std::bit_cast<std::int64_t>(value)); }

    static Value Undefined() { return Value(Tag::Undefined, 0); }
    static Value OfBool(bool value) { return Value(Tag::Bool, value ? 1 : 0); }
    static Value OfInt(int value) { return Value(Tag::Int, value); }
    static Value OfFloat(double value) { return Value(Tag::Float, std::bit_cast<std::int64_t>(value)); }
    static Value OfFunction(FuncSymbol* function) { return Value(Tag::Function, WordOf(function)); }
    static Value OfReference(void* object) { return Value(Tag::Reference, WordOf(object)); }
    /// A copy of the text. The caller checks the limit before (value_limits.h).
    static Value OfString(std::string_view text);
    /// The two texts joined; they may lie anywhere.
    static Value OfString(std::string_view first, std::string_view second);
    /// An empty list with room for `capacity` elements.
    static Value OfList(std::size_t capacity);

    Tag GetTag() const { return m_tag; }
    bool IsCounted() const { return m_tag >= Tag::String; }
    bool IsNull() const { return m_tag <= Tag::Null; }
    bool IsUndefined() const { return m_tag == Tag::Undefined; }
    /// Where this value is not counted. The number goes to memory as it is, not through an integer register,
    /// which takes as long as an addition.
    void SetPlainFloat(double value) {
        m_tag = Tag::Float;
        std::memcpy(&m_word, &value, sizeof(value));
    }
    bool IsPlainScalar() const { return m_tag >= Tag::Null && m_tag <= Tag::Float; }
    bool IsNumeric() const { return m_tag >= Tag::Bool && m_tag <= Tag::Float; }
    bool IsBool() const { return m_tag == Tag::Bool; }
    bool IsInt() const { return m_tag == Tag::Int; }
    bool IsFloat() const { return m_tag == Tag::Float; }
    bool IsString() const { return m_tag == Tag::String; }
    bool IsList() const { return m_tag == Tag::List; }
    bool IsReference() const { return m_tag == Tag::Reference; }
    bool IsFunction() const { return m_tag == Tag::Function; }

    /// The payloads; each only for its own tag (Int for Bool too).
    std::int64_t Int() const { return m_word; }
    double Float() const { return std::bit_cast<double>(m_word); }
    FuncSymbol* Function() const { return reinterpret_cast<FuncSymbol*>(m_word); }
    void* Reference() const { return reinterpret_cast<void*>(m_word); }
    StringBody* String() const { return reinterpret_cast<StringBody*>(m_word); }
    ListBody* List() const { return reinterpret_cast<ListBody*>(m_word); }
    std::string_view Text() const { return String()->Text(); }

    /// Whether a counted value's body is held by nobody else, so that it may be changed in place.
    bool IsUnshared() const { return *Count() == 1; }

 private:
    Value(Tag tag, std::int64_t word) : m_tag(tag), m_word(word) {}
    static std::int64_t WordOf(void* pointer) { return reinterpret_cast<std::int64_t>(pointer); }
    static std::int64_t WordOf(FuncSymbol* pointer) { return reinterpret_cast<std::int64_t>(pointer); }

    /// Both kinds of body begin with their count.
    std::uint32_t* Count() const { return reinterpret_cast<std::uint32_t*>(m_word); }
    void Retain() const { ++*Count(); }
    void Release() {
        if (--*Count() == 0) FreeBody();
    }
    void FreeBody();
    void Replace(Tag tag, std::int64_t word) {
        if (IsCounted()) return ReplaceCounted(tag, word);
        m_tag = tag;
        m_word = word;
    }
    /// The new content is in place before the former one goes, which may be all that keeps this value alive
    /// but cannot be what it holds.
    void ReplaceCounted(Tag tag, std::int64_t word) {
        Value former(m_tag, m_word);
        m_tag = tag;
        m_word = word;
    }

    friend void AppendString(Value& string, std::string_view tail);

    Tag m_tag;
    std::int64_t m_word;
};

static_assert(sizeof(Value) == 16);

// --- strings (value.cpp)

/// Appends to a string in place, detaching it first when it is shared; the room grows geometrically, so a
/// text built piece by piece costs its length. `tail` may lie in the string itself. The caller checks the
/// limit.
void AppendString(Value& string, std::string_view tail);

// --- lists (value_list.cpp). An index is always below the length; the list is detached first when it is
// shared.

enum class ListLimit { None, TooLarge, TooDeep };

/// Appends, keeping weight and depth. Not None when a limit is reached (nothing changed).
ListLimit AppendItem(Value& list, Value item, STRID name = kNoName);
/// Appends all elements of `tail` (a list, perhaps the same one) with their names. Nothing changes when a
/// limit is reached.
ListLimit AppendItems(Value& list, const Value& tail);
/// Replaces element `index`, keeping its name.
ListLimit ReplaceItem(Value& list, std::size_t index, Value item);
/// Replaces the element at the end of a path: root[path[0]][path[1]]..., every step but the last leading to a
/// list. Shared lists on the way are detached; weights and depths of all of them follow. ReplaceItem is the
/// path of one step.
ListLimit ReplaceAtPath(Value& root, std::span<const std::uint32_t> path, Value item);
/// The element's name, kNoName when anonymous.
inline STRID ItemName(const ListBody& list, std::size_t index) {
    return list.shape != nullptr && index < list.shape->size ? list.shape->names[index] : kNoName;
}
/// Index of the first element named `name`, -1 when there is none (no element is named kNoName).
std::ptrdiff_t FindMember(const ListBody& list, STRID name);
/// A list of `length` copies of `item`.
ListLimit RepeatItem(std::size_t length, const Value& item, Value& list);
/// Makes the list's body unshared, so that its elements may be written through List()->items. That is for
/// numbers, bools and strings over others of these; what changes whether an element is a list goes through
/// ReplaceItem or ReplaceAtPath, which keep weight and depth.
void Detach(Value& list);

// --- the boundary (value_var.cpp)

/// The Var of a value, its texts interned, its lists copied. `name` becomes the Var's name; a function
/// becomes a reference named kFunctionName holding the FuncSymbol*.
Var ToVar(const Value& value, STRID name = kNoName);
/// The same into a Var that exists, whatever it held.
void ToVar(const Value& value, STRID name, Var& out);
/// The value of a Var; names of list elements are kept in the shape, the Var's own name is dropped. A
/// reference named kFunctionName becomes a function. A Var beyond the limits on lists or strings
/// (value_limits.h) gives null and says so in `limit`.
enum class ConversionLimit { None, StringTooLong, ListTooLarge, ListTooDeep };
Value FromVar(const Var& var, ConversionLimit* limit = nullptr);

}  // namespace brenta
