#include "platform/proxy_discovery.h"

#include "loopback_server.h"
#include "made_up_network.h"
#include "os/os.h"
#include "platform/network_backend.h"
#include "proxy_script.h"

namespace brenta::test {
namespace {

int AnswerFor(const std::string& host, std::string& answer) {
    if (host == "broken") return kProxyBadScript;
    answer = host == "direct" ? "DIRECT" : host == "odd" ? "???" : "PROXY proxy:8080; PROXY b:1; DIRECT";
    return 0;
}

/// Scripts that answer by the host's name; the one place where there is none is "http://none/".
constexpr ProxyScripts kScripts = {[](const std::string& scriptUrl, std::string& script) {
                                       script = scriptUrl;
                                       return scriptUrl == "http://none/" ? kProxyScriptNotFetched : 0;
                                   },
                                   [](const std::string&, const std::string&, const std::string& host, int,
                                      std::string& answer) { return AnswerFor(host, answer); },
                                   [](const std::string& url, int, std::string& answer) {
                                       answer = "PROXY detected:1";
                                       return url == "http://broken/" ? kProxyNotDetected : 0;
                                   }};

TEST(ProxyDiscovery, Steps) {
    const char* const byScript = "10.0.0.1:8080;b:1";
    const char* const named = "http=10.0.0.2:80";
    // Flags, script, address; whether automatic, error, access type, proxies, bypass.
    const std::tuple<int, const char*, const char*, bool, int, int, const char*, const char*> rows[] = {
        {1, "", "http://x/", false, 0, 1, "", ""},
        {3, "", "http://x/", false, 0, 3, named, "*.local"},
        {7, "", "http://x/", false, 0, 3, named, "*.local"},
        {3, "http://s/", "http://x/", false, 0, 3, named, "*.local"},
        {5, "http://s/", "http://x/", true, 0, 3, byScript, ""},
        {7, "http://s/", "http://x/", true, 0, 3, byScript, ""},
        {7, "http://s/", "http://direct/", true, 0, 1, "", ""},
        {7, "http://s/", "http://broken/", true, kProxyBadScript, 3, named, "*.local"},
        {5, "http://s/", "http://broken/", true, kProxyBadScript, 1, "", ""},
        {5, "http://s/", "http://odd/", true, kProxyBadScript, 1, "", ""},
        {5, "http://none/", "http://x/", true, kProxyScriptNotFetched, 1, "", ""},
        {5, "http://s/", "mailto:x", true, kProxyInvalidUrl, 1, "", ""},
        {5, "http://s/", "gopher://x/", true, kProxyUnknownScheme, 1, "", ""},
        {9, "", "http://x/", true, 0, 3, "detected:1", ""},
        {11, "", "http://broken/", true, kProxyNotDetected, 3, named, "*.local"},
        {0, "", "", false, 0, 1, "", ""},
    };
    MadeUpNetwork network;
    network.settings.proxyList = "http=a:80";
    network.settings.bypassList = "*.local";
    for (const auto& [flags, script, url, isAuto, error, access, list, bypass] : rows) {
        CNetworkManager manager;
        manager.m_accessType = kAccessNamedProxy;
        manager.m_proxyList = manager.m_bypassList = manager.m_scriptUrl = "old";
        manager.m_lastDiscoveryError = 7;
        manager.m_autoProxy = true;
        network.settings.flags = flags;
        network.settings.scriptUrl = script;
        EXPECT_TRUE(FindProxy(url, manager, true, kScripts));
        const std::string what = std::to_string(flags) + " " + script + " " + url;
        EXPECT_EQ(manager.m_autoProxy, isAuto) << what;
        EXPECT_STREQ(manager.m_scriptUrl, isAuto ? script : "") << what;
        EXPECT_EQ(manager.m_lastDiscoveryError, error) << what;
        EXPECT_EQ(manager.m_accessType, access) << what;
        EXPECT_STREQ(manager.m_proxyList, list) << what;
        EXPECT_STREQ(manager.m_bypassList, bypass) << what;
    }
    EXPECT_EQ(network.shown, Texts{});
}

TEST(ProxyDiscovery, NoSettings) {
    MadeUpNetwork network;
    network.hasSettings = false;
    CNetworkManager manager;
    manager.m_proxyList = "old";
    manager.m_autoProxy = true;
    network.endpoints[Endpoint::WebService] = "http://x/";
    EXPECT_TRUE(manager.AssumeConnectedToInternet());
    EXPECT_FALSE(GetClientInternetProxyInfo(L"http://x/", manager, false));
    EXPECT_EQ(network.shown, Texts{});
    EXPECT_FALSE(GetClientInternetProxyInfo(nullptr, manager, true));
    EXPECT_EQ(network.shown, Texts{"Could not obtain internet proxy information|0"});
    EXPECT_STREQ(manager.m_proxyList, "old");
}

TEST(ProxyDiscovery, CredentialsOfTheSettings) {
    MadeUpNetwork network;
    network.settings.user = "me";
    network.settings.password = "secret";
    CNetworkManager manager;
    FindProxy("http://x/", manager, false);
    EXPECT_STREQ(manager.m_userName, "me");
    EXPECT_STREQ(manager.m_password, "secret");
    network.settings.user = "other";
    FindProxy("http://x/", manager, false);
    EXPECT_STREQ(manager.m_userName, "me");
}

TEST(ProxyDiscovery, Answers) {
    const std::pair<const char*, const char*> rows[] = {
        {"PROXY a:1", "a:1"},
        {" proxy  a:1 ;;SOCKS5 b ; Http c;", "a:1;socks=b:1080;c:80"},
        {"PROXY a:1; DIRECT; PROXY b:1", "a:1"},
        {"DIRECT; PROXY b:1", ""},
        {"HTTPS a:1; PROXY [::1]:2", "[::1]:2"},
        {"PROXY a:1;PROXY x=y:1;PROXY u@b:1;PROXY c:99999;PROXY", "a:1"},
        {"", nullptr},
        {";;;", nullptr},
        {"undefined", nullptr},
        {"HTTPS a:1", nullptr},
    };
    for (const auto& [answer, expected] : rows) {
        std::string list = "old";
        EXPECT_EQ(ProxiesOfAnswer(answer, list), expected != nullptr) << answer;
        EXPECT_EQ(list, expected ? expected : "old") << answer;
    }
}

TEST(ProxyDiscovery, Targets) {
    // Address; host, port, what a script may see.
    const std::tuple<const char*, const char*, int, const char*> rows[] = {
        {"http://x", "x", 80, "http://x"},
        {"HTTP://me:pw@x:81/a b?q='\\#f", "x", 81, "http://x:81/a%20b?q=%27%5C"},
        {"https://x:8443/secret?q", "x", 8443, "https://x:8443/"},
        {"ftp://[::1]/f", "::1", 21, "ftp://[::1]/f"},
        {"http://x:80'+evil()+'/", "x", 80, "http://x:80/"},
    };
    for (const auto& [url, host, port, visible] : rows) {
        const UrlTarget target = TargetOf(url);
        EXPECT_EQ(target.host, host);
        EXPECT_EQ(target.port, port);
        EXPECT_EQ(target.visible, visible);
    }
    for (const char* url :
         {"", "x", "://", "http://", "http://:80/", "http://x:99999/", "http://x'y/", "http://x\ny/"})
        EXPECT_EQ(TargetOf(url).host, "") << url;
}

TEST(ProxyScript, PicksTheProxyOfEachHost) {
    MadeUpNetwork network;
    const LoopbackServer server({{"/a.pac", Page(kProxyScript)}});
    network.settings.flags = kDirectConnection | kConfigurationScript;
    network.settings.scriptUrl = (server.Address() + "/a.pac").c_str();
    for (const auto& [url, list] : kProxiesByScript) {
        CNetworkManager manager;
        EXPECT_TRUE(GetClientInternetProxyInfo(url, manager, true));
        if (manager.m_lastDiscoveryError == kProxyNoScriptEngine) GTEST_SKIP() << "no script engine";
        EXPECT_EQ(manager.m_lastDiscoveryError, 0);
        EXPECT_STREQ(manager.m_proxyList, list);
    }
}

TEST(ProxyScript, OneThatCannotBeHad) {
    MadeUpNetwork network;
    const LoopbackServer server({});
    CNetworkManager manager;
    const int error = FindProxyForUrl("http://x/", server.Address() + "/none.pac", manager);
    EXPECT_TRUE(error == kProxyScriptNotFetched || error == kProxyNoScriptEngine) << error;
    EXPECT_EQ(manager.m_accessType, kAccessNoProxy);
}

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
        EXPECT_EQ(manager.m_lastDiscoveryError != 0, kIsWindows);  // whose service asks web servers only
        EXPECT_STREQ(manager.m_proxyList, kIsWindows ? "" : list);
    }
}

