// brenta repl: an interactive prompt over one engine.
#include <algorithm>
#include <cstdio>
#include <string_view>

#include "command.h"
#include "console.h"
#include "line_editor.h"
#include "prompt_session.h"

namespace brenta::host {
namespace {

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
    return rest.empty() || rest.find_first_of(" \t\n") == 0;
}

/// Whether more lines belong to the entry: brackets are open, or a definition has not come to its body.
bool IsIncomplete(std::string_view entry) {
    if (entry.starts_with(':')) return false;
    if (OpenBrackets(entry) > 0) return true;
    const bool wantsBody = BeginsWithWord(entry, "function") || BeginsWithWord(entry, "class");
    return wantsBody && entry.find('{') == std::string_view::npos;
}

/// Reads an entry: one line, and what else belongs to it. False at the end of the input.
bool ReadEntry(LineEditor& editor, std::string& entry) {
    if (!editor.ReadLine("> ", entry)) return false;
    std::string line;
    while (IsIncomplete(entry) && editor.ReadLine("... ", line)) {
        if (editor.WasGivenUp()) {
            entry.clear();
            break;
        }
        entry += '\n';
        entry += line;
    }
    return true;
}

int Repl() {
    PromptSession session;
    LineEditor editor([&session](std::string_view line) { return session.Complete(line); });
    if (editor.IsInteractive())
        PrintLine("Brenta " BRENTA_VERSION " script prompt. :help tells what can be typed, Ctrl-D ends.");
    bool goesOn = true;
    for (std::string entry; goesOn && ReadEntry(editor, entry);) {
        editor.Remember(entry);
        goesOn = session.Run(entry);
        std::fflush(stdout);
    }
    if (editor.IsInteractive() && goesOn) PrintLine("");
    return 0;
}

void Define(Command& command) {
    command.Explain(
        "Reads piped input, too. The history of a prompt at a terminal is kept in the user's state folder, "
        "~/.local/state/brenta. Type :help at the prompt for more.");
    command.Example("brenta repl", "or just brenta");
    command.Example("echo '6 * 7' | brenta repl");
    command.Run(&Repl);
}

const CommandEntry entry("repl", CommandGroup::kScripts, "Open the script prompt", &Define);

}  // namespace
}  // namespace brenta::host
