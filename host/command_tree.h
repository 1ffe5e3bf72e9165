// All commands as they were defined, for what works on the command line: parsing, help and completion.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "command.h"

namespace brenta::host {

struct WordSource {
    WordKind kind = WordKind::kText;
    std::vector<std::string> choices;
    Suggester suggest = nullptr;
    // Words are stored without the parser, which takes some of them for something else ("[1,2]", "{}",
    // "run"): one of these, for what is no option.
    std::string* pValue = nullptr;
    std::vector<std::string>* pValues = nullptr;
    bool isRequired = false;
};

struct CommandInfo {
    std::string details;                                        ///< paragraphs
    std::vector<std::pair<std::string, std::string>> examples;  ///< what is typed, what it does
    bool takesDashes = false;
    std::function<int()> run;
};

struct CommandTree {
    /// Defines all commands that have been entered.
    CommandTree();

    CLI::App app;
    std::map<const CLI::App*, CommandInfo> info;
    std::map<const CLI::Option*, WordSource> words;
};

/// A command of the program, or an action of a command; null if there is none of that name.
const CLI::App* FindCommand(const CLI::App& parent, const std::string& name);

/// The names of the commands of the program, or of the actions of a command.
std::vector<std::string> CommandNames(const CLI::App& parent);

/// The command's name as it is typed: "brenta config get".
std::string FullName(const CLI::App& command);

}  // namespace brenta::host
