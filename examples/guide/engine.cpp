// An engine at work: a module with functions, a call with arguments, command texts, and what an error leaves
// behind.
#include <brenta/script.h>

#include <cstdio>

namespace {

// What scripts print goes to standard output, what goes wrong in them too: here both are to be seen in order.
class Console : public brenta::CScriptMsgStream {
 public:
    void OutputPrintStream(const char* text) override { std::printf("%s\n", text); }
    void OutputErrStream(const char* text) override { std::printf("error: %s\n", text); }
};

constexpr char kModule[] = R"(
    var Copper = 35mil / 25;

    function Height(layers, core)
    {
        return layers * Copper + (layers - 1) * core;
    }
)";

void CallFunction(brenta::CCoreScriptEngine& engine) {
    brenta::TOrderedList<brenta::Var> arguments;
    arguments.Add(brenta::Var(4, brenta::kNoName));
    arguments.Add(brenta::Var(80000, brenta::kNoName));  // 8 mil
    brenta::Var height;
    if (engine.RunScript("Height", height, arguments, false))
        std::printf("height: %d units\n", height.GetInt());
}

void RunCommands(brenta::CCoreScriptEngine& engine) {
    brenta::Var result;
    engine.Execute("var layers = 6; Height(layers, 0.2mm)", result, brenta::kUnitsNone);
    std::printf("six layers: %d units\n", result.GetInt());
    engine.Execute("2 * 5", result, brenta::kMillimeters);  // as in a field that shows millimetres
    std::printf("typed: %d units\n", result.GetInt());
}

void Fail(brenta::CCoreScriptEngine& engine) {
    brenta::Var result;
    const bool done = engine.Execute("Height(4)", result, brenta::kUnitsNone);
    std::printf("done: %s\n", done ? "yes" : "no");
    engine.Execute("1 + 1", result, brenta::kUnitsNone);
    std::printf("afterwards: %d\n", result.GetInt());
}

}  // namespace

int main() {
    Console console;
    brenta::CCoreScriptEngine engine({}, &console);
    if (!engine.InjectScript("stack.scr", kModule)) return 1;
    CallFunction(engine);
    RunCommands(engine);
    Fail(engine);
    return 0;
}
