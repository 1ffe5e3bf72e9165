#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "terminal.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace brenta::host {

namespace {

/// What the console, which outlives the program, had before; 0 for what is not changed.
UINT g_inputPage = 0, g_outputPage = 0;
HANDLE g_screen = nullptr;
DWORD g_screenMode = 0;

HANDLE HandleOf(std::FILE* stream) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

/// The C library would take every device for a terminal, "NUL" among them.
bool IsConsole(std::FILE* stream) {
    DWORD mode = 0;
    return GetConsoleMode(HandleOf(stream), &mode) != 0;
}

void RestoreConsole() {
    if (g_inputPage != 0) SetConsoleCP(g_inputPage);
    if (g_outputPage != 0) SetConsoleOutputCP(g_outputPage);
    if (g_screen != nullptr) SetConsoleMode(g_screen, g_screenMode);
}

BOOL WINAPI RestoreConsoleAtBreak(DWORD) {
    RestoreConsole();
    return FALSE;
}

/// Texts are of the process's code page, and a console has one of its own. In a pipe of programs the first
/// leaves that of the screen to the last, so that one of them puts it back.
void ChangePages() {
    if (IsConsole(stdin)) {
        g_inputPage = GetConsoleCP();
        SetConsoleCP(GetACP());
    }
    if (IsConsole(stdout)) {
        g_outputPage = GetConsoleOutputCP();
        SetConsoleOutputCP(GetACP());
    }
}

/// Has the console know escape sequences, as it does from Windows 10 on.
void AskForColours(HANDLE screen) {
    DWORD mode = 0;
    if (!GetConsoleMode(screen, &mode) || !SetConsoleMode(screen, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING))
        return;
    g_screen = screen;
    g_screenMode = mode;
}

}  // namespace

bool InputComesFromTerminal() {
    return IsConsole(stdin);
}

bool OutputGoesToTerminal() {
    return IsConsole(stdout);
}

bool ErrorsGoToTerminal() {
    return IsConsole(stderr);
}

bool TerminalKnowsColours() {
    const char* const kind = std::getenv("TERM");
    return g_screen != nullptr && (kind == nullptr || kind != std::string_view("dumb"));
}

void PrepareStreams() {
    // Line feeds stay what they are; input still may have either form of line ends.
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    std::atexit(&RestoreConsole);
    SetConsoleCtrlHandler(&RestoreConsoleAtBreak, TRUE);
    ChangePages();
    // Both may be the one screen.
    AskForColours(HandleOf(IsConsole(stdout) ? stdout : stderr));
}

}  // namespace brenta::host
