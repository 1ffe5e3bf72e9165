// brenta run: a script module and one of its functions.
#include <fstream>
#include <memory>

#include "brenta/files.h"
#include "brenta/script.h"
#include "brenta/settings.h"
#include "command.h"
#include "console.h"

namespace brenta::host {
namespace {

constexpr const char* kDefaultFunction = "Main";

struct RunOptions {
    std::string file;
    std::string function;  ///< empty: Main, if the module defines it
    std::vector<std::string> arguments;
    bool printResult = false;
};

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

/// The names of the functions that scripts have defined so far, for a message.
std::string DefinedFunctions(CCoreScriptEngine& engine) {
    std::string names;
    for (TIter<CCoreSymbol*> symbol = engine.GetFirstSymbol(); symbol.Get() != nullptr; symbol.Next()) {
        const std::string name = StrPtr((*symbol.Get())->GetName());
        if ((*symbol.Get())->GetKind() != SymbolKind::Function || name == "reflect") continue;
        names += (names.empty() ? "" : ", ") + name;
    }
    return names.empty() ? "defines none" : "defines " + names;
}

int Run(const RunOptions& options) {
    if (!CheckPath(options.file)) return 1;
    ConsoleStream messages;
    CCoreScriptEngine engine(TOrderedList<Var>(), &messages);
    if (!engine.LoadScriptModule(options.file.c_str())) {
        messages.ComplainUnlessDone("'" + options.file + "' failed without a message while it was loaded");
        return 1;
    }
    std::string function = options.function;
    if (function.empty()) {
        if (!DefinesFunction(engine, kDefaultFunction)) return 0;
        function = kDefaultFunction;
    }
    TOrderedList<Var> arguments;
    for (const std::string& argument : options.arguments)
        arguments.Add(Var(argument.c_str(), kNoName));
    Var result;
    if (engine.GetSymbol(StrId(function.c_str()), false) == nullptr) {
        Complain("there is no function '" + function + "': '" + options.file + "' " +
                 DefinedFunctions(engine));
        return 1;
    }
    if (!engine.RunScript(function.c_str(), result, arguments, false)) {
        messages.ComplainUnlessDone("'" + options.file + "': '" + function + "' failed without a message");
        return 1;
    }
    if (options.printResult) PrintLine(TextOf(result));
    return 0;
}

/// The functions that the text of a script defines; the script itself is not run for that.
std::vector<std::string> SuggestFunctions(const std::vector<std::string>& before) {
    std::vector<std::string> names;
    if (!FileExists(before[0].c_str())) return names;  // a device may have no end
    std::ifstream text(before[0]);
    for (std::string word; text >> word;) {
        if (word != "function" || !(text >> word)) continue;
        names.push_back(word.substr(0, word.find('(')));
    }
    return names;
}

void Define(Command& command) {
    const auto options = std::make_shared<RunOptions>();
    command.TakeDashesAsWords();
    command.Word("FILE", options->file, WordKind::kScript,
                 "The script, or the name of one in the Scripts folder");
    command.OptionalWord("FUNCTION", options->function, WordKind::kText,
                         "The function to call; default Main, if the script defines it");
    command.Suggest(&SuggestFunctions);
    command.OptionalWords("ARG", options->arguments, WordKind::kFile, "Its arguments, passed as texts");
    command.Flag("-r,--result", options->printResult, "Print the returned value");
    command.Explain(
        "Runs the script's global declarations, then the function. The function needs exactly as many ARGs "
        "as "
        "it has parameters. What stands behind -- is no option.");
    command.Example("brenta run panel.scr", "calls Main()");
    command.Example("brenta run --result panel.scr CountBoards 3 4", "calls CountBoards(\"3\", \"4\")");
    command.Run([options] { return Run(*options); });
}

const CommandEntry entry("run", CommandGroup::kScripts, "Load a script and call one of its functions",
                         &Define);

}  // namespace

}  // namespace brenta::host
