/// @file
/// Var, the single value type of the scripting language.
///
/// Every variable, constant, argument, structure member and list element that crosses between a host and its
/// scripts is a Var: a kind, an optional name, and a number, a text, a pointer or a list of further Vars. Its
/// operators are the operators of the language, and its conversions are the language's typing rules.
///
///     Var width(2.5, StrId("width"));               // a float named "width"
///     Var board(TOrderedList<Var>(), StrId("board"));
///     board.Add(width);                             // a structure: a list whose items have names
///     Var* member = board.GetMember(StrId("width"));
///     *member *= Var(2, kNoName);                   // the int 5, still named "width"
///     CoreString text;
///     board.Print(text);                            // "{5}\n"
///
/// Numbers. Bool, int and float all hold a double. Arithmetic is done on doubles, and the kind of a result
/// follows its value: without fractional part it is an int, otherwise a float. 2.5 * 2 is the int 5, 7 / 2
/// the float 3.5. An int has 32 bits; what is beyond them becomes -2147483648 (so does 1 / 0), except that a
/// product of 1073741823.5 or more stays a float. No number traps.
///
/// Texts are interned (brenta/names.h): two string Vars are equal exactly when their identifiers are. A host
/// that computes texts without end interns without end; see there.
///
/// The left operand decides what an operator does: "abc" - 5 removes text, 5 - "abc" subtracts the number of
/// the text, which is 0. Null and lists are neither equal nor unequal to anything on their right.
///
/// Null. Reading an int or a bool of a null Var, and printing one, raises the forced crash
/// "Forced crash! \"Unknown var type.\"" (brenta/failure.h; source "Var", site code 0); if the handler
/// resumes, the int is 0, the bool false and the printed text empty. `!`, `&&`, `||`, `~`, `&`, `|`, `^` and
/// the right sides of `%` and the shifts read in this way. GetFloat, GetString and arithmetic take null as 0
/// and "". Scripts never raise the crash: the engine reports a script error instead.
///
/// Copying is deep: a copy has its own items. Copies, printing and destruction work for lists nested to any
/// depth. A Var may be assigned from one of its own items.
///
/// Cost. 48 bytes, and one node of the library's heap per item. Copying and destroying take time in
/// proportion to the number of values, everything but Print, GetString of lists and GetInt of a list is
/// constant.
///
/// Threads. One Var is used by one thread at a time.
#pragma once

#include <cstdint>

#include "brenta/containers.h"
#include "brenta/export.h"
#include "brenta/names.h"
#include "brenta/string.h"

namespace brenta {

class CCoreScriptable;
class DumpFormatter;

/// Kinds of a Var. The codes are fixed: bit 0x10 marks numbers, 0x100 texts, 0x200 references, 0x400 lists.
enum class VarKind : std::uint32_t {
    Null = 0,
    Bool = 0x11,
    Int = 0x12,
    Float = 0x14,
    String = 0x101,
    Reference = 0x201,
    List = 0x401,
};

/// The name that marks a value as a function: a reference Var so named carries a FuncSymbol*
/// (brenta/symbols.h).
inline constexpr STRID kFunctionName = static_cast<STRID>(~std::uintptr_t{0});

struct BRENTA_API Var {
    // ------------------------------------------------------------------------------------------------------
    // Construction. The last argument is always the value's name, kNoName for an anonymous value.

    /// Null.
    explicit Var(STRID name = kNoName);
    /// A bool, an int, a float. The kind is the argument's, whatever its value: 2.0 stays a float.
    Var(bool value, STRID name);
    Var(int value, STRID name);
    Var(double value, STRID name);
    /// A string; kNoName is the empty text.
    Var(STRID text, STRID name);
    /// A string, interned; null is the empty text.
    Var(const char* text, STRID name);
    /// A reference. The object stays its owner's; the pointer may be null. What scripts are to use must be a
    /// CCoreScriptable: convert to it before it becomes a void*.
    Var(void* object, STRID name);
    Var(CCoreScriptable* object, STRID name);
    /// A list with deep copies of the elements, in their order and with their names.
    Var(const TOrderedList<Var>& items, STRID name);

    /// A deep copy, with the name.
    Var(const Var& other);
    /// Takes items and payload over; the other Var becomes null and keeps its name.
    Var(Var&& other) noexcept;
    ~Var();

    // ------------------------------------------------------------------------------------------------------
    // Assignment. From another Var: everything, the name included. From a plain value: kind and payload; the
    // name stays. The source may be a part of this Var.

    Var& operator=(const Var& other);
    Var& operator=(Var&& other) noexcept;
    Var& operator=(const TOrderedList<Var>& items);
    Var& operator=(void* object);
    Var& operator=(CCoreScriptable* object);
    Var& operator=(STRID text);
    Var& operator=(const char* text);
    Var& operator=(double value) {
        BecomeScalar(VarKind::Float).number = value;
        return *this;
    }
    Var& operator=(int value) {
        BecomeScalar(VarKind::Int).number = value;
        return *this;
    }
    Var& operator=(bool value) {
        BecomeScalar(VarKind::Bool).number = value ? 1 : 0;
        return *this;
    }

    // ------------------------------------------------------------------------------------------------------
    // Reading

    /// What the value is now; assignments and operators change it.
    VarKind GetKind() const { return m_kind; }
    /// The name, kNoName for an anonymous value. Naming a value changes neither its kind nor its payload.
    STRID GetName() const { return m_name; }
    void SetName(STRID name) { m_name = name; }
    /// Whether the kind is bool, int or float.
    bool IsNumeric() const { return (static_cast<std::uint32_t>(m_kind) & 0x10u) != 0; }

