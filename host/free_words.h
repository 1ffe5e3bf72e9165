// Preparing the command line for commands whose words may begin with a dash.
#pragma once

#include <string>
#include <vector>

#include "command_tree.h"

namespace brenta::host {

/// Brings a command line into the form "options, --, words", so that a word such as "-25mil" is never taken
/// for an option. `arguments` holds the words behind the program's name. Only the options that the command
/// knows are moved to the front; what follows a "--" stays as it is. Command lines of commands that take no
/// such words are returned as they are.
std::vector<std::string> SeparateOptions(const CommandTree& tree, const std::vector<std::string>& arguments);

/// The option that a word such as "-u", "--units" or "--units=mm" names; null if the command has none.
const CLI::Option* FindOption(const CLI::App& command, const std::string& word);

/// Whether the option stands before a value, which is the next word unless "=" joins it.
bool TakesValue(const CLI::Option& option);

}  // namespace brenta::host
