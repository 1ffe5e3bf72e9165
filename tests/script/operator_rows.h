// What the language's operators give, row by row; Var's operators and the engine's are both held to them.
#pragma once

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "brenta/lexer.h"
#include "brenta/var.h"

namespace brenta::test::rows {

// clang-format off
inline Var Null() { return Var(); }
inline Var Bool(bool value) { return Var(value, kNoName); }
inline Var Int(int value) { return Var(value, kNoName); }
inline Var Float(double value) { return Var(value, kNoName); }
inline Var Text(const char* text) { return Var(text, kNoName); }
inline Var Ref(std::uintptr_t address) { return Var(reinterpret_cast<void*>(address), kNoName); }
// clang-format on
inline Var List(std::initializer_list<Var> items) {
    Var list(TOrderedList<Var>(), kNoName);
    for (const Var& item : items)
        list.Add(item);
    return list;
}
inline Var Named(Var value, const char* name) {
    value.SetName(StrId(name));
    return value;
}

/// Kind and text form: "int 6", "string ab", "list {1, 2}\n".
inline std::string Describe(const Var& value) {
    if (value.GetKind() == VarKind::Null) return "null";
    const std::pair<VarKind, const char*> kinds[] = {
        {VarKind::Bool, "bool "},     {VarKind::Int, "int "},   {VarKind::Float, "float "},
        {VarKind::String, "string "}, {VarKind::List, "list "}, {VarKind::Reference, "reference "},
    };
    std::string text = "? ";
    for (const auto& [kind, name] : kinds)
        if (value.GetKind() == kind) text = name;
    return text + StrPtr(value.GetString());
}

struct OperatorRow {
    Var left;
    TokId op;
    Var right;
    const char* expected;
};

constexpr double kNaN = __builtin_nan("");
constexpr double kInf = __builtin_inf();
constexpr int kMin = -2147483647 - 1;

// clang-format off
inline std::vector<OperatorRow> OperatorRows() {
    const Var list = List({Int(1), Int(2)});
    return {
        // Numbers: the kind follows the value.
        {Int(2), TOK_MUL, Int(3), "int 6"},
        {Float(2.5), TOK_MUL, Int(2), "int 5"},
        {Float(2.5), TOK_MUL, Float(1.5), "float 3.75"},
        {Int(46341), TOK_MUL, Int(46341), "float -2147483648"},     // 2147488281: the value survives, its text does not
        {Int(1073741824), TOK_MUL, Int(1), "float 1073741824"},
        {Int(1073741823), TOK_MUL, Int(1), "int 1073741823"},
        {Float(1073741823.5), TOK_MUL, Int(1), "float 1073741823.5"},
        {Float(-3000000000.0), TOK_MUL, Int(1), "int -2147483648"},
        {Int(-65536), TOK_MUL, Int(65536), "int -2147483648"},
        {Int(0), TOK_MUL, Int(-5), "int 0"},
        {Float(kNaN), TOK_MUL, Int(2), "float nan"},
        {Float(1e300), TOK_MUL, Float(-1e300), "int -2147483648"},
        {Int(2147483647), TOK_ADD, Int(1), "int -2147483648"},
        {Int(kMin), TOK_SUB, Int(1), "int -2147483648"},
        {Int(5), TOK_ADD, Float(1.5), "float 6.5"},
        {Float(0.5), TOK_ADD, Float(0.5), "int 1"},
        {Float(2147483647.5), TOK_SUB, Int(0), "float 2147483647.5"},
        {Int(5), TOK_SUB, Int(-3), "int 8"},
        {Int(7), TOK_DIV, Int(2), "float 3.5"},
        {Int(6), TOK_DIV, Int(2), "int 3"},
        {Int(-7), TOK_DIV, Int(7), "int -1"},
        {Int(1), TOK_DIV, Int(0), "int -2147483648"},
        {Int(-1), TOK_DIV, Int(0), "int -2147483648"},
        {Int(0), TOK_DIV, Int(0), "float nan"},
        {Int(kMin), TOK_DIV, Int(-1), "int -2147483648"},
        {Int(7), TOK_MOD, Int(3), "int 1"},
        {Int(-7), TOK_MOD, Int(3), "int -1"},
        {Int(7), TOK_MOD, Int(-3), "int 1"},
        {Int(kMin), TOK_MOD, Int(-1), "int 0"},
        {Int(7), TOK_MOD, Float(2.9), "int 1"},
        {Float(7.5), TOK_MOD, Int(2), "float 1.5"},
        {Float(6), TOK_MOD, Int(4), "float 2"},
        {Float(1), TOK_MOD, Int(0), "float nan"},
        {Text("7"), TOK_MOD, Int(4), "float 3"},
        {Bool(true), TOK_MOD, Int(2), "float 1"},
        {Null(), TOK_MOD, Int(2), "float 0"},
        // Numbers with other kinds on the right.
        {Bool(true), TOK_ADD, Bool(true), "int 2"},
        {Int(1), TOK_ADD, Null(), "int 1"},
        {Int(1), TOK_ADD, list, "int 1"},
        {Int(5), TOK_SUB, Text("2.5x"), "float 2.5"},
        {Int(5), TOK_SUB, Text("abc"), "int 5"},
        {Int(3), TOK_MUL, Text(" 4"), "int 12"},
        {Int(3), TOK_DIV, Null(), "int -2147483648"},
        {Bool(true), TOK_MUL, Ref(9), "int 0"},
        // Other kinds on the left.
        {Null(), TOK_ADD, Int(5), "null"},
        {Ref(16), TOK_ADD, Int(5), "null"},
        {Null(), TOK_SUB, Int(5), "null"},
        {list, TOK_SUB, Int(1), "null"},
        {Text("6"), TOK_MUL, Int(2), "null"},
        {Text("6"), TOK_DIV, Int(2), "null"},
        {list, TOK_MUL, Int(2), "null"},
        {Null(), TOK_SHL, Int(1), "null"},
        {list, TOK_SHR, Int(1), "null"},
        // Texts.
        {Text("abc"), TOK_ADD, Int(5), "string abc5"},
        {Int(5), TOK_ADD, Text("a"), "string 5a"},
        {Text("a"), TOK_ADD, Text(""), "string a"},
        {Text(""), TOK_ADD, Text(""), "string "},
        {Text("a"), TOK_ADD, Bool(true), "string atrue"},
        {Text("a"), TOK_ADD, Null(), "string a"},
        {Null(), TOK_ADD, Text("a"), "string a"},
        {Text("a"), TOK_ADD, Float(0.0000001), "string a0."},
        {Text("a"), TOK_ADD, list, "string a{1, 2}\n"},
        {Text("x"), TOK_ADD, Ref(0xABC), "string xabc"},
        {Ref(0xABC), TOK_ADD, Text("x"), "string abcx"},
        {Text("banana"), TOK_SUB, Text("an"), "string ba"},
        {Text("aaa"), TOK_SUB, Text("aa"), "string a"},
        {Text("a1b1"), TOK_SUB, Int(1), "string ab"},
        {Text("abc"), TOK_SUB, Text(""), "string abc"},
        {Text("abc"), TOK_SUB, Text("abcd"), "string abc"},
        {Text("abc"), TOK_SUB, Null(), "string abc"},
        {Text("abcdef"), TOK_SHL, Int(2), "string cdef"},
        {Text("abcdef"), TOK_SHR, Int(2), "string abcd"},
        {Text("abcdef"), TOK_SHL, Text("xyz"), "string def"},
        {Text("abcdef"), TOK_SHR, Text("xyz"), "string abc"},
        {Text("abc"), TOK_SHL, Int(-1), "string abc"},
        {Text("abc"), TOK_SHL, Int(3), "string "},
        {Text("abc"), TOK_SHR, Int(99), "string "},
        {Text("abc"), TOK_SHL, list, "string abc"},
        {Text("abc"), TOK_SHL, Null(), "string abc"},
        // Bits.
        {Int(1), TOK_SHL, Int(33), "int 2"},
        {Int(1), TOK_SHL, Int(-1), "int -2147483648"},
        {Int(-8), TOK_SHR, Int(1), "int -4"},
        {Int(-8), TOK_SHR, Int(32), "int -8"},
        {Float(2.9), TOK_SHL, Text("1"), "int 4"},
        {Int(6), TOK_AND, Int(3), "int 2"},
        {Int(6), TOK_OR, Int(3), "int 7"},
        {Int(6), TOK_XOR, Int(3), "int 5"},
        {Text("6"), TOK_AND, list, "int 2"},
        {Float(1e20), TOK_OR, Int(1), "int -2147483647"},
        // Lists.
        {list, TOK_ADD, Int(3), "list {1, 2, 3}\n"},
        {list, TOK_ADD, list, "list {1, 2, {1, 2}\n}\n"},
        {list, TOK_ADD, Text("x"), "list {1, 2, x}\n"},
        // Equality: the left operand decides.
        {Int(2), TOK_EQ, Float(2), "bool true"},
        {Int(2), TOK_EQ, Text("2x"), "bool true"},
        {Int(0), TOK_EQ, list, "bool true"},
        {Int(5), TOK_NOT_EQ, list, "bool true"},
        {Int(0), TOK_EQ, Null(), "bool true"},
        {Float(kNaN), TOK_EQ, Float(kNaN), "bool false"},
        {Float(kNaN), TOK_NOT_EQ, Float(kNaN), "bool true"},
        {Text("a"), TOK_EQ, Text("a"), "bool true"},
        {Text("a"), TOK_EQ, Text("A"), "bool false"},
        {Text("5"), TOK_EQ, Int(5), "bool true"},
        {Text("true"), TOK_EQ, Bool(true), "bool true"},
        {Text("1"), TOK_EQ, Bool(true), "bool false"},
        {Text(""), TOK_EQ, Null(), "bool true"},
        {Text("{1, 2}\n"), TOK_EQ, list, "bool true"},
        {Text("a"), TOK_NOT_EQ, Text("b"), "bool true"},
        {Null(), TOK_EQ, Null(), "bool false"},
        {Null(), TOK_NOT_EQ, Null(), "bool false"},
        {list, TOK_EQ, list, "bool false"},
        {list, TOK_NOT_EQ, Int(0), "bool false"},
        {Ref(16), TOK_EQ, Ref(16), "bool true"},
        {Ref(16), TOK_EQ, Ref(32), "bool false"},
        {Ref(16), TOK_NOT_EQ, Ref(32), "bool true"},
        {Ref(0), TOK_EQ, Null(), "bool true"},
        {Ref(16), TOK_EQ, Int(16), "bool false"},
        {Ref(16), TOK_NOT_EQ, Null(), "bool true"},
        // Order.
        {Int(1), TOK_LESS, Float(1.5), "bool true"},
        {Int(2), TOK_GEQ, Int(2), "bool true"},
        {Int(2), TOK_GREATER, Int(2), "bool false"},
        {Float(kNaN), TOK_LEQ, Int(0), "bool false"},
        {Float(kNaN), TOK_GREATER, Int(0), "bool false"},
        {Int(-1), TOK_LESS, Null(), "bool true"},
        {Text("item9"), TOK_LESS, Text("item10"), "bool true"},
        {Text("item9"), TOK_GREATER, Text("item10"), "bool false"},
        {Text("a"), TOK_LEQ, Text("a"), "bool true"},
        {Text("a"), TOK_GEQ, Text("b"), "bool false"},
        {Text("9"), TOK_LESS, Int(10), "bool true"},
        {Text("b"), TOK_GREATER, Text("a"), "bool true"},
        {Null(), TOK_LESS, Int(1), "bool false"},
        {Null(), TOK_GEQ, Int(-1), "bool false"},
        {list, TOK_LEQ, list, "bool false"},
        {Ref(1), TOK_GREATER, Int(0), "bool false"},
        // Truth.
        {Int(1), TOK_LOG_AND, Text("TRUE"), "bool true"},
        {Int(1), TOK_LOG_AND, Text("yes"), "bool false"},
        {Float(0.5), TOK_LOG_AND, Ref(8), "bool true"},
        {Text("0"), TOK_LOG_OR, List({}), "bool false"},
        {Text(""), TOK_LOG_OR, list, "bool true"},
        {Text("-1"), TOK_LOG_AND, Float(kNaN), "bool true"},
    };
}
// clang-format on

/// Operators that read null as something, and what they give if they may go on.
inline std::vector<OperatorRow> NullReadRows() {
    const Var list = List({Int(1), Null()});
    return {
        {Null(), TOK_OR, Int(5), "int 5"},
        {Int(5), TOK_XOR, Null(), "int 5"},
        {Int(5), TOK_SHL, Null(), "int 5"},
        {Null(), TOK_LOG_OR, Int(1), "bool true"},
        {Int(1), TOK_LOG_AND, Null(), "bool false"},
        {Int(5), TOK_MOD, Null(), "int -2147483648"},
        {Text("a"), TOK_ADD, list, "string a{1, }\n"},
        {Text("a"), TOK_EQ, list, "bool false"},
        {Text("a"), TOK_SUB, list, "string a"},
        {Text("a"), TOK_LESS, list, "bool true"},
    };
}

}  // namespace brenta::test::rows
