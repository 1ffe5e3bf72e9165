// Proxy lists: entries "host:port" or "scheme=host:port", separated by semicolons or blanks. People and
// scripts write them, so an entry may also carry what belongs to an address: "http=http://user@host:80/".
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace brenta {

/// One entry in its pieces, which put together are the entry again: `before` ends with the equals sign,
/// "scheme://" or user name; `after` starts at the port's colon. An address in brackets is the host with
/// them.
struct ProxyEntry {
    std::string_view before;
    std::string_view host;
    std::string_view after;
    std::string_view scheme;  ///< before the equals sign
    int port = 0;             ///< 0 if there is none from 1 to 65535
};

ProxyEntry SplitProxyEntry(std::string_view entry);

inline constexpr std::string_view kProxySeparators = "; \t\r\n";
inline constexpr std::string_view kBypassSeparators = ",; \t\r\n";

/// Takes the next entry off the front of a list; "" once there is none.
std::string_view TakeProxyEntry(std::string_view& list, std::string_view separators = kProxySeparators);

/// A proxy's host and port; "" and 0 for none.
struct ProxyServer {
    std::string host;
    int port = 0;
};

/// The proxy for http: the first entry of that scheme, whatever it holds, else the first entry of all if it
/// has no scheme.
ProxyServer FindHttpProxy(std::string_view list);

/// Puts the address of a host in `address`; false if there is none. Never asked for "".
using HostLookup = std::function<bool(const std::string& host, std::string& address)>;

/// Replaces the hosts of a list by their addresses, asking once for each, and puts semicolons between the
/// entries. Entries without a good port keep their host. False, and `list` as it was, if any entry has no
/// colon after its first character.
bool ReplaceProxyHosts(std::string& list, const HostLookup& lookup);

}  // namespace brenta
