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
    if (line.starts_with('"')) {
        const std::size_t end = std::min(line.find('"', 1), line.size());
        const bool isWord = end + 1 >= line.size() || line[end + 1] == ' ' || line[end + 1] == '\t';
        return isWord && end > 1 ? std::min(end + 1, line.size()) : 0;
    }
    const std::size_t end = std::min(line.find_first_of(" \t\""), line.size());
    return end < line.size() && line[end] == '"' ? 0 : end;
}

}  // namespace brenta
