// The system's tables of routes, as texts.
#pragma once

#include <string_view>

namespace brenta {

/// Whether a table in the form of /proc/net/route or /proc/net/ipv6_route has a default route that is up and
/// leaves the machine.
bool HasDefaultRoute(std::string_view table);

}  // namespace brenta
