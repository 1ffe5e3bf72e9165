// Downloads through a proxy that others have written.
#include <unistd.h>

#include <sys/wait.h>
#include <csignal>
#include <fstream>

#include "brenta/http.h"
#include "loopback_server.h"
#include "made_up_network.h"
#include "platform/http_client.h"

namespace brenta::test {
namespace {

/// A real proxy on the loopback while it lives.
class Proxy {
 public:
    explicit Proxy(const char* credentials) : m_port(FreePort()) {
        const std::string file = m_folder / "proxy.conf";
        std::ofstream(file) << "Listen 127.0.0.1\nPort " << m_port << "\nAllow 127.0.0.1\nLogLevel Critical\n"
                            << credentials;
        m_process = fork();
        if (m_process == 0) {
            execl("/usr/bin/tinyproxy", "tinyproxy", "-d", "-c", file.c_str(), nullptr);
            _exit(127);
        }
    }
    ~Proxy() {
        kill(m_process, SIGTERM);
        waitpid(m_process, nullptr, 0);
    }

    std::string Address() const { return "127.0.0.1:" + std::to_string(m_port); }

    /// Waits until it listens.
    bool IsUp() const {
        HttpRequest request;
        request.url = "http://" + Address() + "/";
        std::string text;
        for (int i = 0; i < 100; ++i) {
            if (HttpGetText(request, text).status != 0) return true;
            usleep(50'000);
        }
        return false;
    }

 private:
    Scratch m_folder;
    int m_port;
    pid_t m_process;
};

TEST(Download, ThroughTheProxy) {
    if (!std::filesystem::exists("/usr/bin/tinyproxy")) GTEST_SKIP() << "no tinyproxy";
    struct Row {
        const char *list, *bypass;
        std::vector<std::pair<std::string, std::string>> logins;
        bool hasPassword;
        const char* status;  // "" for success
        std::size_t asked;
        bool isThroughProxy;
    };
    const Row rows[] = {{"", "", {}, false, "", 0, true},
                        {"http=", "", {}, false, "", 0, true},
                        {"https=none:1;", "", {}, false, "", 0, true},
                        {"", "x;127.*", {}, false, "", 0, false},
                        {"", "", {}, true, "407", 1, false},
                        {"", "", {{"me", "pw"}}, true, "", 1, true}};
    const Proxy open(""), closed("BasicAuth me pw\n");
    ASSERT_TRUE(open.IsUp() && closed.IsUp());
    for (const Row& row : rows) {
        MadeUpNetwork host;
        const LoopbackServer server({{"/file", Page("content")}});
        host.logins = row.logins;
        host.settings.flags = kNamedProxy;
        host.settings.proxyList = (row.list + (row.hasPassword ? closed : open).Address()).c_str();
        host.settings.bypassList = row.bypass;
        const std::string file = host.data / "file";
        CNetworkManager manager;
        const int isGood =
            DownloadFile((server.Address() + "/file").c_str(), file.c_str(), &manager, nullptr);
        EXPECT_EQ(isGood != 0, *row.status == 0) << row.list << testing::PrintToString(host.shown);
        EXPECT_EQ(ReadFile(file), isGood ? "content" : "absent");
        EXPECT_EQ(host.asked.size(), row.asked);
        if (!isGood) {
            EXPECT_NE(host.shown.at(0).find(row.status), std::string::npos) << host.shown[0];
        }
        const Texts requests = server.Requests();
        EXPECT_EQ(!requests.empty() && requests[0].find("Via:") != std::string::npos, row.isThroughProxy);
        // What was typed is known the next time.
        if (isGood && row.hasPassword) {
            EXPECT_STREQ(CNetworkManager().m_userName, "me");
        }
    }
}

// Wine's web client knows no SOCKS and goes by itself.
TEST(Download, NeverPassesByAProxyOfSocks) {
    MadeUpNetwork host;
    const LoopbackServer server({{"/file", Page("content")}});
    host.settings.flags = kNamedProxy;
    host.settings.proxyList = ("socks=127.0.0.1:" + std::to_string(FreePort())).c_str();
    const std::string url = server.Address() + "/file", file = host.data / "file";
    EXPECT_EQ(DownloadFile(url.c_str(), file.c_str(), nullptr, nullptr), 0);
    EXPECT_EQ(server.Requests(), Texts{});
}

}  // namespace
}  // namespace brenta::test
