// Programs, their versions and their settings as Windows has them.
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "brenta/registry.h"
#include "brenta/system.h"
#include "test_support.h"
#include "written_file.h"

namespace brenta::test {
namespace {

TEST(System, VersionsOfFiles) {
    CoreVersion own, file;
    EXPECT_TRUE(GetModuleVersion(own) && GetModuleVersion(BRENTA_CORE_LIBRARY, file));
    EXPECT_EQ(GetVersionString(file), GetVersionString(own));
    const Scratch scratch;
    std::ofstream(scratch / "none.dll") << "MZ";
    EXPECT_FALSE(GetModuleVersion((scratch / "none.dll").c_str(), own));
    EXPECT_TRUE(SysIsWindows());
}

TEST(System, TheDesktopsPrograms) {
    const Scratch scratch;
    const std::string batch = scratch / "a job.bat", out = scratch / "out";
    std::ofstream(batch) << "cd /d \"%~dp0\"\necho done> new\nren new out\n";
    EXPECT_TRUE(ShellExecProgram(batch.c_str()));
    EXPECT_EQ(Awaited(out), "done\n");
    EXPECT_FALSE(ShellExecProgram((scratch / "none.bat").c_str()));
}

TEST(System, NamesOfMethodsAreNoMacros) {
    EXPECT_STREQ(CoreString().GetClassName(), "CoreString");
    EXPECT_EQ(GetClassName(nullptr, nullptr, 0), 0);
}

TEST(System, ChangesNothingInTheOtherViewOfTheRegistry) {
    constexpr char kPath[] = "Software\\Brenta Tests of views";
    HKEY other = nullptr;
    const REGSAM access = KEY_ALL_ACCESS | KEY_WOW64_32KEY;
    if (RegCreateKeyExA(HKEY_LOCAL_MACHINE, kPath, 0, nullptr, 0, access, nullptr, &other, nullptr))
        GTEST_SKIP() << "for administrators only";
    RegSetValueExA(other, "v", 0, REG_SZ, reinterpret_cast<const BYTE*>("old"), 4);
    RegCloseKey(other);
    CCoreRegistry registry(HKEY_LOCAL_MACHINE);
    EXPECT_TRUE(registry.SetKey(kPath, false));
    EXPECT_FALSE(registry.WriteInt("v", 1) || registry.DeleteValue("v"));
    EXPECT_TRUE(registry.DeleteKey(kPath)) << "there is none in the own view";
    EXPECT_EQ(registry.ReadString("v", "gone"), "old");
    EXPECT_TRUE(registry.CreateKey(kPath));
    EXPECT_EQ(registry.ReadString("v", "new"), "new");
    EXPECT_TRUE(registry.DeleteKey(kPath));
    EXPECT_EQ(RegDeleteKeyExA(HKEY_LOCAL_MACHINE, kPath, KEY_WOW64_32KEY, 0), ERROR_SUCCESS);
}

}  // namespace
}  // namespace brenta::test
