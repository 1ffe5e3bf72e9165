// Windows: starting other programs.
#include "os/programs.h"

#include <algorithm>
#include <exception>
#include <string>
#include <string_view>

#include "os/os.h"
#include "os/windows/file_handle.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <objbase.h>
#include <shellapi.h>

namespace brenta::os {

const int kErrorNoSuchFile = ERROR_FILE_NOT_FOUND;
const int kErrorBadArgument = ERROR_INVALID_PARAMETER;
const int kErrorNoMemory = ERROR_NOT_ENOUGH_MEMORY;

namespace {

/// Appends a word to a command line so that the program finds it unchanged. Programs take the line apart by
/// themselves: all but the simplest words stand in double quotes, and "\" is special in front of one only.
void AppendWord(std::string& line, std::string_view word) {
    if (!line.empty()) line += ' ';
    if (!word.empty() && word.find_first_of(" \t\n\v\"") == std::string_view::npos) {
        line += word;
        return;
    }
    line += '"';
    std::size_t backslashes = 0;
    for (const char c : word) {
        if (c == '"') line.append(backslashes + 1, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        line += c;
    }
    line.append(backslashes, '\\');
    line += '"';
}

/// Whether the system would hand the program's command line to its shell.
bool IsForShell(std::string_view program) {
    // Names end before blanks and dots.
    program = program.substr(0, program.find_last_not_of(" .") + 1);
    std::string extension(program.substr(program.size() - std::min<std::size_t>(program.size(), 4)));
    for (char& c : extension)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return extension == ".bat" || extension == ".cmd";
}

/// The words as one line, or the line that they were cut from; "" if a shell would read something in them
/// that is meant as text.
std::string CommandLine(const char* const* arguments, int count, const char* whole) {
    // In a line without quotes the program's name may go on behind a blank; an address is no part of it.
    const auto mayBeForShell = [](const char* word) { return IsForShell(word) && !HasScheme(word); };
    const bool mayGoOn = whole && *whole != '"';
    const bool isForShell =
        IsForShell(arguments[0]) || (mayGoOn && std::any_of(arguments + 1, arguments + count, mayBeForShell));
    std::string line;
    for (int i = 0; i < count; ++i) {
        const std::string_view word(arguments[i] ? arguments[i] : "");
        if (isForShell && word.find_first_of("\"%!^&|<>\r\n") != std::string_view::npos) return "";
        AppendWord(line, word);
    }
    return whole ? whole : line;
}

/// The shell's extensions may be COM objects, which need this on the thread that calls them.
class ComForShell {
 public:
    ComForShell() : m_result(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE)) {}
    ~ComForShell() {
        if (SUCCEEDED(m_result)) CoUninitialize();
    }
    ComForShell(const ComForShell&) = delete;
    ComForShell& operator=(const ComForShell&) = delete;

 private:
    HRESULT m_result;
};

}  // namespace

bool OpenWithDesktop(const char* target) try {
    const bool isFile = KindOfPath(target) != PathKind::Absent;
    if (!target || (!isFile && !HasScheme(target))) return false;
    // For a name alone the desktop would look elsewhere, too.
    const std::string file = isFile ? FullPath(target) : target;
    const ComForShell com;
    SHELLEXECUTEINFOA request{};
    request.cbSize = sizeof request;
    request.fMask = SEE_MASK_FLAG_NO_UI | SEE_MASK_NOASYNC;
    request.lpFile = file.c_str();
    request.nShow = SW_SHOWNORMAL;
    return ShellExecuteExA(&request) != 0;
} catch (const std::exception&) {
    return false;
}

bool StartProgram(const char* const* arguments, int count, int& error, const char* whole) try {
    if (!arguments[0] || *arguments[0] == 0) {
        error = kErrorNoSuchFile;
        return false;
    }
    std::string line = CommandLine(arguments, count, whole);
    if (line.empty()) {
        error = kErrorBadArgument;
        return false;
    }
    STARTUPINFOA start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, CREATE_DEFAULT_ERROR_MODE, nullptr,
                        nullptr, &start, &process)) {
        error = static_cast<int>(GetLastError());
        return false;
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    error = 0;
    return true;
} catch (const std::exception&) {
    error = kErrorNoMemory;
    return false;
}

}  // namespace brenta::os
