// Command lines as people and the registry write them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace brenta {

/// Cuts a command line into its words: blanks and tabs separate them, save between double quotes, which go.
/// No other character is special.
std::vector<std::string> CommandWords(std::string_view line);

/// Where the first word ends in the line; 0 if there is none.
std::size_t EndOfProgram(std::string_view line);

}  // namespace brenta
