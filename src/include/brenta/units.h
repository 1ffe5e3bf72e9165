/// @file
/// Units of measure: board lengths as integers, as text, and back.
///
/// Every length in the application is a signed 32-bit integer in one internal unit, a ten-millionth of an
/// inch: 1 inch is 10,000,000 units, 1 mil 10,000, and the range is about 214 inches or 5.4 metres either
/// way. Addition and comparison are exact; only text knows inches, mils, centimetres and millimetres.
///
///     int width = StringToUnit("20mil+5mil", kMils);              // 250000
///     CoreString text = UnitToString(width, kMils, true);         // "25mil"
///     CoreString wide = UnitToString(width, 3, kMillimeters);     // "0.635mm"
///     int decimals = GetVisibleGridPrecision(wide);               // 3
///     if (!ValidateUnit(typed)) Complain(typed);                  // a typo is 0 just as a typed zero
///
/// Formatting and names may be used from any thread and never follow the locale: the decimal point is a
/// point. Evaluating a text runs it as an expression of the scripting language, on the library-wide engine:
/// those three functions take turns when several threads call them, and cost what running the expression
/// costs, for a plain number too.
#pragma once

#include "brenta/export.h"
#include "brenta/string.h"

namespace brenta {

/// The units a user sees. The values are stored in settings and must not change.
enum CoreUnits : int {
    kUnitsNone = 0,  ///< no unit: a bare number is taken as internal units
    kInches = 1,
    kMils = 2,
    kCentimeters = 3,
    kMillimeters = 4,
};

// ---------------------------------------------------------------------------------------------------------------------
// Names and factors

/// The name of a unit: "Inches", "Mils", "Centimeters" or "Millimeters", a static text. Any other value
/// raises the forced crash "Unknown units type." (site code 0x05037001) and, when resumed, gives "Error".
BRENTA_API const char* UnitsToString(CoreUnits units);

/// The unit with a name, in any case: "mils" is kMils. Any other text, null and "" too, raises the forced
/// crash "Unknown units type in StringToUnits" (site code 0x05037002) and, when resumed, gives kUnitsNone.
BRENTA_API CoreUnits StringToUnits(const char* name);

/// Internal units per unit: 1e7, 1e4, 3937007.874 and 393700.7874, and 1 for kUnitsNone and every other
/// value. The metric factors are decimals of ten digits, not 1e7 / 2.54 in full, so that texts agree digit
/// for digit everywhere.
BRENTA_API double GetUnitFactor(CoreUnits units);

// ---------------------------------------------------------------------------------------------------------------------
// Length to text

/// A length with a fixed number of decimals and its suffix ("in", "mil", "cm", "mm"), rounded to the nearest,
/// exact ties to the even digit: UnitToString(393700, 2, kMillimeters) is "1.00mm". A negative precision
/// means 6 decimals, one above 1074, behind which there are only zeros, 1074. "" for a value of `units`
/// outside the four.
BRENTA_API CoreString UnitToString(int value, int precision, CoreUnits units);

/// A length with 6 decimals for inches and 4 for the others, and its suffix. With `trimZeros` the zeros at
/// the end go, and the point if none are left behind it: 254000 is "25.4mil" instead of "25.4000mil". "" for
/// a value of `units` outside the four.
BRENTA_API CoreString UnitToString(int value, CoreUnits units, bool trimZeros);

/// The number of decimals a formatted length really shows: the digits behind the first point without the
/// zeros at the end, whatever suffix follows. "0.0250in" gives 3, "5.000" gives 0, and so does a text without
/// a point or with one at its end. Leaves `text` as it is.
BRENTA_API int GetVisibleGridPrecision(CoreString& text);

// ---------------------------------------------------------------------------------------------------------------------
// Text to length

/// The length a text stands for, rounded to a multiple of 10 internal units with halves away from zero. The
/// text is an expression such as "1.5in", "20mil+5mil" or "3mm/2"; numbers without a suffix are in
/// `defaultUnits`. A text that does not evaluate is tried once more in lower case, its bare numbers then in
/// internal units. 0 for null and for whatever does not evaluate to a number. A result out of range is cut to
/// +-2147483640.
BRENTA_API int StringToUnit(const char* text, CoreUnits defaultUnits);

/// Whether a text evaluates as StringToUnit would try it. False for null; true for "", which stands for 0.
BRENTA_API bool ValidateUnit(const char* text);

/// StringToUnit with a status: returns whether the text evaluated, and sets `value` to its length or to 0. If
/// `messages` is not null it is replaced by what the script engine had to say, one message a line.
BRENTA_API bool EvaluateUnit(const char* text, CoreUnits defaultUnits, int& value, CoreString* messages);

/// Ends the evaluation in progress, if there is one, at its next loop turn or call: for the user who typed
/// "while(1) { }" into a field. It fails with "Script interrupted." and is not tried again; those that wait
/// for their turn go on. May be called from any thread and from a signal handler.
BRENTA_API void StopUnitEvaluation();

}  // namespace brenta
