// brenta fetch, run as a user would, against a server on the loopback.
#include <gtest/gtest.h>

#include "host_process.h"
#include "platform/loopback_server.h"
#include "test_support.h"

namespace brenta::test {
namespace {

TEST(FetchCommand, TakesAFileFromAServer) {
    for (const char* name : {"http_proxy", "HTTP_PROXY", "all_proxy", "ALL_PROXY"})
        SetVariable(name, nullptr);
    SetVariable("BRENTA_APPDATA", (ScratchFolder() / "network").string().c_str());
    const LoopbackServer server({{"/part", Page("content")}});
    const std::string address = server.Address(), file = (ScratchFolder() / "part").string();
    EXPECT_EQ(RunHost({"fetch", address + "/part", file}).status, 0);
    EXPECT_EQ(ReadText(file), "content");
    const HostResult result = RunHost({"fetch", address + "/none", file});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, Texts{"brenta: The server answered with status 404"});
    EXPECT_EQ(ReadText(file), "content");
}

}  // namespace
}  // namespace brenta::test
