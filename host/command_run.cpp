// brenta run: a script module and one of its functions.
#include "brenta/files.h"
#include "brenta/script.h"
#include "brenta/settings.h"
#include "commands.h"
#include "console.h"

namespace brenta::host {
namespace {

constexpr const char* kDefaultFunction = "Main";

/// The engine looks in the "Scripts" folder too; saying so in one line is kinder than its bare message.
bool CheckPath(const std::string& file) {
    const CoreString inScripts = AppendPaths(AppendPaths(GetAppDataFolder(), "Scripts"), file.c_str());
    if (FileExists(file.c_str()) || FileExists(inScripts)) return true;
    const char* problem = DirectoryExists(file.c_str()) ? "is a folder, not a script" : "does not exist";
    Complain("'" + file + "' " + problem + "; no script of that name is in the Scripts folder either ('" +
             std::string(CoreNativePath(inScripts)) + "')");
    return false;
}

bool DefinesFunction(const CCoreScriptEngine& engine, const char* name) {
    return dynamic_cast<FuncSymbol*>(engine.GetSymbol(StrId(name), false)) != nullptr;
}

}  // namespace

int RunCommand(const RunOptions& options) {
    if (!CheckPath(options.file)) return 1;
    ConsoleStream messages;
    CCoreScriptEngine engine(TOrderedList<Var>(), &messages);
    if (!engine.LoadScriptModule(options.file.c_str())) return 1;

    std::string function = options.function;
    if (function.empty()) {
        if (!DefinesFunction(engine, kDefaultFunction)) return 0;
        function = kDefaultFunction;
    }
    TOrderedList<Var> arguments;
    for (const std::string& argument : options.arguments)
        arguments.Add(Var(argument.c_str(), kNoName));
    Var result;
    if (!engine.RunScript(function.c_str(), result, arguments, false)) return 1;
    if (options.printResult) PrintLine(TextOf(result));
    return 0;
}

}  // namespace brenta::host
