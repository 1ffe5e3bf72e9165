#include "brenta/settings.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <tuple>

#include "brenta/files.h"
#include "brenta/host.h"

namespace brenta {
namespace {

using Text = const char*;

/// Answers for the platform while it lives.
struct Places {
    Text executable;
    Text data;

    Places(Text executablePath, Text dataFolder) : executable(executablePath), data(dataFolder) {
        HostServices services;
        services.context = this;
        services.executablePath = [](void* context, CoreString& path) {
            path = static_cast<Places*>(context)->executable;
            return true;
        };
        services.applicationDataFolder = [](void* context, CoreString& folder) {
            folder = static_cast<Places*>(context)->data;
            return folder != "unknown";
        };
        SetHostServices(services);
    }
    ~Places() { SetHostServices(HostServices{}); }
};

TEST(Settings, ApplicationName) {
    // Executable; full path without extension, file name with and without it, folder.
    const std::tuple<Text, Text, Text, Text, Text> rows[] = {
        {"/opt/app-1.2/bin/tool", "/opt/app-1.2/bin/tool", "tool", "tool", "/opt/app-1.2/bin"},
        {"C:\\Apps\\a.b.exe", "C:\\Apps\\a.b", "a.b.exe", "a.b", "C:\\Apps"},
        {"/tool", "/tool", "tool", "tool", "/"},
        {"D:\\tool.exe", "D:\\tool", "tool.exe", "tool", "D:\\"},
        {"", "", "", "", ""}};
    for (const auto& [executable, whole, file, name, folder] : rows) {
        const Places places(executable, "unknown");
        EXPECT_EQ(GetAppName(true, true), executable);
        EXPECT_EQ(GetAppName(true, false), whole);
        EXPECT_EQ(GetAppName(false, true), file);
        EXPECT_EQ(GetAppName(false, false), name);
        EXPECT_EQ(GetAppPath(), folder);
        EXPECT_EQ(GetAppDataFolder(), "");
    }
}

TEST(Settings, DataFiles) {
    const Places places("/usr/bin/brenta.bin", "/home/u/share");
    EXPECT_EQ(GetAppDataFolder(), "/home/u/share\\brenta");
    EXPECT_EQ(GetAppDataFileName("State", "recent", "txt"), "/home/u/share\\brenta\\State\\recent.txt");
    EXPECT_EQ(GetAppDataFileName(nullptr, "brenta.ini", nullptr), "/home/u/share\\brenta\\brenta.ini");
    EXPECT_EQ(GetAppDataFileName("", "a", ".b"), "/home/u/share\\brenta\\a.b");
}

TEST(Settings, PlatformKnowsTheRunningProgram) {
    const CoreString program = GetAppName(true, true);
    EXPECT_TRUE(FileExists(program)) << program;
    EXPECT_TRUE(std::filesystem::equivalent(GetAppPath()(), std::filesystem::path(program()).parent_path()));
}

}  // namespace
}  // namespace brenta
