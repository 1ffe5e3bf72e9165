// The seam on Linux: what is a file there and no file elsewhere, and where its folders are.
#include <sys/stat.h>

#include <filesystem>

#include "os/os.h"
#include "test_support.h"

namespace brenta::os {
namespace {

TEST(Os, ReadsNothingButRegularFiles) {
    const test::Scratch scratch;
    ASSERT_EQ(mkfifo((scratch / "pipe").c_str(), 0600), 0);
    std::string content = "old";
    for (const std::string& path : {scratch / "pipe", std::string("/dev/zero")}) {
        EXPECT_EQ(ReadWholeFile(path.c_str(), content), FileStatus::CannotOpen) << path;
        EXPECT_EQ(KindOfPath(path.c_str()), PathKind::File) << path;
    }
    EXPECT_EQ(ReadWholeFile("/proc/self/cmdline", content, 3), FileStatus::CannotRead);
    EXPECT_EQ(content, "old");
    EXPECT_EQ(ReadWholeFile("/proc/self/status", content), FileStatus::Ok);  // its size says 0
    EXPECT_NE(content.find("TracerPid"), std::string::npos);
    EXPECT_TRUE(std::filesystem::equivalent(ExecutablePath(), "/proc/self/exe"));
}

TEST(Os, FindsTheApplicationDataFolder) {
    // BRENTA_APPDATA, XDG_DATA_HOME, HOME; the folder
    const char* const kRows[][4] = {
        {"/own", "/data", "/home/u", "/own"},
        {"/own/", nullptr, nullptr, "/own"},
        {"", "/data//", "/home/u", "/data"},
        {nullptr, "relative", "/home/u/", "/home/u/.local/share"},
        {nullptr, nullptr, "/home/u", "/home/u/.local/share"},
        {nullptr, "", "/", "/.local/share"},
    };
    for (const auto& [own, data, home, folder] : kRows) {
        test::SetVariable("BRENTA_APPDATA", own);
        test::SetVariable("XDG_DATA_HOME", data);
        test::SetVariable("HOME", home);
        EXPECT_EQ(ApplicationDataFolder(), folder);
    }
}

}  // namespace
}  // namespace brenta::os
