// The help of the program, a command or an action.
#pragma once

#include <string>

#include "command_tree.h"

namespace brenta::host {

/// What `command` does, how it is typed, its words and options, and examples; for the program and for
/// commands with actions also what these are.
std::string HelpText(const CommandTree& tree, const CLI::App& command);

}  // namespace brenta::host
