// Preparing the command line for commands whose words may begin with a dash.
#pragma once

#include <string>
#include <vector>

namespace brenta::host {

/// Brings a command line into the form "options, --, words", so that a word such as "-25mil" is never taken
/// for an option. `arguments` holds the words behind the program's name. Only the options that the command
/// knows are moved to the front; what follows a "--" stays as it is. Command lines of commands that take no
/// such words are returned as they are.
std::vector<std::string> SeparateOptions(const std::vector<std::string>& arguments);

}  // namespace brenta::host
