// brenta proxy: which proxy serves an address, and why.
#include <algorithm>
#include <memory>

#include "brenta/network.h"
#include "command.h"
#include "console.h"

namespace brenta::host {
namespace {

void PrintField(const char* name, const std::string& value) {
    std::string line(name);
    line.resize(10, ' ');
    if (!value.empty()) PrintLine(line + value);
}

std::string FlagNames(int flags) {
    struct FlagName {
        int flag;
        const char* name;
    };
    constexpr FlagName kNames[] = {{kDirectConnection, "direct"},
                                   {kNamedProxy, "named proxy"},
                                   {kConfigurationScript, "configuration script"},
                                   {kDetectProxy, "detection"}};
    std::string names;
    for (const FlagName& known : kNames) {
        if ((flags & known.flag) == 0) continue;
        if (!names.empty()) names += ", ";
        names += known.name;
    }
    return names;
}

void PrintSettings(const InternetSettings& settings) {
    PrintField("settings", settings.source());
    PrintField("ways", FlagNames(settings.flags));
    PrintField("proxies", settings.proxyList());
    PrintField("bypass", settings.bypassList());
    PrintField("script", settings.scriptUrl());
    PrintField("user", settings.user());
}

/// Messages are made for boxes; here they take one line.
std::string OneLine(const char* message) {
    std::string line;
    for (; *message; ++message) {
        const bool isBreak = *message == '\n';
        if (!isBreak || (!line.empty() && line.back() != ' ')) line += isBreak ? ' ' : *message;
    }
    return line;
}

void PrintResult(CNetworkManager& network) {
    CString error;
    if (network.GetWinHttpWPADErrorMessage(error)) PrintField("failed", OneLine(error));
    const bool isNamed = network.m_accessType == kAccessNamedProxy;
    PrintField("result", isNamed ? std::string(network.m_proxyList) : "direct");
    if (isNamed) PrintField("not for", std::string(network.m_bypassList));
}

bool IsAddress(const std::string& url) {
    const bool isPlain = std::all_of(url.begin(), url.end(), [](char c) { return c > ' ' && c < 127; });
    const bool isKnown =
        url.starts_with("http://") || url.starts_with("https://") || url.starts_with("ftp://");
    return isPlain && isKnown;
}

int Proxy(const std::string& url) {
    if (!IsAddress(url)) {
        Complain("'" + url + "' is no http, https or ftp address");
        return 1;
    }
    InternetSettings settings;
    CNetworkManager network;
    const std::wstring wideUrl(url.begin(), url.end());
    if (!GetInternetSettings(settings) || !GetClientInternetProxyInfo(wideUrl.c_str(), network, false)) {
        Complain("the internet settings cannot be had");
        return 1;
    }
    PrintSettings(settings);
    PrintResult(network);
    return 0;
}

void Define(Command& command) {
    const auto url = std::make_shared<std::string>();
    command.Word("URL", *url, WordKind::kText, "The http, https or ftp address");
    command.Explain("Prints where the settings come from, what they say, and the result for the address.");
    command.Example("brenta proxy https://parts.example/list");
    command.Run([url] { return Proxy(*url); });
}

const CommandEntry entry("proxy", CommandGroup::kData, "Tell which proxy serves an address, and why",
                         &Define);

}  // namespace

}  // namespace brenta::host
