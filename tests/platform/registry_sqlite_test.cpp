// The file that the registry is on this platform, as other programs and other users find and leave it.
#include <sqlite3.h>

#include <fstream>

#include "brenta/system.h"
#include "data_folder.h"
#include "registry_at.h"

namespace brenta::test {
namespace {

constexpr const char* kFile = "Orvane Works/registry.db";

/// Runs a statement on a database file as another program would; the first column of its first row.
std::string Sql(const std::string& path, const char* sql) {
    sqlite3* database = nullptr;
    std::string result;
    sqlite3_open(path.c_str(), &database);
    const auto keep = [](void* to, int, char** columns, char**) {
        *static_cast<std::string*>(to) += columns[0];
        return 0;
    };
    EXPECT_EQ(sqlite3_exec(database, sql, keep, &result, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
    sqlite3_close(database);
    return result;
}

const ChildWork kSeesOneKey("RegistryFile.SeesOneKey", [](const Texts& words) {
    const DataFolder folder(Scratch::Known{words[0]});
    CCoreRegistry user(HKEY_CURRENT_USER);
    return SubKeys(user) == Texts{"S"};
});

TEST(RegistryFile, ForgetsCopiesOfAFormerRun) {
    const DataFolder folder;
    At key("S");
    ASSERT_TRUE(key.SaveKey());
    Sql(folder / kFile, "UPDATE keys SET volatile_boot = 'former' WHERE volatile_boot IS NOT NULL");
    EXPECT_TRUE(kSeesOneKey.Start({folder.ScratchPath()}).Succeeds());
}

TEST(RegistryFile, IsTheUsersOwnAndNeverReplaced) {
    DataFolder folder;
    CCoreRegistry key(HKEY_CURRENT_USER);
    EXPECT_TRUE(key.KeyExists("") && key.DeleteKey("a"));
    EXPECT_FALSE(key.SetKey("a", false) || key.DeleteValue("a") || key.SaveKey() || key.RestoreKey());
    EXPECT_EQ(key.ReadInt("a", 5), 5);
    EXPECT_FALSE(std::filesystem::exists(folder / ""));
    EXPECT_TRUE(key.WriteInt("a", 6));
    EXPECT_TRUE(IsForUserAlone(folder / "Orvane Works") && IsForUserAlone(folder / kFile));
    EXPECT_TRUE(At("Software", HKEY_LOCAL_MACHINE).WriteInt("b", 7));

    for (const bool isDatabase : {false, true}) {
        std::filesystem::remove_all(folder / "");
        EXPECT_EQ(key.ReadInt("a", 5), 5);
        std::filesystem::create_directories(folder / "Orvane Works");
        if (isDatabase)
            Sql(folder / kFile, "CREATE TABLE others(a)");
        else
            std::ofstream(folder / kFile) << "no database";
        const std::string before = ReadFile(folder / kFile);
        EXPECT_FALSE(key.SetKey("a", false));
        EXPECT_EQ(key.GetLastErrorCode(), 1009u);
        EXPECT_FALSE(key.SetKey("a", true) || key.WriteInt("a", 1) || key.DeleteKey("a"));
        EXPECT_EQ(key.ReadInt("a", 5), 5);
        EXPECT_EQ(ReadFile(folder / kFile), before);
    }
    folder.Forget();
    EXPECT_FALSE(key.WriteInt("a", 1));
    EXPECT_EQ(key.ReadInt("a", 5), 5);
}

const ChildWork kHoldsTheFile("RegistryFile.HoldsTheFile", [](const Texts& words) {
    sqlite3* database = nullptr;
    sqlite3_open(words[0].c_str(), &database);
    const int result = sqlite3_exec(database, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
    for (bool told = result == SQLITE_OK && Signal(words[1]); told;)
        std::this_thread::sleep_for(std::chrono::seconds(1));
    return false;
});

TEST(RegistryFile, WaitsForAnotherProgramButNotForEver) {
    const DataFolder folder;
    At key("K");
    ASSERT_TRUE(key.WriteInt("v", 1) && key.SaveKey());
    ChildProcess other = kHoldsTheFile.Start({folder / kFile, folder / "signal"});
    ASSERT_TRUE(WaitForSignal(folder / "signal"));
    const CoreTimer timer;
    EXPECT_TRUE(key.SetKey("K", true) && key.ReadInt("v", 0) == 1 && key.DeleteKey("absent"));
    EXPECT_LT(timer.GetSeconds(), 2);
    EXPECT_FALSE(key.RestoreKey());
    EXPECT_EQ(key.GetLastErrorCode(), 5u);
    EXPECT_TRUE(timer.GetSeconds() > 4 && timer.GetSeconds() < 9) << timer.GetSeconds();
    other.Kill();
    EXPECT_TRUE(key.RestoreKey());
}

const ChildWork kReadsOnly("RegistryFile.ReadsOnly", [](const Texts& words) {
    const DataFolder folder(Scratch::Known{words[0]});
    CCoreRegistry key(HKEY_CURRENT_USER);
    return folder.MakeReadOnly(kFile) && key.SetKey("K", true) && !key.SetKey("New", true) &&
           !key.WriteInt("v", 2) && !key.DeleteKey("K") && key.DeleteKey("absent") &&
           key.ReadInt("v", 0) == 1;
});

TEST(RegistryFile, IsReadWhereItMayNotBeWritten) {
    const DataFolder folder;
    EXPECT_TRUE(At("K").WriteInt("v", 1));
    EXPECT_TRUE(kReadsOnly.Start({folder.ScratchPath()}).Succeeds());
}

}  // namespace
}  // namespace brenta::test