TEST(ProxyScript, HostileScriptsEnd) {
    const std::string function = "function FindProxyForURL(url, host) { ";
    const std::pair<std::string, int> rows[] = {
        {function + "return null.x; }", kProxyBadScript},
        {"not a script", kProxyBadScript},
        {"", kProxyBadScript},
        {function + "var s = 'PROXY a:1;'; for (i = 0; i < 20; ++i) s += s; return s; }", kProxyBadScript},
        {function + "while (true) ; }", kProxyScriptTimedOut},
        {"for (;;) ;", kProxyScriptTimedOut},
        {function + "var a = []; while (true) a.push(a.join()); }", 0},
        {function + "return FindProxyForURL(url, host); }", 0},
    };
    for (const auto& [text, error] : rows) {
        const LoopbackServer server({{"/a.pac", Page(text)}});
        std::string script, answer = "old";
        EXPECT_EQ(PlatformFetchProxyScript(server.Address() + "/a.pac", script), 0);
        const int result = PlatformRunProxyScript(script, "http://x/", "x", 1, answer);
        if (result == kProxyNoScriptEngine) GTEST_SKIP() << "no script engine";
        // Out of time or out of memory: either may come first. The system's service has reasons of its own,
        // and takes the first proxies of many.
        const bool isEither = result == kProxyScriptTimedOut || result == kProxyBadScript;
        const bool isOther =
            kIsWindows && error == kProxyBadScript && (result != 0 || text.find("PROXY") != text.npos);
        EXPECT_TRUE(error == 0 ? isEither : result == error || isOther) << result << text;
        EXPECT_EQ(answer, kIsWindows && result == 0 ? "PROXY a:1;" : "old") << text;
    }
}

}  // namespace
}  // namespace brenta::test
