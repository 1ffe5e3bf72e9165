// The commands of the console host. Each returns the process's exit status: 0, or 1 when something failed.
#pragma once

#include <string>
#include <vector>

#include "brenta/units.h"

namespace brenta::host {

/// Evaluates dimension texts; a text that is "-" stands for the lines of standard input.
int EvalCommand(const std::vector<std::string>& texts, CoreUnits units);

/// Runs one command text in a fresh engine and prints its result.
int ExecCommand(const std::string& text, CoreUnits units);

struct RunOptions {
    std::string file;
    std::string function;  ///< empty: Main, if the module defines it
    std::vector<std::string> arguments;
    bool printResult = false;
};

/// Loads a module and calls one of its functions.
int RunCommand(const RunOptions& options);

/// Parses modules without running them; reports errors and likely mistakes.
int CheckCommand(const std::vector<std::string>& files);

/// The interactive prompt.
int ReplCommand();

}  // namespace brenta::host
