// brenta repl: an interactive prompt over one engine.
#include <algorithm>
#include <cstdio>
#include <memory>
#include <string_view>

#include "command.h"
#include "console.h"
#include "line_editor.h"
#include "prompt.h"

namespace brenta::host {
namespace {

/// Where a text in quotes, a character in quotes or a line comment that begins at `i` ends: the place of its
/// last character, or the end of `text` if that comes first. `i` itself if nothing of these begins there.
std::size_t SkipQuoted(std::string_view text, std::size_t i) {
    const std::string_view rest = text.substr(i);
    if (rest.front() == '"') return std::min(text.find('"', i + 1), text.size());
    if (rest.starts_with("//")) return std::min(text.find('\n', i), text.size());
    if (rest.front() != '\'') return i;
    const std::size_t behind = i + (rest.starts_with("'\\") ? 3 : 2);
    return behind < text.size() && text[behind] == '\'' ? behind : i;
}

/// Open brackets left by `text`; a text in quotes that goes on counts as one.
int OpenBrackets(std::string_view text) {
    int open = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '{' || c == '(' || c == '[') ++open;
        if (c == '}' || c == ')' || c == ']') --open;
        i = SkipQuoted(text, i);
        if (i == text.size() && c == '"') return 1;
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

int Repl(const std::vector<std::string>& files) {
    if (!std::all_of(files.begin(), files.end(), &CheckFile)) return 1;
    Prompt prompt;
    for (const std::string& file : files)
        prompt.Run(":load " + file);
    LineEditor editor([&prompt](std::string_view line) { return prompt.Complete(line); });
    if (editor.IsInteractive())
        PrintLine("Brenta " BRENTA_VERSION " script prompt. :help tells what can be typed, Ctrl-D ends.");
    bool goesOn = true;
    for (std::string entry; goesOn && ReadEntry(editor, entry);) {
        editor.Remember(entry);
        goesOn = prompt.Run(entry);
        std::fflush(stdout);
    }
    if (editor.IsInteractive() && goesOn) PrintLine("");
    return 0;
}

void Define(Command& command) {
    const auto files = std::make_shared<std::vector<std::string>>();
    command.OptionalWords("FILE", *files, WordKind::kScript, "Scripts to load before");
    command.Explain(
        "Reads piped input, too; entries that fail there do not change the exit status. The history of a "
        "prompt at a terminal is kept in the user's state folder, "
        "~/.local/state/brenta. Type :help at the prompt for more.");
    command.Example("brenta repl", "or just brenta");
    command.Example("brenta repl panel.scr", "to call its functions");
    command.Example("echo '6 * 7' | brenta repl");
    command.Run([files] { return Repl(*files); });
}

const CommandEntry entry("repl", CommandGroup::kScripts, "Open the script prompt", &Define);

}  // namespace
}  // namespace brenta::host
