// CoreString::Format: printf's language, written out here because the C library's own follows the locale,
// differs between the platforms (exponents, sizes, infinities) and obeys %n. Numbers are converted by the
// standard's <charconv>.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "brenta/string.h"
#include "foundation/characters.h"

namespace brenta {

namespace {

constexpr std::size_t kLongestResult = 65535;

// An argument list that can be handed on by reference on every platform.
struct Arguments {
    std::va_list list;
};

// Collects the output, most of which fits into its first chunk, and cuts it at kLongestResult bytes.
class Output {
 public:
    void Put(std::string_view text) {
        if (text.size() > m_room) text = text.substr(0, m_room);
        m_room -= text.size();
        if (text.size() > sizeof(m_chunk) - m_used) Flush();
        if (text.size() > sizeof(m_chunk)) {
            m_text += text;
            m_flushed += text.size();
        } else {
            m_used += text.copy(m_chunk + m_used, text.size());
        }
    }
    void Fill(char c, std::size_t count) {
        for (count = std::min(count, m_room); count > 0; --count)
            Put({&c, 1});
    }
    // Ends the output here, as a NUL does.
    void Close() { m_room = 0; }

    // Puts the output into a string, which stays as it is if there is no memory.
    void MoveTo(CoreString& target) {
        if (m_flushed == 0) {
            target = std::string_view(m_chunk, m_used);
            return;
        }
        Flush();
        if (m_text.View().size() == m_flushed) target = static_cast<CoreString&&>(m_text);
    }

 private:
    void Flush() {
        m_text += std::string_view(m_chunk, m_used);
        m_flushed += m_used;
        m_used = 0;
    }

    CoreString m_text;
    std::size_t m_flushed = 0;  // bytes handed to m_text
    std::size_t m_room = kLongestResult;
    std::size_t m_used = 0;
    char m_chunk[512];
};

// The size of an argument, by the letters before the conversion.
enum class Size { kInt, kChar, kShort, kLong, kLongLong, kMax, kSize, kDifference, kLongDouble };

// %[flags][width][.precision][size]conversion
struct Directive {
    bool left = false;
    bool plus = false;
    bool blank = false;
    bool alternate = false;
    bool zero = false;
    int width = 0;
    int precision = -1;  // -1: none
    Size size = Size::kInt;
    char conversion = 0;
};

// A converted number in its parts, between which zeros may have to stand:
// prefix, zeros, digits, point, trailing zeros, suffix.
struct Number {
    char prefix[3] = {};  // sign and "0x"
    std::size_t prefixSize = 0;
    std::size_t zeros = 0;
    std::string_view digits;
    std::string_view point;  // one that "#" asks for
    std::size_t trailingZeros = 0;
    std::string_view suffix;

