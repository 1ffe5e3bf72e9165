// What a person at the prompt can name: the symbols of an engine and the members of its values.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "brenta/script.h"

namespace brenta::host {

/// The names that may go on from the end of `line`: behind "value." the members of the value, else names in
/// scope and words of the language. Sorted, each once. `start` becomes where in the line they begin.
std::vector<std::string> NamesFor(CCoreScriptEngine& engine, std::string_view line, std::size_t& start);

/// A line for each global name: functions with their parameters, classes, and variables with their values, a
/// tab between the two. `Env` stands with its members.
std::vector<std::string> DescribeNames(CCoreScriptEngine& engine);

}  // namespace brenta::host
