// The rules of the operators. The left operand decides: each operator asks it for its kind and takes the
// right one as that kind needs it - as a number, as a text form, as an int, as a truth. A pair for which an
// operator has no meaning gives null (arithmetic) or false (comparisons); nothing here fails.
#include "script/operand.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>

#include "foundation/numbers.h"
#include "foundation/text_compare.h"

namespace brenta {

namespace {

/// "True" in any case, and nothing longer: "trueish" is read as a number and so is false.
bool EqualsTrue(std::string_view text) {
    return text.size() == 4 && CompareIgnoringCase(text.data(), "true") == 0;
}

void AddInt(double number, TextSink& out) {
    char buffer[16];
    const auto written = std::to_chars(buffer, buffer + sizeof(buffer), DoubleToInt(number));
    out.Add({buffer, written.ptr});
}

/// "%d" of a number without fractional part (so also of an infinity), else "%f" without its trailing zeros:
/// 2.5, 0. for a tenth of a millionth, nan.
void AddFloat(double number, TextSink& out) {
    if (std::trunc(number) == number) return AddInt(number, out);
    char buffer[kFixedTextSize];
    const std::string_view text(buffer, FormatFixed(number, 6, buffer, sizeof(buffer)));
    out.Add(text.substr(0, text.find_last_not_of('0') + 1));
}

/// Pointers print as their low 32 bits, which is what GetInt gives of them too.
std::uint32_t LowWord(const void* object) {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(object));
}

void AddPointer(const void* object, TextSink& out) {
    char buffer[16];
    const auto written = std::to_chars(buffer, buffer + sizeof(buffer), LowWord(object), 16);
    out.Add({buffer, written.ptr});
}

/// The kinds that text form and printed form show alike.
void AddCommonForm(const Operand& operand, TextSink& out) {
    switch (operand.kind) {
        case VarKind::String:
            return out.Add(operand.text);
        case VarKind::Int:
            return AddInt(operand.number, out);
        case VarKind::Float:
            return AddFloat(operand.number, out);
        case VarKind::Reference:
            return AddPointer(operand.object, out);
        case VarKind::List:
            return operand.reader->print(operand.list, out);
        case VarKind::Null:
        case VarKind::Bool:
            return;
    }
}

}  // namespace

double NumberOf(const Operand& operand) {
    if (operand.IsNumeric()) return operand.number;
    return operand.kind == VarKind::String ? ParseDouble(operand.text) : 0;
}

int IntOf(const Operand& operand, int& nullReads) {
    switch (operand.kind) {
        // Out of the range of an int, and not a number, is INT_MIN everywhere in the language.
        case VarKind::Bool:
        case VarKind::Int:
        case VarKind::Float:
            return DoubleToInt(operand.number);
        case VarKind::String:
            return ParseInt(operand.text.data());
        case VarKind::Reference:
            return static_cast<int>(LowWord(operand.object));
        case VarKind::List:
            return static_cast<int>(operand.reader->count(operand.list));
        case VarKind::Null:
            break;
    }
    ++nullReads;
    return 0;
}

bool BoolOf(const Operand& operand, int& nullReads) {
    switch (operand.kind) {
        case VarKind::Bool:
        case VarKind::Int:
        case VarKind::Float:
            return operand.number != 0;
        case VarKind::String:
            return EqualsTrue(operand.text) || ParseInt(operand.text.data()) != 0;
        case VarKind::Reference:
            return operand.object != nullptr;
        case VarKind::List:
            return operand.hasItems;
        case VarKind::Null:
            break;
    }
    ++nullReads;
    return false;
}

void AddText(const Operand& operand, TextSink& out) {
    if (operand.kind == VarKind::Bool) return out.Add(operand.number != 0 ? "true" : "false");
    AddCommonForm(operand, out);
}

void AddPrinted(const Operand& operand, TextSink& out) {
    if (operand.kind == VarKind::Bool) return out.Add(operand.number != 0 ? "1" : "0");
    if (operand.kind == VarKind::Null) return out.AddNull();
    AddCommonForm(operand, out);
}

// ---------------------------------------------------------------------------------------------------------
// Operators

namespace {

/// Each relation by itself, none as the opposite of another: all four are false for what is not a number.
template <class T>
bool Relate(TokId op, T a, T b) {
    switch (op) {
        case TOK_LESS:
            return a < b;
        case TOK_LEQ:
            return a <= b;
        case TOK_GREATER:
            return a > b;
        default:
            return a >= b;
    }
}

}  // namespace

