// Command lines as people and the registry write them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace brenta {

/// Cuts a command line into its words: blanks and tabs separate them, save between double quotes, which go.
/// No other character is special.
std::vector<std::string> CommandWords(std::string_view line);

/// Where the program ends that a line begins with, which is a word, or what stands between the first two
/// double quotes; 0 if there is none, or if more of the word follows or stands before quotes: which program
/// that is systems see differently.
std::size_t EndOfProgram(std::string_view line);

}  // namespace brenta
