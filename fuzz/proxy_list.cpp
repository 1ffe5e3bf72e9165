// Any bytes as a proxy list, a script's answer and a listing of settings: what is found is a host and a port,
// and replacing hosts by themselves changes nothing but the separators.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/proxy_discovery.h"
#include "platform/proxy_list.h"
#include "platform/proxy_settings.h"

namespace {

void Check(bool holds) {
    if (!holds) std::abort();
}

void CheckList(const std::string& list) {
    const brenta::ProxyServer proxy = brenta::FindHttpProxy(list);
    Check(proxy.host.empty() == (proxy.port == 0) && proxy.port >= 0 && proxy.port < 65536);
    Check(proxy.host.find_first_of("; \t\r\n/") == std::string::npos);
    const brenta::HostLookup toItself = [](const std::string& host, std::string& address) {
        Check(!host.empty());
        address = host;
        return true;
    };
    std::string once = list;
    if (!brenta::ReplaceProxyHosts(once, toItself)) return;
    const brenta::ProxyServer same = brenta::FindHttpProxy(once);
    Check(same.host == proxy.host && same.port == proxy.port);
    std::string twice = once;
    Check(brenta::ReplaceProxyHosts(twice, toItself) && twice == once);
}

void CheckSettings(const std::string& text) {
    const auto read = [&text](const char*, std::string& value) {
        value = text;
        return true;
    };
    brenta::InternetSettings settings;
    if (brenta::SettingsFromEnvironment(read, settings)) CheckList(std::string(settings.proxyList.View()));
    if (brenta::SettingsFromDesktop(text, settings)) CheckList(std::string(settings.proxyList.View()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    CheckList(text);
    CheckSettings(text);
    std::string list;
    if (brenta::ProxiesOfAnswer(text, list)) CheckList(list);
    Check(brenta::TargetOf(text).visible.find_first_of("'\"\\\n") == std::string::npos);
    return 0;
}
