#include "command_line.h"

#include <algorithm>
#include <cstdio>
#include <numeric>

#include "command_tree.h"
#include "completion.h"
#include "console.h"
#include "free_words.h"
#include "help.h"
#include "manual.h"
#include "terminal.h"

namespace brenta::host {
namespace {

constexpr int kWrongUse = 2;

/// How many characters must be put in, left out or changed to make one word of the other.
std::size_t Distance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= from.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i);
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t changed = diagonal + (from[i - 1] == to[j - 1] ? 0 : 1);
            diagonal = std::exchange(row[j], std::min({row[j] + 1, row[j - 1] + 1, changed}));
        }
    }
    return row.back();
}

/// The name that a mistyped word was probably meant to be; "" if none is near.
std::string Nearest(const std::string& word, const std::vector<std::string>& names) {
    std::string nearest;
    std::size_t least = 1 + word.size() / 4;
    for (const std::string& name : names) {
        const std::size_t distance = name.starts_with(word) && word.size() > 1 ? 0 : Distance(word, name);
        if (distance > least || (distance == least && !nearest.empty())) continue;
        least = distance;
        nearest = name;
    }
    return nearest;
}

/// What somebody probably wants who begins with a script or a length instead of a command; "" for other
/// words.
std::string Meant(const std::string& word) {
    if (word.ends_with(".scr")) return "'brenta run " + word + "' runs a script";
    const std::size_t start = std::min(word.find_first_not_of("(."), word.size());
    return word.find_first_of("0123456789", start) == start ? "'brenta eval " + word + "' evaluates a length"
                                                            : "";
}

std::string Listed(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list;
}

/// Says what is wrong, and where the right way is written.
int Refuse(const CLI::App& command, const std::string& problem) {
    const std::string path = FullName(command).substr(std::string("brenta").size());
    Complain(problem);
    Complain("'brenta help" + path + "' tells how it goes");
    return kWrongUse;
}

int RefuseName(const CLI::App& parent, const std::string& name) {
    const bool isProgram = parent.get_parent() == nullptr;
    const std::vector<std::string> names = CommandNames(parent);
    std::string problem = isProgram
                              ? "there is no command '" + name + "'"
                              : "'" + FullName(parent) + "' has no '" + name + "', only " + Listed(names);
    const std::string nearest = Nearest(name, names);
    if (!nearest.empty()) problem += "; did you mean '" + nearest + "'?";
    if (const std::string meant = Meant(name); isProgram && !meant.empty()) problem += "; " + meant;
    return Refuse(parent, problem);
}

/// The command that the first words name, as far as they do; `count` becomes their number.
const CLI::App& NamedCommand(const CommandTree& tree, const std::vector<std::string>& words,
                             std::size_t& count) {
    const CLI::App* command = &tree.app;
    for (count = 0; count < words.size(); ++count) {
        const CLI::App* const next = FindCommand(*command, words[count]);
        if (next == nullptr) break;
        command = next;
    }
    return *command;
}

/// brenta help [COMMAND [ACTION]]
int HelpCommand(const CommandTree& tree, std::vector<std::string> words) {
    std::erase_if(words, [](const std::string& word) { return word.starts_with('-') || word == "help"; });
    std::size_t count = 0;
    const CLI::App& command = NamedCommand(tree, words, count);
    if (count < words.size()) return RefuseName(command, words[count]);
    PrintLine(HelpText(tree, command));
    return 0;
}

/// Finishes a parse that ended early: the user asked for help or the version, or made a mistake.
int Answer(const CommandTree& tree, const CLI::App& command, const CLI::ParseError& error) {
    if (dynamic_cast<const CLI::CallForVersion*>(&error) != nullptr) {
        PrintLine(error.what());
        return 0;
    }
    if (dynamic_cast<const CLI::CallForHelp*>(&error) != nullptr) {
        PrintLine(HelpText(tree, command));
        return 0;
    }
    return Refuse(command, error.what());
}

/// Stores the words where the command wants them; says what is wrong with them, "" if nothing is.
std::string StoreWords(const CommandTree& tree, const CLI::App& command,
                       const std::vector<std::string>& words) {
    std::size_t next = 0;
    for (const CLI::Option* option : command.get_options()) {
        if (!option->get_positional()) continue;
        const WordSource& source = tree.words.at(option);
        if (source.isRequired && next == words.size()) return option->get_name() + " is required";
        if (source.pValues != nullptr) {
            for (; next < words.size(); ++next)
                source.pValues->push_back(words[next]);
        } else if (next < words.size()) {
            *source.pValue = words[next++];
        }
    }
    return next < words.size() ? "the word '" + words[next] + "' is too much" : "";
}

int ParseAndRun(CommandTree& tree, const std::vector<std::string>& words) {
    std::size_t count = 0;
    const CLI::App& command = NamedCommand(tree, words, count);
    const auto info = tree.info.find(&command);
    const bool canRun = info != tree.info.end() && info->second.run;
    const bool hasWord = count < words.size();
    if (!canRun && hasWord && !words[count].starts_with('-')) return RefuseName(command, words[count]);

    const auto firstWord = words.begin() + static_cast<std::ptrdiff_t>(count);
    const SeparatedWords separated = SeparateOptions(tree, command, {firstWord, words.end()});
    std::vector<std::string> arguments(words.begin(), firstWord);
    arguments.insert(arguments.end(), separated.options.begin(), separated.options.end());
    std::reverse(arguments.begin(), arguments.end());  // the parser takes words from the back
    try {
        tree.app.parse(arguments);
    } catch (const CLI::ParseError& error) {
        return Answer(tree, command, error);
    }
    if (!separated.unknown.empty())
        return Refuse(command, "there is no option '" + separated.unknown.front() + "'");
    if (!canRun)
        return Refuse(command, "'" + FullName(command) + "' needs one of " + Listed(CommandNames(command)));
    const std::string problem = StoreWords(tree, command, separated.words);
    return problem.empty() ? info->second.run() : Refuse(command, problem);
}

int RunWords(std::vector<std::string> words) {
    CommandTree tree;
    if (words.empty()) {
        if (!InputComesFromTerminal()) {
            std::fputs((HelpText(tree, tree.app) + "\n").c_str(), stderr);
            return kWrongUse;
        }
        words = {"repl"};
    }
    const std::vector<std::string> rest(words.begin() + 1, words.end());
    if (words.front() == "help") return HelpCommand(tree, rest);
    if (words.front() == kCompletionCommand) return CompletionCommand(tree, rest);
    if (words.front() == kManualCommand) return ManualCommand(tree);
    return ParseAndRun(tree, words);
}

}  // namespace

int RunCommandLine(const std::vector<std::string>& words) {
    const int status = RunWords(words);
    // To a loop over lines an input that cannot be read looks like one that has ended.
    const bool isRead = std::ferror(stdin) == 0;
    if (!isRead) Complain("standard input cannot be read");
    const bool isWritten = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    if (!isWritten) Complain("what was to be printed could not all be written");
    return (isRead && isWritten) || status != 0 ? status : 1;
}

}  // namespace brenta::host
