// The backend of the network manager: what the platform knows about the network. network_linux.cpp,
// proxy_settings_linux.cpp and proxy_script_linux.cpp implement it, and those named "windows"; everything
// above it is the same on all platforms.
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
/// Windows takes its own time, and answers yes without a try where it knows of a proxy.
bool PlatformCanConnect(const std::string& host, int port, int seconds);

/// Fetches a configuration script; 0 or the error. Where the system fetches scripts by itself, it stays at
/// its address, which then stands for it.
int PlatformFetchProxyScript(const std::string& scriptUrl, std::string& script);

/// Asks a fetched script for the proxies of an address, and leaves its answer ("PROXY host:port; DIRECT") in
/// `answer`. `url` and `host` hold no quote, backslash or control character. Returns 0 or the
/// error. The script cannot harm the process, and is stopped after so many seconds.
int PlatformRunProxyScript(const std::string& script, const std::string& url, const std::string& host,
                           int seconds, std::string& answer);

/// Asks the network for the proxies of an address, likewise.
int PlatformDetectProxies(const std::string& url, int seconds, std::string& answer);

/// The system's number for a network that cannot be reached.
extern const int kErrorNetworkUnreachable;

/// The system's text for one of its own error numbers, those of its discovery of proxies too; "" for any
/// other.
std::string PlatformErrorText(int code);

}  // namespace brenta
