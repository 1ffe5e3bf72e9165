// Showing a page in the person's browser.
#include <exception>
#include <string>
#include <system_error>
#include <vector>

#include "brenta/http.h"
#include "brenta/registry.h"
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
constexpr std::string_view kAddressMark = "%1";

bool Fail(int error) {
    CoreString message;
    message.Format("Error launching web browser.  CreateProcess( ) failed with error %d: %s", error,
                   std::system_category().message(error).c_str());
    AfxMessageBox(message);
    return false;
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
    const bool isText = value.type == REG_SZ || value.type == REG_EXPAND_SZ;
    return isText ? value.data.c_str() : "";
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

/// Puts the address in place of "%1", or behind the other words where that does not stand. The program itself
/// is never replaced. As the address stays within one word, nothing in it can become an option of its own.
void PlaceAddress(std::vector<std::string>& words, const std::string& url) {
    bool isPlaced = false;
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::size_t mark = words[i].find(kAddressMark);
        if (mark == std::string::npos) continue;
        words[i].replace(mark, kAddressMark.size(), url);
        isPlaced = true;
    }
    if (!isPlaced) words.push_back(url);
}

/// The address as it may stand in a command line; "" if it may not.
std::string SafeAddress(const char* url) {
    HttpUrl parts;
    if (!SplitHttpUrl(url, parts)) return "";
    std::string safe;
    for (const char* c = url; *c != 0; ++c) {
        if (*c == '"')
            safe += "%22";
        else
            safe += *c;
    }
    return safe;
}

bool Launch(const char* address) {
    const std::string url = SafeAddress(address);
    if (url.empty()) return Fail(os::kErrorBadArgument);
    std::vector<std::string> words = CommandWords(BrowserCommand());
    if (words.empty()) return HostShellOpen(url.c_str()) || Fail(os::kErrorNoSuchFile);
    PlaceAddress(words, url);
    int error = 0;
    return HostStartProcess(words, error) || Fail(error);
}

}  // namespace

bool CWinHTTP::LaunchWebBrowser(CString& url) try { return Launch(url); } catch (const std::exception&) {
    return Fail(os::kErrorNoMemory);
}

}  // namespace brenta