    void AddPrefix(char c) { prefix[prefixSize++] = c; }
    std::size_t Length() const {
        return prefixSize + zeros + digits.size() + point.size() + trailingZeros + suffix.size();
    }
};

// ----------------------------------------------------------------------------------------------------------
// Reading a directive

int ReadCount(const char*& format, Arguments& arguments) {
    if (*format == '*') {
        ++format;
        return va_arg(arguments.list, int);
    }
    constexpr int kHighest = 100000;  // more than any result holds
    int count = 0;
    for (; IsDigit(*format); ++format)
        count = std::min(count * 10 + (*format - '0'), kHighest);
    return count;
}

void ReadFlags(const char*& format, Directive& directive) {
    for (;; ++format) {
        switch (*format) {
            case '-':
                directive.left = true;
                break;
            case '+':
                directive.plus = true;
                break;
            case ' ':
                directive.blank = true;
                break;
            case '#':
                directive.alternate = true;
                break;
            case '0':
                directive.zero = true;
                break;
            default:
                return;
        }
    }
}

// hh h l ll j z t L I64 I32
Size ReadSize(const char*& format) {
    const auto take = [&](const char* letters, Size size) {
        format += std::strlen(letters);
        return size;
    };
    const char next = *format == 0 ? '\0' : format[1];
    switch (*format) {
        case 'h':
            return next == 'h' ? take("hh", Size::kChar) : take("h", Size::kShort);
        case 'l':
            return next == 'l' ? take("ll", Size::kLongLong) : take("l", Size::kLong);
        case 'j':
            return take("j", Size::kMax);
        case 'z':
            return take("z", Size::kSize);
        case 't':
            return take("t", Size::kDifference);
        case 'L':
            return take("L", Size::kLongDouble);
        case 'I':
            if (next == '6' && format[2] == '4') return take("I64", Size::kLongLong);
            if (next == '3' && format[2] == '2') return take("I32", Size::kInt);
            return Size::kInt;
        default:
            return Size::kInt;
    }
}

Directive ReadDirective(const char*& format, Arguments& arguments) {
    Directive directive;
    ReadFlags(format, directive);
    directive.width = ReadCount(format, arguments);
    if (directive.width < 0) {
        directive.left = true;
        directive.width = directive.width < -static_cast<int>(kLongestResult)
                              ? static_cast<int>(kLongestResult)
                              : -directive.width;
    }
    if (*format == '.') directive.precision = std::max(ReadCount(++format, arguments), -1);
    directive.size = ReadSize(format);
    directive.conversion = *format;
    if (*format != 0) ++format;
    return directive;
}

// ----------------------------------------------------------------------------------------------------------
// Writing

void PutPadded(Output& out, const Directive& directive, std::string_view text) {
    const auto width = static_cast<std::size_t>(directive.width);
    const std::size_t padding = width > text.size() ? width - text.size() : 0;
    if (!directive.left) out.Fill(' ', padding);
    out.Put(text);
    if (directive.left) out.Fill(' ', padding);
}

void PutNumber(Output& out, const Directive& directive, const Number& number, bool zeroPadded) {
    const auto width = static_cast<std::size_t>(directive.width);
    const std::size_t padding = width > number.Length() ? width - number.Length() : 0;
    zeroPadded = zeroPadded && !directive.left;
    if (!directive.left && !zeroPadded) out.Fill(' ', padding);
    out.Put({number.prefix, number.prefixSize});
    out.Fill('0', number.zeros + (zeroPadded ? padding : 0));
    out.Put(number.digits);
    out.Put(number.point);
    out.Fill('0', number.trailingZeros);
    out.Put(number.suffix);
    if (directive.left) out.Fill(' ', padding);
}

void AddSign(Number& number, const Directive& directive, bool negative) {
    if (negative) {
        number.AddPrefix('-');
    } else if (directive.plus) {
        number.AddPrefix('+');
    } else if (directive.blank) {
        number.AddPrefix(' ');
    }
}

// ----------------------------------------------------------------------------------------------------------
// Integers

std::intmax_t TakeSigned(Size size, Arguments& arguments) {
    switch (size) {
        case Size::kChar:
            return static_cast<signed char>(va_arg(arguments.list, int));
        case Size::kShort:
            return static_cast<short>(va_arg(arguments.list, int));
        case Size::kLong:
            return va_arg(arguments.list, long);
        case Size::kLongLong:
            return va_arg(arguments.list, long long);
        case Size::kMax:
            return va_arg(arguments.list, std::intmax_t);
        case Size::kSize:
        case Size::kDifference:
            return va_arg(arguments.list, std::ptrdiff_t);
        default:
            return va_arg(arguments.list, int);
    }
}

std::uintmax_t TakeUnsigned(Size size, Arguments& arguments) {
    switch (size) {
        case Size::kChar:
            return static_cast<unsigned char>(va_arg(arguments.list, unsigned int));
        case Size::kShort:
            return static_cast<unsigned short>(va_arg(arguments.list, unsigned int));
        case Size::kLong:
            return va_arg(arguments.list, unsigned long);
        case Size::kLongLong:
            return va_arg(arguments.list, unsigned long long);
        case Size::kMax:
            return va_arg(arguments.list, std::uintmax_t);
        case Size::kSize:
        case Size::kDifference:
            return va_arg(arguments.list, std::size_t);
        default:
            return va_arg(arguments.list, unsigned int);
    }
}

void PutInteger(Output& out, const Directive& directive, std::uintmax_t magnitude, Number& number) {
    const int base = directive.conversion == 'o' ? 8 : ToLower(directive.conversion) == 'x' ? 16 : 10;
    char digits[24];
    char* const pEnd = std::to_chars(digits, digits + sizeof(digits), magnitude, base).ptr;
    if (directive.conversion == 'X') std::transform(digits, pEnd, digits, ToUpper);
    number.digits = {digits, static_cast<std::size_t>(pEnd - digits)};
    if (magnitude == 0 && directive.precision == 0) number.digits = {};
    const auto precision = static_cast<std::size_t>(std::max(directive.precision, 0));
    if (precision > number.digits.size()) number.zeros = precision - number.digits.size();
    if (directive.alternate && base == 8 && number.zeros == 0 && !number.digits.starts_with('0'))
        number.zeros = 1;
    if (directive.alternate && base == 16 && magnitude != 0) {
        number.AddPrefix('0');
        number.AddPrefix(directive.conversion);
    }
    PutNumber(out, directive, number, directive.zero && directive.precision < 0);
}

void PutSigned(Output& out, const Directive& directive, std::intmax_t value) {
    Number number;
    AddSign(number, directive, value < 0);
    const auto bits = static_cast<std::uintmax_t>(value);
    PutInteger(out, directive, value < 0 ? 0 - bits : bits, number);
}

void PutUnsigned(Output& out, const Directive& directive, std::uintmax_t value) {
    Number number;
    PutInteger(out, directive, value, number);
}

void PutPointer(Output& out, const Directive& directive, const void* p) {
    Directive hexadecimal = directive;
    hexadecimal.conversion = 'x';
    Number number;
    number.AddPrefix('0');
    number.AddPrefix('x');
    PutInteger(out, hexadecimal, reinterpret_cast<std::uintptr_t>(p), number);
}

// ----------------------------------------------------------------------------------------------------------
// Floating point

// Digits asked for beyond these are zeros.
constexpr int kMostDigits = 1100;
using FloatText = char[309 + 1 + kMostDigits + 8];

std::string_view WriteFloat(double value, std::chars_format format, int digits, FloatText& text) {
    const auto result = std::to_chars(text, text + sizeof(text), value, format, digits);
    return {text, static_cast<std::size_t>(result.ptr - text)};
}

std::string_view WriteHexFloat(double value, int digits, FloatText& text) {
    if (digits >= 0) return WriteFloat(value, std::chars_format::hex, digits, text);
    const auto result = std::to_chars(text, text + sizeof(text), value, std::chars_format::hex);
    return {text, static_cast<std::size_t>(result.ptr - text)};
}

// %#g: the form that %g would take, its zeros kept.
std::string_view WriteGeneral(double value, int digits, FloatText& text) {
    const int significant = std::max(digits, 1);
    const std::string_view scientific =
        WriteFloat(value, std::chars_format::scientific, significant - 1, text);
    const char* exponentText = scientific.data() + scientific.find('e') + 1;
    if (*exponentText == '+') ++exponentText;
    int exponent = 0;
    std::from_chars(exponentText, scientific.data() + scientific.size(), exponent);
    if (exponent < -4 || exponent >= significant) return scientific;
    return WriteFloat(value, std::chars_format::fixed, significant - 1 - exponent, text);
}

// The digits of a finite value of 0 or more, in lower case and without padding.
std::string_view WriteMagnitude(double value, const Directive& directive, FloatText& text) {
    const int precision = std::min(directive.precision, kMostDigits);
    const int digits = precision < 0 ? 6 : precision;
    switch (ToLower(directive.conversion)) {
        case 'a':
            return WriteHexFloat(value, precision, text);
        case 'e':
            return WriteFloat(value, std::chars_format::scientific, digits, text);
        case 'f':
            return WriteFloat(value, std::chars_format::fixed, digits, text);
        default:
            break;
    }
    if (directive.alternate) return WriteGeneral(value, digits, text);
    return WriteFloat(value, std::chars_format::general, digits, text);
}

void PutFloat(Output& out, const Directive& directive, double value) {
    Number number;
    AddSign(number, directive, std::signbit(value) && !std::isnan(value));
    const bool upper = IsUpper(directive.conversion);
    if (!std::isfinite(value)) {
        number.digits = std::isnan(value) ? (upper ? "NAN" : "nan") : (upper ? "INF" : "inf");
        PutNumber(out, directive, number, false);
        return;
    }
    const char conversion = ToLower(directive.conversion);
    FloatText text;
    const std::string_view whole = WriteMagnitude(std::fabs(value), directive, text);
    const std::size_t exponent = std::min(whole.find(conversion == 'a' ? 'p' : 'e'), whole.size());
    if (conversion == 'a') {
        number.AddPrefix('0');
        number.AddPrefix(upper ? 'X' : 'x');
    }
    if (upper) std::transform(text, text + whole.size(), text, ToUpper);
    number.digits = whole.substr(0, exponent);
    number.suffix = whole.substr(exponent);
    if (directive.alternate && number.digits.find('.') == std::string_view::npos) number.point = ".";
    if (conversion != 'g' && directive.precision > kMostDigits) {
        number.trailingZeros = static_cast<std::size_t>(directive.precision - kMostDigits);
    }
    PutNumber(out, directive, number, directive.zero);
}

// ----------------------------------------------------------------------------------------------------------
// Texts, and all together

void PutText(Output& out, const Directive& directive, const char* text) {
    if (text == nullptr) text = "(null)";
    std::size_t length;
    if (directive.precision < 0) {
        length = std::strlen(text);
    } else {
        const void* pEnd = std::memchr(text, 0, static_cast<std::size_t>(directive.precision));
        length = pEnd == nullptr ? static_cast<std::size_t>(directive.precision)
                                 : static_cast<std::size_t>(static_cast<const char*>(pEnd) - text);
    }
    PutPadded(out, directive, {text, length});
}

// A NUL ends the output where it would stand, behind the padding of its width.
void PutCharacter(Output& out, const Directive& directive, char c) {
    if (c != 0) return PutPadded(out, directive, {&c, 1});
    if (!directive.left && directive.width > 1) out.Fill(' ', static_cast<std::size_t>(directive.width) - 1);
    out.Close();
}

// Writes one directive with its argument; false if there is no such conversion.
bool PutDirective(Output& out, const Directive& directive, Arguments& arguments) {
    const Size size = directive.size;
    switch (directive.conversion) {
        case 'd':
        case 'i':
            PutSigned(out, directive, TakeSigned(size, arguments));
            return true;
        case 'u':
        case 'o':
        case 'x':
        case 'X':
            PutUnsigned(out, directive, TakeUnsigned(size, arguments));
            return true;
        case 'f':
        case 'F':
        case 'e':
        case 'E':
        case 'g':
        case 'G':
        case 'a':
        case 'A':
            PutFloat(out, directive,
                     size == Size::kLongDouble ? static_cast<double>(va_arg(arguments.list, long double))
                                               : va_arg(arguments.list, double));
            return true;
        case 'c':
            if (size == Size::kLong) return false;
            PutCharacter(out, directive, static_cast<char>(va_arg(arguments.list, int)));
            return true;
        case 's':
            if (size == Size::kLong) return false;
            PutText(out, directive, va_arg(arguments.list, const char*));
            return true;
        case 'p':
            PutPointer(out, directive, va_arg(arguments.list, const void*));
            return true;
        case '%':
            out.Put("%");
            return true;
        default:
            return false;
    }
}

bool PutAll(Output& out, const char* format, Arguments& arguments) {
    for (;;) {
        const char* const mark = std::strchr(format, '%');
        if (mark == nullptr) {
            out.Put(format);
            return true;
        }
        out.Put({format, static_cast<std::size_t>(mark - format)});
        format = mark + 1;
        if (!PutDirective(out, ReadDirective(format, arguments), arguments)) return false;
    }
}

}  // namespace

void CoreString::FormatV(const char* format, std::va_list arguments) {
    Arguments own;
    va_copy(own.list, arguments);
    Output out;
    const bool done = format == nullptr || PutAll(out, format, own);
    va_end(own.list);
    if (done) {
        out.MoveTo(*this);
    } else {
        SetEmpty();
    }
}

void CoreString::Format(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    FormatV(format, arguments);
    va_end(arguments);
}

}  // namespace brenta
