// Programs and their versions as Linux has them.
#include <sys/wait.h>

#include <cerrno>
#include <cstdlib>

#include "brenta/system.h"
#include "test_support.h"
#include "written_file.h"

namespace brenta::test {
namespace {

namespace fs = std::filesystem;
using Text = const char*;

TEST(System, VersionsOfFiles) {
    CoreVersion own;
    const Scratch scratch;
    std::ofstream(scratch / "libpart.so.4.0.1") << "";
    std::ofstream(scratch / "a.so.x") << "";
    fs::create_symlink("libpart.so.4.0.1", scratch / "libpart.so");
    EXPECT_TRUE(GetModuleVersion((scratch / "libpart.so").c_str(), own));
    EXPECT_EQ(GetVersionString(own), "4.0.1.0");
    for (const std::string& path : {scratch / "a.so.x", scratch / "none.so.1", std::string()})
        EXPECT_FALSE(GetModuleVersion(path.c_str(), own));
}

TEST(System, TheDesktopsPrograms) {
    const Scratch scratch;
    const std::string script = scratch / "show words", out = scratch / "out", page = scratch / "a page.html";
    std::ofstream(script) << "#!/bin/sh\nfor word in \"$@\"; do echo \"[$word]\"; done > '" << out
                          << ".new'\nmv '" << out << ".new' '" << out << "'\n";
    std::ofstream(page) << "";
    fs::permissions(script, fs::perms::owner_all);
    fs::create_symlink(script, scratch / "browser");
    const Text old = std::getenv("BROWSER");
    const std::string kept = old ? old : "";
    SetVariable("BROWSER", ("/none/browser::" + (scratch / "browser") + " --open=%s -x").c_str());
    EXPECT_TRUE(ShellExecProgram(page.c_str()));
    EXPECT_EQ(Awaited(out).substr(0, page.size() + 9), "[--open=" + page + "]");
    fs::remove(out);
    SetVariable("BROWSER", (scratch / "browser").c_str());
    EXPECT_TRUE(ShellExecProgram("http://host/?a=$(b)"));
    EXPECT_EQ(Awaited(out).substr(0, 21), "[http://host/?a=$(b)]");
    int error = 0;
    EXPECT_FALSE(ShellExecProgram("-option") || ExecProgram("/none/program", &error));
    EXPECT_EQ(error, ENOENT);
    SetVariable("BROWSER", kept.c_str());
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "nothing is left to wait for";
}

}  // namespace
}  // namespace brenta::test
