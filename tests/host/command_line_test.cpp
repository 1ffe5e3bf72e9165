// The host's command line, run as a user would.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "host_process.h"

namespace brenta::test {
namespace {

TEST(EvalCommand, PrintsInternalUnitsAndAllFourUnits) {
    const std::pair<Lines, std::string> rows[] = {
        {{"eval", "20mil+5mil"}, "250000\t0.025in\t25mil\t0.0635cm\t0.635mm"},
        {{"eval", "--units", "mm", "10"}, "3937010\t0.393701in\t393.701mil\t1cm\t10mm"},
        {{"eval", "-u", "in", "1"}, "10000000\t1in\t1000mil\t2.54cm\t25.4mm"},
        {{"eval", "--units=cm", "1"}, "3937010\t0.393701in\t393.701mil\t1cm\t10mm"},
        {{"eval", "-25mil"}, "-250000\t-0.025in\t-25mil\t-0.0635cm\t-0.635mm"},
        {{"eval", "--", "--units"}, ""},
    };
    for (const auto& [words, line] : rows) {
        const HostResult result = RunHost(words);
        EXPECT_EQ(result.status, line.empty() ? 1 : 0) << words.back();
        EXPECT_EQ(result.output, line.empty() ? Lines{} : Lines{line}) << words.back();
    }
}

TEST(EvalCommand, RefusesWithAReasonAndGoesOn) {
    const HostResult result = RunHost({"eval", "5mils", "5@", "1+1"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, (Lines{"20000\t0.002in\t2mil\t0.0051cm\t0.0508mm"}));
    EXPECT_EQ(result.errors, (Lines{"brenta: '5mils' does not evaluate: Symbol 's' not defined.",
                                    "brenta: '5@' does not evaluate: Syntax error."}));
}

TEST(EvalCommand, ReadsLinesFromStandardInput) {
    const HostResult result = RunHost({"eval", "-"}, "1mil\r\n\n2mil");
    EXPECT_EQ(result.output, (Lines{"10000\t0.001in\t1mil\t0.0025cm\t0.0254mm",
                                    "20000\t0.002in\t2mil\t0.0051cm\t0.0508mm"}));
}

TEST(ExecCommand, PrintsTheResult) {
    const std::tuple<Lines, Lines, int> rows[] = {
        {{"exec", "var x = 2; x * 21"}, {"42"}, 0},
        {{"exec", "var l = {1, 2.5, null}; l"}, {"{1, 2.5, null}"}, 0},
        {{"exec", "print(7);"}, {"7"}, 0},
        {{"exec", "--units", "mm", "10"}, {"3937007"}, 0},
        {{"exec", "-5"}, {"-5"}, 0},
        // What a script puts into two trees is no trouble at the end.
        {{"exec",
          "var d as CCoreXmlDom; var a = d.CreateElement(\"a\"); d.AddElement(a); "
          "a.CreateChild(\"b\").Parent.Name"},
         {"a"},
         0},
        {{"exec", "nobody"}, {}, 1},
    };
    for (const auto& [words, output, status] : rows) {
        const HostResult result = RunHost(words);
        EXPECT_EQ(result.output, output) << words.back();
        EXPECT_EQ(result.status, status) << words.back();
        EXPECT_EQ(result.errors.empty(), status == 0) << words.back();
    }
}

TEST(CommandLine, TakesWordsForNothingElse) {
    std::ofstream(ScratchFolder() / "words.scr")
        << "class C\n{\n    var x = 1;\n}\nfunction F(a)\n{\n    return \"<\" + a + \">\";\n}\n"
           "function Two(a, b)\n{\n    return F(a) + F(b);\n}\n"
           "function Holder()\n{\n    var c as C;\n    c.x = F;\n    return c;\n}\n";
    fs::copy_file(ScratchFolder() / "words.scr", ScratchFolder() / "run");
    fs::copy_file(ScratchFolder() / "words.scr", ScratchFolder() / "[x]");
    const std::pair<Lines, Lines> rows[] = {
        {{"run", "-r", "words.scr", "Two", "[1,2]", "%%"}, {"<[1,2]><%%>"}},
        {{"run", "words.scr", "F", "{}", "--result"}, {"<{}>"}},
        {{"run", "words.scr", "-r", "F", ""}, {"<>"}},
        {{"run", "words.scr", "-r", "F", "--", "-r"}, {"<-r>"}},
        {{"run", "-r", "words.scr", "Holder"}, {"{function F}"}},
        {{"check", "run", "[x]"}, {"run: no errors, 0 warnings", "[x]: no errors, 0 warnings"}},
        {{"zip", "add", "w.zip", "words.scr", "-j", "run", "[x]"}, {}},
        {{"zip", "extract", "-od[zip]", "w.zip", "run"}, {}},
        {{"check", "[zip]/run"}, {"[zip]/run: no errors, 0 warnings"}},
    };
    for (const auto& [words, output] : rows) {
        const HostResult result = RunHost(words);
        EXPECT_EQ(result.output, output) << words.back();
        EXPECT_EQ(result.status, 0) << words.back();
        EXPECT_EQ(result.errors, Lines{}) << words.back();
    }
}

TEST(RunCommand, SaysThatItFailedWhereTheScriptSaysNothing) {
    std::ofstream(ScratchFolder() / "silent.scr")
        << "function Main()\n{\n    for (var i = 0; i < 1; i = i + 1) {}\n"
           "    for (var i = 0; i < 1; i = i + 1) {}\n}\n";
    const HostResult result = RunHost({"run", "silent.scr"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, Lines{"brenta: 'silent.scr': 'Main' failed without a message"});
}

TEST(RunCommand, ReportsAWrongPathInOneLine) {
    const HostResult result = RunHost({"run", "no_such_script.scr"});
    EXPECT_EQ(result.status, 1);
    ASSERT_EQ(result.errors.size(), 1u);
    EXPECT_NE(result.errors[0].find("'no_such_script.scr' does not exist"), std::string::npos);
}

TEST(RunCommand, NamesTheFunctionsThatThereAre) {
    std::ofstream(ScratchFolder() / "two.scr") << "function One()\n{\n}\nfunction Two()\n{\n}\n";
    EXPECT_EQ(RunHost({"run", "two.scr", "Three"}).errors,
              Lines{"brenta: there is no function 'Three': 'two.scr' defines One, Two"});
}

TEST(ReplCommand, WorksWithPipedInputAndSurvivesErrors) {
    const HostResult result =
        RunHost({"repl"}, "var x = 20mil;\nnobody\nfunction Twice(a)\n{\n  return a * 2;\n}\nTwice(x)\n");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, (Lines{"400000"}));
    EXPECT_EQ(result.errors, (Lines{"cmd:(1): Symbol 'nobody' not defined."}));
}

TEST(CommandLine, AnswersWrongUseWithStatusTwo) {
    for (const Lines& words :
         {Lines{}, Lines{"no-such-command"}, Lines{"eval"}, Lines{"eval", "--units", "furlong", "1"}}) {
        const HostResult result = RunHost(words);
        EXPECT_EQ(result.status, 2);
        EXPECT_FALSE(result.errors.empty());
    }
    EXPECT_EQ(RunHost({"--help"}).status, 0);
    EXPECT_EQ(RunHost({"--version"}).output, (Lines{"brenta 4.0.0"}));
}

TEST(Streams, ThatCannotBeReadOrWrittenAreAFailure) {
    const std::string folder = ScratchFolder().string(), input = folder + "/in", output = folder + "/out",
                      errors = folder + "/err";
    for (const Lines& words : {Lines{"repl"}, Lines{"eval", "-"}, Lines{"log"}}) {
        ASSERT_EQ(RunHost(words).status, 0) << words[0];
        EXPECT_NE(RunProgram(BRENTA_HOST_PROGRAM, words, folder, {kNoInput, output, errors}), 0) << words[0];
    }
    ASSERT_EQ(RunHost({"eval", "1"}).status, 0);
    EXPECT_NE(RunProgram(BRENTA_HOST_PROGRAM, {"eval", "1"}, folder, {input, kFullFile, errors}), 0);
}

}  // namespace
}  // namespace brenta::test
