// A proxy configuration script, and what it says.
#pragma once

#include <utility>

namespace brenta::test {

inline constexpr char kProxyScript[] =
    "function FindProxyForURL(url, host) {\n"
    "  if (isPlainHostName(host)) return 'DIRECT';\n"
    "  if (dnsDomainIs(host, '.vendor.example')) return 'PROXY proxy:8080; DIRECT';\n"
    "  if (shExpMatch(url, 'https:*/')) return 'PROXY tls:1';\n"
    "  return 'PROXY ' + url.length + ':2';\n"
    "}\n";

/// Addresses, and the proxies where "proxy" is 10.0.0.1.
inline constexpr std::pair<const wchar_t*, const char*> kProxiesByScript[] = {
    {L"http://intranet/", ""},
    {L"http://parts.vendor.example/x", "10.0.0.1:8080"},
    {L"https://x.example/secret", "tls:1"},
    {L"http://x.example/\x20AC", "26:2"}};

}  // namespace brenta::test
