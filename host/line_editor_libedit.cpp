// Lines with editing, history and completion through libedit.
#include <editline/readline.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>

#include "history.h"
#include "line_editor.h"

namespace brenta::host {
namespace {

constexpr int kHistoryLength = 1000;

/// Where programs keep what is worth keeping, but no document: $XDG_STATE_HOME, or the usual place.
std::string StateFolder() {
    if (const char* const folder = std::getenv("XDG_STATE_HOME"); folder != nullptr && *folder == '/')
        return std::string(folder) + "/brenta";
    const char* const home = std::getenv("HOME");
    return home != nullptr && *home != 0 ? std::string(home) + "/.local/state/brenta" : "";
}

// libedit's completion is a set of plain functions: these hold what they work on.
const Completer* completer = nullptr;
Completion current;

char* NextWord(const char* text, int state) {
    static std::size_t next;
    if (state == 0) next = 0;
    for (; next < current.words.size(); ++next)
        if (current.words[next].starts_with(text)) return strdup(current.words[next++].c_str());
    return nullptr;
}

/// The text up to a cursor that libedit counts in characters.
std::string_view LineUpTo(int cursor) {
    std::size_t end = 0;
    for (; rl_line_buffer[end] != 0; ++end)
        if ((rl_line_buffer[end] & 0xC0) != 0x80 && cursor-- == 0) break;
    return {rl_line_buffer, end};
}

char** Complete(const char* text, int, int end) {
    rl_attempted_completion_over = 1;  // nothing else is offered
    const std::string_view line = LineUpTo(end);
    current = (*completer)(line);
    if (current.areFiles) return rl_completion_matches(text, &rl_filename_completion_function);
    // The words may begin elsewhere than libedit thinks.
    const std::size_t typed = line.size() - std::min(line.size(), std::strlen(text));
    if (current.start < typed)
        for (std::string& word : current.words)
            word.erase(0, typed - current.start);
    if (current.start > typed)
        for (std::string& word : current.words)
            word.insert(0, line.substr(typed, current.start - typed));
    return rl_completion_matches(text, &NextWord);
}

// ---------------------------------------------------------------------------------------------------------
// Ctrl-C

volatile std::sig_atomic_t wasInterrupted = 0;

extern "C" void NoteInterrupt(int) {
    wasInterrupted = 1;
}

/// The bytes that follow the first one of a character in UTF-8.
int BytesBehind(int first) {
    return first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : 0;
}

/// Reads a byte. The signals of a new window size, and of going on after Ctrl-Z, interrupt nothing: Ctrl-C
/// alone does.
bool ReadByte(unsigned char& byte) {
    for (;;) {
        const ssize_t count = read(STDIN_FILENO, &byte, 1);
        if (count >= 0 || errno != EINTR || wasInterrupted) return count == 1;
    }
}

/// Reads a character for libedit. Ctrl-C ends the line: left to itself, libedit would go on with it.
int ReadCharacter(FILE*) {
    unsigned char byte = 0;
    const bool isRead = ReadByte(byte);
    if (wasInterrupted) return '\n';
    if (!isRead) return -1;
    const int behind = BytesBehind(byte);
    int character = behind == 0 ? byte : byte & (0x3F >> behind);
    for (int i = 0; i < behind && ReadByte(byte); ++i)
        character = character << 6 | (byte & 0x3F);
    const bool isCharacter = character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
    return isCharacter ? character : '?';
}

/// While it lives, Ctrl-C interrupts the reading of a line and nothing else.
class InterruptScope {
 public:
    InterruptScope() {
        wasInterrupted = 0;
        struct sigaction action = {};
        action.sa_handler = &NoteInterrupt;
        sigaction(SIGINT, &action, &m_previous);
    }
    ~InterruptScope() { sigaction(SIGINT, &m_previous, nullptr); }
    InterruptScope(const InterruptScope&) = delete;
    InterruptScope& operator=(const InterruptScope&) = delete;

 private:
    struct sigaction m_previous = {};
};

/// A terminal that was opened for writing alone is nothing to type at.
bool IsPersonTyping() {
    return isatty(STDIN_FILENO) != 0 && (fcntl(STDIN_FILENO, F_GETFL) & O_ACCMODE) != O_WRONLY;
}

}  // namespace

struct LineEditor::Parts {
    Parts(Completer&& lineCompleter, History&& earlier)
        : completer(std::move(lineCompleter)), history(std::move(earlier)) {}

    Completer completer;
    History history;
};

LineEditor::LineEditor(Completer lineCompleter) : m_interactive(IsPersonTyping()) {
    if (!m_interactive) return;
    m_pParts = std::make_unique<Parts>(std::move(lineCompleter), History(StateFolder()));
    completer = &m_pParts->completer;
    rl_attempted_completion_function = &Complete;
    rl_completion_append_character = 0;
    rl_basic_word_break_characters = " \t\n\"'`@$><=;|&{}()[].,+-*/%!^~?";
    rl_getc_function = &ReadCharacter;
    // Texts are UTF-8 here, whatever else the environment may say.
    if (std::setlocale(LC_CTYPE, "") == nullptr || MB_CUR_MAX == 1) std::setlocale(LC_CTYPE, "C.UTF-8");
    using_history();
    stifle_history(kHistoryLength);
    for (const std::string& entry : m_pParts->history.Entries())
        add_history(entry.c_str());
}

LineEditor::~LineEditor() {
    if (m_interactive) clear_history();
    completer = nullptr;
}

bool LineEditor::ReadLine(const char* prompt, std::string& line) {
    if (!m_interactive) return static_cast<bool>(std::getline(std::cin, line));
    const InterruptScope interrupt;
    const std::unique_ptr<char, decltype(&std::free)> text(readline(prompt), &std::free);
    m_wasGivenUp = wasInterrupted != 0;
    line = text != nullptr && !m_wasGivenUp ? text.get() : "";
    return text != nullptr || m_wasGivenUp;
}

void LineEditor::Remember(const std::string& entry) {
    if (!m_interactive || entry.empty()) return;
    add_history(entry.c_str());
    m_pParts->history.Add(entry);
}

}  // namespace brenta::host
