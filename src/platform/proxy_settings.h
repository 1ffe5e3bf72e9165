// Internet settings from the texts in which systems keep them.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "brenta/host.h"

namespace brenta {

/// A part of an address with the bytes that it writes as "%" and two digits.
std::string UnescapedAddress(std::string_view text);

/// Gives an environment variable's value; false if it is not set.
using EnvironmentReader = std::function<bool(const char* name, std::string& value)>;

/// Settings from http_proxy, https_proxy, ftp_proxy, all_proxy and no_proxy. All but the first count in
/// capitals too: a web server hands its visitors' "Proxy:" header to its programs as HTTP_PROXY. False, and
/// `settings` as it was, if no proxy is named.
bool SettingsFromEnvironment(const EnvironmentReader& read, InternetSettings& settings);

/// Settings from the lines that "gsettings list-recursively org.gnome.system.proxy" prints. False, and
/// `settings` as it was, if they name no proxy and no script.
bool SettingsFromDesktop(std::string_view listing, InternetSettings& settings);

}  // namespace brenta
