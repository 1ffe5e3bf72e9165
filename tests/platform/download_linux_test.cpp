// Downloads through a proxy of another kind.
#include "brenta/http.h"
#include "loopback_server.h"
#include "made_up_network.h"

namespace brenta::test {
namespace {

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
