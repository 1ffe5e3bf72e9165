// What a command of the host consists of: a name, help, words and options, and what it does.
//
// Each command is one file that enters it into the program by a static object; nothing else knows it:
//
//     struct TwiceOptions {
//         std::string text;
//     };
//
//     void Define(Command& command) {
//         const auto options = std::make_shared<TwiceOptions>();
//         command.Word("TEXT", options->text, WordKind::kText, "What to print");
//         command.Example("brenta twice hello", "prints it two times");
//         command.Run([options] { return Twice(*options); });
//     }
//
//     const CommandEntry entry("twice", CommandGroup::kScripts, "Print a text twice", &Define);
//
// The help, the checks of what a user types, and the completion of the shells follow from the definition.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "brenta/units.h"

namespace CLI {  // NOLINT(readability-identifier-naming)
class App;
class Option;
}  // namespace CLI

namespace brenta::host {

struct CommandTree;

/// What a word stands for: what a shell offers for it.
enum class WordKind { kText, kFile, kFolder, kScript, kXml, kHtml, kLibrary, kArchive };

/// What can stand for a word, from the words before it (those that are no options); may read files.
using Suggester = std::vector<std::string> (*)(const std::vector<std::string>& before);

/// A command, or an action of one ("config get"), while it is defined. The variables must live as long as the
/// program's command line does: `Run` takes a function that keeps them.
class Command {
 public:
    Command(CommandTree& tree, CLI::App& app) : m_tree(tree), m_app(app) {}

    /// Words in the order that they are typed in. A list takes all the words that are left.
    void Word(const char* name, std::string& value, WordKind kind, const char* help);
    void OptionalWord(const char* name, std::string& value, WordKind kind, const char* help);
    void Words(const char* name, std::vector<std::string>& values, WordKind kind, const char* help);
    void OptionalWords(const char* name, std::vector<std::string>& values, WordKind kind, const char* help);

    /// Tells shells more about the word defined last.
    void Suggest(Suggester suggester);

    /// Options; `names` are like "-r,--result".
    void Flag(const char* names, bool& value, const char* help);
    void Option(const char* names, const char* valueName, std::string& value, WordKind kind,
                const char* help);
    void Choice(const char* names, const char* valueName, std::string& value,
                std::vector<std::string> choices, const char* help);
    void Units(CoreUnits& value);

    /// Words may begin with a dash, as "-25mil" does: only the command's own options are taken for options.
    void TakeDashesAsWords();

    /// A form of the command with words and options of its own; one of them must be chosen.
    Command Action(const char* name, const char* summary);

    /// A paragraph of the help, which breaks it into lines.
    void Explain(const char* paragraph);
    void Example(const char* line, const char* what = "");

    /// What the command does; gives the process's exit status: 0, or 1 when something failed.
    void Run(std::function<int()> action);

 private:
    CLI::Option& Added(CLI::Option& option, WordKind kind);

    CommandTree& m_tree;
    CLI::App& m_app;
    CLI::Option* m_last = nullptr;
};

/// Where a command stands in the list that the help shows.
enum class CommandGroup { kScripts, kDocuments, kData };

/// Enters a command; made as a static object. The texts must be literals.
class CommandEntry {
 public:
    CommandEntry(const char* name, CommandGroup group, const char* summary, void (*define)(Command& command));
    CommandEntry(const CommandEntry&) = delete;
    CommandEntry& operator=(const CommandEntry&) = delete;

    /// All commands, by group and name.
    static std::vector<const CommandEntry*> All();

    const char* const name;
    const CommandGroup group;
    const char* const summary;
    void (*const define)(Command& command);

 private:
    const CommandEntry* const m_next;
};

}  // namespace brenta::host
