#include "platform/command_words.h"

namespace brenta {

std::vector<std::string> CommandWords(std::string_view line) {
    std::vector<std::string> words;
    bool isInWord = false, isQuoted = false;
    for (const char c : line) {
        if (!isQuoted && (c == ' ' || c == '\t')) {
            isInWord = false;
            continue;
        }
        if (!isInWord) words.emplace_back();
        isInWord = true;
        if (c == '"')
            isQuoted = !isQuoted;
        else
            words.back() += c;
    }
    return words;
}

}  // namespace brenta
