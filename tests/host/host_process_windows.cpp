#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <gtest/gtest.h>

#include "host_process.h"

namespace brenta::test {
namespace {

/// A word as programs read it from their command line.
std::string Quoted(const std::string& word) {
    std::string quoted = "\"", backslashes;
    for (const char c : word) {
        if (c == '"') quoted += backslashes + '\\';
        backslashes = c == '\\' ? backslashes + c : "";
        quoted += c;
    }
    return quoted + backslashes + "\"";
}

/// A file that the program inherits.
HANDLE Open(const std::string& path, DWORD access, DWORD creation) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return CreateFileA(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, creation, 0,
                       nullptr);
}

}  // namespace

int RunProgram(const std::string& program, const std::vector<std::string>& words, const std::string& folder,
               const StandardFiles& files) {
    std::string line = Quoted(program);
    for (const std::string& word : words)
        line += " " + Quoted(word);
    STARTUPINFOA start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = Open(files.input, GENERIC_READ, OPEN_EXISTING);
    start.hStdOutput = Open(files.output, GENERIC_WRITE, CREATE_ALWAYS);
    start.hStdError = Open(files.errors, GENERIC_WRITE, CREATE_ALWAYS);
    PROCESS_INFORMATION process{};
    DWORD status = 127;
    if (CreateProcessA(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, folder.c_str(),
                       &start, &process)) {
        WaitForSingleObject(process.hProcess, INFINITE);
        GetExitCodeProcess(process.hProcess, &status);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    } else {
        ADD_FAILURE() << line << " is not started: " << GetLastError();
    }
    for (const HANDLE file : {start.hStdInput, start.hStdOutput, start.hStdError})
        CloseHandle(file);
    return static_cast<int>(status);
}

}  // namespace brenta::test
