#include "platform/command_words.h"

#include <algorithm>

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

std::size_t EndOfProgram(std::string_view line) {
    bool isQuoted = false;
    std::size_t end = std::min(line.find_first_not_of(" \t"), line.size());
    if (end == line.size()) return 0;
    for (; end < line.size() && (isQuoted || (line[end] != ' ' && line[end] != '\t')); ++end)
        isQuoted = isQuoted != (line[end] == '"');
    return end;
}

}  // namespace brenta
