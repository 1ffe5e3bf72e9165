// brenta eval: dimension texts to internal units and back.
#include <iostream>
#include <memory>

#include "brenta/string.h"
#include "command.h"
#include "console.h"
#include "style.h"

namespace brenta::host {
namespace {

struct EvalOptions {
    std::vector<std::string> texts;
    CoreUnits units = kMils;
};

bool EvaluateOne(const std::string& text, CoreUnits units, Table& table) {
    int value = 0;
    CoreString messages;
    if (!EvaluateUnit(text.c_str(), units, value, &messages)) {
        const std::string reason = JoinMessages(messages);
        Complain("'" + text + "' does not evaluate" + (reason.empty() ? "" : ": " + reason));
        return false;
    }
    std::vector<std::string> cells = {std::to_string(value)};
    for (CoreUnits unit : {kInches, kMils, kCentimeters, kMillimeters})
        cells.emplace_back(UnitToString(value, unit, true));
    table.Row(cells);
    return true;
}

bool EvaluateLines(std::istream& input, CoreUnits units, Table& table) {
    bool good = true;
    for (std::string line; std::getline(input, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty()) good = EvaluateOne(line, units, table) && good;
    }
    return good;
}

int Eval(const EvalOptions& options) {
    Table table(
        {{"units", 11, true}, {"inches", 12}, {"mils", 12}, {"centimetres", 12}, {"millimetres", 12}});
    bool good = true;
    for (const std::string& text : options.texts)
        good = (text == "-" ? EvaluateLines(std::cin, options.units, table)
                            : EvaluateOne(text, options.units, table)) &&
               good;
    return good ? 0 : 1;
}

void Define(Command& command) {
    const auto options = std::make_shared<EvalOptions>();
    command.TakeDashesAsWords();
    command.Words("TEXT", options->texts, WordKind::kText,
                  "Texts to evaluate; - reads them from standard input, one a line");
    command.Units(options->units);
    command.Explain(
        "Prints for each text: internal units (ten-millionths of an inch), inches, mils, centimetres, "
        "millimetres, separated by tabs where no person looks. The default unit is mil. A suffix anywhere in "
        "a "
        "text switches it off: 10mil+1 is ten mils and one internal unit.");
    command.Example("brenta eval 20mil+5mm");
    command.Example("brenta eval --units mm '(1in+2)/2' -25mil",
                    "two texts; 1in+2 is 1 inch and 2 internal units");
    command.Example("brenta eval - < lengths.txt | cut -f 5", "the millimetres alone");
    command.Run([options] { return Eval(*options); });
}

const CommandEntry entry("eval", CommandGroup::kScripts, "Evaluate dimension texts such as 20mil+5mm",
                         &Define);

}  // namespace

}  // namespace brenta::host
