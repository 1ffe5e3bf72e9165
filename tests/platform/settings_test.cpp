#include "brenta/settings.h"

#include <filesystem>

#include "brenta/files.h"
#include "brenta/host.h"
#include "test_support.h"

namespace brenta {
namespace {

using Text = const char*;

/// Answers for the platform while it lives; a data folder "unknown" is one.
struct Places {
    Places(Text executable, Text data) : m_executable(executable), m_data(data) {
        HostServices services;
        services.context = this;
        services.executablePath = [](void* self, CoreString& path) {
            return !(path = static_cast<Places*>(self)->m_executable).IsEmpty();
        };
        services.applicationDataFolder = [](void* self, CoreString& folder) {
            return (folder = static_cast<Places*>(self)->m_data) != "unknown";
        };
        SetHostServices(services);
    }
    ~Places() { SetHostServices(HostServices{}); }

    Text m_executable, m_data;
};

TEST(Settings, ApplicationName) {
    // Executable; full path without extension, file name with and without it, folder.
    const std::tuple<Text, Text, Text, Text, Text> rows[] = {
        {"/opt/app-1.2/tool", "/opt/app-1.2/tool", "tool", "tool", "/opt/app-1.2"},
        {"C:\\Apps\\a.b.exe", "C:\\Apps\\a.b", "a.b.exe", "a.b", "C:\\Apps"},
        {"/.tool", "/.tool", ".tool", ".tool", "/"},
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
    const Places places("/usr/bin/tool.bin", "/share");
    EXPECT_EQ(GetAppDataFileName("State", "recent", "txt"), "/share\\tool\\State\\recent.txt");
    EXPECT_EQ(GetAppDataFileName(nullptr, "tool.ini", nullptr), "/share\\tool\\tool.ini");
}

TEST(Settings, PlatformKnowsTheRunningProgram) {
    const CoreString program = GetAppName(true, true);
    EXPECT_TRUE(FileExists(program)) << program;
    EXPECT_TRUE(std::filesystem::equivalent(GetAppPath()(), std::filesystem::path(program()).parent_path()));
}

}  // namespace
}  // namespace brenta