bool TextsRelate(TokId op, const char* left, const char* right) {
    return Relate(op, CompareNatural(left, right), 0);
}

namespace {

/// The text form of an operand for the time of one operator: strings are looked at where they lie.
class OperandText {
 public:
    OperandText(const Operand& operand, std::size_t limit, OperatorResult& result) {
        if (operand.kind == VarKind::String) {
            m_text = operand.text;
            return;
        }
        TextSink sink(m_buffer, limit);
        AddText(operand, sink);
        result.nullReads += sink.NullReads();
        result.textTooLong |= sink.IsFull();
        m_text = m_buffer.View();
    }
    std::string_view View() const { return m_text; }
    const char* Terminated() const { return m_text.data(); }

 private:
    CoreString m_buffer;
    std::string_view m_text;
};

void StoreBool(bool value, OperatorResult& result) {
    result.kind = VarKind::Bool;
    result.number = value ? 1 : 0;
}

void StoreInt(int value, OperatorResult& result) {
    result.kind = VarKind::Int;
    result.number = value;
}

void StoreFloat(double value, OperatorResult& result) {
    result.kind = VarKind::Float;
    result.number = value;
}

void StoreText(std::string_view text, OperatorResult& result) {
    result.kind = VarKind::String;
    result.text = text;
}

void Concatenate(const Operand& left, const Operand& right, std::size_t limit, OperatorResult& result) {
    TextSink sink(result.buffer, limit);
    AddText(left, sink);
    AddText(right, sink);
    result.nullReads += sink.NullReads();
    result.textTooLong |= sink.IsFull();
    StoreText(result.buffer.View(), result);
}

/// A text in which nothing is found stays where it is, so that whoever stores the result can see that it is
/// the left operand itself. The empty text is found everywhere and removes nothing.
void RemoveOccurrences(const Operand& left, const Operand& right, std::size_t limit, OperatorResult& result) {
    const OperandText unwanted(right, limit, result);
    if (left.text.find(unwanted.View()) == std::string_view::npos) return StoreText(left.text, result);
    result.buffer = left.text;
    result.buffer.Replace(unwanted.Terminated(), "");
    StoreText(result.buffer.View(), result);
}

/// Numbers add only if neither side is a string: 5 + "a" is "5a". Without a number on the left nothing adds.
void Add(const Operand& left, const Operand& right, std::size_t limit, OperatorResult& result) {
    if (left.kind == VarKind::String || right.kind == VarKind::String) {
        Concatenate(left, right, limit, result);
    } else if (left.IsNumeric()) {
        StoreNarrowed(left.number + NumberOf(right), result);
    }
}

void Subtract(const Operand& left, const Operand& right, std::size_t limit, OperatorResult& result) {
    if (left.kind == VarKind::String) {
        RemoveOccurrences(left, right, limit, result);
    } else if (left.IsNumeric()) {
        StoreNarrowed(left.number - NumberOf(right), result);
    }
}

void Multiply(const Operand& left, const Operand& right, OperatorResult& result) {
    if (!left.IsNumeric()) return;
    const double product = left.number * NumberOf(right);
    // The comparison is false for NaN, which narrowing leaves a float as well.
    if (product < kProductBound) return StoreNarrowed(product, result);
    StoreFloat(product, result);
}

void Divide(const Operand& left, const Operand& right, OperatorResult& result) {
    if (left.IsNumeric()) StoreNarrowed(left.number / NumberOf(right), result);
}

void Modulo(const Operand& left, const Operand& right, OperatorResult& result) {
    // Ints alone have an integer remainder; a bool or a string of digits on the left is not one.
    if (left.kind != VarKind::Int) return StoreFloat(std::fmod(NumberOf(left), NumberOf(right)), result);
    const int divisor = IntOf(right, result.nullReads);
    result.divisionByZero = divisor == 0;
    StoreInt(divisor == 0 ? INT_MIN : IntRemainder(DoubleToInt(left.number), divisor), result);
}

/// How many characters a string is shifted by; 0 for operands that are neither numbers nor strings.
std::size_t ShiftCount(const Operand& right, OperatorResult& result) {
    if (right.kind == VarKind::String) return right.text.size();
    if (!right.IsNumeric()) return 0;
    const int count = IntOf(right, result.nullReads);
    return count < 0 ? 0 : static_cast<std::size_t>(count);
}

/// Shifting a string cuts characters off, which leaves a view of the operand.
void Shift(TokId op, const Operand& left, const Operand& right, OperatorResult& result) {
    if (left.kind == VarKind::String) {
        std::string_view text = left.text;
        const std::size_t count = std::min(ShiftCount(right, result), text.size());
        if (op == TOK_SHL) {
            text.remove_prefix(count);
        } else {
            text.remove_suffix(count);
        }
        StoreText(text, result);
    } else if (left.IsNumeric()) {
        const int value = DoubleToInt(left.number);
        const int count = IntOf(right, result.nullReads);
        StoreInt(op == TOK_SHL ? ShiftLeft(value, count) : ShiftRight(value, count), result);
    }
}

void CombineBits(TokId op, const Operand& left, const Operand& right, OperatorResult& result) {
    const int a = IntOf(left, result.nullReads);
    const int b = IntOf(right, result.nullReads);
    StoreInt(op == TOK_AND ? a & b : op == TOK_OR ? a | b : a ^ b, result);
}

/// For numbers, strings and references on the left. A reference that is compared with something else is asked
/// whether it is null, which makes `object == null` work although null itself equals nothing.
bool AreEqual(const Operand& left, const Operand& right, std::size_t limit, OperatorResult& result) {
    if (left.IsNumeric()) return left.number == NumberOf(right);
    if (left.kind == VarKind::String) return left.text == OperandText(right, limit, result).View();
    if (right.kind == VarKind::Reference) return left.object == right.object;
    return left.object == nullptr;
}

/// Null and lists are neither equal nor unequal to anything.
void CompareEquality(TokId op, const Operand& left, const Operand& right, std::size_t limit,
                     OperatorResult& result) {
    const bool comparable = left.kind != VarKind::Null && left.kind != VarKind::List;
    StoreBool(comparable && AreEqual(left, right, limit, result) == (op == TOK_EQ), result);
}

void CompareOrder(TokId op, const Operand& left, const Operand& right, std::size_t limit,
                  OperatorResult& result) {
    bool holds = false;
    if (left.IsNumeric()) {
        holds = Relate(op, left.number, NumberOf(right));
    } else if (left.kind == VarKind::String) {
        const OperandText text(right, limit, result);
        holds = TextsRelate(op, left.text.data(), text.Terminated());
    }
    StoreBool(holds, result);
}

void CombineBools(TokId op, const Operand& left, const Operand& right, OperatorResult& result) {
    // Both are read before they are combined: a null on the right is an error also behind `true ||`.
    const bool a = BoolOf(left, result.nullReads);
    const bool b = BoolOf(right, result.nullReads);
    StoreBool(op == TOK_LOG_OR ? a || b : a && b, result);
}

}  // namespace

