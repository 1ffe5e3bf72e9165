// Numbers from and to text, without regard to the locale and with the same result on every platform.
#pragma once

#include <cstddef>
#include <string_view>

namespace brenta {

class CoreString;

/// The decimal number at the start of a text: leading space, a sign, digits with an optional point, an
/// optional exponent; what follows is not looked at. Correctly rounded; too large a number is an infinity,
/// too small a one a zero. 0 for null and where no number stands; hexadecimal digits, "inf" and "nan" are no
/// numbers.
double ParseDouble(const char* text);
double ParseDouble(std::string_view text);

/// The integer at the start of a text: leading space, a sign, digits. Values beyond the range of an int
/// become its limits. 0 for null and where no integer stands.
int ParseInt(const char* text);

/// A number truncated toward zero; INT_MIN for NaN, the infinities and everything outside the range of an
/// int.
int DoubleToInt(double value);

/// A buffer of this size holds every double with up to 200 decimals.
inline constexpr std::size_t kFixedTextSize = 512;

/// Writes "%.*f" of the value, exactly and rounded to the nearest (a tie to the even digit); a negative
/// number of decimals counts as 6, more than 1074, behind which there are only zeros, as 1074. NaN is "nan",
/// the infinities "inf" and "-inf". At most size - 1 bytes and a terminator are written; returns the length
/// of what was written.
std::size_t FormatFixed(double value, int decimals, char* buffer, std::size_t size);

/// Appends the same to a string.
void AppendFixed(CoreString& text, double value, int decimals);

}  // namespace brenta
