#include "foundation/numbers.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <limits>

#include "brenta/string.h"
#include "foundation/characters.h"

namespace brenta {

namespace {

// The text of a decimal number: a sign of its own, and what the standard's conversion takes without one.
struct NumberText {
    bool negative = false;
    const char* first = nullptr;  // first digit or point
    const char* end = nullptr;    // behind the last character that belongs to the number
};

// Reads characters up to an end, or up to the NUL where the end is null.
class Scanner {
 public:
    Scanner(const char* text, const char* end) : m_place(text), m_end(end) {}

    const char* Place() const { return m_place; }
    char Peek() const { return m_place == m_end ? '\0' : *m_place; }
    bool Take(char c) { return Peek() == c && (++m_place, true); }
    void SkipSpace() {
        while (IsSpace(Peek()))
            ++m_place;
    }
    // Passes over digits and says whether there were any.
    bool TakeDigits() {
        const char* const start = m_place;
        while (IsDigit(Peek()))
            ++m_place;
        return m_place != start;
    }
    bool TakeSign() {
        const bool negative = Take('-');
        if (!negative) Take('+');
        return negative;
    }

 private:
    const char* m_place;
    const char* m_end;
};

// [space] [sign] digits [. [digits]] | . digits, then [e [sign] digits]. False where no number stands.
bool ScanNumber(Scanner scanner, NumberText& number) {
    scanner.SkipSpace();
    number.negative = scanner.TakeSign();
    number.first = scanner.Place();
    const bool whole = scanner.TakeDigits();
    const bool fraction = scanner.Take('.') && scanner.TakeDigits();
    if (!whole && !fraction) return false;
    number.end = scanner.Place();
    if (scanner.Take('e') || scanner.Take('E')) {
        scanner.TakeSign();
        if (scanner.TakeDigits()) number.end = scanner.Place();
    }
    return true;
}

// The value of a number outside the range of a double: infinite if its first digit that counts, moved by the
// exponent, stands left of the point, zero otherwise.
double OutOfRange(const NumberText& number) {
    int place = 0;
    bool beforePoint = true;
    bool significant = false;
    const char* p = number.first;
    for (; p != number.end && (IsDigit(*p) || *p == '.'); ++p) {
        if (*p == '.') {
            beforePoint = false;
            continue;
        }
        significant = significant || *p != '0';
        if (significant && beforePoint) ++place;
        if (!significant && !beforePoint) --place;
    }
    int exponent = 0;
    if (p != number.end) {
        const bool negative = *++p == '-';
        if (!IsDigit(*p)) ++p;
        for (; p != number.end && exponent < 100000000; ++p)
            exponent = exponent * 10 + (*p - '0');
        if (negative) exponent = -exponent;
    }
    return place + exponent > 0 ? std::numeric_limits<double>::infinity() : 0.0;
}

double Convert(const Scanner& scanner) {
    NumberText number;
    if (!ScanNumber(scanner, number)) return 0.0;
    double value = 0.0;
    const auto result = std::from_chars(number.first, number.end, value);
    if (result.ec == std::errc::result_out_of_range) value = OutOfRange(number);
    return number.negative ? -value : value;
}

}  // namespace

double ParseDouble(const char* text) {
    return text == nullptr ? 0.0 : Convert(Scanner(text, nullptr));
}

double ParseDouble(std::string_view text) {
    return Convert(Scanner(text.data(), text.data() + text.size()));
}

int ParseInt(const char* text) {
    if (text == nullptr) return 0;
    while (IsSpace(*text))
        ++text;
    const bool negative = *text == '-';
    if (*text == '-' || *text == '+') ++text;
    const long long limit = negative ? -static_cast<long long>(INT_MIN) : INT_MAX;
    long long value = 0;
    for (; IsDigit(*text); ++text)
        value = std::min(value * 10 + (*text - '0'), limit);
    return static_cast<int>(negative ? -value : value);
}

int DoubleToInt(double value) {
    const double whole = std::trunc(value);
    return whole >= INT_MIN && whole <= INT_MAX ? static_cast<int>(whole) : INT_MIN;
}

namespace {

// A double has at most 1074 decimals; behind them stand only zeros.
constexpr int kMaxDecimals = 1074;
using FixedText = char[1 + 309 + 1 + kMaxDecimals];

std::string_view WriteFixed(double value, int decimals, FixedText& text) {
    if (std::isnan(value)) return "nan";
    const int places = decimals < 0 ? 6 : std::min(decimals, kMaxDecimals);
    const auto result = std::to_chars(text, text + sizeof(text), value, std::chars_format::fixed, places);
    return {text, static_cast<std::size_t>(result.ptr - text)};
}

}  // namespace

std::size_t FormatFixed(double value, int decimals, char* buffer, std::size_t size) {
    if (size == 0) return 0;
    FixedText text;
    const std::size_t length = WriteFixed(value, decimals, text).copy(buffer, size - 1);
    buffer[length] = 0;
    return length;
}

void AppendFixed(CoreString& text, double value, int decimals) {
    FixedText digits;
    text += WriteFixed(value, decimals, digits);
}

}  // namespace brenta