void StoreNarrowed(double number, OperatorResult& result) {
    if (std::trunc(number) == number) return StoreInt(DoubleToInt(number), result);
    StoreFloat(number, result);
}

int IntRemainder(int a, int b) {
    // INT_MIN % -1 traps on some processors although its result, 0, is as good as any.
    return b == -1 ? 0 : a % b;
}

int ShiftLeft(int value, int count) {
    return static_cast<int>(static_cast<unsigned int>(value) << (static_cast<unsigned int>(count) & 31u));
}

int ShiftRight(int value, int count) {
    return value >> (static_cast<unsigned int>(count) & 31u);
}

void ApplyOperator(TokId op, const Operand& left, const Operand& right, std::size_t textLimit,
                   OperatorResult& result) {
    switch (op) {
        case TOK_LOG_OR:
        case TOK_LOG_AND:
            return CombineBools(op, left, right, result);
        case TOK_OR:
        case TOK_XOR:
        case TOK_AND:
            return CombineBits(op, left, right, result);
        case TOK_EQ:
        case TOK_NOT_EQ:
            return CompareEquality(op, left, right, textLimit, result);
        case TOK_LESS:
        case TOK_GREATER:
        case TOK_LEQ:
        case TOK_GEQ:
            return CompareOrder(op, left, right, textLimit, result);
        case TOK_SHL:
        case TOK_SHR:
            return Shift(op, left, right, result);
        case TOK_ADD:
            return Add(left, right, textLimit, result);
        case TOK_SUB:
            return Subtract(left, right, textLimit, result);
        case TOK_MUL:
            return Multiply(left, right, result);
        case TOK_DIV:
            return Divide(left, right, result);
        case TOK_MOD:
            return Modulo(left, right, result);
        default:
            return;
    }
}

}  // namespace brenta
