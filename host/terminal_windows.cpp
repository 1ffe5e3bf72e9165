#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <cstdlib>

#include "terminal.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace brenta::host {

namespace {

UINT g_inputPage = 0, g_outputPage = 0;  ///< the console's own

HANDLE HandleOf(std::FILE* stream) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

/// The C library would take every device for a terminal, "NUL" among them.
bool IsConsole(std::FILE* stream) {
    DWORD mode = 0;
    return GetConsoleMode(HandleOf(stream), &mode) != 0;
}

void RestorePages() {
    SetConsoleCP(g_inputPage);
    SetConsoleOutputCP(g_outputPage);
}

BOOL WINAPI RestorePagesAtBreak(DWORD) {
    RestorePages();
    return FALSE;
}

/// Texts are of the process's code page, and a console has one of its own, which outlives the program.
void ChangePages() {
    g_inputPage = GetConsoleCP();
    g_outputPage = GetConsoleOutputCP();
    std::atexit(&RestorePages);
    SetConsoleCtrlHandler(&RestorePagesAtBreak, TRUE);
    SetConsoleCP(GetACP());
    SetConsoleOutputCP(GetACP());
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

void PrepareStreams() {
    // Line feeds stay what they are; input still may have either form of line ends.
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    if (IsConsole(stdin) || IsConsole(stdout) || IsConsole(stderr)) ChangePages();
    // Colours, where the console knows any.
    std::FILE* const streams[] = {stdout, stderr};
    for (std::FILE* const stream : streams) {
        DWORD mode = 0;
        if (GetConsoleMode(HandleOf(stream), &mode))
            SetConsoleMode(HandleOf(stream), mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    }
}

}  // namespace brenta::host
