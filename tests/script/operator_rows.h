// What the language's operators give, row by row; Var's operators and the engine's are both held to them.
#pragma once

#include <initializer_list>
#include <map>
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
    const std::map<VarKind, const char*> kinds = {
        {VarKind::Bool, "bool "},     {VarKind::Int, "int "},   {VarKind::Float, "float "},
        {VarKind::String, "string "}, {VarKind::List, "list "}, {VarKind::Reference, "reference "},
    };
    return kinds.at(value.GetKind()) + std::string(StrPtr(value.GetString()));
}

struct OperatorRow {
    Var left;
    TokId op;
    Var right;
    const char* expected;
};

inline std::string Describe(const OperatorRow& row) {
    return Describe(row.left) + " op " + std::to_string(row.op) + " " + Describe(row.right);
}

/// What stands at a side of an operator, written as in C++.
struct Operand {
    template <typename T>
    Operand(T plain) : value(plain, kNoName) {}
    Operand(Var var) : value(std::move(var)) {}

    Var value;
};

struct OperatorCases {
    TokId op;
    struct Case {
        Operand left;
        Operand right;
        const char* expected;
    };
    std::vector<Case> cases;
};

inline std::vector<OperatorRow> Rows(std::initializer_list<OperatorCases> table) {
    std::vector<OperatorRow> rows;
    for (const auto& [op, cases] : table)
        for (const auto& [left, right, expected] : cases)
            rows.push_back({left.value, op, right.value, expected});
    return rows;
}

constexpr double kNaN = __builtin_nan("");
constexpr double kInf = __builtin_inf();
constexpr int kMin = -2147483647 - 1;

