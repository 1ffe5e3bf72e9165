#include <exception>
#include <string>
#include <vector>

#include "brenta/system.h"
#include "platform/host_services.h"

namespace brenta {

namespace {

bool Start(const std::vector<const char*>& words, int* error) {
    int number = 0;
    const bool started = HostStartProcess(words.data(), static_cast<int>(words.size()), number);
    if (error) *error = number;
    return started;
}

std::vector<std::string> WordsOf(const char* commandLine) {
    std::vector<std::string> words;
    bool inWord = false, inQuotes = false;
    for (const char* c = commandLine ? commandLine : ""; *c != 0; ++c) {
        if (!inQuotes && (*c == ' ' || *c == '\t')) {
            inWord = false;
            continue;
        }
        if (!inWord) words.emplace_back();
        inWord = true;
        if (*c == '"') {
            inQuotes = !inQuotes;
        } else {
            words.back() += *c;
        }
    }
    return words;
}

}  // namespace

bool ExecProgram(const char* program, const TOrderedList<CoreString>& arguments, int* error) try {
    std::vector<const char*> words{program ? program : ""};
    for (const CoreString& argument : arguments)
        words.push_back(argument);
    return Start(words, error);
} catch (const std::exception&) {
    return false;
}

bool ExecProgram(const char* commandLine, int* error) try {
    const std::vector<std::string> texts = WordsOf(commandLine);
    std::vector<const char*> words;
    words.reserve(texts.size());
    for (const std::string& text : texts)
        words.push_back(text.c_str());
    return Start(words, error);
} catch (const std::exception&) {
    return false;
}

bool ShellExecProgram(const char* target) {
    return HostShellOpen(target);
}

}  // namespace brenta
