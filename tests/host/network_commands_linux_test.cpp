// brenta fetch and brenta proxy with what Linux knows of proxies: the environment and the desktop's settings.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "host_process.h"
#include "platform/loopback_server.h"
#include "test_support.h"

namespace brenta::test {
namespace {

namespace fs = std::filesystem;

/// From now on the environment names this proxy ("" for none), and the desktop's settings this script.
void SetNetwork(const std::string& proxy, const std::string& script) {
    for (const char* name : {"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY", "no_proxy", "NO_PROXY"})
        SetVariable(name, nullptr);
    SetVariable("http_proxy", proxy.c_str());
    SetVariable("BRENTA_APPDATA", (ScratchFolder() / "network").string().c_str());
    const fs::path programs = ScratchFolder() / "programs", settings = programs / "gsettings";
    fs::create_directories(programs);
    std::ofstream(settings) << "#!/bin/sh\necho \"org.gnome.system.proxy mode 'auto'\"\n"
                            << "echo \"org.gnome.system.proxy autoconfig-url '" << script << "'\"\n";
    fs::permissions(settings, fs::perms::owner_all);
    SetVariable("PATH", (programs.string() + ":/usr/bin:/bin").c_str());
}

const char* const kScript =
    "function FindProxyForURL(url, host) { return host == 'far' ? 'PROXY 127.0.0.1:8080' : 'DIRECT'; }";

TEST(FetchCommand, GoesThroughTheProxy) {
    const LoopbackServer server(
        {{"/proxy.pac", Page(kScript)}, {"/part", Page("content")}, {"http://far/part", Page("by proxy")}});
    const std::string address = server.Address(), file = (ScratchFolder() / "part").string();
    // Proxy, address of the file; what the file then holds.
    const std::tuple<std::string, std::string, const char*> rows[] = {
        {address, "http://far/part", "by proxy"}, {"", address + "/part", "content"}};
    for (const auto& [proxy, url, content] : rows) {
        SetNetwork(proxy, address + "/proxy.pac");
        EXPECT_EQ(RunHost({"fetch", url, file}).errors, Texts{}) << url;
        EXPECT_EQ(ReadText(file), content) << url;
    }
}

TEST(ProxyCommand, TellsTheProxyAndWhy) {
    const LoopbackServer server({{"/proxy.pac", Page(kScript)}});
    const std::string address = server.Address(), list = "http=" + address.substr(7);
    const std::string desktop =
        "settings  desktop\nways      direct, configuration script\nscript    " + address;
    // Proxy, script, address; what is printed.
    const std::tuple<std::string, const char*, const char*, std::string> rows[] = {
        {"", "/proxy.pac", "http://far/x", desktop + "/proxy.pac\nresult    127.0.0.1:8080\n"},
        {"", "/proxy.pac", "https://near/", desktop + "/proxy.pac\nresult    direct\n"},
        {"", "/none", "http://far/",
         desktop + "/none\nfailed    Unable to determine internet autoproxy details The proxy configuration "
                   "script could not be downloaded.\nresult    direct\n"},
        {address, "/proxy.pac", "http://far/",
         "settings  environment\nways      direct, named proxy\nproxies   " + list + "\nresult    " + list +
             "\n"},
        {"", "/proxy.pac", "mailto:x", ""}};
    for (const auto& [proxy, path, url, output] : rows) {
        SetNetwork(proxy, address + path);
        const HostResult result = RunHost({"proxy", url});
        EXPECT_EQ(result.status, output.empty() ? 1 : 0) << url;
        EXPECT_EQ(ReadText((ScratchFolder() / "out").string()), output) << url;
        EXPECT_EQ(result.errors.size(), output.empty() ? 1u : 0u) << url;
    }
}

}  // namespace
}  // namespace brenta::test
