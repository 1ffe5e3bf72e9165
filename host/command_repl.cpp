// brenta repl: an interactive prompt over one engine.
#include <csignal>
#include <cstdio>
#include <string_view>

#include "brenta/script.h"
#include "commands.h"
#include "console.h"
#include "line_editor.h"

namespace brenta::host {
namespace {

CCoreScriptEngine* runningEngine = nullptr;  // what Ctrl-C stops

extern "C" void StopRunningScript(int) {
    if (runningEngine != nullptr) runningEngine->RequestStop();
}

/// While it lives, Ctrl-C stops the script instead of the program.
class InterruptScope {
 public:
    explicit InterruptScope(CCoreScriptEngine& engine) {
        engine.ClearStop();
        runningEngine = &engine;
        m_previous = std::signal(SIGINT, &StopRunningScript);
    }
    ~InterruptScope() {
        std::signal(SIGINT, m_previous);
        runningEngine = nullptr;
    }
    InterruptScope(const InterruptScope&) = delete;
    InterruptScope& operator=(const InterruptScope&) = delete;

 private:
    void (*m_previous)(int);
};

/// Open brackets left by `text`; texts in quotes and line comments do not count.
int OpenBrackets(std::string_view text) {
    int open = 0;
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '"') quoted = !quoted;
        if (quoted) continue;
        if (c == '/' && i + 1 < text.size() && text[i + 1] == '/') {
            i = std::min(text.find('\n', i), text.size());
        } else if (c == '{' || c == '(' || c == '[') {
            ++open;
        } else if (c == '}' || c == ')' || c == ']') {
            --open;
        }
    }
    return open;
}

bool BeginsWithWord(std::string_view text, std::string_view word) {
    const std::size_t start = text.find_first_not_of(" \t\n");
    if (start == std::string_view::npos || !text.substr(start).starts_with(word)) return false;
    const std::string_view rest = text.substr(start + word.size());
    return rest.empty() || rest.find_first_of(" \t\n\"") == 0;
}

/// Definitions belong to a module; everything else is a command.
bool IsDefinition(std::string_view entry) {
    return BeginsWithWord(entry, "function") || BeginsWithWord(entry, "class") ||
           BeginsWithWord(entry, "include");
}

/// Whether more lines belong to the entry: brackets are open, or a definition has not come to its body.
bool IsIncomplete(std::string_view entry) {
    if (OpenBrackets(entry) > 0) return true;
    const bool wantsBody = BeginsWithWord(entry, "function") || BeginsWithWord(entry, "class");
    return wantsBody && entry.find('{') == std::string_view::npos;
}

/// Reads an entry: one line, and what else belongs to it. False at the end of the input.
bool ReadEntry(LineEditor& editor, std::string& entry) {
    if (!editor.ReadLine("> ", entry)) return false;
    std::string line;
    while (IsIncomplete(entry) && editor.ReadLine("... ", line)) {
        entry += '\n';
        entry += line;
    }
    return true;
}

void RunEntry(CCoreScriptEngine& engine, const std::string& entry) {
    const InterruptScope interrupt(engine);
    if (IsDefinition(entry)) {
        engine.InjectScript("prompt", entry.c_str());
        return;
    }
    Var result;
    if (engine.Execute(entry.c_str(), result, kUnitsNone) && result.GetKind() != VarKind::Null)
        PrintLine(TextOf(result));
}

}  // namespace

int ReplCommand() {
    ConsoleStream messages;
    CCoreScriptEngine engine(TOrderedList<Var>(), &messages);
    LineEditor editor;
    if (editor.IsInteractive())
        PrintLine("Brenta script prompt. Type an expression, a statement or a definition; Ctrl-D ends.");
    for (std::string entry; ReadEntry(editor, entry);) {
        if (entry.find_first_not_of(" \t\n") == std::string::npos) continue;
        editor.Remember(entry);
        RunEntry(engine, entry);
        std::fflush(stdout);
    }
    if (editor.IsInteractive()) PrintLine("");
    return 0;
}

}  // namespace brenta::host
