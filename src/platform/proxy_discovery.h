// The steps by which the proxy for an address is found, above what the platform knows.
#pragma once

#include <string>
#include <string_view>

#include "brenta/network.h"

namespace brenta {

/// What a look-up does with a script; tests put their own in place.
struct ProxyScripts {
    /// As PlatformFetchProxyScript, PlatformRunProxyScript and PlatformDetectProxies (network_backend.h).
    int (*fetch)(const std::string& scriptUrl, std::string& script);
    int (*run)(const std::string& script, const std::string& url, const std::string& host, int seconds,
               std::string& answer);
    int (*detect)(const std::string& url, int seconds, std::string& answer);
};

/// The platform's.
extern const ProxyScripts kPlatformProxyScripts;

/// Finds the proxies for an address by the script at `scriptUrl`, or by detection if that is "", and puts
/// them into the access type and the lists. On failure these stay as they were, and the result is the error.
int FindProxyForUrl(std::string_view url, const std::string& scriptUrl, CNetworkManager& manager,
                    const ProxyScripts& scripts = kPlatformProxyScripts);

/// The proxy list that a script's answer stands for: its servers up to the first "DIRECT", "" if that comes
/// first. False if the answer names nothing that can be used.
bool ProxiesOfAnswer(std::string_view answer, std::string& list);

/// All steps of GetClientInternetProxyInfo.
bool FindProxy(std::string_view url, CNetworkManager& manager, bool showErrors,
               const ProxyScripts& scripts = kPlatformProxyScripts);

/// A proxy list with addresses for its host names, as far as the host or the platform knows them.
std::string WithAddresses(std::string list);

/// The host and port that an address leads to, and what a script may know of it. No host if the address
/// cannot be used.
struct UrlTarget {
    std::string scheme;   ///< in lower case
    std::string host;     ///< without brackets
    int port = 0;         ///< the scheme's, if none is given
    std::string visible;  ///< without user name and fragment; of https only the server's part
};

UrlTarget TargetOf(std::string_view url);

}  // namespace brenta
