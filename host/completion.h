// What a shell offers for the word that is being typed. The shells' own files ask the program itself, so that
// they know every command and option that it has.
#pragma once

#include <string>
#include <vector>

#include "command_tree.h"

namespace brenta::host {

/// The hidden command: `brenta __complete WORD... CURRENT`, where the last word is the one to complete, "" if
/// nothing of it has been typed.
inline constexpr const char* kCompletionCommand = "__complete";

/// Prints a line for each word that may stand there: the word, and behind a tab what it means. A line
/// ":files EXTENSION..." stands for files (all files without extensions), ":folders" for folders.
int CompletionCommand(const CommandTree& tree, const std::vector<std::string>& words);

}  // namespace brenta::host
