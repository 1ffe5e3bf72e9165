// Messages with their places, a check that runs nothing, and a script that is stopped.
#include <brenta/script.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <thread>

namespace {

// A list of problems as an editor shows it: file and line as data, not as text.
class Problems : public brenta::CScriptMsgStream {
 public:
    void OutputErrStream(const char* text) override {
        const brenta::ScriptPosition& at = GetErrorPosition();
        std::printf("line %d of %s: %s\n", at.line, brenta::StrPtr(at.file), text);
    }
};

void ShowErrors() {
    Problems problems;
    brenta::CCoreScriptEngine engine({}, &problems);
    engine.InjectScript("board.scr", "function Width()\n{\n    return widht;\n}\n");
    brenta::Var result;
    engine.RunScript("Width", result, {}, false);
}

void CheckFile() {
    std::ofstream("slot.scr") << "function Slot()\n{\n    return 2 * -3mm;\n}\n";
    Problems problems;
    brenta::TOrderedList<brenta::ScriptWarning> warnings;
    const bool sound = brenta::CheckScriptModule("slot.scr", problems, warnings);
    std::printf("sound: %s\n", sound ? "yes" : "no");
    for (const brenta::ScriptWarning& warning : warnings)
        std::printf("line %d: %s\n", warning.position.line, warning.text());
    std::remove("slot.scr");
}

// Gives a script a tenth of a second.
void StopAfterAWhile() {
    Problems problems;
    brenta::CCoreScriptEngine engine({}, &problems);
    std::atomic<bool> finished = false;
    std::thread watch([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        if (!finished) engine.RequestStop();
    });
    brenta::Var result;
    engine.Execute("var i = 0; while (true) { i = i + 1; }", result, brenta::kUnitsNone);
    finished = true;
    watch.join();
    engine.ClearStop();  // a request that came too late is not meant for the next script
}

}  // namespace

int main() {
    ShowErrors();
    CheckFile();
    StopAfterAWhile();
    return 0;
}
