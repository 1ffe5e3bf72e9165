// The command line: finds the command that is meant and runs it, or helps.
#pragma once

#include <string>
#include <vector>

namespace brenta::host {

/// Runs the command that the words behind the program's name ask for. Gives the process's exit status: 0, 1
/// when the command failed or its output could not be written, 2 when the words make no command.
int RunCommandLine(const std::vector<std::string>& words);

}  // namespace brenta::host