// clang-format off
inline std::vector<OperatorRow> OperatorRows() {
    const Var null = Null();
    const Var list = List({Int(1), Int(2)});
    return Rows({
        // Numbers: the kind follows the value.
        {TOK_MUL, {{2, 3, "int 6"}, {2.5, 2, "int 5"}, {2.5, 1.5, "float 3.75"}, {0, -5, "int 0"},
                   {46341, 46341, "float -2147483648"},  // 2147488281: the value survives, its text does not
                   {1073741823, 1, "int 1073741823"}, {1073741824, 1, "float 1073741824"},
                   {1073741823.5, 1, "float 1073741823.5"}, {-65536, 65536, "int -2147483648"},
                   {kNaN, 2, "float nan"}, {1e300, -1e300, "int -2147483648"}}},
        {TOK_ADD, {{5, 1.5, "float 6.5"}, {0.5, 0.5, "int 1"}, {2147483647, 1, "int -2147483648"}}},
        {TOK_SUB, {{5, -3, "int 8"}, {kMin, 1, "int -2147483648"},
                   {2147483647.5, 0, "float 2147483647.5"}}},
        {TOK_DIV, {{7, 2, "float 3.5"}, {6, 2, "int 3"}, {-7, 7, "int -1"}, {kMin, -1, "int -2147483648"},
                   {1, 0, "int -2147483648"}, {-1, 0, "int -2147483648"}, {0, 0, "float nan"}}},
        {TOK_MOD, {{7, 3, "int 1"}, {-7, 3, "int -1"}, {7, -3, "int 1"}, {kMin, -1, "int 0"},
                   {7, 2.9, "int 1"}, {7.5, 2, "float 1.5"}, {6.0, 4, "float 2"}, {1.0, 0, "float nan"},
                   {"7", 4, "float 3"}, {true, 2, "float 1"}, {null, 2, "float 0"}}},
        // Numbers with other kinds on the right.
        {TOK_ADD, {{true, true, "int 2"}, {1, null, "int 1"}, {1, list, "int 1"}}},
        {TOK_SUB, {{5, "2.5x", "float 2.5"}, {5, "abc", "int 5"}}},
        {TOK_MUL, {{3, " 4", "int 12"}, {true, Ref(9), "int 0"}}},
        {TOK_DIV, {{3, null, "int -2147483648"}}},
        // Other kinds on the left.
        {TOK_ADD, {{null, 5, "null"}, {Ref(16), 5, "null"}}},
        {TOK_SUB, {{null, 5, "null"}, {list, 1, "null"}}},
        {TOK_MUL, {{"6", 2, "null"}, {list, 2, "null"}}},
        {TOK_DIV, {{"6", 2, "null"}}},
        {TOK_SHL, {{null, 1, "null"}}},
        {TOK_SHR, {{list, 1, "null"}}},
        // Texts.
        {TOK_ADD, {{"abc", 5, "string abc5"}, {5, "a", "string 5a"}, {"a", "", "string a"},
                   {"", "", "string "}, {"a", true, "string atrue"}, {"a", null, "string a"}, {null, "a", "string a"},
                   {"a", 0.0000001, "string a0."}, {"a", list, "string a{1, 2}\n"},
                   {"x", Ref(0xABC), "string xabc"}, {Ref(0xABC), "x", "string abcx"}}},
        {TOK_SUB, {{"banana", "an", "string ba"}, {"aaa", "aa", "string a"}, {"a1b1", 1, "string ab"},
                   {"abc", "", "string abc"}, {"abc", "abcd", "string abc"}, {"abc", null, "string abc"}}},
        {TOK_SHL, {{"abcdef", 2, "string cdef"}, {"abcdef", "xyz", "string def"}, {"abc", -1, "string abc"},
                   {"abc", 3, "string "}, {"abc", list, "string abc"}, {"abc", null, "string abc"}}},
        {TOK_SHR, {{"abcdef", 2, "string abcd"}, {"abcdef", "xyz", "string abc"}, {"abc", 99, "string "}}},
        // Bits.
        {TOK_SHL, {{1, 33, "int 2"}, {1, -1, "int -2147483648"}, {2.9, "1", "int 4"}}},
        {TOK_SHR, {{-8, 1, "int -4"}, {-8, 32, "int -8"}}},
        {TOK_AND, {{6, 3, "int 2"}, {"6", list, "int 2"}}},
        {TOK_OR, {{6, 3, "int 7"}, {1e20, 1, "int -2147483647"}}},
        {TOK_XOR, {{6, 3, "int 5"}}},
        // Lists.
        {TOK_ADD, {{list, 3, "list {1, 2, 3}\n"}, {list, list, "list {1, 2, {1, 2}\n}\n"},
                   {list, "x", "list {1, 2, x}\n"}}},
        // Equality: the left operand decides.
        {TOK_EQ, {{2, 2.0, "bool true"}, {2, "2x", "bool true"}, {0, list, "bool true"},
                  {0, null, "bool true"}, {"a", "a", "bool true"}, {"a", "A", "bool false"}, {"5", 5, "bool true"},
                  {"true", true, "bool true"}, {"1", true, "bool false"}, {"", null, "bool true"},
                  {"{1, 2}\n", list, "bool true"}, {Ref(16), Ref(16), "bool true"},
                  {Ref(16), Ref(32), "bool false"}, {Ref(0), null, "bool true"}, {Ref(16), 16, "bool false"},
                  {kNaN, kNaN, "bool false"}, {null, null, "bool false"}, {list, list, "bool false"}}},
        {TOK_NOT_EQ, {{5, list, "bool true"}, {"a", "b", "bool true"}, {Ref(16), Ref(32), "bool true"},
                      {Ref(16), null, "bool true"}, {kNaN, kNaN, "bool true"},
                      {null, null, "bool false"}, {list, 0, "bool false"}}},
        // Order.
        {TOK_LESS, {{1, 1.5, "bool true"}, {-1, null, "bool true"}, {"item9", "item10", "bool true"},
                    {"9", 10, "bool true"}, {null, 1, "bool false"}}},
        {TOK_LEQ, {{kNaN, 0, "bool false"}, {"a", "a", "bool true"}, {list, list, "bool false"}}},
        {TOK_GREATER, {{2, 2, "bool false"}, {kNaN, 0, "bool false"}, {"item9", "item10", "bool false"},
                       {"b", "a", "bool true"}, {Ref(1), 0, "bool false"}}},
        {TOK_GEQ, {{2, 2, "bool true"}, {"a", "b", "bool false"}, {null, -1, "bool false"}}},
        // Truth.
        {TOK_LOG_AND, {{1, "TRUE", "bool true"}, {1, "yes", "bool false"}, {0.5, Ref(8), "bool true"},
                       {"-1", kNaN, "bool true"}}},
        {TOK_LOG_OR, {{"0", List({}), "bool false"}, {"", list, "bool true"}}},
    });
}

/// Operators that read null as something, and what they give if they may go on.
inline std::vector<OperatorRow> NullReadRows() {
    const Var null = Null();
    const Var list = List({Int(1), null});
    return Rows({
        {TOK_OR, {{null, 5, "int 5"}}},
        {TOK_XOR, {{5, null, "int 5"}}},
        {TOK_SHL, {{5, null, "int 5"}}},
        {TOK_LOG_OR, {{null, 1, "bool true"}}},
        {TOK_LOG_AND, {{1, null, "bool false"}}},
        {TOK_MOD, {{5, null, "int -2147483648"}}},
        {TOK_ADD, {{"a", list, "string a{1, }\n"}}},
        {TOK_EQ, {{"a", list, "bool false"}}},
        {TOK_SUB, {{"a", list, "string a"}}},
        {TOK_LESS, {{"a", list, "bool true"}}},
    });
}
// clang-format on

}  // namespace brenta::test::rows
