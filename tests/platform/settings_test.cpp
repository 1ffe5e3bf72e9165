#include "brenta/settings.h"

#include "brenta/files.h"
#include "data_folder.h"

namespace brenta::test {
namespace {

using Text = const char*;

TEST(Settings, ApplicationName) {
    // Executable; full path without extension, file name with and without it, folder.
    const std::tuple<Text, Text, Text, Text, Text> rows[] = {
        {"/opt/app-1.2/tool", "/opt/app-1.2/tool", "tool", "tool", "/opt/app-1.2"},
        {"C:\\Apps\\a.b.exe", "C:\\Apps\\a.b", "a.b.exe", "a.b", "C:\\Apps"},
        {"/.tool", "/.tool", ".tool", ".tool", "/"},
        {"D:\\tool.exe", "D:\\tool", "tool.exe", "tool", "D:\\"},
        {"", "", "", "", ""}};
    for (const auto& [executable, whole, file, name, folder] : rows) {
        DataFolder places(executable);
        places.Forget();
        EXPECT_EQ(GetAppName(true, true), executable);
        EXPECT_EQ(GetAppName(true, false), whole);
        EXPECT_EQ(GetAppName(false, true), file);
        EXPECT_EQ(GetAppName(false, false), name);
        EXPECT_EQ(GetAppPath(), folder);
        EXPECT_EQ(GetAppDataFolder(), "");
    }
}

TEST(Settings, DataFiles) {
    const DataFolder folder("/usr/bin/tool.bin");
    std::string data = folder / "";
    data.back() = '\\';
    EXPECT_EQ(GetAppDataFileName("State", "recent", "txt"), (data + "tool\\State\\recent.txt").c_str());
    EXPECT_EQ(GetAppDataFileName(nullptr, "tool.ini", nullptr), (data + "tool\\tool.ini").c_str());
}

TEST(Settings, PlatformKnowsTheRunningProgram) {
    const CoreString program = GetAppName(true, true);
    EXPECT_TRUE(FileExists(program)) << program;
    EXPECT_TRUE(std::filesystem::equivalent(GetAppPath()(), std::filesystem::path(program()).parent_path()));
}

}  // namespace
}  // namespace brenta::test
