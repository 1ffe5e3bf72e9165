#include "free_words.h"

namespace brenta::host {

namespace {

/// "--units=mm" as the two words that it stands for.
void AddJoined(const std::string& word, std::vector<std::string>& options) {
    const std::size_t equals = word.find('=');
    options.push_back(word.substr(0, equals));
    options.push_back(word.substr(equals + 1));
}

/// Short options behind one dash, "-jd", and perhaps the value of the last one, "-dfolder". Gives false, and
/// adds nothing, if one of them is unknown; `needsValue` tells whether the value is the next word.
bool AddShortOptions(const CLI::App& command, const std::string& word, std::vector<std::string>& options,
                     bool& needsValue) {
    std::vector<std::string> found;
    needsValue = false;
    for (std::size_t i = 1; i < word.size(); ++i) {
        found.push_back(std::string("-") + word[i]);
        const CLI::Option* const option = FindOption(command, found.back());
        if (option == nullptr) return false;
        if (!TakesValue(*option)) continue;
        needsValue = i + 1 == word.size();
        if (!needsValue) found.push_back(word.substr(i + 1));
        break;
    }
    options.insert(options.end(), found.begin(), found.end());
    return true;
}

/// Whether a word of a command whose words are no lengths and the like was meant as an option.
bool LooksLikeOption(const std::string& word) {
    return word.size() > 1 && word[0] == '-' && !(word[1] >= '0' && word[1] <= '9');
}

/// Adds the option that the word is, if it is one.
bool AddOption(const CLI::App& command, bool takesDashes, const std::string& word,
               std::vector<std::string>& options, bool& needsValue) {
    needsValue = false;
    const CLI::Option* const option = FindOption(command, word);
    if (option == nullptr)
        return !takesDashes && LooksLikeOption(word) && word[1] != '-' &&
               AddShortOptions(command, word, options, needsValue);
    if (word.starts_with("--") && word.find('=') != std::string::npos) {
        AddJoined(word, options);
    } else {
        options.push_back(word);
        needsValue = TakesValue(*option);
    }
    return true;
}

}  // namespace

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

SeparatedWords SeparateOptions(const CommandTree& tree, const CLI::App& command,
                               const std::vector<std::string>& arguments) {
    const auto info = tree.info.find(&command);
    const bool takesDashes = info != tree.info.end() && info->second.takesDashes;
    SeparatedWords separated;
    bool isValue = false;
    for (auto word = arguments.begin(); word != arguments.end(); ++word) {
        if (isValue) {
            separated.options.push_back(*word);
            isValue = false;
        } else if (*word == "--") {
            separated.words.insert(separated.words.end(), word + 1, arguments.end());
            break;
        } else if (!AddOption(command, takesDashes, *word, separated.options, isValue)) {
            const bool isUnknown = !takesDashes && LooksLikeOption(*word);
            (isUnknown ? separated.unknown : separated.words).push_back(*word);
        }
    }
    return separated;
}

}  // namespace brenta::host
