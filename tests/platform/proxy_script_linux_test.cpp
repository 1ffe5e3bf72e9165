// Scripts in files, and hostile ones: on Windows the system's service runs them, outside of every program.
#include "brenta/network.h"
#include "made_up_network.h"
#include "os/os.h"
#include "platform/network_backend.h"
#include "proxy_script.h"

namespace brenta::test {
namespace {

/// Whether this machine can run scripts.
bool HasEngine() {
    std::string answer;
    return PlatformRunProxyScript("", "", "", 10, answer) != kProxyNoScriptEngine;
}

TEST(ProxyScript, InAFile) {
    if (!HasEngine()) GTEST_SKIP() << "no script engine";
    MadeUpNetwork network;
    const Scratch folder;
    const std::string path = folder / "it's a.pac";
    os::WriteWholeFile(path.c_str(), kProxyScript);
    network.settings.flags = kDirectConnection | kConfigurationScript;
    network.settings.scriptUrl = ("file://" + folder / "it's%20a.pac").c_str();
    for (const auto& [url, list] : kProxiesByScript) {
        CNetworkManager manager;
        EXPECT_TRUE(GetClientInternetProxyInfo(url, manager, true));
        EXPECT_EQ(manager.m_lastDiscoveryError, 0);
        EXPECT_STREQ(manager.m_proxyList, list);
    }
}

TEST(ProxyScript, HostileScriptsEnd) {
    if (!HasEngine()) GTEST_SKIP() << "no script engine";
    const std::string function = "function FindProxyForURL(url, host) { ";
    const std::pair<std::string, int> rows[] = {
        {function + "while (true) ; }", kProxyScriptTimedOut},
        {function + "var a = []; while (true) a.push(a.join()); }", 0},
        {function + "return FindProxyForURL(url, host); }", 0},
        {function + "var s = 'PROXY a:1;'; for (i = 0; i < 20; ++i) s += s; return s; }", kProxyBadScript},
        {function + "return null.x; }", kProxyBadScript},
        {"for (;;) ;", kProxyScriptTimedOut},
        {"not a script", kProxyBadScript},
        {"", kProxyBadScript},
    };
    for (const auto& [script, error] : rows) {
        std::string answer = "old";
        const int result = PlatformRunProxyScript(script, "http://x/", "x", 1, answer);
        // Out of time or out of memory: either may come first.
        if (error == 0)
            EXPECT_TRUE(result == kProxyScriptTimedOut || result == kProxyBadScript) << result << script;
        else
            EXPECT_EQ(result, error) << script;
        EXPECT_EQ(answer, "old");
    }
}

}  // namespace
}  // namespace brenta::test
