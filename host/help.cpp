#include "help.h"

#include <algorithm>

#include "style.h"

namespace brenta::host {
namespace {

constexpr std::size_t kColumn = 22;  // where the explanations begin
constexpr std::size_t kLineLength = 80;

std::string Heading(const char* text) {
    return "\n" + StyledOutput(Style::kHeading, text) + "\n";
}

/// The text in lines that are not too long, those behind the first indented.
std::string Wrapped(const std::string& text, std::size_t indent) {
    std::string lines;
    std::size_t column = indent;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find_first_of(" \n", start), text.size());
        if (column > indent && column + (end - start) > kLineLength) {
            lines.back() = '\n';
            lines.append(indent, ' ');
            column = indent;
        }
        lines.append(text, start, end + 1 - start);
        column = end < text.size() && text[end] == '\n' ? indent : column + end + 1 - start;
        start = end + 1;
    }
    return lines;
}

/// What is typed, and beside it what it means.
std::string Entry(const std::string& typed, const std::string& meaning) {
    std::string entry = "  " + typed;
    if (entry.size() + 2 > kColumn) {
        entry += '\n' + std::string(kColumn, ' ');
    } else {
        entry.resize(kColumn, ' ');
    }
    return entry + Wrapped(meaning, kColumn) + "\n";
}

/// The words behind the command's name: " FILE [FUNCTION] [ARG...]".
std::string WordNames(const CommandTree& tree, const CLI::App& command) {
    std::string names;
    for (const CLI::Option* option : command.get_options()) {
        if (!option->get_positional()) continue;
        const std::string word = option->get_name() + (option->get_items_expected_max() > 1 ? "..." : "");
        names += tree.words.at(option).isRequired ? " " + word : " [" + word + "]";
    }
    return names;
}

std::string Usage(const CommandTree& tree, const CLI::App& command) {
    std::string line = StyledOutput(Style::kHeading, "Usage:") + " " + FullName(command);
    if (!command.get_subcommands({}).empty())
        return line + (command.get_parent() == nullptr ? " COMMAND ..." : " ACTION ...") + "\n";
    return line + " [OPTION]..." + WordNames(tree, command) + "\n";
}

std::string WordsAndOptions(const CLI::App& command) {
    std::string words, options;
    for (const CLI::Option* option : command.get_options()) {
        if (option->get_positional()) {
            words += Entry(option->get_name(), option->get_description());
            continue;
        }
        const bool hasValue = option->get_items_expected_max() > 0;
        const bool hasShort = !option->get_snames().empty();
        options += Entry((hasShort ? "-" + option->get_snames()[0] + ", " : std::string("    ")) + "--" +
                             option->get_lnames()[0] + (hasValue ? " " + option->get_type_name() : ""),
                         option->get_description());
    }
    return (words.empty() ? "" : "\n" + words) + Heading("Options:") + options;
}

/// The commands of the program under the names of their groups, or the actions of a command.
std::string Commands(const CommandTree& tree, const CLI::App& parent) {
    const bool isProgram = parent.get_parent() == nullptr;
    std::string text, group;
    for (const CLI::App* command : parent.get_subcommands({})) {
        const std::string heading = isProgram ? command->get_group() : "Actions";
        if (heading != group) text += Heading((heading + ":").c_str());
        group = heading;
        text += Entry(command->get_name() + (isProgram ? "" : WordNames(tree, *command)),
                      command->get_description());
    }
    return text;
}

std::string Examples(const CommandInfo& info) {
    std::string text;
    for (const auto& [typed, what] : info.examples) {
        text += "  " + typed + "\n";
        if (!what.empty()) text += "      " + StyledOutput(Style::kMuted, what) + "\n";
    }
    return text;
}

}  // namespace

std::string HelpText(const CommandTree& tree, const CLI::App& command) {
    std::string text = command.get_description() + "\n\n" + Usage(tree, command);
    text += Commands(tree, command) + WordsAndOptions(command);
    const auto info = tree.info.find(&command);
    if (info == tree.info.end()) return text;
    if (!info->second.details.empty()) text += "\n" + Wrapped(info->second.details, 0) + "\n";
    if (!info->second.examples.empty()) text += Heading("Examples:") + Examples(info->second);
    return text;
}

}  // namespace brenta::host
