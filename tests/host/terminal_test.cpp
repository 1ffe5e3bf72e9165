// What the program makes of a terminal: the prompt's keys and history, colours and tables.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "host_process.h"

namespace brenta::test {
namespace {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;

class Terminal : public testing::Test {
 protected:
    void SetUp() override {
        if (std::system("script -qec true /dev/null >/dev/null 2>&1") != 0)
            GTEST_SKIP() << "this system hands out no terminals";
    }
};

/// What a person sees who types `input` at a terminal of the program's own.
std::string AtTerminal(const std::string& command, const std::string& input, const std::string& settings) {
    const std::string folder = ScratchFolder().string();
    std::ofstream(folder + "/typed", std::ios::binary) << input;
    const std::string line = "cd '" + folder + "' && env -u NO_COLOR TERM=xterm " + settings +
                             " script -qec '" + BRENTA_HOST_PROGRAM + " " + command +
                             "' /dev/null <typed >seen";
    EXPECT_EQ(std::system(line.c_str()), 0) << command;
    return ReadText(folder + "/seen");
}

TEST_F(Terminal, CompletesAndRemembersAtThePrompt) {
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
    const std::string folder = ScratchFolder().string();
    const std::string line =
        "mkdir -p '" + folder + "/pipe/brenta' && mkfifo '" + folder + "/pipe/brenta/history' && " +
        "(sleep 1; echo '6 * 7'; echo :quit) | XDG_STATE_HOME='" + folder + "/pipe' timeout 20 " +
        "script -qec '(sleep 0.5; kill -WINCH $$; sleep 0.2; kill -CONT $$) & exec " + BRENTA_HOST_PROGRAM +
        "' /dev/null >'" + folder + "/seen'";
    EXPECT_EQ(std::system(line.c_str()), 0);
    EXPECT_NE(ReadText(folder + "/seen").find("42"), std::string::npos);
}

TEST(Streams, ThatCannotBeReadOrWrittenAreAFailure) {
    const std::string program = std::string("'") + BRENTA_HOST_PROGRAM + "' 2>/dev/null";
    EXPECT_NE(std::system((program + " eval 1 >/dev/full").c_str()), 0);
    EXPECT_EQ(std::system((program + " eval 1 >/dev/null").c_str()), 0);
    for (const char* const command : {" repl", " eval -", " log"}) {
        EXPECT_NE(std::system((program + command + " >/dev/null </").c_str()), 0) << command;
        EXPECT_EQ(std::system((program + command + " >/dev/null </dev/null").c_str()), 0) << command;
    }
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
