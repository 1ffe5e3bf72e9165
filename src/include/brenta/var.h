/// @file
/// Var, the single value type of the scripting language.
///
/// Every variable, constant, argument, structure member and list element that crosses between a host and its scripts is
/// a Var: a kind, an optional name, and a number, a text, a pointer or a list of further Vars.
///
///     Var width(2.5, StrId("width"));          // a float named "width"
///     Var list(TOrderedList<Var>{});           // an empty list
///     list.Add(width);
///     CoreString text;
///     list.Print(text);                        // "{2.5}\n"
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

/// The name that marks a value as a function: a reference Var so named carries a FuncSymbol*.
inline constexpr STRID kFunctionName = static_cast<STRID>(~std::uintptr_t{0});

struct BRENTA_API Var {
    explicit Var(STRID name = kNoName);
    Var(bool value, STRID name);
    Var(int value, STRID name);
    Var(double value, STRID name);
    Var(STRID text, STRID name);
    Var(const char* text, STRID name);
    Var(void* object, STRID name);
    Var(CCoreScriptable* object, STRID name);
    Var(const TOrderedList<Var>& items, STRID name);
    Var(const Var& other);
    Var(Var&& other) noexcept;
    ~Var();

    Var& operator=(const Var& other);
    Var& operator=(Var&& other) noexcept;
    Var& operator=(const TOrderedList<Var>& items);
    Var& operator=(void* object);
    Var& operator=(STRID text);
    Var& operator=(double value);
    Var& operator=(int value);
    Var& operator=(bool value);

    VarKind GetKind() const { return m_kind; }
    STRID GetName() const { return m_name; }
    void SetName(STRID name) { m_name = name; }
    bool IsNumeric() const { return (static_cast<std::uint32_t>(m_kind) & 0x10u) != 0; }

    double GetFloat() const;
    int GetInt() const;
    bool GetBool() const;
    STRID GetString() const;
    void Print(CoreString& out) const;
    void* GetRef() const;
    Var* GetMember(STRID name) const;
    TIter<Var> GetListIter() const;
    const TOrderedList<Var>& GetList() const { return m_items; }
    void Add(const Var& element);
    void Dump(DumpFormatter& out, bool withNames) const;

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
    bool operator&&(const Var& right) const;
    bool operator||(const Var& right) const;
    bool operator!() const;
    bool operator==(const Var& right) const;
    bool operator!=(const Var& right) const;
    bool operator<(const Var& right) const;
    bool operator<=(const Var& right) const;
    bool operator>(const Var& right) const;
    bool operator>=(const Var& right) const;
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
    friend class VarAccess;  // the engine's conversions between Var and its own compact values

    STRID m_name;
    VarKind m_kind;
    TOrderedList<Var> m_items;
    union {
        double m_number;
        STRID m_text;
        void* m_pObject;
    };
};

}  // namespace brenta
