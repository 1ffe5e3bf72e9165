#include "brenta/units.h"

#include <cstdint>
#include <iterator>

#include "brenta/failure.h"
#include "foundation/characters.h"
#include "foundation/numbers.h"
#include "foundation/text_compare.h"

namespace brenta {

namespace {

constexpr std::uintptr_t kUnknownUnitsSite = 0x05037001;
constexpr std::uintptr_t kUnknownNameSite = 0x05037002;

struct UnitRow {
    const char* name;
    const char* upperName;
    const char* suffix;
    double factor;
    int decimals;  // of the form that chooses its precision itself
};

// Row i describes the unit with value i + 1.
constexpr UnitRow kUnits[] = {
    {"Inches", "INCHES", "in", 10000000.0, 6},
    {"Mils", "MILS", "mil", 10000.0, 4},
    {"Centimeters", "CENTIMETERS", "cm", 3937007.874, 4},
    {"Millimeters", "MILLIMETERS", "mm", 393700.7874, 4},
};
constexpr int kUnitCount = static_cast<int>(std::size(kUnits));

/// Null for a value that is no unit.
const UnitRow* FindUnit(CoreUnits units) {
    const int value = static_cast<int>(units);
    return value >= 1 && value <= kUnitCount ? &kUnits[value - 1] : nullptr;
}

/// Zeros are cut one by one, and a point that a cut lays bare ends it: "100" without a point would lose its
/// zeros too, but a text formatted with decimals always has one before them.
void TrimZeros(CoreString& text) {
    int length = text.GetLength();
    while (length > 0 && text[length - 1] == '0') {
        --length;
        if (length > 0 && text[length - 1] == '.') {
            --length;
            break;
        }
    }
    text.Truncate(length);
}

}  // namespace

const char* UnitsToString(CoreUnits units) {
    const UnitRow* pUnit = FindUnit(units);
    if (pUnit) return pUnit->name;
    ForcedCrash(kUnknownUnitsSite, "Units", __LINE__, "Forced crash! \"Unknown units type.\"");
    return "Error";
}

CoreUnits StringToUnits(const char* name) {
    CoreString upper(name);
    upper.MakeUpper();
    for (int unit = 0; unit < kUnitCount; ++unit) {
        if (CompareNatural(upper, kUnits[unit].upperName) == 0) return static_cast<CoreUnits>(unit + 1);
    }
    ForcedCrash(kUnknownNameSite, "Units", __LINE__, "Forced crash! \"Unknown units type in StringToUnits\"");
    return kUnitsNone;
}

double GetUnitFactor(CoreUnits units) {
    const UnitRow* pUnit = FindUnit(units);
    return pUnit ? pUnit->factor : 1.0;
}

CoreString UnitToString(int value, int precision, CoreUnits units) {
    CoreString text;
    if (const UnitRow* pUnit = FindUnit(units)) {
        AppendFixed(text, value / pUnit->factor, precision);
        text += pUnit->suffix;
    }
    return text;
}

CoreString UnitToString(int value, CoreUnits units, bool trimZeros) {
    CoreString text;
    if (const UnitRow* pUnit = FindUnit(units)) {
        AppendFixed(text, value / pUnit->factor, pUnit->decimals);
        if (trimZeros) TrimZeros(text);
        text += pUnit->suffix;
    }
    return text;
}

int GetVisibleGridPrecision(CoreString& text) {
    const int point = text.Find('.');
    if (point < 0 || text.GetLastChar() == '.') return 0;
    int count = 0;
    for (int i = text.GetLength() - 1; i > point; --i) {
        if (IsDigit(text[i]) && (count > 0 || text[i] != '0')) ++count;
    }
    return count;
}

}  // namespace brenta