    /// The number: of a string the decimal number at its start (0 if there is none), of a bool 1 or 0; 0 for
    /// null, references and lists.
    double GetFloat() const {
        return m_kind == VarKind::Float || m_kind == VarKind::Int ? m_payload.number : NumberByRules();
    }

    /// As an int: numbers truncated toward zero (-2147483648 if out of range), of a string the decimal
    /// integer at its start, of a list the number of items, of a reference the low 32 bits of the pointer.
    /// Null: see the head of this file.
    int GetInt() const;

    /// As a condition: numbers that are not 0; strings that are "true" in any case or whose GetInt is not 0;
    /// lists with at least one item; references that are not null. Null: see the head of this file.
    bool GetBool() const;

    /// The text form, interned: a string's text; "true" or "false"; a number, floats with up to six decimals
    /// and no trailing zeros ("2.5", "0." for 0.0000001, "nan"); a reference's low 32 bits in hexadecimal; a
    /// list as printed. Null gives kNoName.
    STRID GetString() const;

    /// Appends the printed form to `out`: as GetString, but a bool as "1" or "0", and lists as "{", the
    /// items' printed forms separated by ", ", and "}\n". Null: see the head of this file.
    void Print(CoreString& out) const;

    /// The pointer of a reference; null for every other kind. The Var has never owned the object: whether it
    /// still exists is for the caller to know.
    void* GetRef() const;

    // ------------------------------------------------------------------------------------------------------
    // Lists and structures

    /// Of a list, the first item with this name; null if there is none, and for other kinds. The item stays
    /// the list's, and may be changed in place.
    Var* GetMember(STRID name) const;

    /// Iterates over a list's items, which may be changed in place; at the end at once for other kinds. Good
    /// until this Var is assigned to, moved from or destroyed.
    TIter<Var> GetListIter() const;

    /// The items; empty for other kinds. The reference is good as long as this Var, and follows its changes.
    const TOrderedList<Var>& GetList() const { return m_items; }

    /// Appends a deep copy of `element`, which may be this Var or a part of it. A null Var becomes a list;
    /// nothing is added to the other kinds, which have no items.
    void Add(const Var& element);

    /// Adds a readable description to `out`, one line per value: "name = text", "name = true", or for a list
    /// its name (always) and its items in braces, one level deeper; without `withNames` the plain values show
    /// only their text. Null shows as the empty text. Below 1000 levels a list shows as "{...}".
    void Dump(DumpFormatter& out, bool withNames) const;

    // ------------------------------------------------------------------------------------------------------
    // Operators. A result is a new, anonymous value.
    //
    //     left     + right                  - right                    << n  >> n             == != < > <= >=
    //     number   number sum               number difference          shift, n modulo 32     by number
    //     string   joined with text form    without every occurrence   n characters cut at    by text; order
    //                                       of the text form           the start, the end     natural
    //     list     copy with right appended null                       null                   false
    //     null,    text form joined with a  null                       null                   false, but
    //     ref.     string, else null                                                          ref. by object
    //
    // A string on the right of `+` makes any left operand but a list a text. `*` and `/` give null for a left
    // operand that is no number. `%` of an int is the integer remainder, with the sign of the left operand
    // (-2147483648 by 0, the operator does not check), of everything else the floating one. `&`, `|`, `^` and
    // `~` work on GetInt. A shift of a string takes n from a number, or from the length of a string on the
    // right. A reference compared with something that is no reference asks whether it is null.

    Var operator+(const Var& right) const;
    Var operator-(const Var& right) const;
    Var operator*(const Var& right) const;
    Var operator/(const Var& right) const;
    Var operator%(const Var& right) const;
    Var operator<<(const Var& right) const;
    Var operator>>(const Var& right) const;
    Var operator&(const Var& right) const;
    Var operator|(const Var& right) const;
    Var operator^(const Var& right) const;
    Var operator~() const;

    /// Combine GetBool; both sides are always evaluated and read.
    bool operator&&(const Var& right) const;
    bool operator||(const Var& right) const;
    bool operator!() const;

    /// By the last columns of the table. A value on the left that cannot be compared gives false for `!=`
    /// too.
    bool operator==(const Var& right) const;
    bool operator!=(const Var& right) const;
    bool operator<(const Var& right) const;
    bool operator<=(const Var& right) const;
    bool operator>(const Var& right) const;
    bool operator>=(const Var& right) const;

    /// Apply the operator and store the result; the name stays. `+=` on a list works in place: the items of a
    /// list on the right (perhaps the same one) are appended one by one, any other value as one item.
    Var& operator+=(const Var& right);
    Var& operator-=(const Var& right);
    Var& operator*=(const Var& right);
    Var& operator/=(const Var& right);
    Var& operator%=(const Var& right);
    Var& operator<<=(const Var& right);
    Var& operator>>=(const Var& right);
    Var& operator&=(const Var& right);
    Var& operator|=(const Var& right);
    Var& operator^=(const Var& right);

 private:
    friend class VarAccess;  // internal: conversions between Var and the engine's own values

    union Payload {
        double number;
        STRID text;
        void* object;
    };

    void AddItem(const Var& element);
    void CopyItems(const TOrderedList<Var>& from);
    void DropItems();
    Payload& BecomeScalar(VarKind kind) {
        if (!m_items.IsEmpty()) DropItems();
        m_kind = kind;
        return m_payload;
    }
    double NumberByRules() const;

    STRID m_name;
    VarKind m_kind;
    TOrderedList<Var> m_items;
    Payload m_payload;
};

}  // namespace brenta
