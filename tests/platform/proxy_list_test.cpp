#include "platform/proxy_list.h"

#include "brenta/network.h"
#include "made_up_network.h"
#include "platform/proxy_settings.h"

namespace brenta::test {
namespace {

class Manager : public CNetworkManager {
 public:
    using CNetworkManager::ConvertToDottedDecimals;
    using CNetworkManager::ParseClientProxyInfo;
};

TEST(ProxyList, HttpProxy) {
    // List; host and port.
    const std::tuple<const char*, const char*, int> rows[] = {
        {"ftp=a:21; http=proxy:8080", "10.0.0.1", 8080},
        {"proxy:3128", "10.0.0.1", 3128},
        {"HTTP=Unknown.Example:80", "unknown.example", 80},
        {"a:1 b:2;http=c:3 http=d:4", "c", 3},
        {" ;;\tb:2;; ", "b", 2},
        {"http=http://me:se@cret@proxy:8080/", "10.0.0.1", 8080},
        {"http://proxy:8080", "10.0.0.1", 8080},
        {"[fe80::1]:8080", "[fe80::1]", 8080},
        {"b:65535", "b", 65535},
    };
    // No proxy for the web that can be used; in the first the semicolon ends the entry.
    // clang-format off
    const char* const useless[] = {
        "http=http://me:se@c;ret@proxy:8080/", "https=b:1;ftp=c:2", "ftp=a:21", "ftp=a:21;b:2", "", " ; ",
        "proxy", "a;b:80", ":80", "http=", "http=;proxy:80", "http=:80", "a:99999", "a:0", "a:-1", "a:",
        "a:18446744073709551617", "[::1", "[]:x", "://@:",
    };
    // clang-format on
    MadeUpNetwork network;
    Manager manager;
    const auto expect = [&](const char* list, const char* expectedHost, int expectedPort) {
        CString host("old");
        int port = 7;
        manager.m_proxyList = list;
        manager.ParseClientProxyInfo(host, port);
        EXPECT_STREQ(host, expectedHost) << list;
        EXPECT_EQ(port, expectedPort) << list;
    };
    for (const auto& [list, host, port] : rows)
        expect(list, host, port);
    for (const char* list : useless)
        expect(list, "", 0);
    EXPECT_EQ(std::count(network.resolved.begin(), network.resolved.end(), ""), 0);
}

TEST(ProxyList, DottedDecimals) {
    const std::pair<const char*, const char*> rows[] = {
        {"proxy:8080", "10.0.0.1:8080"},
        {"ftp=a:21; http=proxy:8080", "ftp=10.0.0.2:21;http=10.0.0.1:8080"},
        {"a:1 unknown:2;;a:3", "10.0.0.2:1;unknown:2;10.0.0.2:3"},
        {"http=http://me:pw@proxy:80/", "http=http://me:pw@10.0.0.1:80/"},
        {"[::1]:80 a:80", "[::1]:80;10.0.0.2:80"},
        {"http=:80;a:80", "http=:80;10.0.0.2:80"},
        {"", ""},
        {"a", "a"},
        {":80", ":80"},
        {"http=", "http="},
        {"a:99999", "a:99999"},
        {"proxy:80  a", "proxy:80  a"},
        {"proxy:80 :80", "proxy:80 :80"},
    };
    MadeUpNetwork network;
    Manager manager;
    for (const auto& [before, after] : rows) {
        CString list(before);
        EXPECT_EQ(&manager.ConvertToDottedDecimals(list), &list);
        EXPECT_STREQ(list, after);
    }
}

TEST(ProxyList, ManyEntriesAskOnce) {
    MadeUpNetwork network;
    Manager manager;
    std::string list, converted;
    for (int i = 0; i < 100'000; ++i) {
        list += "ftp=a:21; ";
        converted += i == 0 ? "ftp=10.0.0.2:21" : ";ftp=10.0.0.2:21";
    }
    CString text(list.c_str()), host;
    int port = 7;
    manager.ConvertToDottedDecimals(text);
    EXPECT_TRUE(text == converted.c_str());
    EXPECT_EQ(network.resolved, Texts{"a"});
    manager.m_proxyList = list.c_str();
    manager.ParseClientProxyInfo(host, port);
    EXPECT_EQ(port, 0);
}

TEST(ProxySettings, Environment) {
    using Variables = std::map<std::string, std::string>;
    // Variables; proxies (null: none found) and bypass, user and password.
    const std::tuple<Variables, const char*, const char*, const char*, const char*> rows[] = {
        {{{"http_proxy", "http://proxy:8080/"}}, "http=proxy:8080", "", "", ""},
        {{{"https_proxy", "proxy"}, {"all_proxy", "socks5://s"}}, "https=proxy:80;socks=s:1080", "", "", ""},
        {{{"ALL_PROXY", "https://p"}, {"NO_PROXY", "*"}}, "p:443", "*", "", ""},
        {{{"http_proxy", "http://m%40e:p=%41:@p:1"}, {"FTP_PROXY", "http://x:y@p:2"}},
         "http=p:1;ftp=p:2",
         "",
         "m@e",
         "p=A:"},
        {{{"http_proxy", "p:1"}, {"no_proxy", "localhost, .b.example,10.0.0.1,[::1],,."}},
         "http=p:1",
         "localhost;*.localhost;b.example;*.b.example;10.0.0.1;[::1]",
         "",
         ""},
        {{{"HTTP_PROXY", "http://evil:1"}}, nullptr, "", "", ""},
        {{{"http_proxy", ""}, {"no_proxy", "a"}}, nullptr, "", "", ""},
        {{{"http_proxy", "p:99999"}, {"ftp_proxy", "a b:1"}, {"all_proxy", "://"}}, nullptr, "", "", ""},
    };
    for (const auto& [variables, list, bypass, user, password] : rows) {
        const auto read = [&known = variables](const char* name, std::string& value) {
            const auto position = known.find(name);
            if (position != known.end()) value = position->second;
            return position != known.end();
        };
        InternetSettings settings;
        ASSERT_EQ(SettingsFromEnvironment(read, settings), list != nullptr);
        EXPECT_EQ(settings.flags, list ? kDirectConnection | kNamedProxy : kDirectConnection);
        EXPECT_STREQ(settings.proxyList, list ? list : "");
        EXPECT_STREQ(settings.bypassList, bypass);
        EXPECT_STREQ(settings.user, user);
        EXPECT_STREQ(settings.password, password);
    }
}

TEST(ProxySettings, Desktop) {
    const std::string base = "org.gnome.system.proxy";
    const std::string servers = base + ".http host 'p'\n" + base + ".http port 8080\n" + base +
                                ".https host 'x y'\n" + base + ".https port 1\n" + base +
                                ".socks host \"it's\"\n" + base + ".socks port 0\n" + base +
                                " ignore-hosts ['l', \"127.0.0.0/8\", '::1']\n";
    const std::string script = base + " autoconfig-url 'http://s/it\\'s.pac'";
    // What is listed; flags (0: nothing found), proxies, bypass, script.
    const std::tuple<std::string, int, const char*, const char*, const char*> rows[] = {
        {base + " mode 'manual'\n" + servers, 3, "http=p:8080", "l;*.l;127.0.0.0/8;::1", ""},
        {base + " mode 'auto'\n" + servers + script, 5, "", "", "http://s/it's.pac"},
        {base + " mode 'auto'\n" + base + " autoconfig-url ''", 9, "", "", ""},
        {base + " mode 'none'\n" + servers + script, 0, "", "", ""},
        {base + " mode 'manual'\n" + base + " ignore-hosts @as []", 0, "", "", ""},
        {"No such schema", 0, "", "", ""},
        {base + " mode 'auto", 9, "", "", ""},
        {base + " mode '\\", 0, "", "", ""},
        {base, 0, "", "", ""},
        {"", 0, "", "", ""},
    };
    for (const auto& [listing, flags, list, bypass, autoconfig] : rows) {
        InternetSettings settings;
        ASSERT_EQ(SettingsFromDesktop(listing, settings), flags != 0) << listing;
        EXPECT_EQ(settings.flags, flags ? flags : kDirectConnection) << listing;
        EXPECT_STREQ(settings.proxyList, list) << listing;
        EXPECT_STREQ(settings.bypassList, bypass) << listing;
        EXPECT_STREQ(settings.scriptUrl, autoconfig) << listing;
    }
}

}  // namespace
}  // namespace brenta::test
