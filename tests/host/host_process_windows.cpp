#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <wininet.h>

#include "host_process.h"
#include "test_support.h"

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

// There are no such devices: these are opened the wrong way round.
const char* const kFullFile = "NUL";
const char* const kNoInput = "nul";

int RunProgram(const std::string& program, const Lines& words, const std::string& folder,
               const StandardFiles& files) {
    std::string line = Quoted(program);
    for (const std::string& word : words)
        line += " " + Quoted(word);
    STARTUPINFOA start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput =
        Open(files.input, files.input == kNoInput ? GENERIC_WRITE : GENERIC_READ, OPEN_EXISTING);
    start.hStdOutput =
        Open(files.output, files.output == kFullFile ? GENERIC_READ : GENERIC_WRITE, CREATE_ALWAYS);
    start.hStdError = Open(files.errors, GENERIC_WRITE, CREATE_ALWAYS);
    PROCESS_INFORMATION process{};
    DWORD status = 127;
    const auto begin = [&] {
        return CreateProcessA(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                              folder.c_str(), &start, &process);
    };
    // On a busy machine Wine may say that it cannot (error 1359), and can a moment later.
    if (begin() || begin()) {
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

namespace {

/// The settings of whoever runs the tests, which are put back in the end.
struct InternetSettings {
    InternetSettings() {
        DWORD size = sizeof list;
        EXPECT_TRUE(InternetQueryOptionA(nullptr, INTERNET_OPTION_PER_CONNECTION_OPTION, &list, &size));
    }
    ~InternetSettings() { Set(); }

    void Set() { InternetSetOptionA(nullptr, INTERNET_OPTION_PER_CONNECTION_OPTION, &list, sizeof list); }

    INTERNET_PER_CONN_OPTIONA options[3] = {{INTERNET_PER_CONN_FLAGS, {}},
                                            {INTERNET_PER_CONN_PROXY_SERVER, {}},
                                            {INTERNET_PER_CONN_AUTOCONFIG_URL, {}}};
    INTERNET_PER_CONN_OPTION_LISTA list = {sizeof list, nullptr, 3, 0, options};
};

}  // namespace

// Wine takes no script.
void SetNetwork(const std::string& proxy, const std::string& script) {
    SetVariable("BRENTA_APPDATA", (ScratchFolder() / "network").string().c_str());
    static const InternetSettings s_former;
    InternetSettings now;
    now.options[0].Value.dwValue = PROXY_TYPE_DIRECT | (proxy.empty() ? 0 : PROXY_TYPE_PROXY) |
                                   (script.empty() ? 0 : PROXY_TYPE_AUTO_PROXY_URL);
    std::string texts[] = {proxy, script};
    now.options[1].Value.pszValue = texts[0].data();
    now.options[2].Value.pszValue = texts[1].data();
}

}  // namespace brenta::test
