// What the program makes of a terminal: the prompt's keys and history, colours and tables.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "host_process.h"
#include "test_support.h"

namespace brenta::test {
namespace {

class Terminal : public testing::Test {
 protected:
    void SetUp() override {
        if (!Shell(ScratchFolder().string(), "script -qec true /dev/null"))
            GTEST_SKIP() << "this system hands out no terminals";
    }
};

/// What a person sees who types `input` at a terminal of the program's own.
std::string AtTerminal(const std::string& command, const std::string& input, const std::string& settings) {
    const std::string folder = ScratchFolder().string();
    std::ofstream(folder + "/typed", std::ios::binary) << input;
    // Wine's console hides its cursor while it draws, one character at a time, and steps over blanks.
    const char* const tidy = kIsWindows ? " && sed -Ei 's/\\x1b\\[(K|\\?25[lh]|[0-9]+C)//g' seen" : "";
    EXPECT_TRUE(Shell(folder, "env -u NO_COLOR TERM=xterm " + settings +
                                  " script -qec '" BRENTA_EMULATOR " " BRENTA_HOST_PROGRAM " " + command +
                                  "' /dev/null <typed >seen" + tidy))
        << command;
    return ReadText(folder + "/seen");
}

TEST_F(Terminal, CompletesAndRemembersAtThePrompt) {
    if (kIsWindows) GTEST_SKIP() << "the prompt has no editor of lines of its own";
    const fs::path state = ScratchFolder() / "state";
    const std::string settings = "XDG_STATE_HOME='" + state.string() + "'";
    AtTerminal("",
               "var number = 20mil;\nnumb\t.Ro\t(1mil)\nvar d as CCoreXmlDom;\nd.LoadS\t(\"<a/>\")\n"
               "\"\xC3\xA9\xC3\xA9\" + d.El\t\nEnv.St\t.PromptY\t\n{1,\n2}\n\"\xC3\xA9\\n\"\n:quit\n",
               settings);
    const fs::path history = state / "brenta" / "history";
    EXPECT_EQ(SplitLines(ReadText(history.string())),
              (Lines{"var number = 20mil;", "number.Round(1mil)", "var d as CCoreXmlDom;",
                     "d.LoadString(\"<a/>\")", "\"\xC3\xA9\xC3\xA9\" + d.ElementList",
                     "Env.StdLib.PromptYesNo", "{1,\\n2}", "\"\xC3\xA9\\\\n\"", ":quit"}));
    EXPECT_EQ(fs::status(history).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(fs::status(state / "brenta").permissions(), fs::perms::owner_all);
    // The entries are there again: "up" twice is the text.
    AtTerminal("repl", "\033[A\033[A\n:quit\n", settings);
    EXPECT_EQ(SplitLines(ReadText(history.string())).size(), 11u);
    EXPECT_EQ(SplitLines(ReadText(history.string()))[9], "\"\xC3\xA9\\\\n\"");
}

TEST_F(Terminal, GoesOnWhenTheWindowChangesOrTheHistoryIsAPipe) {
    if (kIsWindows) GTEST_SKIP() << "no signal tells of the window, and there is no history";
    const std::string folder = ScratchFolder().string();
    EXPECT_TRUE(
        Shell(folder,
              "mkdir -p pipe/brenta && mkfifo pipe/brenta/history && "
              "(sleep 1; echo '6 * 7'; echo :quit) | XDG_STATE_HOME=\"$PWD/pipe\" timeout 20 "
              "script -qec '(sleep 0.5; kill -WINCH $$; sleep 0.2; kill -CONT $$) & exec " BRENTA_HOST_PROGRAM
              "' /dev/null >seen"));
    EXPECT_NE(ReadText(folder + "/seen").find("42"), std::string::npos);
}

TEST_F(Terminal, ShowsTablesAndColoursToPersonsOnly) {
    const std::string plain = AtTerminal("eval 1mil", "", "NO_COLOR=1");
    EXPECT_NE(plain.find("millimetres"), std::string::npos) << plain;
    EXPECT_EQ(plain.find('\t'), std::string::npos) << plain;
    EXPECT_EQ(plain.find('\033'), std::string::npos) << plain;
    EXPECT_NE(AtTerminal("help", "", "").find("\033[1mUsage:"), std::string::npos);
    EXPECT_EQ(AtTerminal("help", "", "TERM=dumb").find('\033'), std::string::npos);
}

}  // namespace
}  // namespace brenta::test
