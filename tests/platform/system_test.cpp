#include "brenta/system.h"

#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "brenta/host.h"
#include "test_support.h"

namespace brenta {
namespace {

namespace fs = std::filesystem;
using Text = const char*;
using test::Texts;

TEST(System, Versions) {
    const std::pair<Text, Text> rows[] = {{"4", "4.0.0.0"},
                                          {"4.1.2.3", "4.1.2.3"},
                                          {" 4, 1 ,65535.0 ", "4.1.65535.0"},
                                          {"004.1", "4.1.0.0"},
                                          {"", ""},
                                          {nullptr, ""},
                                          {"4.", ""},
                                          {".4", ""},
                                          {"4.1.2.3.4", ""},
                                          {"4.1beta", ""},
                                          {"65536", ""},
                                          {"-1", ""},
                                          {"99999999999999999", ""},
                                          {"1 2", ""}};
    for (const auto& [text, expected] : rows) {
        CoreVersion version{9, 9, 9, 9};
        const bool good = GetVersionFromString(text, version);
        EXPECT_EQ(good, *expected != 0) << (text ? text : "null");
        EXPECT_EQ(GetVersionString(version), good ? expected : "9.9.9.9") << (text ? text : "null");
    }
    const CoreVersion ascending[] = {{0, 9, 9, 9}, {1, 0, 0, 0}, {1, 0, 0, 1},
                                     {1, 0, 2, 0}, {1, 3, 0, 0}, {10, 0, 0, 0}};
    for (const CoreVersion& a : ascending) {
        for (const CoreVersion& b : ascending)
            EXPECT_EQ(CompareVersions(a, b), (&a > &b) - (&a < &b));
    }
    CoreVersion own;
    EXPECT_TRUE(GetModuleVersion(own) && own.majorNumber >= 4);
    const test::Scratch scratch;
    std::ofstream(scratch / "libpart.so.4.0.1") << "";
    std::ofstream(scratch / "a.so.x") << "";
    fs::create_symlink("libpart.so.4.0.1", scratch / "libpart.so");
    EXPECT_TRUE(GetModuleVersion((scratch / "libpart.so").c_str(), own));
    EXPECT_EQ(GetVersionString(own), "4.0.1.0");
    for (const std::string& path : {scratch / "a.so.x", scratch / "none.so.1", std::string()})
        EXPECT_FALSE(GetModuleVersion(path.c_str(), own));
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

/// A text file's content once another program has written it; "" if that takes longer than ten seconds.
std::string Awaited(const std::string& path) {
    std::string text;
    for (int i = 0; i < 1000 && text.empty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        std::getline(std::ifstream(path), text, '\0');
    }
    return text;
}

TEST(System, ProgramsAreStartedWithoutAShell) {
    const test::Scratch scratch;
    const std::string script = scratch / "show words", out = scratch / "out", page = scratch / "a page.html";
    std::ofstream(script) << "#!/bin/sh\nfor word in \"$@\"; do echo \"[$word]\"; done > '" << out
                          << ".new'\nls -l /proc/$$/fd | grep -c 'a page.html' >> '" << out << ".new'\nmv '"
                          << out << ".new' '" << out << "'\n";
    std::ofstream(page) << "";
    fs::permissions(script, fs::perms::owner_all);
    const std::ifstream notInherited(page);  // by the program

    int error = -1;
    TOrderedList<CoreString> words;
    for (Text word : {"a b", "$HOME;*", "", "\"'\\"})
        words.Add(word);
    EXPECT_TRUE(ExecProgram(script.c_str(), words, &error));
    EXPECT_EQ(error, 0);
    const std::string shown = Awaited(out);
    EXPECT_EQ(shown, "[a b]\n[$HOME;*]\n[]\n[\"'\\]\n0\n");
    fs::remove(out);
    EXPECT_TRUE(ExecProgram(("\"" + script + "\" one\t\"two  words\"x \"\"").c_str(), &error));
    EXPECT_EQ(Awaited(out).substr(0, 21), "[one]\n[two  wordsx]\n[");
    for (Text program : {"/none/program", "brenta-no-such-program", "", static_cast<Text>(nullptr)}) {
        EXPECT_FALSE(ExecProgram(program, &error));
        EXPECT_EQ(error, ENOENT);
    }

    fs::remove(out);
    const Text old = std::getenv("BROWSER");
    const std::string kept = old ? old : "";
    fs::create_symlink(script, scratch / "browser");
    setenv("BROWSER", ("/none/browser::" + (scratch / "browser") + " --open=%s -x").c_str(), 1);
    EXPECT_TRUE(ShellExecProgram(page.c_str()));
    EXPECT_EQ(Awaited(out).substr(0, page.size() + 9), "[--open=" + page + "]");
    fs::remove(out);
    setenv("BROWSER", (scratch / "browser").c_str(), 1);
    EXPECT_TRUE(ShellExecProgram("http://host/?a=$(b)"));
    EXPECT_EQ(Awaited(out).substr(0, 21), "[http://host/?a=$(b)]");
    for (Text target : {"", "-option", "/none/file", static_cast<Text>(nullptr)})
        EXPECT_FALSE(ShellExecProgram(target));
    setenv("BROWSER", kept.c_str(), 1);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "nothing is left to wait for";
}

}  // namespace
}  // namespace brenta
