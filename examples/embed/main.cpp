// The smallest program around the library: one dimension text, one script.
#include <brenta/script.h>
#include <brenta/units.h>

#include <cstdio>

// Prints what scripts print, one line for each print statement, and what goes wrong in them.
class ConsoleStream : public brenta::CScriptMsgStream {
 public:
    void OutputPrintStream(const char* text) override { std::puts(text); }
    void OutputErrStream(const char* text) override { std::fprintf(stderr, "%s\n", text); }
};

int main() {
    const int width = brenta::StringToUnit("20mil+5mil", brenta::kMils);
    std::printf("%d units\n", width);

    ConsoleStream console;
    brenta::CCoreScriptEngine engine({}, &console);
    brenta::Var area;
    const bool done =
        engine.InjectScript("area", "function Area(a, b) { print(\"multiplying\"); return a * b; }") &&
        engine.Execute("Area(6, 7)", area, brenta::kUnitsNone);
    std::printf("%d\n", area.GetInt());
    return done ? 0 : 1;
}
