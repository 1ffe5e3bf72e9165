// What the loop of the machine does by itself: operators on two ints or two floats, for a result whose place
// holds nothing that asks for care. False means that nothing has happened, and the slow way has to do it.
#pragma once

#include <cmath>
#include <cstdint>

#include "script/operand.h"
#include "script/value.h"

namespace brenta::fast {

inline bool AreInts(const Value& a, const Value& b) {
    return a.IsInt() && b.IsInt();
}

inline bool AreFloats(const Value& a, const Value& b) {
    return a.IsFloat() && b.IsFloat();
}

inline bool StoreInt(std::int64_t number, Value& d) {
    if (d.IsCounted() || number != static_cast<std::int32_t>(number)) return false;
    d.SetInt(static_cast<std::int32_t>(number));
    return true;
}

/// A result without fractional part becomes an int; what is beyond the ints, or no number, is not stored.
inline constexpr double kIntBound = 2147483648.0;
inline bool StoreNarrowed(double number, Value& d) {
    if (d.IsCounted() || !(std::fabs(number) < kIntBound)) return false;
    const auto whole = static_cast<std::int32_t>(number);
    if (whole == number) {
        d.SetInt(whole);
    } else {
        d.SetPlainFloat(number);
    }
    return true;
}

/// An int beside a float, in either order. Rarer, so the loop asks for it last.
inline bool AreMixed(const Value& a, const Value& b) {
    return (a.IsInt() && b.IsFloat()) || (a.IsFloat() && b.IsInt());
}

inline double AsDouble(const Value& value) {
    return value.IsFloat() ? value.Float() : static_cast<double>(value.Int());
}

inline bool Add(const Value& a, const Value& b, Value& d) {
    if (AreInts(a, b)) return StoreInt(a.Int() + b.Int(), d);
    if (AreFloats(a, b)) return StoreNarrowed(a.Float() + b.Float(), d);
    return AreMixed(a, b) && StoreNarrowed(AsDouble(a) + AsDouble(b), d);
}

inline bool Subtract(const Value& a, const Value& b, Value& d) {
    if (AreInts(a, b)) return StoreInt(a.Int() - b.Int(), d);
    return AreFloats(a, b) && StoreNarrowed(a.Float() - b.Float(), d);
}

/// Products from kProductBound on are floats.
inline constexpr std::int64_t kIntProductBound = 1073741823;
inline bool Multiply(const Value& a, const Value& b, Value& d) {
    if (AreInts(a, b)) {
        const std::int64_t product = a.Int() * b.Int();
        return product <= kIntProductBound && StoreInt(product, d);
    }
    if (!AreFloats(a, b)) return false;
    const double product = a.Float() * b.Float();
    return std::fabs(product) < kProductBound && StoreNarrowed(product, d);
}

inline bool Divide(const Value& a, const Value& b, Value& d) {
    if (AreInts(a, b))
        return b.Int() != 0 && StoreNarrowed(static_cast<double>(a.Int()) / static_cast<double>(b.Int()), d);
    return AreFloats(a, b) && StoreNarrowed(a.Float() / b.Float(), d);
}

inline bool Remainder(const Value& a, const Value& b, Value& d) {
    if (!AreInts(a, b) || b.Int() == 0) return false;
    return StoreInt(a.Int() % b.Int(), d);
}

/// With a number that is an operand of the instruction itself; a divisor is positive.
inline bool AddNumber(const Value& a, std::int64_t b, Value& d) {
    return a.IsInt() && StoreInt(a.Int() + b, d);
}

inline bool RemainderNumber(const Value& a, std::int64_t b, Value& d) {
    if (!a.IsInt()) return false;
    // A division takes longer than all the rest; by a power of two none is needed.
    if ((b & (b - 1)) == 0 && a.Int() >= 0) return StoreInt(a.Int() & (b - 1), d);
    return StoreInt(static_cast<std::int32_t>(a.Int()) % static_cast<std::int32_t>(b), d);
}

/// Relations: 1 or 0, or -1 for the slow way.
enum class Holds { No, Yes, Unknown };

template <class Relation>
Holds Relate(const Value& a, const Value& b, Relation relation) {
    if (AreInts(a, b)) return relation(a.Int(), b.Int()) ? Holds::Yes : Holds::No;
    if (AreFloats(a, b)) return relation(a.Float(), b.Float()) ? Holds::Yes : Holds::No;
    return Holds::Unknown;
}

template <class Relation>
Holds Relate(const Value& a, std::int64_t b, Relation relation) {
    if (a.IsInt()) return relation(a.Int(), b) ? Holds::Yes : Holds::No;
    return Holds::Unknown;
}

/// The operators on two ints that need nothing but themselves.
inline bool IntOperator(int kind, const Value& a, const Value& b, Value& d) {
    if (!AreInts(a, b) || d.IsCounted()) return false;
    const std::int64_t x = a.Int();
    const std::int64_t y = b.Int();
    switch (kind) {
        case TOK_LESS:
            d.SetBool(x < y);
            return true;
        case TOK_GREATER:
            d.SetBool(x > y);
            return true;
        case TOK_LEQ:
            d.SetBool(x <= y);
            return true;
        case TOK_GEQ:
            d.SetBool(x >= y);
            return true;
        case TOK_EQ:
            d.SetBool(x == y);
            return true;
        case TOK_NOT_EQ:
            d.SetBool(x != y);
            return true;
        case TOK_AND:
            d.SetInt(static_cast<std::int32_t>(x & y));
            return true;
        case TOK_OR:
            d.SetInt(static_cast<std::int32_t>(x | y));
            return true;
        default:
            return false;
    }
}

inline bool BoolOperator(int kind, const Value& a, const Value& b, Value& d) {
    if (!a.IsBool() || !b.IsBool() || d.IsCounted()) return false;
    if (kind != TOK_LOG_AND && kind != TOK_LOG_OR) return false;
    const bool x = a.Int() != 0;
    const bool y = b.Int() != 0;
    d.SetBool(kind == TOK_LOG_AND ? x && y : x || y);
    return true;
}

// --- elements

inline bool HasElement(const Value& list, const Value& index) {
    return list.IsList() && index.IsInt() && static_cast<std::uint64_t>(index.Int()) < list.List()->length;
}

/// Whether an element may be replaced by a plain value without a look at anything else.
inline bool IsPlainStore(const Value& list, const Value& element, const Value& value) {
    return list.IsUnshared() && !element.IsCounted() && !value.IsCounted();
}

}  // namespace brenta::fast
