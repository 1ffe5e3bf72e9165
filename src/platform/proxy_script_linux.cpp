// Configuration scripts and the network's own proxies, through libraries that are loaded when they are needed
// and only in a process of their own: what they run was written by strangers, may go on for ever, and takes
// a script engine that nobody else in the host's process needs.
#include <dlfcn.h>
#include <pacparser.h>
#include <unistd.h>

#include <cstdarg>
#include <string_view>

#include "brenta/network.h"
#include "os/os.h"
#include "platform/child.h"
#include "platform/http_client.h"
#include "platform/network_backend.h"
#include "platform/proxy_settings.h"

namespace brenta {

namespace {

// Exit statuses of the child; others than these come from what it loads.
constexpr int kDone = 0;
constexpr int kNoLibrary = 101;
constexpr int kNoAnswer = 102;

constexpr int kFetchSeconds = 10;
constexpr std::size_t kLargestScript = 1 << 20;

template <class Function>
bool Find(void* library, const char* name, Function*& function) {
    function = reinterpret_cast<Function*>(dlsym(library, name));
    return function != nullptr;
}

bool Print(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
        if (written <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

int IgnoreMessage(const char* /*format*/, va_list /*arguments*/) {
    return 0;
}

int PrintScriptAnswer(const char* script, const char* url, const char* host) {
    void* const library = dlopen("libpacparser.so.1", RTLD_NOW | RTLD_LOCAL);
    decltype(&pacparser_init) init = nullptr;
    decltype(&pacparser_set_error_printer) setErrorPrinter = nullptr;
    decltype(&pacparser_parse_pac_string) parse = nullptr;
    decltype(&pacparser_find_proxy) findProxy = nullptr;
    if (!library || !Find(library, "pacparser_init", init) ||
        !Find(library, "pacparser_set_error_printer", setErrorPrinter) ||
        !Find(library, "pacparser_parse_pac_string", parse) ||
        !Find(library, "pacparser_find_proxy", findProxy))
        return kNoLibrary;
    setErrorPrinter(&IgnoreMessage);
    if (!init()) return kNoLibrary;
    const char* const answer = parse(script) ? findProxy(url, host) : nullptr;
    return answer && Print(answer) ? kDone : kNoAnswer;
}

/// "http://host:80" as a script's answer has it.
std::string AnswerFor(std::string_view proxy) {
    const std::size_t slashes = proxy.find("://");
    if (slashes == std::string_view::npos || proxy.starts_with("direct")) return "DIRECT;";
    std::string answer = proxy.starts_with("socks") ? "SOCKS " : "PROXY ";
    answer += proxy.substr(slashes + 3);
    return answer += ';';
}

int PrintDetectedProxies(const char* url) {
    void* const library = dlopen("libproxy.so.1", RTLD_NOW | RTLD_LOCAL);
    void* (*create)() = nullptr;
    char** (*getProxies)(void* factory, const char* url) = nullptr;
    if (!library || !Find(library, "px_proxy_factory_new", create) ||
        !Find(library, "px_proxy_factory_get_proxies", getProxies))
        return kNoLibrary;
    void* const factory = create();
    char** const proxies = factory ? getProxies(factory, url) : nullptr;
    std::string answer;
    for (char** proxy = proxies; proxy && *proxy; ++proxy)
        answer += AnswerFor(*proxy);
    return Print(answer) ? kDone : kNoAnswer;
}

ChildLimits LimitsFor(int seconds) {
    ChildLimits limits;
    limits.seconds = seconds;
    return limits;
}

}  // namespace

int PlatformFetchProxyScript(const std::string& scriptUrl, std::string& script) {
    constexpr std::string_view kFile = "file://";
    std::string text;
    if (scriptUrl.starts_with(kFile)) {
        const std::size_t slash = scriptUrl.find('/', kFile.size());
        if (slash == std::string::npos) return kProxyScriptNotFetched;
        const std::string path = UnescapedAddress(scriptUrl.substr(slash));
        if (os::ReadWholeFile(path.c_str(), text, kLargestScript) != os::FileStatus::Ok)
            return kProxyScriptNotFetched;
    } else {
        HttpRequest request;
        request.url = scriptUrl;
        request.limits.bodyBytes = kLargestScript;
        request.limits.connectSeconds = kFetchSeconds;
        request.limits.totalSeconds = 3 * kFetchSeconds;
        if (!HttpGetText(request, text).Ok()) return kProxyScriptNotFetched;
    }
    // The engine would not see what stands behind a 0.
    if (text.find('\0') != std::string::npos) return kProxyBadScript;
    script = text;
    return 0;
}

int PlatformRunProxyScript(const std::string& script, const std::string& url, const std::string& host,
                           int seconds, std::string& answer) {
    const auto work = [&] { return PrintScriptAnswer(script.c_str(), url.c_str(), host.c_str()); };
    const ChildResult result = RunInChild(work, LimitsFor(seconds));
    if (result.error == kChildTimedOut) return kProxyScriptTimedOut;
    if (result.error > 0) return result.error;
    if (result.error == 0 && result.status == kNoLibrary) return kProxyNoScriptEngine;
    if (result.error < 0 || result.status != kDone) return kProxyBadScript;
    answer = result.output;
    return 0;
}

int PlatformDetectProxies(const std::string& url, int seconds, std::string& answer) {
    const auto work = [&] { return PrintDetectedProxies(url.c_str()); };
    const ChildResult result = RunInChild(work, LimitsFor(seconds));
    if (result.error > 0) return result.error;
    // Where nothing is found the library says "direct", as it does where the network says so itself.
    if (result.error < 0 || result.status != kDone || result.output.find(' ') == std::string::npos)
        return kProxyNotDetected;
    answer = result.output;
    return 0;
}

}  // namespace brenta
