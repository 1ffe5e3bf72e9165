// The manual page of the program, made of the help.
#pragma once

#include "command_tree.h"

namespace brenta::host {

/// The hidden command that the build uses.
inline constexpr const char* kManualCommand = "__manual";

/// Prints the page as troff source.
int ManualCommand(const CommandTree& tree);

}  // namespace brenta::host
