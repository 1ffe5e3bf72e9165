// Configuration scripts and the network's own proxies, by the system's service for them (WinHTTP). The
// service fetches and keeps the scripts, and runs them outside of this process.
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <winhttp.h>

#include <chrono>
#include <exception>
#include <future>
#include <memory>
#include <thread>

#include "brenta/network.h"
#include "os/os.h"
#include "platform/network_backend.h"
#include "platform/proxy_list.h"
#include "platform/wide_text_windows.h"

namespace brenta {

namespace {

/// The answer as a script gives it: the service puts the proxies of one into a list.
std::string AnswerOf(const WINHTTP_PROXY_INFO& info) {
    if (info.dwAccessType != WINHTTP_ACCESS_TYPE_NAMED_PROXY || !info.lpszProxy) return "DIRECT";
    const std::string list = Narrowed(info.lpszProxy);
    std::string answer;
    std::string_view rest = list;
    for (std::string_view entry = TakeProxyEntry(rest); !entry.empty(); entry = TakeProxyEntry(rest))
        answer.append("PROXY ").append(entry).append(";");
    return answer;
}

struct CloseHandleOfWinHttp {
    void operator()(void* handle) const { WinHttpCloseHandle(handle); }
};

struct Outcome {
    int error = 0;
    std::string answer;
};

/// Asks the service; without a script's address it looks for one in the network.
Outcome Ask(const std::wstring& scriptUrl, const std::wstring& url, int milliseconds) {
    const std::unique_ptr<void, CloseHandleOfWinHttp> session(
        WinHttpOpen(nullptr, WINHTTP_ACCESS_TYPE_NO_PROXY, nullptr, nullptr, 0));
    if (!session) return {static_cast<int>(GetLastError()), ""};
    WinHttpSetTimeouts(session.get(), milliseconds, milliseconds, milliseconds, milliseconds);
    WINHTTP_AUTOPROXY_OPTIONS options = {};
    options.dwFlags = scriptUrl.empty() ? WINHTTP_AUTOPROXY_AUTO_DETECT : WINHTTP_AUTOPROXY_CONFIG_URL;
    if (scriptUrl.empty())
        options.dwAutoDetectFlags = WINHTTP_AUTO_DETECT_TYPE_DHCP | WINHTTP_AUTO_DETECT_TYPE_DNS_A;
    else
        options.lpszAutoConfigUrl = scriptUrl.c_str();
    WINHTTP_PROXY_INFO info = {};
    bool isFound = WinHttpGetProxyForUrl(session.get(), url.c_str(), &options, &info);
    // The person's own login is offered only to a server that wants one.
    if (!isFound && GetLastError() == ERROR_WINHTTP_LOGIN_FAILURE) {
        options.fAutoLogonIfChallenged = TRUE;
        isFound = WinHttpGetProxyForUrl(session.get(), url.c_str(), &options, &info);
    }
    if (!isFound) return {static_cast<int>(GetLastError()), ""};
    Outcome outcome{0, AnswerOf(info)};
    if (info.lpszProxy) GlobalFree(info.lpszProxy);
    if (info.lpszProxyBypass) GlobalFree(info.lpszProxyBypass);
    return outcome;
}

/// As Ask, but for so long at most. The service cannot be stopped, and is left to itself then.
int AskWithin(int seconds, const std::string& scriptUrl, const std::string& url, std::string& answer) try {
    if (!WinHttpCheckPlatform()) return kProxyNoScriptEngine;
    std::promise<Outcome> promise;
    std::future<Outcome> future = promise.get_future();
    std::thread asking(
        [seconds, script = Widened(scriptUrl), page = Widened(url), promise = std::move(promise)]() mutable {
            try {
                promise.set_value(Ask(script, page, seconds * 1000));
            } catch (const std::exception&) {
                promise.set_value({ERROR_NOT_ENOUGH_MEMORY, ""});
            }
        });
    if (future.wait_for(std::chrono::seconds(seconds)) != std::future_status::ready) {
        os::KeepLoaded();
        asking.detach();
        return kProxyScriptTimedOut;
    }
    asking.join();
    const Outcome outcome = future.get();
    if (outcome.error == 0) answer = outcome.answer;
    return outcome.error;
} catch (const std::exception&) {
    return ERROR_NOT_ENOUGH_MEMORY;
}

}  // namespace

int PlatformFetchProxyScript(const std::string& scriptUrl, std::string& script) {
    script = scriptUrl;
    return 0;
}

int PlatformRunProxyScript(const std::string& script, const std::string& url, const std::string&, int seconds,
                           std::string& answer) {
    return AskWithin(seconds, script, url, answer);
}

int PlatformDetectProxies(const std::string& url, int seconds, std::string& answer) {
    return AskWithin(seconds, "", url, answer);
}

}  // namespace brenta
