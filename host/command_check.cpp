// brenta check: errors and likely mistakes of modules, without running them.
#include <cstdio>

#include "brenta/script.h"
#include "commands.h"
#include "console.h"

namespace brenta::host {
namespace {

void PrintWarning(const ScriptWarning& warning) {
    std::fflush(stdout);
    std::fprintf(stderr, "%s(%d): warning: %s\n", StrPtr(warning.position.file), warning.position.line,
                 static_cast<const char*>(warning.text));
}

bool CheckOne(const std::string& file) {
    if (!CheckFile(file)) return false;
    ConsoleStream messages;
    TOrderedList<ScriptWarning> warnings;
    const bool good = CheckScriptModule(file.c_str(), messages, warnings);
    int count = 0;
    for (TIter<ScriptWarning> warning(warnings); warning.Get() != nullptr; warning.Next(), ++count)
        PrintWarning(*warning.Get());
    if (good)
        PrintLine(file + ": no errors, " + std::to_string(count) + (count == 1 ? " warning" : " warnings"));
    return good;
}

}  // namespace

int CheckCommand(const std::vector<std::string>& files) {
    bool good = true;
    for (const std::string& file : files)
        good = CheckOne(file) && good;
    return good ? 0 : 1;
}

}  // namespace brenta::host
