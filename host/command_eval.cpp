// brenta eval: dimension texts to internal units and back.
#include <cstdio>
#include <iostream>

#include "brenta/string.h"
#include "commands.h"
#include "console.h"

namespace brenta::host {
namespace {

bool EvaluateOne(const std::string& text, CoreUnits units) {
    int value = 0;
    CoreString messages;
    if (!EvaluateUnit(text.c_str(), units, value, &messages)) {
        const std::string reason = JoinMessages(messages);
        Complain("'" + text + "' does not evaluate" + (reason.empty() ? "" : ": " + reason));
        return false;
    }
    std::string line = std::to_string(value);
    for (CoreUnits unit : {kInches, kMils, kCentimeters, kMillimeters}) {
        line += '\t';
        line += UnitToString(value, unit, true);
    }
    PrintLine(line);
    return true;
}

bool EvaluateLines(std::istream& input, CoreUnits units) {
    bool good = true;
    for (std::string line; std::getline(input, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty()) good = EvaluateOne(line, units) && good;
    }
    return good;
}

}  // namespace

int EvalCommand(const std::vector<std::string>& texts, CoreUnits units) {
    bool good = true;
    for (const std::string& text : texts) {
        good = (text == "-" ? EvaluateLines(std::cin, units) : EvaluateOne(text, units)) && good;
    }
    return good ? 0 : 1;
}

}  // namespace brenta::host
