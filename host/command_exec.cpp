// brenta exec: one command text in a fresh engine.
#include <memory>

#include "brenta/script.h"
#include "command.h"
#include "console.h"

namespace brenta::host {
namespace {

struct ExecOptions {
    std::string text;
    CoreUnits units = kUnitsNone;
};

int Exec(const ExecOptions& options) {
    ConsoleStream messages;
    CCoreScriptEngine engine(TOrderedList<Var>(), &messages);
    Var result;
    if (!engine.Execute(options.text.c_str(), result, options.units)) {
        messages.ComplainUnlessDone("the text failed without a message");
        return 1;
    }
    if (result.GetKind() != VarKind::Null) PrintLine(TextOf(result));
    return 0;
}

void Define(Command& command) {
    const auto options = std::make_shared<ExecOptions>();
    command.TakeDashesAsWords();
    command.Word("TEXT", options->text, WordKind::kText, "One or more statements");
    command.Units(options->units);
    command.Explain(
        "Prints the value of the last expression. With --units a result without a unit is converted to "
        "internal units (ten-millionths of an inch).");
    command.Example("brenta exec 'var x = 2; x * 21'", "prints 42");
    command.Example("brenta exec --units mm 10", "prints 3937007");
    command.Run([options] { return Exec(*options); });
}

const CommandEntry entry("exec", CommandGroup::kScripts, "Run one script command and print its result",
                         &Define);

}  // namespace
}  // namespace brenta::host
