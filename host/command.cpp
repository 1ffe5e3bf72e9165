#include "command.h"

#include <algorithm>
#include <string_view>
#include <tuple>

#include "command_tree.h"

namespace brenta::host {
namespace {

const CommandEntry* lastEntry = nullptr;  // filled before main by the files of the commands

constexpr std::string_view kGroupNames[] = {"Lengths and scripts", "Documents",
                                            "Settings, archives and network"};

std::string Joined(const std::vector<std::string>& words) {
    std::string joined;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i > 0) joined += i + 1 == words.size() ? " or " : ", ";
        joined += words[i];
    }
    return joined;
}

/// Takes one of the words in any case; says what would have been right.
CLI::Validator OneOf(const std::vector<std::string>& choices) {
    return CLI::Validator(
        [choices](std::string& word) {
            const std::string lower = CLI::detail::to_lower(word);
            if (std::find(choices.begin(), choices.end(), lower) == choices.end())
                return "takes " + Joined(choices) + ", not '" + word + "'";
            word = lower;
            return std::string();
        },
        "");
}

}  // namespace

CommandEntry::CommandEntry(const char* entryName, CommandGroup entryGroup, const char* entrySummary,
                           void (*entryDefine)(Command& command))
    : name(entryName), group(entryGroup), summary(entrySummary), define(entryDefine), m_next(lastEntry) {
    lastEntry = this;
}

std::vector<const CommandEntry*> CommandEntry::All() {
    std::vector<const CommandEntry*> all;
    for (const CommandEntry* entry = lastEntry; entry != nullptr; entry = entry->m_next)
        all.push_back(entry);
    std::sort(all.begin(), all.end(), [](const CommandEntry* a, const CommandEntry* b) {
        return std::tuple(a->group, std::string_view(a->name)) <
               std::tuple(b->group, std::string_view(b->name));
    });
    return all;
}

CLI::Option& Command::Added(CLI::Option& option, WordKind kind) {
    m_last = &option;
    m_tree.words[&option].kind = kind;
    return option;
}

void Command::Word(const char* name, std::string& value, WordKind kind, const char* help) {
    OptionalWord(name, value, kind, help);
    m_tree.words[m_last].isRequired = true;
}

void Command::OptionalWord(const char* name, std::string& value, WordKind kind, const char* help) {
    Added(*m_app.add_option(name, value, help), kind);
    m_tree.words[m_last].pValue = &value;
}

void Command::Words(const char* name, std::vector<std::string>& values, WordKind kind, const char* help) {
    OptionalWords(name, values, kind, help);
    m_tree.words[m_last].isRequired = true;
}

void Command::OptionalWords(const char* name, std::vector<std::string>& values, WordKind kind,
                            const char* help) {
    Added(*m_app.add_option(name, values, help), kind);
    m_tree.words[m_last].pValues = &values;
}

void Command::Suggest(Suggester suggester) {
    m_tree.words[m_last].suggest = suggester;
}

void Command::Flag(const char* names, bool& value, const char* help) {
    m_app.add_flag(names, value, help);
}

void Command::Option(const char* names, const char* valueName, std::string& value, WordKind kind,
                     const char* help) {
    Added(*m_app.add_option(names, value, help), kind).type_name(valueName);
}

void Command::Choice(const char* names, const char* valueName, std::string& value,
                     std::vector<std::string> choices, const char* help) {
    Option(names, valueName, value, WordKind::kText, help);
    m_last->transform(OneOf(choices));
    m_tree.words[m_last].choices = std::move(choices);
}

void Command::Units(CoreUnits& value) {
    const std::pair<std::string, CoreUnits> known[] = {
        {"in", kInches}, {"mil", kMils}, {"cm", kCentimeters}, {"mm", kMillimeters}};
    std::vector<std::string> names;
    for (const auto& unit : known)
        names.push_back(unit.first);
    const auto store = [&value,
                        units = std::vector(std::begin(known), std::end(known))](const std::string& word) {
        for (const auto& [name, unit] : units)
            if (name == word) value = unit;
    };
    CLI::Option* option = m_app.add_option_function<std::string>(
        "-u,--units", store, "Unit of numbers without a unit: " + Joined(names));
    Added(*option, WordKind::kText).type_name("UNIT")->transform(OneOf(names));
    m_tree.words[option].choices = std::move(names);
}

void Command::TakeDashesAsWords() {
    m_tree.info[&m_app].takesDashes = true;
}

Command Command::Action(const char* name, const char* summary) {
    return Command(m_tree, *m_app.add_subcommand(name, summary));
}

void Command::Explain(const char* paragraph) {
    std::string& details = m_tree.info[&m_app].details;
    if (!details.empty()) details += "\n\n";
    details += paragraph;
}

void Command::Example(const char* line, const char* what) {
    m_tree.info[&m_app].examples.emplace_back(line, what);
}

void Command::Run(std::function<int()> action) {
    m_tree.info[&m_app].run = std::move(action);
}

CommandTree::CommandTree()
    : app("The console host of Brenta Core: lengths, scripts and documents.", "brenta") {
    app.allow_windows_style_options(false);  // what begins with "/" is a path everywhere
    app.set_version_flag("-V,--version", "brenta " BRENTA_VERSION, "Print the version");
    app.set_help_flag("-h,--help", "Print this help");
    CommandInfo& program = info[&app];
    program.details =
        "'brenta help COMMAND' tells more about a command. Without any words, at a terminal, brenta starts "
        "the "
        "script prompt. The exit status is 0, 1 if a command failed, 2 if it was typed wrong.";
    program.examples = {{"brenta eval 20mil+5mm", "what a length is in each unit"},
                        {"brenta run panel.scr", "calls Main of a script"}};
    for (const CommandEntry* entry : CommandEntry::All()) {
        CLI::App* const command = app.add_subcommand(entry->name, entry->summary);
        command->group(std::string(kGroupNames[static_cast<std::size_t>(entry->group)]));
        Command definition(*this, *command);
        entry->define(definition);
    }
}

const CLI::App* FindCommand(const CLI::App& parent, const std::string& name) {
    const auto found =
        parent.get_subcommands([&](const CLI::App* command) { return command->get_name() == name; });
    return found.empty() ? nullptr : found.front();
}

std::vector<std::string> CommandNames(const CLI::App& parent) {
    std::vector<std::string> names;
    for (const CLI::App* command : parent.get_subcommands({}))
        names.push_back(command->get_name());
    return names;
}

std::string FullName(const CLI::App& command) {
    const CLI::App* const parent = command.get_parent();
    return parent == nullptr ? command.get_name() : FullName(*parent) + " " + command.get_name();
}

}  // namespace brenta::host
