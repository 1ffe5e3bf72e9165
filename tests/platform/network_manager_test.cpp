#include "brenta/network.h"

#include "brenta/registry.h"
#include "loopback_server.h"
#include "made_up_network.h"
#include "os/programs.h"
#include "platform/routes.h"

namespace brenta::test {
namespace {

TEST(NetworkManager, AnswersStandForAMinute) {
    // Seconds later; tests by then.
    const std::pair<long long, int> rows[] = {{0, 1},         {30, 1}, {60, 1},        {61, 2},
                                              {1'000'000, 2}, {-1, 1}, {-2'000'000, 1}};
    for (const auto& [later, tests] : rows) {
        MadeUpNetwork network;
        network.settings.flags = kNamedProxy;
        CNetworkManager manager;
        EXPECT_TRUE(manager.IsConnectedToInternet());
        EXPECT_EQ(manager.m_lastTest, 1'000'000);
        network.isOnline = false;
        network.time += later;
        EXPECT_EQ(manager.IsConnectedToInternet(), tests == 1) << later;
        EXPECT_EQ(network.tests, tests) << later;
        EXPECT_EQ(manager.m_lastTest, tests == 1 ? 1'000'000 : network.time);
    }
}

TEST(NetworkManager, Connection) {
    const LoopbackServer server({});
    const std::string open = server.Address(), closed = "http://127.0.0.1:" + std::to_string(FreePort());
    // Flags, whether there is the web service, whether online, web site; whether connected.
    const std::tuple<int, bool, bool, std::string, bool> rows[] = {
        {1, false, true, open, true},    {1, false, true, closed, false}, {1, false, true, "", false},
        {1, false, false, open, false},  {3, false, true, "", true},      {3, false, false, "", false},
        {9, false, true, closed, false}, {9, true, false, "", true},      {3, true, false, "", false},
    };
    for (const auto& [flags, hasService, isOnline, site, expected] : rows) {
        MadeUpNetwork network;
        network.settings.flags = flags;
        network.isOnline = isOnline;
        network.endpoints[Endpoint::WebSite] = site;
        // Nothing can be detected for an address that is none.
        if (hasService) network.endpoints[Endpoint::WebService] = "service";
        CNetworkManager manager;
        EXPECT_EQ(manager.IsConnectedToInternet(), expected) << flags << hasService << isOnline << site;
        const long long tested = manager.m_lastTest;
        network.time += 100;
        EXPECT_EQ(manager.AssumeConnectedToInternet(), hasService && flags == 9);
        EXPECT_EQ(manager.m_lastTest, tested);
    }
}

void Fill(CNetworkManager& manager) {
    manager.m_accessType = kAccessNamedProxy;
    manager.m_proxyList = "list";
    manager.m_bypassList = "bypass";
    manager.m_userName = "user";
    manager.m_password = "password";
    manager.m_texts[0] = "first";
    manager.m_texts[4] = "last";
    manager.m_numbers[1] = 5;
    manager.m_autoProxy = manager.m_connected = true;
    manager.m_lastTest = 1LL << 40;
    manager.m_lastDiscoveryError = 6;
    manager.m_scriptUrl = "script";
}

/// Whether a manager has the fields of a filled one, and this script.
bool IsCopy(const CNetworkManager& copy, const char* scriptUrl) {
    const auto copied = [](const CNetworkManager& m) {
        return std::tie(m.m_accessType, m.m_proxyList, m.m_bypassList, m.m_userName, m.m_password,
                        m.m_texts[0], m.m_texts[4], m.m_numbers[1], m.m_autoProxy, m.m_connected,
                        m.m_lastTest, m.m_lastDiscoveryError);
    };
    CNetworkManager filled;
    Fill(filled);
    return copied(copy) == copied(filled) && copy.m_scriptUrl == scriptUrl;
}

TEST(NetworkManager, Copies) {
    MadeUpNetwork network;
    CNetworkManager from, to;
    EXPECT_EQ(from.m_accessType, kAccessNoProxy);
    Fill(from);
    EXPECT_TRUE(IsCopy(CNetworkManager(from), ""));
    to.m_scriptUrl = "own";
    to = from;
    EXPECT_TRUE(IsCopy(to, "own"));
    from = *&from;
    EXPECT_TRUE(IsCopy(from, "script"));
    EXPECT_TRUE(to.IsKindOf(&CObject::kRuntimeClass));
    EXPECT_STREQ(to.GetRuntimeClass()->name, "CNetworkManager");

    CSemaphore lock;
    CNetworkManager shared;
    OnThreads(4, [&](int) {
        CNetworkManager own;
        for (int i = 0; i < 100; ++i) {
            CNetworkManager::ThreadSafeCopy(shared, from, &lock);
            CNetworkManager::ThreadSafeCopy(own, shared, &lock);
        }
        EXPECT_TRUE(IsCopy(own, ""));
    });
    EXPECT_TRUE(lock.Lock(0));
    CNetworkManager::ThreadSafeCopy(to, from, nullptr);
    EXPECT_TRUE(IsCopy(to, "own"));
}

TEST(NetworkManager, Credentials) {
    const std::string binary("p\xC3\xA9\xFF", 4), longText(5000, 'x');
    for (const std::string& password : {std::string("secret"), std::string(), binary, longText}) {
        MadeUpNetwork network;
        CNetworkManager manager;
        EXPECT_FALSE(manager.LookupAuthentication());
        manager.m_userName = "me";
        manager.m_password = password.c_str();
        ASSERT_TRUE(manager.SaveAuthentication());

        CCoreRegistry registry(HKEY_CURRENT_USER);
        ASSERT_TRUE(registry.SetKey("Software\\Orvane Works\\Brenta V4\\Settings\\Proxy", false));
        EXPECT_STREQ(registry.ReadString("Username", ""), "me");
        EXPECT_EQ(registry.GetDataType("Password"), REG_SZ);
        EXPECT_TRUE(password.empty() || registry.ReadString("Password", "") != password.c_str());

        EXPECT_TRUE(CNetworkManager().m_password == password.c_str());
        manager.m_userName = manager.m_password = "typed";
        EXPECT_TRUE(manager.LookupAuthentication());
        EXPECT_STREQ(manager.m_userName, "me");
        EXPECT_TRUE(manager.m_password == password.c_str());

        EXPECT_TRUE(registry.DeleteValue("Password"));
        EXPECT_FALSE(manager.LookupAuthentication());
        EXPECT_STREQ(manager.m_userName, "me");
        EXPECT_STREQ(manager.m_password, "");
        manager.DeleteAuthentication();
        EXPECT_STREQ(manager.m_userName, "me");
        EXPECT_EQ(registry.GetValueCount(), 0);
    }
}

TEST(NetworkManager, DiscoveryErrors) {
    // Error; the message's start, and what else is in it.
    const std::tuple<int, const char*, const char*> rows[] = {
        {kProxyNotDetected,
         "Could not discover auto-proxy configuration.\n\nEnsure that your proxy settings are correct and "
         "that your system is properly configured for auto-proxy discovery.\n\n",
         ""},
        {kProxyBadScript, "Unable to determine internet autoproxy details\n\nThe proxy configuration script",
         ""},
        {os::kErrorNoMemory, "Unable to determine internet autoproxy details: ", "memory"},
        {54321, "Unable to determine internet autoproxy details: error 54321", ""},
        {-5, "Unable to determine internet autoproxy details: error -5", ""},
    };
    MadeUpNetwork network;
    CNetworkManager manager;
    CString message("old");
    EXPECT_FALSE(manager.GetWinHttpWPADErrorMessage(message));
    EXPECT_STREQ(message, "");
    for (const auto& [error, text, part] : rows) {
        manager.m_lastDiscoveryError = error;
        EXPECT_TRUE(manager.GetWinHttpWPADErrorMessage(message));
        EXPECT_EQ(std::string(message).substr(0, std::string(text).size()), text);
        EXPECT_NE(std::string(message).find(part), std::string::npos) << message;
    }
}

TEST(Routes, Default) {
    const std::pair<const char*, bool> rows[] = {
        {"Iface Destination Gateway Flags\neth0\t00000000\t0102A8C0\t0003\t0\t0\t0\t00000000\t0\t0\t0\n",
         true},
        {"eth0 0002A8C0 00000000 0001 0 0 0 00FFFFFF 0 0 0", false},
        {"eth0 00000000 0102A8C0 0002 0 0 0 00000000 0 0 0", false},
        {"lo 00000000 00000000 0001 0 0 0 00000000 0 0 0", false},
        {"0000 00 0000 00 fe80 00000400 1 0 00000003 eth0", true},
        {"0000 00 0000 00 0000 ffffffff 1 0 00200200 eth0", false},
        {"fe80 40 0000 00 0000 00000100 1 0 00000001 eth0", false},
        {"\n\n x", false},
        {"", false},
    };
    for (const auto& [table, expected] : rows)
        EXPECT_EQ(HasDefaultRoute(table), expected) << table;
}

}  // namespace
}  // namespace brenta::test
