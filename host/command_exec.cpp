// brenta exec: one command text in a fresh engine.
#include "brenta/script.h"
#include "commands.h"
#include "console.h"

namespace brenta::host {

int ExecCommand(const std::string& text, CoreUnits units) {
    ConsoleStream messages;
    CCoreScriptEngine engine(TOrderedList<Var>(), &messages);
    Var result;
    if (!engine.Execute(text.c_str(), result, units)) return 1;
    if (result.GetKind() != VarKind::Null) PrintLine(TextOf(result));
    return 0;
}

}  // namespace brenta::host
