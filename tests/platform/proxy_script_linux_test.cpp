// Scripts in files, which the system's service takes from web servers only on Windows.
#include "brenta/network.h"
#include "made_up_network.h"
#include "os/os.h"
#include "proxy_script.h"

namespace brenta::test {
namespace {

TEST(ProxyScript, InAFile) {
    MadeUpNetwork network;
    const Scratch folder;
    const std::string path = folder / "it's a.pac";
    os::WriteWholeFile(path.c_str(), kProxyScript);
    network.settings.flags = kDirectConnection | kConfigurationScript;
    network.settings.scriptUrl = ("file://" + folder / "it's%20a.pac").c_str();
    for (const auto& [url, list] : kProxiesByScript) {
        CNetworkManager manager;
        EXPECT_TRUE(GetClientInternetProxyInfo(url, manager, true));
        if (manager.m_lastDiscoveryError == kProxyNoScriptEngine) GTEST_SKIP() << "no script engine";
        EXPECT_EQ(manager.m_lastDiscoveryError, 0);
        EXPECT_STREQ(manager.m_proxyList, list);
    }
}

}  // namespace
}  // namespace brenta::test
