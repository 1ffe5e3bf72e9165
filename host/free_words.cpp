#include "free_words.h"

namespace brenta::host {

bool TakesValue(const CLI::Option& option) {
    return option.get_items_expected_max() > 0;
}

const CLI::Option* FindOption(const CLI::App& command, const std::string& word) {
    if (!word.starts_with('-') || word == "--") return nullptr;
    const bool isLong = word.starts_with("--");
    const std::size_t equals = isLong ? word.find('=') : std::string::npos;
    const std::string name = word.substr(isLong ? 2 : 1, equals - (isLong ? 2 : 1));
    for (const CLI::Option* option : command.get_options()) {
        const auto& names = isLong ? option->get_lnames() : option->get_snames();
        if (std::find(names.begin(), names.end(), name) == names.end()) continue;
        return equals == std::string::npos || TakesValue(*option) ? option : nullptr;
    }
    return nullptr;
}

std::vector<std::string> SeparateOptions(const CommandTree& tree, const std::vector<std::string>& arguments) {
    const CLI::App* command = &tree.app;
    std::size_t names = 0;
    while (names < arguments.size()) {
        const CLI::App* const next = FindCommand(*command, arguments[names]);
        if (next == nullptr) break;
        command = next;
        ++names;
    }
    const auto info = tree.info.find(command);
    if (info == tree.info.end() || !info->second.takesDashes) return arguments;

    const auto firstWord = arguments.begin() + static_cast<std::ptrdiff_t>(names);
    std::vector<std::string> options(arguments.begin(), firstWord);
    std::vector<std::string> words;
    for (auto word = firstWord; word != arguments.end(); ++word) {
        if (*word == "--") {
            words.insert(words.end(), word + 1, arguments.end());
            break;
        }
        const CLI::Option* const option = FindOption(*command, *word);
        (option != nullptr ? options : words).push_back(*word);
        const bool isJoined = word->starts_with("--") && word->find('=') != std::string::npos;
        if (option == nullptr || !TakesValue(*option) || isJoined) continue;
        if (word + 1 == arguments.end())
            return options;  // so that the parser misses the value, and nothing else
        options.push_back(*++word);
    }
    options.emplace_back("--");
    options.insert(options.end(), words.begin(), words.end());
    return options;
}

}  // namespace brenta::host
