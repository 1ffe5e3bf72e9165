// Telling the options of a command from its words.
#pragma once

#include <string>
#include <vector>

#include "command_tree.h"

namespace brenta::host {

/// What stands behind a command's name, sorted.
struct SeparatedWords {
    std::vector<std::string> options;  ///< those that the command knows, each followed by its value
    std::vector<std::string> words;    ///< all others, and what follows a "--"
    std::vector<std::string> unknown;  ///< what looks like an option, where words do not begin with a dash
};

/// Tells options from words, so that a word is never taken for an option or for the name of a command: it
/// may be "-25mil", or a file called "run". `arguments` holds what stands behind the command's name.
SeparatedWords SeparateOptions(const CommandTree& tree, const CLI::App& command,
                               const std::vector<std::string>& arguments);

/// The option that a word such as "-u", "--units" or "--units=mm" names; null if the command has none.
const CLI::Option* FindOption(const CLI::App& command, const std::string& word);

/// Whether the option stands before a value, which is the next word unless "=" joins it.
bool TakesValue(const CLI::Option& option);

}  // namespace brenta::host
