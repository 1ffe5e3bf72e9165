#include "brenta/registry.h"

#include "data_folder.h"
#include "platform/registry_store.h"
#include "registry_at.h"

namespace brenta::test {
namespace {

TEST(Registry, ValuesAndTheirBytes) {
    const DataFolder folder;
    At key("Values");
    EXPECT_TRUE(key.WriteDword("dword", 0x80000001) && key.WriteInt("int", 256) && key.WriteInt("minus", -2));
    EXPECT_TRUE(key.WriteBool("bool", true) && key.WriteFloat("float", -0.5) && key.WriteString("", "text"));
    // Name, type, size; as bool, int, string.
    const std::tuple<const char*, DWORD, int, bool, int, const char*> rows[] = {
        {"dword", REG_DWORD, 4, true, INT_MIN + 1, "default"}, {"int", REG_BINARY, 4, false, 256, "default"},
        {"minus", REG_BINARY, 4, true, -2, "default"},         {"bool", REG_BINARY, 1, true, 1, "default"},
        {"float", REG_BINARY, 8, false, 0, "default"},         {"", REG_SZ, 5, true, 0x74786574, "text"},
        {"FLOAT", REG_BINARY, 8, false, 0, "default"},         {"absent", 0, -1, true, 77, "default"}};
    for (const auto& [name, type, size, asBool, asInt, asString] : rows) {
        EXPECT_EQ(key.GetDataType(name), type) << name;
        EXPECT_EQ(key.GetLastErrorCode(), size < 0 ? 2u : 0u) << name;
        EXPECT_EQ(key.GetDataSize(name), size) << name;
        EXPECT_EQ(key.ValueExists(name), size >= 0) << name;
        EXPECT_EQ(key.ReadBool(name, true), asBool) << name;
        EXPECT_EQ(key.ReadInt(name, 77), asInt) << name;
        EXPECT_EQ(key.ReadString(name, "default"), asString) << name;
    }
    EXPECT_EQ(key.ReadFloat("float", 0), -0.5);
    EXPECT_EQ(key.ReadDword("dword", 0), 0x80000001);
    EXPECT_EQ(key.GetValueCount(), 6);
    EXPECT_TRUE(key.WriteInt("BOOL", 3));
    TOrderedList<CoreString> names;
    EXPECT_TRUE(key.GetValueNames(names));
    EXPECT_EQ(Texts(names.begin(), names.end()), (Texts{"", "bool", "dword", "float", "int", "minus"}));
    EXPECT_TRUE(key.DeleteValue("Int"));
    EXPECT_FALSE(key.DeleteValue("int"));
    EXPECT_TRUE(key.WriteInt(std::string(16383, 'n').c_str(), 1));
    EXPECT_FALSE(key.WriteInt(std::string(16384, 'n').c_str(), 1));
    key.DeleteKey("Values");
    EXPECT_FALSE(key.WriteInt("int", 1));
    EXPECT_EQ(key.GetValueCount(), -1);
    EXPECT_EQ(key.GetSubKeyCount(), -1);
}

TEST(Registry, Texts) {
    const DataFolder folder;
    At key("Texts");
    const RegistryPath path("Texts");
    std::string all;
    for (int c = 1; c < 256; ++c)
        all += static_cast<char>(c);
    const std::string longest(999, 'x');
    // Type and bytes in the store; size, text, error.
    const std::tuple<DWORD, std::string, int, std::string, DWORD> rows[] = {
        {REG_SZ, all + '\0', 256, all, 0},
        {REG_EXPAND_SZ, {"%HOME%", 7}, 7, "%HOME%", 0},
        {REG_SZ, "open", 5, "open", 0},
        {REG_SZ, {"a\0b", 4}, 4, "a", 0},
        {REG_SZ, "", 0, "", 0},
        {REG_SZ, longest + '\0', 1000, longest, 0},
        {REG_SZ, longest + "x", 1001, "default", 234},
        {REG_SZ, std::string(70000, 'x'), 70001, "default", 234},
        {REG_BINARY, "text", 4, "default", 0}};
    for (const auto& [type, bytes, size, text, error] : rows) {
        EXPECT_EQ(registry_store::WriteValue({registry_store::Root::CurrentUser, path}, all, type, bytes),
                  RegistryError::None);
        EXPECT_EQ(key.GetDataSize(all.c_str()), size);
        EXPECT_EQ(key.ReadString(all.c_str(), "default"), text.c_str());
        EXPECT_EQ(key.GetLastErrorCode(), error);
    }
    EXPECT_TRUE(key.WriteString("null", nullptr));
    EXPECT_EQ(key.GetDataSize("null"), 1);
    EXPECT_EQ(key.ReadInt(all.c_str(), 5), 0x74786574);
    EXPECT_EQ(key.ReadString("absent", nullptr), "");
}

TEST(Registry, Paths) {
    const DataFolder folder;
    const auto levels = [](int count) {
        std::string path;
        for (int i = 0; i < count; ++i)
            path += "k\\";
        return path;
    };
    // Path, another form of it, the error of opening it after it was to be created.
    const std::tuple<std::string, std::string, DWORD> rows[] = {
        {"a\\b", "A\\\\B\\\\\\", 0},
        {"a/b", "A/b", 0},
        {std::string(255, 'n'), std::string(255, 'N'), 0},
        {levels(512), levels(512), 0},
        {"\\a", "\\", 161},
        {std::string(256, 'n'), "a\\" + std::string(10000, 'n'), 87},
        {levels(513), levels(600), 87}};
    for (const auto& [path, other, error] : rows) {
        CCoreRegistry key(HKEY_USERS);
        EXPECT_EQ(key.SetKey(path.c_str(), true), error == 0);
        EXPECT_EQ(key.GetKeyPath(), error == 0 ? path.c_str() : "");
        EXPECT_EQ(key.SetKey(other.c_str(), false), error == 0);
        EXPECT_EQ(key.GetLastErrorCode(), error);
        EXPECT_EQ(key.KeyExists(other.c_str()), error == 0);
        EXPECT_FALSE(key.KeyExists(path.c_str(), HKEY_CURRENT_USER));
    }
    CCoreRegistry key(HKEY_USERS);
    EXPECT_FALSE(key.SetKey("absent", false));
    EXPECT_EQ(key.GetLastErrorCode(), 2u);
    EXPECT_TRUE(key.SetKey("", false) && key.WriteInt("direct", 4));
    EXPECT_EQ(key.ReadInt("direct", 0), 4);
    EXPECT_TRUE(key.KeyExists(nullptr));
    EXPECT_TRUE(key.DeleteKey(levels(2).c_str()));
    EXPECT_FALSE(key.KeyExists(levels(2).c_str()));
    EXPECT_EQ(SubKeys(key), (Texts{"a", "a/b", "k", std::string(255, 'n')}));
}

TEST(Registry, KeysAndRoots) {
    const DataFolder folder;
    At key("Tree\\Leaf\\Deep");
    EXPECT_TRUE(key.WriteInt("v", 1) && key.CreateKey("TREE\\other") && key.CreateKey("tree"));
    EXPECT_EQ(SubKeys(key), (Texts{"Leaf", "other"}));
    EXPECT_EQ(key.GetSubKeyCount(), 2);
    EXPECT_TRUE(key.DeleteKey("Tree\\"));
    EXPECT_FALSE(key.KeyExists("Tree\\Leaf"));
    for (const char* path : {"", "\\", "\\\\"})
        EXPECT_FALSE(key.DeleteKey(path)) << path;
    EXPECT_FALSE(key.DeleteKey(nullptr));
    for (const char* path : {"absent", "\\absent"})
        EXPECT_TRUE(key.DeleteKey(path)) << path;

    At type(".brd", HKEY_CLASSES_ROOT);
    EXPECT_TRUE(type.KeyExists("software\\classes\\.BRD", HKEY_LOCAL_MACHINE));
    CCoreRegistry machine(HKEY_LOCAL_MACHINE);
    EXPECT_FALSE(machine.DeleteKey("Software"));
    EXPECT_FALSE(machine.DeleteKey("SOFTWARE\\Classes"));
    EXPECT_TRUE(machine.DeleteKey("Software\\Classes\\.brd"));
    EXPECT_FALSE(type.KeyExists(".brd"));

    const auto unknown = reinterpret_cast<HKEY>(std::uintptr_t{0x80000004});
    EXPECT_FALSE(type.SetRootKey(unknown));
    EXPECT_FALSE(type.SetRootKey(nullptr));
    EXPECT_EQ(type.GetRootKey(), HKEY_CLASSES_ROOT);
    EXPECT_FALSE(type.KeyExists("", unknown));
    EXPECT_TRUE(type.SetRootKey(HKEY_USERS) && type.ClearKey());
    EXPECT_EQ(type.GetRootKey(), HKEY_CURRENT_USER);
    EXPECT_EQ(type.GetKeyPath(), "");
    const CrashRecorder crashes;
    EXPECT_EQ(CCoreRegistry(unknown).GetRootKey(), HKEY_CURRENT_USER);
    EXPECT_EQ(crashes.Messages(), Texts{"Forced crash! \"Root key not recognized.\""});
    EXPECT_EQ(crashes.Last().SiteCode(), 0x0500E001u);
}

TEST(Registry, SaveAndRestore) {
    const DataFolder folder;
    CCoreRegistry user(HKEY_CURRENT_USER);
    At key("S\\Sub");
    EXPECT_TRUE(key.WriteInt("deep", 1) && key.SetKey("S", false) && key.WriteInt("v", 1));
    EXPECT_FALSE(user.SaveKey());
    EXPECT_FALSE(key.RestoreKey());
    EXPECT_EQ(key.GetLastErrorCode(), 2u);
    ASSERT_TRUE(key.SaveKey());
    EXPECT_TRUE(key.DeleteKey("S\\Sub") && key.WriteString("V", "changed") && key.WriteInt("new", 3));
    const CoreString scratch(SubKeys(user)[1].c_str());
    EXPECT_FALSE(user.CreateKey(scratch + "\\lasting"));
    EXPECT_TRUE(key.RestoreKey());
    EXPECT_EQ(key.GetLastErrorCode(), 0u);
    EXPECT_EQ(key.ReadInt("v", 0), 1);
    EXPECT_EQ(key.ReadInt("new", 0), 3);
    EXPECT_TRUE(key.SetKey("S\\Sub", false));
    EXPECT_EQ(key.ReadInt("deep", 0), 1);
    EXPECT_EQ(SubKeys(user), Texts{"S"});

    // The second copy replaces the first; a copy of the copy there is not; another root has another key.
    ASSERT_TRUE(key.SaveKey() && key.SetKey("S", false) && key.SaveKey() && key.SetKey(scratch, false));
    EXPECT_FALSE(key.SaveKey());
    EXPECT_FALSE(key.ValueExists("deep"));
    EXPECT_TRUE(key.SetRootKey(HKEY_USERS));
    EXPECT_FALSE(key.RestoreKey());
    EXPECT_TRUE(key.CreateKey("S") && key.RestoreKey());
    EXPECT_EQ(key.ReadInt("new", 0), 3);

    { EXPECT_TRUE(At("S").SaveKey()); }
    EXPECT_EQ(SubKeys(user), Texts{"S"});
    At gone("S\\Gone");
    EXPECT_TRUE(gone.DeleteKey("S\\Gone"));
    EXPECT_FALSE(gone.SaveKey());
}

const ChildWork kWritesOften("Registry.WritesOften", [](const Texts& words) {
    const DataFolder folder(Scratch::Known{words[0]});
    bool good = true;
    At key("Shared\\Key");
    for (int i = 0; i < 1000; ++i)
        good &= key.WriteInt((words[1] + "," + std::to_string(i)).c_str(), i);
    return good;
});

TEST(Registry, FourProcessesWriteAtOnce) {
    const DataFolder folder;
    EXPECT_TRUE(kWritesOften.SucceedsInFour({folder.ScratchPath()}));
    At key("Shared\\Key");
    EXPECT_EQ(key.GetValueCount(), 4000);
    EXPECT_EQ(key.ReadInt("3,999", 0), 999);
}

TEST(Registry, ThreadsShareTheFile) {
    const DataFolder folder;
    OnThreads(4, [](int thread) {
        At key(std::to_string(thread).c_str());
        for (int i = 0; i < 50; ++i)
            EXPECT_TRUE(key.WriteInt("v", i) && key.ReadInt("v", -1) == i);
    });
}

}  // namespace
}  // namespace brenta::test
