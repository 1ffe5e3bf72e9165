// Showing a page in the person's browser.
#include <exception>
#include <string>
#include <string_view>
#include <system_error>

#include "brenta/http.h"
#include "brenta/registry.h"
#include "os/os.h"
#include "os/programs.h"
#include "platform/command_words.h"
#include "platform/host_services.h"
#include "platform/http_url.h"
#include "platform/registry_path.h"
#include "platform/registry_store.h"

namespace brenta {

namespace {

constexpr char kClasses[] = "SOFTWARE\\Classes\\";
constexpr char kOpenCommand[] = "\\shell\\open\\command";

bool Fail(int error) {
    CoreString message;
    message.Format("Error launching web browser.  CreateProcess( ) failed with error %d: %s", error,
                   std::system_category().message(error).c_str());
    AfxMessageBox(message);
    return false;
}

/// A text with the variables of the environment in place of their names, which stand between percent signs.
std::string Expanded(std::string_view text) {
    std::string expanded, value;
    while (!text.empty()) {
        const std::size_t end = text.front() == '%' ? text.find('%', 1) : text.npos;
        if (end != text.npos && os::GetEnvironment(std::string(text.substr(1, end - 1)).c_str(), value)) {
            expanded += value;
            text.remove_prefix(end + 1);
        } else {
            expanded += text.front();
            text.remove_prefix(1);
        }
    }
    return expanded;
}

/// The unnamed value of a key of the machine; "" if there is none. Asked of the store: CCoreRegistry opens
/// keys with all rights, and those of the machine are for most people to read only.
std::string MachineValue(const std::string& key) {
    constexpr std::uint64_t kLongest = 32768;
    const RegistryPath path(key.c_str());
    registry_store::Value value;
    if (path.Error() != RegistryError::None ||
        registry_store::ReadValue({registry_store::Root::LocalMachine, path}, "", kLongest, value) !=
            RegistryError::None)
        return "";
    if (value.type == REG_EXPAND_SZ) return Expanded(value.data.c_str());
    return value.type == REG_SZ ? value.data.c_str() : "";
}

/// The command by which a kind of file or address is opened; "" if there is none.
std::string OpenCommandOf(const std::string& kind) {
    return kind.empty() ? kind : MachineValue(kClasses + kind + kOpenCommand);
}

std::string BrowserCommand() {
    for (const char* protocol : {"HTTP", "HTTPS"}) {
        if (std::string command = OpenCommandOf(protocol); !command.empty()) return command;
    }
    for (const char* extension : {".htm", ".html"}) {
        std::string command = OpenCommandOf(MachineValue(std::string(kClasses) + extension));
        if (!command.empty()) return command;
    }
    return "";
}

/// Puts the address in place of "%1" and its kin, or behind all else where none stands. What comes before
/// `start`, the program, is never replaced.
std::string WithAddress(std::string_view command, std::size_t start, const std::string& url) {
    std::string line(command.substr(0, start));
    bool isPlaced = false;
    for (std::size_t i = start; i < command.size(); ++i) {
        const std::string_view mark = command.substr(i, 2);
        if (mark == "%1" || mark == "%l" || mark == "%L") {
            line += url;
            isPlaced = true;
            ++i;
        } else {
            line += command[i];
        }
    }
    return isPlaced ? line : line + " \"" + url + "\" ";
}

/// The address as it may stand in a command line; "" if it may not. Without blanks it stays one word even
/// where the command has no quotes around it; with them, a backslash at its end would take the closing one
/// along.
std::string SafeAddress(const char* url) {
    HttpUrl parts;
    if (!SplitHttpUrl(url, parts)) return "";
    std::string_view rest = url;
    std::string safe, end;
    for (; rest.ends_with('\\'); rest.remove_suffix(1))
        end += "%5C";
    for (const char c : rest) {
        if (c == '"')
            safe += "%22";
        else
            safe += c;
    }
    return safe + end;
}

bool Launch(const char* address) {
    const std::string url = SafeAddress(address);
    if (url.empty()) return Fail(os::kErrorBadArgument);
    std::string command = BrowserCommand();
    command.erase(0, command.find_first_not_of(" \t"));
    const std::size_t start = EndOfProgram(command);
    if (start == 0) return HostShellOpen(url.c_str()) || Fail(os::kErrorNoSuchFile);
    int error = 0;
    return HostStartCommand(WithAddress(command, start, url), error) || Fail(error);
}

}  // namespace

bool CWinHTTP::LaunchWebBrowser(CString& url) try { return Launch(url); } catch (const std::exception&) {
    return Fail(os::kErrorNoMemory);
}

}  // namespace brenta
