// Programs and their versions as Windows has them.
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

}  // namespace
}  // namespace brenta::test
