#include "completion.h"

#include <algorithm>

#include "console.h"
#include "free_words.h"

namespace brenta::host {
namespace {

const char* FilesOf(WordKind kind) {
    switch (kind) {
        case WordKind::kText:
            return nullptr;
        case WordKind::kFile:
            return ":files";
        case WordKind::kFolder:
            return ":folders";
        case WordKind::kScript:
            return ":files scr";
        case WordKind::kXml:
            return ":files xml lbr brd sch";
        case WordKind::kHtml:
            return ":files html htm";
        case WordKind::kLibrary:
            return ":files lbr";
        case WordKind::kArchive:
            return ":files zip";
    }
    return nullptr;
}

/// A command line as far as it has been typed.
struct Typed {
    const CLI::App* command;
    std::vector<std::string> words;        ///< behind the command's name, without options
    const CLI::Option* pending = nullptr;  ///< the option whose value comes next
    bool onlyWords = false;                ///< "--" was typed
};

Typed Read(const CommandTree& tree, const std::vector<std::string>& before) {
    Typed typed{&tree.app, {}};
    for (const std::string& word : before) {
        if (typed.pending != nullptr) {
            typed.pending = nullptr;
            continue;
        }
        const CLI::Option* const option = typed.onlyWords ? nullptr : FindOption(*typed.command, word);
        const CLI::App* const next = typed.words.empty() ? FindCommand(*typed.command, word) : nullptr;
        if (option != nullptr) {
            if (TakesValue(*option) && word.find('=') == std::string::npos) typed.pending = option;
        } else if (!typed.onlyWords && word == "--") {
            typed.onlyWords = true;
        } else if (next != nullptr) {
            typed.command = next;
        } else {
            typed.words.push_back(word);
        }
    }
    return typed;
}

/// The word that stands at a place; the last one of a command may take all that are left.
const CLI::Option* WordAt(const CLI::App& command, std::size_t place) {
    const auto words =
        command.get_options([](const CLI::Option* option) { return option->get_positional(); });
    if (place < words.size()) return words[place];
    return !words.empty() && words.back()->get_items_expected_max() > 1 ? words.back() : nullptr;
}

class Offer {
 public:
    explicit Offer(std::string current) : m_current(std::move(current)) {}

    void Word(const std::string& word, const std::string& meaning = "") const {
        if (word.find('\n') != std::string::npos) return;  // shells read a line for each word
        if (word.starts_with(m_current)) PrintLine(meaning.empty() ? word : word + '\t' + meaning);
    }

    void Commands(const CLI::App& parent) const {
        for (const CLI::App* command : parent.get_subcommands({}))
            Word(command->get_name(), command->get_description());
        if (parent.get_parent() == nullptr) Word("help", "Tell about a command");
    }

    void Options(const CLI::App& command) const {
        for (const CLI::Option* option : command.get_options())
            for (const std::string& name : option->get_lnames())
                Word("--" + name, option->get_description());
    }

    void Source(const CommandTree& tree, const CLI::Option& option, const Typed& typed) const {
        const auto found = tree.words.find(&option);
        if (found == tree.words.end()) return;
        for (const std::string& choice : found->second.choices)
            Word(choice);
        if (found->second.suggest != nullptr)
            for (const std::string& word : found->second.suggest(typed.words))
                Word(word);
        if (const char* files = FilesOf(found->second.kind)) PrintLine(files);
    }

 private:
    std::string m_current;
};

}  // namespace

int CompletionCommand(const CommandTree& tree, const std::vector<std::string>& words) {
    if (words.empty()) return 0;
    std::vector<std::string> before(words.begin(), words.end() - 1);
    const bool isHelp = !before.empty() && before.front() == "help";
    if (isHelp) before.erase(before.begin());
    const Typed typed = Read(tree, before);
    const Offer offer(words.back());
    if (typed.pending != nullptr) {
        offer.Source(tree, *typed.pending, typed);
        return 0;
    }
    const bool isOption = words.back().starts_with('-') && !typed.onlyWords && !isHelp;
    if (isOption) offer.Options(*typed.command);
    if (typed.words.empty()) offer.Commands(*typed.command);
    const CLI::Option* const word = WordAt(*typed.command, typed.words.size());
    if (word != nullptr && !isOption && !isHelp) offer.Source(tree, *word, typed);
    return 0;
}

}  // namespace brenta::host
