#include "agreement.h"
#include "brenta/units.h"
#include "chooser.h"
#include "script/random_program.h"
#include "script/run_script.h"

namespace brenta::test {

std::string TellOfPrograms() {
    constexpr std::uint32_t kPrograms = 2000;
    std::string story;
    for (std::uint32_t seed = 1; seed <= kPrograms; ++seed) {
        ScriptRun run;
        const std::string module = RandomProgram(seed).Write();
        story += "-- " + std::to_string(seed) + '\n' + module + '\n' + run.Load(module) + '\n';
        story += "Main: " + run.RunScript("Main", {}) + '\n';
        for (const char* global : {"g0", "g1", "gt", "gl"})
            story += std::string(global) + ' ' + run.Execute(global) + '\n';
        story += run.probe.requests + '\n';
    }
    return story;
}

namespace {

constexpr CoreUnits kAllUnits[] = {kUnitsNone, kInches, kMils, kCentimeters, kMillimeters};

/// Mostly sums and products of lengths, with brackets; now and then something else.
std::string LengthText(Chooser& choose) {
    static constexpr const char* kNumbers[] = {"1",   "0.1", "25.4", "20",  "3.175",       "1e3",
                                               ".5",  "5.",  "0",    "100", "39370.07874", "2147483647",
                                               "0x1", "7",   "12.5", "1/8", "214.7483647", "-3"};
    static constexpr const char* kSuffixes[] = {"", "", "in", "mil", "mm", "cm", "MIL", " mm", "\"", "mils"};
    static constexpr const char* kOperators[] = {"+", "-", "*", "/", " + ", " % ", "^"};
    static constexpr const char* kOther[] = {"a", ";", "(", "\"x\"", "1..2", "{1}", "@", "true", "1 2", ""};
    std::string text;
    for (int terms = 1 + choose.Below(4); terms > 0; --terms) {
        const std::string term = choose.Chance(4)
                                     ? choose.OneOf(kOther)
                                     : std::string(choose.OneOf(kNumbers)) + choose.OneOf(kSuffixes);
        text += choose.Chance(15) ? "(" + term + ")" : term;
        if (terms > 1) text += choose.OneOf(kOperators);
    }
    return text;
}

}  // namespace

std::string TellOfLengths() {
    constexpr int kTexts = 500;
    Chooser choose(1);
    std::string story;
    for (int i = 0; i < kTexts; ++i) {
        const std::string text = LengthText(choose);
        story += text + (ValidateUnit(text.c_str()) ? "  valid" : "  not valid");
        for (const CoreUnits units : kAllUnits) {
            const int length = StringToUnit(text.c_str(), units);
            story += "  " + std::to_string(length) + ' ' + UnitToString(length, units, true)() + ' ' +
                     UnitToString(length, choose.Below(8), units)();
        }
        story += '\n';
    }
    return story;
}

}  // namespace brenta::test
