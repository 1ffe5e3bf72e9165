#include "platform/proxy_discovery.h"

#include <algorithm>

#include "brenta/http.h"
#include "foundation/characters.h"
#include "os/os.h"
#include "platform/host_services.h"
#include "platform/http_client.h"
#include "platform/network_backend.h"
#include "platform/proxy_list.h"
#include "platform/proxy_settings.h"

namespace brenta {

namespace {

constexpr int kScriptSeconds = 10;
constexpr int kMostProxies = 32;  ///< of one script's answer

CString ToText(std::string_view text) {
    return CString(text.data(), static_cast<int>(text.size()));
}

std::string Lowered(std::string_view text) {
    std::string lowered(text);
    for (char& c : lowered)
        c = ToLower(c);
    return lowered;
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------
// Addresses

namespace {

int PortOfScheme(const std::string& scheme) {
    return scheme == "https" ? 443 : scheme == "ftp" ? 21 : 80;
}

/// A byte that a quoted text of a script's language, or a header line, may hold.
bool IsPlain(char c) {
    return c > ' ' && c < 127 && c != '\'' && c != '"' && c != '\\';
}

std::string Escaped(std::string_view text) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string escaped;
    for (const char c : text) {
        if (IsPlain(c)) {
            escaped += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        escaped += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
    }
    return escaped;
}

}  // namespace

UrlTarget TargetOf(std::string_view url) {
    UrlTarget target;
    const std::size_t slashes = url.find("://");
    if (slashes == std::string_view::npos) return target;
    target.scheme = Lowered(url.substr(0, slashes));
    if (!std::all_of(target.scheme.begin(), target.scheme.end(), IsAlnum)) return target;
    url.remove_prefix(slashes + 3);
    // The text behind an equals sign is taken for the server whatever it holds.
    const std::string authority = "=" + std::string(url.substr(0, url.find_first_of("/?#")));
    const ProxyEntry server = SplitProxyEntry(authority);
    const bool hasPort = server.after.size() > 1;
    if (hasPort && server.port == 0) return target;
    target.port = hasPort ? server.port : PortOfScheme(target.scheme);
    std::string_view host = server.host;
    if (host.starts_with('[') && host.ends_with(']')) host = host.substr(1, host.size() - 2);
    if (!std::all_of(host.begin(), host.end(), IsPlain)) return target;
    target.host = host;
    // Whoever wrote the script has no business with what is asked of a server under encryption.
    const std::string_view path = url.substr(std::min(authority.size() - 1, url.size()));
    target.visible = target.scheme + "://" + std::string(server.host);
    if (hasPort) target.visible += ":" + std::to_string(target.port);
    target.visible += target.scheme == "https" ? "/" : Escaped(path.substr(0, path.find('#')));
    return target;
}

// ---------------------------------------------------------------------------------------------------------
// Scripts

namespace {

/// One alternative of a script's answer in the form of a proxy list; "" if it cannot be used.
std::string ProxyOfAlternative(const std::string& type, std::string_view server) {
    const bool isSocks = type.starts_with("socks");
    if (!isSocks && type != "proxy" && type != "http") return {};
    const ProxyEntry pieces = SplitProxyEntry(server);
    if (pieces.host.empty() || !pieces.before.empty()) return {};
    if (pieces.after.size() > 1 && pieces.port == 0) return {};
    const int port = pieces.port > 0 ? pieces.port : isSocks ? 1080 : 80;
    return (isSocks ? "socks=" : "") + std::string(pieces.host) + ":" + std::to_string(port);
}

}  // namespace

const ProxyScripts kPlatformProxyScripts = {&PlatformFetchProxyScript, &PlatformRunProxyScript,
                                            &PlatformDetectProxies};

bool ProxiesOfAnswer(std::string_view answer, std::string& list) {
    std::string found;
    for (int count = 0; !answer.empty() && count < kMostProxies;) {
        std::string_view alternative = answer.substr(0, answer.find(';'));
        answer.remove_prefix(std::min(alternative.size() + 1, answer.size()));
        const std::string type = Lowered(TakeProxyEntry(alternative));
        if (type == "direct") {
            list = found;
            return true;
        }
        const std::string proxy = ProxyOfAlternative(type, TakeProxyEntry(alternative));
        if (proxy.empty()) continue;
        if (!found.empty()) found += ';';
        found += proxy;
        ++count;
    }
    if (found.empty()) return false;
    list = found;
    return true;
}

// ---------------------------------------------------------------------------------------------------------
// Looking up

std::string WithAddresses(std::string list) {
    ReplaceProxyHosts(list, [](const std::string& host, std::string& address) {
        CoreString found;
        if (!HostResolve(host.c_str(), found)) return false;
        address = found.View();
        return true;
    });
    return list;
}

namespace {

void SetProxies(CNetworkManager& manager, const std::string& list, std::string_view bypass) {
    manager.m_accessType = list.empty() ? kAccessNoProxy : kAccessNamedProxy;
    manager.m_proxyList = ToText(WithAddresses(list));
    manager.m_bypassList = ToText(bypass);
}

int AskScript(const UrlTarget& target, const std::string& scriptUrl, const ProxyScripts& scripts,
              std::string& answer) {
    std::string script;
    const int error = scripts.fetch(scriptUrl, script);
    return error ? error : scripts.run(script, target.visible, target.host, kScriptSeconds, answer);
}

void UseSettings(const InternetSettings& settings, CNetworkManager& manager) {
    const bool isNamed = (settings.flags & kNamedProxy) != 0;
    SetProxies(manager, isNamed ? std::string(settings.proxyList.View()) : std::string(),
               isNamed ? settings.bypassList.View() : std::string_view());
    if (isNamed) manager.m_accessType = kAccessNamedProxy;
}

void UseCredentials(const InternetSettings& settings, CNetworkManager& manager) {
    if (!manager.m_userName.IsEmpty() || settings.user.IsEmpty()) return;
    manager.m_userName = ToText(settings.user.View());
    manager.m_password = ToText(settings.password.View());
}

}  // namespace

int FindProxyForUrl(std::string_view url, const std::string& scriptUrl, CNetworkManager& manager,
                    const ProxyScripts& scripts) {
    const UrlTarget target = TargetOf(url);
    if (target.host.empty()) return kProxyInvalidUrl;
    if (target.scheme != "http" && target.scheme != "https" && target.scheme != "ftp")
        return kProxyUnknownScheme;
    std::string answer, list;
    const int error = scriptUrl.empty() ? scripts.detect(target.visible, kScriptSeconds, answer)
                                        : AskScript(target, scriptUrl, scripts, answer);
    if (error) return error;
    if (!ProxiesOfAnswer(answer, list)) return kProxyBadScript;
    SetProxies(manager, list, {});
    return 0;
}

bool FindProxy(std::string_view url, CNetworkManager& manager, bool showErrors, const ProxyScripts& scripts) {
    InternetSettings settings;
    if (!HostInternetSettings(settings)) {
        if (showErrors) AfxMessageBox("Could not obtain internet proxy information");
        return false;
    }
    const bool hasScript = (settings.flags & kConfigurationScript) && !settings.scriptUrl.IsEmpty();
    manager.m_autoProxy = (settings.flags & kDetectProxy) || hasScript;
    manager.m_scriptUrl = manager.m_autoProxy ? ToText(settings.scriptUrl.View()) : CString();
    manager.m_lastDiscoveryError =
        manager.m_autoProxy ? FindProxyForUrl(url, std::string(settings.scriptUrl.View()), manager, scripts)
                            : 0;
    if (!manager.m_autoProxy || manager.m_lastDiscoveryError != 0) UseSettings(settings, manager);
    UseCredentials(settings, manager);
    return true;
}

namespace {

/// UTF-8 of a wide text, whose characters are 16 or 32 bits wide.
std::string Narrow(const wchar_t* text) {
    std::string narrow;
    for (; text && *text; ++text) {
        auto c = static_cast<std::uint32_t>(*text);
        if ((c & 0xFFFFFC00u) == 0xD800u && (static_cast<std::uint32_t>(text[1]) & 0xFFFFFC00u) == 0xDC00u)
            c = 0x10000u + ((c & 0x3FFu) << 10) + (static_cast<std::uint32_t>(*++text) & 0x3FFu);
        const auto add = [&narrow](std::uint32_t byte) { narrow += static_cast<char>(byte); };
        if (c < 0x80u) {
            add(c);
            continue;
        }
        const int more = c < 0x800u ? 1 : c < 0x10000u ? 2 : 3;
        add((0xF00u >> more & 0xF0u) | c >> (6 * more));
        for (int i = more - 1; i >= 0; --i)
            add(0x80u | (c >> (6 * i) & 0x3Fu));
    }
    return narrow;
}

}  // namespace

bool GetClientInternetProxyInfo(const wchar_t* url, CNetworkManager& manager, bool showErrors) {
    return FindProxy(Narrow(url), manager, showErrors);
}

bool CWinHTTP::GetWPADInternetProxyInfo(const wchar_t* url, const wchar_t* scriptUrl,
                                        CNetworkManager& manager) {
    manager.m_lastDiscoveryError = FindProxyForUrl(Narrow(url), Escaped(Narrow(scriptUrl)), manager);
    return manager.m_lastDiscoveryError == 0;
}

bool GetInternetSettings(InternetSettings& settings) {
    return HostInternetSettings(settings);
}

}  // namespace brenta
