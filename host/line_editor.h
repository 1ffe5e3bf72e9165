// Reading lines from a person (with editing, history and completion) or from a pipe.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace brenta::host {

/// What may stand instead of the end of a line.
struct Completion {
    std::size_t start = 0;           ///< where in the line the words begin
    std::vector<std::string> words;  ///< whole words
    bool areFiles = false;           ///< the names of files may stand there
};

/// Gives what may stand at the end of a line that has been typed so far.
using Completer = std::function<Completion(std::string_view line)>;

class LineEditor {
 public:
    /// Editing, history and prompts are used only when standard input is a terminal.
    explicit LineEditor(Completer completer);
    ~LineEditor();
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    bool IsInteractive() const { return m_interactive; }
    /// False at the end of the input (Ctrl-D). The line comes without its line end.
    bool ReadLine(const char* prompt, std::string& line);
    /// Whether the line read last was given up (Ctrl-C).
    bool WasGivenUp() const { return m_wasGivenUp; }
    /// Keeps a whole entry, which may span lines, in the history.
    void Remember(const std::string& entry);

 private:
    bool m_interactive;
    bool m_wasGivenUp = false;
    struct Parts;
    std::unique_ptr<Parts> m_pParts;
};

}  // namespace brenta::host
