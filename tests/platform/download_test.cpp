#include "platform/download.h"

#include <fstream>

#include "brenta/http.h"
#include "http_reasons.h"
#include "loopback_server.h"
#include "made_up_network.h"
#include "platform/network_backend.h"

namespace brenta::test {
namespace {

constexpr char kStated[] = "Error downloading newer version of Brenta";

/// Keeps the range and the last position; counts steps back.
struct Bar : CProgressCtrl {
    void SetRange32(int, int upper) override { range = upper; }
    int SetPos(int now) override {
        stepsBack += now < position;
        return std::exchange(position, now);
    }
    int range = -1, position = 0, stepsBack = 0;
};

std::ptrdiff_t FilesBeside(const std::string& path) {
    const auto folder = std::filesystem::path(path).parent_path();
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

TEST(Download, WholeFileReplacesTheOld) {
    MadeUpNetwork host;
    const Scratch scratch;
    const std::string file = scratch / "file", big(3'000'000, 'b');
    const LoopbackServer server(
        {{"/big", Page(big)},
         {"/empty", Page("")},
         {"/chunks", {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n0\r\n\r\n"}},
         {"/dir/moved", {"HTTP/1.1 302 Found\r\nLocation: ../chunks\r\nContent-Length: 3\r\n\r\nbad"}}});
    const std::tuple<const char*, std::string, int> rows[] = {
        {"/big", big, 3'000'000}, {"/empty", "", 0}, {"/chunks", "abc", -1}, {"/dir/moved", "abc", -1}};
    for (const auto& [path, content, range] : rows) {
        Bar bar;
        EXPECT_NE(DownloadFile((server.Address() + path).c_str(), file.c_str(), nullptr, &bar), 0) << path;
        EXPECT_TRUE(ReadFile(file) == content) << path;
        EXPECT_EQ(bar.range, range) << path;
        EXPECT_EQ(bar.position, std::max(range, 0)) << path;
        EXPECT_EQ(bar.stepsBack, 0) << path;
    }
    EXPECT_EQ(host.shown, Texts{});
    const std::string head = server.Requests()[0];
    EXPECT_NE(head.find("User-Agent: BRENTA_AGENT(4.0.0.0)\r\n"), head.npos) << head;
    EXPECT_NE(head.find("Cache-Control: no-cache\r\n"), head.npos) << head;
}

TEST(Download, FailureTellsWhyAndKeepsTheOldFile) {
    MadeUpNetwork host;
    const Scratch scratch;
    const std::string file = scratch / "file", ok = "HTTP/1.1 200 OK\r\n";
    const auto to = [](const std::string& url) {
        return Reply{"HTTP/1.1 302 Found\r\nLocation: " + url +
                     "\r\nConnection: close\r\nContent-Length: 0\r\n\r\n"};
    };
    const LoopbackServer server(
        {{"/short", {ok + "Content-Length: 10\r\n\r\nabc"}},
         {"/cut", {ok + "Transfer-Encoding: chunked\r\n\r\n5\r\nab"}},
         {"/unmarked", {ok + "\r\nabc"}},
         {"/drip", {ok + "Content-Length: 1000000\r\n\r\n", Reply::Drip}},
         {"/silent", {ok, Reply::Drip}},
         {"/flood", {ok + "Transfer-Encoding: chunked\r\n\r\n600000\r\n", Reply::Flood}},
         {"/long", {ok + "Content-Length: 99999999999\r\n\r\n", Reply::Flood}},
         {"/loop", to("/loop")},
         {"/local", to("file:///etc/passwd")},
         {"/line", {ok + "X: " + std::string(1 << 20, 'x') + "\r\n\r\n"}},
         {"/nonsense", {"nonsense\r\n\r\n"}},
         {"/nothing", {""}}});
    const std::string address = server.Address();
    const std::tuple<std::string, const char*> rows[] = {
        {address + "/missing", "The server answered with status 404"},
        {address + "/short", kHttpReasons.cutBody},
        {address + "/cut", kHttpReasons.cutChunk},
        {address + "/unmarked", "The server did not say how long its answer is"},
        {address + "/drip", kHttpReasons.slow},
        {address + "/flood", "The answer is longer than 5000000 bytes"},
        {address + "/long", "The answer is longer than 5000000 bytes"},
        {address + "/loop", "The server redirects without end"},
        {address + "/local", "The server leads elsewhere"},
        {address + "/line", kHttpReasons.longHeader},
        {address + "/nonsense", kHttpReasons.nonsense},
        {address + "/nothing", kHttpReasons.nothing},
        {address + "/silent", kHttpReasons.slow},
        {"ftp://127.0.0.1/x", "The address is not one of the web"},
        {"file:///etc/passwd", "The address is not one of the web"},
        {"http://", "The address is not one of the web"},
        {address + "/a b", "The address is not one of the web"}};
    std::ofstream(file) << "old";
    HttpLimits limits;
    limits.bodyBytes = 5'000'000;
    limits.stallSeconds = 1;
    CNetworkManager manager;
    for (const auto& [url, reason] : rows) {
        if (!reason) continue;
        host.shown.clear();
        EXPECT_FALSE(DownloadWithin(limits, url.c_str(), file.c_str(), manager, nullptr)) << url;
        EXPECT_EQ(host.shown, Texts{std::string(kStated) + "\n\n" + reason + "|48"}) << url;
        EXPECT_EQ(ReadFile(file), "old") << url;
        EXPECT_EQ(FilesBeside(file), 1) << url;
    }
}

TEST(Download, WhatIsRefusedBeforeTheRequest) {
    MadeUpNetwork host;
    const Scratch scratch;
    const std::string file = scratch / "file", inside = file + "/inside";
    std::ofstream(file) << "old";
    EXPECT_EQ(DownloadFile("", file.c_str(), nullptr, nullptr), 0);
    EXPECT_EQ(DownloadFile("http://x/", nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(host.shown, Texts{});
    EXPECT_EQ(DownloadFile("http://x/", inside.c_str(), nullptr, nullptr), 0);
    host.isOnline = false;
    EXPECT_NE(PlatformErrorText(kErrorNetworkUnreachable), "");
    EXPECT_EQ(DownloadFile("http://x/", file.c_str(), nullptr, nullptr), 0);
    EXPECT_EQ(host.shown, (Texts{std::string(kStated) + "\n\nThe file could not be written|48",
                                 std::string(kStated) + "\nNot connected to the Internet.\n\n" +
                                     PlatformErrorText(kErrorNetworkUnreachable) + "|48"}));
    EXPECT_EQ(ReadFile(file), "old");
}

TEST(Download, AsksAgainForARefusedLogin) {
    MadeUpNetwork host;
    const Reply refused{"", Reply::Close, "no such line"};
    // Some clients name the port always.
    const LoopbackServer proxy({{"http://far/file", refused}, {"http://far:80/file", refused}});
    host.settings.flags = kNamedProxy;
    host.settings.proxyList = proxy.Address().substr(7).c_str();
    host.logins = {{"a", "1"}, {"a", "2"}, {"b", "3"}, {"never", "asked"}};
    const std::string file = host.data / "file", server(host.settings.proxyList());
    EXPECT_EQ(DownloadFile("http://far/file", file.c_str(), nullptr, nullptr), 0);
    EXPECT_EQ(host.asked, (Texts{server + "|", server + "|a", server + "|a"}));
    EXPECT_EQ(host.shown, Texts{std::string(kStated) + "\n\nThe server answered with status 407|48"});
    EXPECT_EQ(ReadFile(file), "absent");
}

TEST(Download, ThroughTheProxy) {
    struct Row {
        const char *list, *bypass;
        std::vector<std::pair<std::string, std::string>> logins;
        bool hasPassword;
        std::size_t asked;
        const char* content;  // "absent" for a failure
    };
    const Row rows[] = {{"", "", {}, false, 0, "by proxy"},
                        {"http=", "", {}, false, 0, "by proxy"},
                        {"https=none:1;", "", {}, false, 0, "by proxy"},
                        {"", "x;127.*", {}, false, 0, "direct"},
                        {"", "", {}, true, 1, "absent"},
                        {"", "", {{"me", "pw"}}, true, 1, "by proxy"}};
    const LoopbackServer server({{"/file", Page("direct")}});
    const std::string url = server.Address() + "/file";
    Reply reply = Page("by proxy");
    const LoopbackServer open({{url, reply}});
    reply.wanted = "\r\nProxy-Authorization: Basic bWU6cHc=\r\n";
    const LoopbackServer closed({{url, reply}});
    for (const Row& row : rows) {
        MadeUpNetwork host;
        host.logins = row.logins;
        host.settings.flags = kNamedProxy;
        host.settings.proxyList = (row.list + (row.hasPassword ? closed : open).Server()).c_str();
        host.settings.bypassList = row.bypass;
        const std::string file = host.data / "file";
        CNetworkManager manager;
        const bool isGood = DownloadFile(url.c_str(), file.c_str(), &manager, nullptr) != 0;
        EXPECT_EQ(ReadFile(file), row.content) << row.list << testing::PrintToString(host.shown);
        EXPECT_EQ(isGood, host.shown.empty());
        EXPECT_EQ(host.asked.size(), row.asked);
        if (!isGood) {
            EXPECT_NE(host.shown.at(0).find("407"), std::string::npos) << host.shown[0];
        }
        // What was typed is known the next time.
        if (isGood && row.hasPassword) {
            EXPECT_STREQ(CNetworkManager().m_userName, "me");
        }
    }
}

}  // namespace
}  // namespace brenta::test
