// The rules of the language's operators, written once for both kinds of value.
//
// A Var and a Value differ in how they keep numbers, texts and lists; what `+` or `<` means depends only on
// what an Operand shows: kind, number, text, object, list. Each side makes Operands of its values (two loads
// and a branch), lets ApplyOperator decide, and stores the result in its own form. Only joining to a list is
// each side's own affair, because a list is not looked into here.
//
// Reading an int or a bool of null is a broken rule that the two sides treat differently: the engine reports
// a script error, Var raises a forced crash per read and goes on with 0 or false. So the kernels count such
// reads, always give a result, and leave the rest to the caller.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "brenta/lexer.h"
#include "brenta/string.h"
#include "brenta/var.h"

namespace brenta {

/// Where text forms go: appends to a string until a limit is reached, and counts nulls that were to be
/// printed.
class TextSink {
 public:
    TextSink(CoreString& out, std::size_t limit) : m_out(out), m_room(limit) {}

    void Add(std::string_view text) {
        if (text.size() > m_room) {
            text = text.substr(0, m_room);
            m_full = true;
        }
        m_room -= text.size();
        const int former = m_out.GetLength();
        m_out += text;
        m_lacks |= static_cast<std::size_t>(m_out.GetLength() - former) != text.size();
    }
    void AddNull() { ++m_nullReads; }
    /// Text was cut: nothing that follows can be added either.
    bool IsFull() const { return m_full; }
    int NullReads() const { return m_nullReads; }
    /// Some of the text found no memory.
    bool Lacks() const { return m_lacks; }

 private:
    CoreString& m_out;
    std::size_t m_room;
    int m_nullReads = 0;
    bool m_full = false;
    bool m_lacks = false;
};

/// How an operand's list is looked into.
struct ListReader {
    void (*print)(const void* list, TextSink& out);
    std::size_t (*count)(const void* list);
};

/// What an operator sees of a value. Views of texts are terminated; all views are good as long as the value
/// stays as it is.
struct Operand {
    VarKind kind = VarKind::Null;
    bool hasItems = false;               ///< list: not empty
    double number = 0;                   ///< bool, int, float
    std::string_view text;               ///< string
    const void* object = nullptr;        ///< reference
    const void* list = nullptr;          ///< list: handed to its reader
    const ListReader* reader = nullptr;  ///< list

    bool IsNumeric() const { return (static_cast<std::uint32_t>(kind) & 0x10u) != 0; }
};

// --- reading. Each adds to `nullReads` when null had to be read as something.

double NumberOf(const Operand& operand);
int IntOf(const Operand& operand, int& nullReads);
bool BoolOf(const Operand& operand, int& nullReads);
/// The text form: "true" and "false", "" for null, lists as printed.
void AddText(const Operand& operand, TextSink& out);
/// The printed form: "1" and "0", lists in braces, null nothing and counted.
void AddPrinted(const Operand& operand, TextSink& out);
/// The pieces of a list's printed form.
inline constexpr std::string_view kListOpen = "{", kListSeparator = ", ", kListClose = "}\n";

// --- operators

/// What ApplyOperator gives: one of null, bool, int, float, string.
struct OperatorResult {
    VarKind kind = VarKind::Null;
    double number = 0;      ///< for an int a whole number in range, for a bool 0 or 1
    std::string_view text;  ///< lies in the left operand or in `buffer`
    CoreString buffer;
    int nullReads = 0;
    bool divisionByZero = false;  ///< integer %; the number is then INT_MIN
    bool textTooLong = false;     ///< a text had to be cut at the limit
};

/// Whether left op right is no affair of ApplyOperator: `+` with a list on the left.
inline bool IsListJoin(TokId op, const Operand& left) {
    return op == TOK_ADD && left.kind == VarKind::List;
}

/// result = left op right for TOK_LOG_OR ... TOK_MOD, except list joins. Texts longer than `textLimit` are
/// cut.
void ApplyOperator(TokId op, const Operand& left, const Operand& right, std::size_t textLimit,
                   OperatorResult& result);

/// An arithmetic result that has no fractional part becomes an int (INT_MIN out of range), any other a float.
void StoreNarrowed(double number, OperatorResult& result);
/// The same for a product, which stays a float from 1073741823.5 on.
inline constexpr double kProductBound = 1073741823.5;

/// Whether `<`, `>`, `<=` or `>=` holds between two terminated texts, in natural order.
bool TextsRelate(TokId op, const char* left, const char* right);

/// a mod b with the sign of a; INT_MIN mod -1 is 0. b must not be 0.
int IntRemainder(int a, int b);
/// Shifts by the count modulo 32, as a 32-bit pattern, to the right with the sign.
int ShiftLeft(int value, int count);
int ShiftRight(int value, int count);

}  // namespace brenta
