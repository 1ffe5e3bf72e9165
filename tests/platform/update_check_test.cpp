#include "platform/update_check.h"

#include "brenta/http.h"
#include "brenta/settings.h"
#include "loopback_server.h"
#include "made_up_network.h"

namespace brenta::test {
namespace {

constexpr char kPath[] = "/Brenta/UpdateCheckNew.ashx";
const std::string kFailure = "Error checking for newer version of Brenta";

/// The four stored values as "version|install|size|arguments"; one that is absent is "-".
std::string Stored() {
    std::string all;
    for (const char* key : {"UpdateVersion", "UpdateInstallStr", "UpdateSize", "UpdateInstallArgs"}) {
        CoreString value;
        all += (all.empty() ? "" : "|") + std::string(GetAppValue("Update", key, value) ? value() : "-");
    }
    return all;
}

TEST(UpdateCheck, Answers) {
    const std::string longest(259, 'x');
    // What is stored, "" for a failure; answers, or all that the server sends.
    const std::pair<std::string, Texts> rows[] = {
        {"4.0.1|http://h/a?size=1|12 MB|/S /D",
         {"build=4.0.1\ninstall=http://h/a?size=1\nsize=12 MB\ninstallargs=/S /D"}},
        {"5|a|1|b", {"build=5&install=a&size=1&installargs=b\r\n"}},
        {"4, 1|a|1|b", {"installargs=b; size=1;install=a;build=4, 1 ;\r\n\r\n"}},
        {"4.0.0.1|-|-|-", {"build=4.0.0.1\n"}},
        {"4.0.0.0|a|1|b", {"build=4.0.0.0\ninstall=a\nsize=1\ninstallargs=b"}},
        {"4.0.0.0|a|-|-", {"build=3.9\ninstall=a"}},
        {"5|" + longest + "|-|-", {"build=5\ninstall=" + longest}},
        {"",
         {"", "<html>welcome</html>", "build=x", "build=", "build=5.0.0.0.1", "build=5\nbuild=6",
          "install=a\nsize=1", "xbuild=5", "hello build=5", "build=5\n[Settings]\nCheckForUpdates=9",
          "build=5\ninstall=a\x01", "build=5\ninstall=a" + std::string(1, '\0'),
          "build=5\ninstall=" + longest + "x", "build=5\ninstall=" + std::string(70'000, ' '),
          "HTTP/1.1 500 No\r\nContent-Length: 7\r\n\r\nbuild=5",
          "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nbuild=5", "HTTP/1.1 200 OK\r\n\r\nbuild=5"}}};
    for (const auto& [stored, answers] : rows) {
        for (const std::string& answer : answers) {
            MadeUpNetwork host;
            const bool isAll = answer.starts_with("HTTP/");
            const LoopbackServer server({{kPath, isAll ? Reply{answer} : Page(answer)}});
            host.endpoints[Endpoint::WebServer] = isAll ? server.Address().substr(7) : server.Address() + "/";
            ReadUpdatePage(nullptr);
            WaitForUpdateCheck();
            EXPECT_EQ(Stored(), stored.empty() ? "-|-|-|-" : stored) << answer;
            ASSERT_EQ(host.shown.size(), stored.empty()) << answer;
            for (const std::string& text : host.shown)
                EXPECT_EQ(text.find(isAll ? kFailure + "\n\n" : kFailure), 0U) << text;
        }
    }
}

TEST(UpdateCheck, CountsDownToTheNextCheck) {
    MadeUpNetwork host;
    const LoopbackServer server({{kPath, Page("build=5")}});
    // Countdown before; online, endpoint; countdown after, requests so far.
    const std::tuple<int, bool, bool, int, std::size_t> rows[] = {
        {2, false, true, 2, 0}, {2, true, false, 1, 0}, {2, true, true, 1, 0},
        {1, true, true, 0, 0},  {0, true, true, 0, 1},  {-3, true, true, -3, 2}};
    for (const auto& [before, isOnline, hasServer, after, requests] : rows) {
        SetAppValue("Settings", "CheckForUpdates", before);
        host.isOnline = isOnline;
        host.endpoints[Endpoint::WebServer] = hasServer ? server.Address() : "";
        ReadUpdatePage(nullptr);
        WaitForUpdateCheck();
        int countdown = 99;
        GetAppValue("Settings", "CheckForUpdates", countdown);
        EXPECT_EQ(countdown, after) << before;
        EXPECT_EQ(server.Requests().size(), requests) << before;
    }
}

TEST(UpdateCheck, OneAtATimeAndStopsWhenTold) {
    MadeUpNetwork host;
    const LoopbackServer server({{kPath, {"HTTP/1.1 200 OK\r\nContent-Length: 60000\r\n\r\n", Reply::Drip}}});
    host.endpoints[Endpoint::WebServer] = server.Address();
    {
        CNetworkManager manager;
        ReadUpdatePage(&manager);
    }
    while (server.Requests().empty())
        std::this_thread::yield();
    ReadUpdatePage(nullptr);
    StopUpdateCheck();
    EXPECT_EQ(server.Requests().size(), 1U);
    EXPECT_EQ(host.shown, Texts{});
    EXPECT_EQ(Stored(), "-|-|-|-");
    ReadUpdatePage(nullptr);  // and may start again
    while (server.Requests().size() < 2)
        std::this_thread::yield();
    StopUpdateCheck();
}

}  // namespace
}  // namespace brenta::test
