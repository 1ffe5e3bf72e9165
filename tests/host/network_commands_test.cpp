// brenta fetch and brenta proxy, run as a user would, against servers on the loopback.
#include <gtest/gtest.h>

#include "host_process.h"
#include "platform/loopback_server.h"
#include "test_support.h"

namespace brenta::test {
namespace {

const char* const kScript =
    "function FindProxyForURL(url, host) { return host == 'far' ? 'PROXY 127.0.0.1:8080' : 'DIRECT'; }";

TEST(FetchCommand, TakesAFileFromAServer) {
    SetNetwork("", "");
    const LoopbackServer server({{"/part", Page("content")}});
    const std::string address = server.Address(), file = (ScratchFolder() / "part").string();
    EXPECT_EQ(RunHost({"fetch", address + "/part", file}).status, 0);
    EXPECT_EQ(ReadText(file), "content");
    const HostResult result = RunHost({"fetch", address + "/none", file});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, Texts{"brenta: The server answered with status 404"});
    EXPECT_EQ(ReadText(file), "content");
}

TEST(FetchCommand, GoesThroughTheProxy) {
    // Some clients name the port always.
    const LoopbackServer server({{"/proxy.pac", Page(kScript)},
                                 {"/part", Page("content")},
                                 {"http://far/part", Page("by proxy")},
                                 {"http://far:80/part", Page("by proxy")}});
    const std::string address = server.Address(), file = (ScratchFolder() / "part").string();
    // Proxy, address of the file; what the file then holds.
    const std::tuple<std::string, std::string, const char*> rows[] = {
        {server.Server(), "http://far/part", "by proxy"}, {"", address + "/part", "content"}};
    for (const auto& [proxy, url, content] : rows) {
        SetNetwork(proxy, address + "/proxy.pac");
        EXPECT_EQ(RunHost({"fetch", url, file}).errors, Texts{}) << url;
        EXPECT_EQ(ReadText(file), content) << url;
    }
}

TEST(ProxyCommand, TellsTheProxyAndWhy) {
    const LoopbackServer server({{"/proxy.pac", Page(kScript)}});
    const std::string address = server.Address(), proxy = server.Server();
    const std::string desktop =
        "settings  desktop\nways      direct, configuration script\nscript    " + address;
    const std::string byName =
        kIsWindows ? "settings  system\nways      named proxy\nproxies   " + proxy + "\nresult    " + proxy
                   : "settings  environment\nways      direct, named proxy\nproxies   http=" + proxy +
                         "\nresult    http=" + proxy;
    // Proxy, script, address; what is printed.
    const std::tuple<std::string, const char*, const char*, std::string> rows[] = {
        {proxy, "/proxy.pac", "http://far/", byName + "\n"},
        {"", "/proxy.pac", "mailto:x", ""},
        {"", "/proxy.pac", "http://far/x", desktop + "/proxy.pac\nresult    127.0.0.1:8080\n"},
        {"", "/proxy.pac", "https://near/", desktop + "/proxy.pac\nresult    direct\n"},
        {"", "/none", "http://far/",
         desktop + "/none\nfailed    Unable to determine internet autoproxy details The proxy configuration "
                   "script could not be downloaded.\nresult    direct\n"}};
    for (const auto& [named, path, url, output] : rows) {
        if (kIsWindows && output.starts_with(desktop)) continue;  // Wine's settings hold no script
        SetNetwork(named, address + path);
        const HostResult result = RunHost({"proxy", url});
        EXPECT_EQ(result.status, output.empty() ? 1 : 0) << url;
        EXPECT_EQ(ReadText((ScratchFolder() / "out").string()), output) << url;
        EXPECT_EQ(result.errors.size(), output.empty() ? 1u : 0u) << url;
    }
    SetNetwork("", "");
}

}  // namespace
}  // namespace brenta::test
