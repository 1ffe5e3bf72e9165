// Lines with editing and history through libedit.
#include <editline/readline.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <memory>

#include "brenta/files.h"
#include "brenta/settings.h"
#include "line_editor.h"

namespace brenta::host {
namespace {

constexpr int kHistoryLength = 1000;

/// Beside the host's other data; without such a folder the history lasts as long as the prompt.
std::string HistoryFile() {
    const CoreString folder = GetAppDataFolder();
    if (!DirectoryExists(folder)) return "";
    return std::string(CoreNativePath(AppendPaths(folder, "history")));
}

}  // namespace

LineEditor::LineEditor() : m_interactive(isatty(STDIN_FILENO) != 0) {
    if (!m_interactive) return;
    m_historyFile = HistoryFile();
    using_history();
    stifle_history(kHistoryLength);
    if (!m_historyFile.empty()) read_history(m_historyFile.c_str());
}

LineEditor::~LineEditor() {
    if (!m_historyFile.empty()) write_history(m_historyFile.c_str());
    if (m_interactive) clear_history();
}

bool LineEditor::ReadLine(const char* prompt, std::string& line) {
    if (!m_interactive) return static_cast<bool>(std::getline(std::cin, line));
    const std::unique_ptr<char, decltype(&std::free)> text(readline(prompt), &std::free);
    if (text == nullptr) return false;
    line = text.get();
    return true;
}

void LineEditor::Remember(const std::string& entry) {
    if (m_interactive && !entry.empty()) add_history(entry.c_str());
}

}  // namespace brenta::host
