#include "brenta/system.h"

#include <chrono>
#include <fstream>

#include "brenta/host.h"
#include "child_process.h"
#include "os/os.h"
#include "os/programs.h"
#include "written_file.h"

namespace brenta::test {
namespace {

namespace fs = std::filesystem;
using Text = const char*;

TEST(System, Versions) {
    const std::pair<Text, std::vector<Text>> rows[] = {
        {"4.0.0.0", {"4"}},
        {"4.1.2.3", {"4.1.2.3"}},
        {"4.1.65535.0", {" 4, 1 ,65535.0 "}},
        {"4.1.0.0", {"004.1"}},
        {"9.9.9.9",
         {"", nullptr, "4.", ".4", "4.1.2.3.4", "4.1beta", "65536", "-1", "99999999999999999", "1 2"}}};
    for (const auto& [expected, texts] : rows) {
        for (const Text text : texts) {
            CoreVersion version{9, 9, 9, 9};
            EXPECT_EQ(GetVersionFromString(text, version), *expected != '9') << (text ? text : "null");
            EXPECT_EQ(GetVersionString(version), expected) << (text ? text : "null");
        }
    }
    const CoreVersion ascending[] = {{0, 9, 9, 9}, {1, 0, 0, 0}, {1, 0, 0, 1},
                                     {1, 0, 2, 0}, {1, 3, 0, 0}, {10, 0, 0, 0}};
    for (const CoreVersion& a : ascending) {
        for (const CoreVersion& b : ascending)
            EXPECT_EQ(CompareVersions(a, b), (&a > &b) - (&a < &b));
    }
    CoreVersion own;
    EXPECT_TRUE(GetModuleVersion(own) && own.majorNumber >= 4);
    for (const char* path : {"none.so.1", "none.dll", "", static_cast<const char*>(nullptr)})
        EXPECT_FALSE(GetModuleVersion(path, own)) << path;
}

TEST(System, Timers) {
    const auto pause = [] { std::this_thread::sleep_for(std::chrono::milliseconds(20)); };
    CoreTimer timer;
    CJobTime job;
    pause();
    timer.Stop();
    job.Stop();
    const double passed = timer.GetSeconds(), elapsed = job.GetElapsedSeconds(),
                 used = job.GetProcessorSeconds();
    pause();
    EXPECT_TRUE(timer.GetSeconds() == passed && passed >= 0.02);
    EXPECT_TRUE(job.GetElapsedSeconds() == elapsed && job.GetProcessorSeconds() == used && elapsed >= 0.02);
    timer.Resume();
    pause();
    EXPECT_GE(timer.GetSeconds(), passed + 0.02);
    EXPECT_DOUBLE_EQ(job.GetRemainingSeconds(0.25), 3 * elapsed);
    EXPECT_TRUE(job.GetRemainingSeconds(0) == -1 && job.GetRemainingSeconds(2) == 0);
    EXPECT_EQ(job.GetText().Left(5), "0:00:");
}

TEST(System, FactsHoldTogether) {
    EXPECT_GT(SysGetTotalPhysicalMemory(), SysGetFreePhysicalMemory());
    EXPECT_GE(SysGetTotalSwapMemory(), SysGetFreeSwapMemory());
    EXPECT_GT(SysGetProcessMemory(), 100000U);
    EXPECT_GE(SysGetProcessPeakMemory() + (1 << 20), SysGetProcessMemory());
    EXPECT_TRUE(SysGetProcessorCount() >= 1 && SysGetSessionSeconds() < 3600 && SysGetIdleSeconds() >= -1);
    EXPECT_FALSE(SysGetSystemName().IsEmpty() || SysGetSystemVersion().IsEmpty());
    EXPECT_LE(SysIsWinXP() + SysIsWinVista() + SysIsWin7() + SysIsWin8() + SysIsWin10(), int{SysIsWindows()});
}

/// Writes the words behind the first, a file's path, to that file, and the number of a certain file's
/// handles.
const ChildWork kShowWords("System.ShowWords", [](const Texts& words) {
    std::string shown;
    for (std::size_t i = 1; i < words.size(); ++i)
        shown += "[" + words[i] + "]\n";
    std::error_code error;
    int handles = 0;
    for (const auto& file : fs::directory_iterator("/proc/self/fd", error))
        handles += fs::read_symlink(file, error).string().ends_with("not inherited");
    WriteAtOnce(words[0], shown + std::to_string(handles));
    return true;
});

TEST(System, ProgramsAreStartedWithoutAShell) {
    const Scratch scratch;
    const std::string program = os::ExecutablePath(), out = scratch / "out",
                      other = scratch / "not inherited";
    std::ofstream(other) << "";
    const std::ifstream notInherited(other);
    int error = -1;
    const Texts special = {"a b", "$HOME;*", "", "\"'\\", "\\\\\"", "c:\\d e\\", "%PATH%", "&|<>^"};
    TOrderedList<CoreString> words;
    std::string expected;
    for (Text word : {"--child-work", "System.ShowWords", out.c_str()})
        words.Add(word);
    for (const std::string& word : special) {
        words.Add(word.c_str());
        expected += "[" + word + "]\n";
    }
    EXPECT_TRUE(ExecProgram(program.c_str(), words, &error));
    EXPECT_EQ(error, 0);
    EXPECT_EQ(Awaited(out), expected + "0");
    fs::remove(out);
    const std::string line =
        "\"" + program + "\" --child-work System.ShowWords " + out + " one\t\"two  words\"x \"\"";
    EXPECT_TRUE(ExecProgram(line.c_str(), &error));
    EXPECT_EQ(Awaited(out), "[one]\n[two  wordsx]\n[]\n0");
    for (Text absent : {"brenta-no-such-program", "", static_cast<Text>(nullptr)}) {
        EXPECT_FALSE(ExecProgram(absent, &error));
        EXPECT_EQ(error, os::kErrorNoSuchFile);
    }
    for (Text target : {"", "-option", "/none/file", static_cast<Text>(nullptr)})
        EXPECT_FALSE(ShellExecProgram(target));
}

}  // namespace
}  // namespace brenta::test
