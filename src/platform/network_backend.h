// The backend of the network manager: what the platform knows about the network. network_linux.cpp,
// proxy_settings_linux.cpp and proxy_script_linux.cpp implement it; everything above it is the same on all
// platforms.
#pragma once

#include <string>

#include "brenta/host.h"

namespace brenta {

/// The first IPv4 address of a host in dotted decimals. `host` is not "".
bool PlatformResolve(const std::string& host, std::string& address);

/// False, and `settings` as it was, if the settings cannot be had.
bool PlatformInternetSettings(InternetSettings& settings);

/// Whether there is a route beyond the machine.
bool PlatformIsOnline();

/// Whether a server takes a connection within so many seconds; finding its address comes before these.
bool PlatformCanConnect(const std::string& host, int port, int seconds);

/// Asks a configuration script for the proxies of an address, and leaves its answer ("PROXY host:port;
/// DIRECT") in `answer`. `url` and `host` hold no quote, backslash or control character. Returns 0 or the
/// error. The script cannot harm the process, and is stopped after so many seconds.
int PlatformRunProxyScript(const std::string& script, const std::string& url, const std::string& host,
                           int seconds, std::string& answer);

/// Asks the network for the proxies of an address, likewise.
int PlatformDetectProxies(const std::string& url, int seconds, std::string& answer);

}  // namespace brenta
