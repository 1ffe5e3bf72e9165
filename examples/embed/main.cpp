// The smallest program around the library: one dimension text, one script.
#include <brenta/core.h>

#include <cstdio>

// Where scripts print, and where their errors go.
struct Console : brenta::CScriptMsgStream {
    void OutputPrintStream(const char* text) override { std::puts(text); }
    void OutputErrStream(const char* text) override { std::fprintf(stderr, "%s\n", text); }
};

int main() {
    std::printf("%d units\n", brenta::StringToUnit("20mil+5mil", brenta::kMils));

    Console console;
    brenta::CCoreScriptEngine engine({}, &console);
    engine.InjectScript("area", "function Area(a, b) { print(\"multiplying\"); return a * b; }");
    brenta::Var area;
    const bool done = engine.Execute("Area(6, 7)", area, brenta::kUnitsNone);
    std::printf("%d\n", area.GetInt());
    return done ? 0 : 1;
}
