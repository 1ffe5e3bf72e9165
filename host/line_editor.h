// Reading lines from a person (with editing and history) or from a pipe.
#pragma once

#include <string>

namespace brenta::host {

class LineEditor {
 public:
    /// Editing, history and prompts are used only when standard input is a terminal.
    LineEditor();
    ~LineEditor();
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    bool IsInteractive() const { return m_interactive; }
    /// False at the end of the input (Ctrl-D). The line comes without its line end.
    bool ReadLine(const char* prompt, std::string& line);
    /// Keeps a whole entry, which may span lines, in the history.
    void Remember(const std::string& entry);

 private:
    bool m_interactive;
    std::string m_historyFile;
};

}  // namespace brenta::host
