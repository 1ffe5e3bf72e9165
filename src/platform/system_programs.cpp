#include <exception>
#include <string>
#include <vector>

#include "brenta/system.h"
#include "platform/command_words.h"
#include "platform/host_services.h"

namespace brenta {

namespace {

bool Start(const std::vector<std::string>& words, int* error) {
    int number = 0;
    const bool started = HostStartProcess(words, number);
    if (error) *error = number;
    return started;
}

}  // namespace

bool ExecProgram(const char* program, const TOrderedList<CoreString>& arguments, int* error) try {
    std::vector<std::string> words{program ? program : ""};
    for (const CoreString& argument : arguments)
        words.emplace_back(argument);
    return Start(words, error);
} catch (const std::exception&) {
    return false;
}

bool ExecProgram(const char* commandLine, int* error) try {
    return Start(CommandWords(commandLine ? commandLine : ""), error);
} catch (const std::exception&) {
    return false;
}

bool ShellExecProgram(const char* target) {
    return HostShellOpen(target);
}

}  // namespace brenta
