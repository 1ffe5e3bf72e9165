// What the host says to somebody who does not know it yet: help, and answers to what was typed wrong.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "host_process.h"

namespace brenta::test {
namespace {

/// The commands, or the actions of a command, as completion knows them.
Lines Names(Lines words) {
    words.insert(words.begin(), "__complete");
    words.emplace_back("");
    Lines names;
    for (const std::string& line : RunHost(words).output)
        if (const std::size_t tab = line.find('\t'); tab != std::string::npos)
            names.push_back(line.substr(0, tab));
    return names;
}

TEST(Help, TellsOfEachCommandAndAction) {
    std::vector<Lines> paths = {{}};
    for (const std::string& name : Names({})) {
        if (name == "help") continue;
        paths.push_back({name});
        for (const char* command : {"config", "registry", "zip"})
            if (name == command)
                for (const std::string& action : Names({name}))
                    paths.push_back({name, action});
    }
    EXPECT_EQ(paths.size(), 1u + 15 + 4 + 4 + 4);
    for (const Lines& path : paths) {
        Lines help = {"help"}, option = path;
        help.insert(help.end(), path.begin(), path.end());
        option.emplace_back("--help");
        const HostResult result = RunHost(help);
        EXPECT_EQ(result.status, 0) << help.back();
        EXPECT_EQ(result.output, RunHost(option).output) << help.back();
        std::string usage = "Usage: brenta";
        for (const std::string& word : path)
            usage += " " + word;
        ASSERT_GE(result.output.size(), 3u) << usage;
        EXPECT_TRUE(result.output[2].starts_with(usage)) << result.output[2];
        for (const std::string& line : result.output)
            EXPECT_LE(line.size(), 80u) << line;
        const bool hasExample =
            std::find(result.output.begin(), result.output.end(), "Examples:") != result.output.end();
        EXPECT_TRUE(hasExample || path.size() == 2) << usage;
    }
}

TEST(Help, SaysWhatIsWrongAndWhereTheRightWayStands) {
    const std::tuple<Lines, const char*, const char*> rows[] = {
        {{"evl", "1"}, "there is no command 'evl'; did you mean 'eval'?", ""},
        {{"foo"}, "there is no command 'foo'", ""},
        {{"a.scr"}, "there is no command 'a.scr'; 'brenta run a.scr' runs a script", ""},
        {{"(1in)"}, "there is no command '(1in)'; 'brenta eval (1in)' evaluates a length", ""},
        {{"help", "evl"}, "there is no command 'evl'; did you mean 'eval'?", ""},
        {{"config"}, "'brenta config' needs one of get, set, delete, list", " config"},
        {{"zip", "unpack", "a"}, "'brenta zip' has no 'unpack', only list, test, add, extract", " zip"},
        {{"eval", "-u", "feet", "1"}, "--units: takes in, mil, cm or mm, not 'feet'", " eval"},
        {{"xml", "--fast", "a"}, "there is no option '--fast'", " xml"},
        {{"xml", "a", "b"}, "the word 'b' is too much", " xml"},
        {{"config", "get", "a"}, "KEY is required", " config get"},
        {{"exec", "1", "2"}, "the word '2' is too much", " exec"},
        {{"registry", "set", "a", "b", "c", "-t"}, "--type: 1 required TYPE missing", " registry set"}};
    for (const auto& [words, problem, path] : rows) {
        const HostResult result = RunHost(words);
        EXPECT_EQ(result.status, 2) << problem;
        EXPECT_EQ(result.errors, (Lines{std::string("brenta: ") + problem,
                                        std::string("brenta: 'brenta help") + path + "' tells how it goes"}));
    }
}

TEST(CheckCommand, PrintsPlacesForEditors) {
    const std::string script = (ScratchFolder() / "check.scr").string();
    std::ofstream(script) << "function Main()\n{\n    var a = 2 * -3;\n    return (;\n}\n";
    const Lines own = RunHost({"check", script}).errors, gnu = RunHost({"check", "--gnu", script}).errors;
    ASSERT_EQ(own.size(), 3u);
    ASSERT_EQ(gnu.size(), 3u);
    EXPECT_EQ(own[0], script + "(4): Syntax error: expecting ')', but found ';'");
    EXPECT_EQ(gnu[0], script + ":4: error: Syntax error: expecting ')', but found ';'");
    EXPECT_TRUE(own[2].starts_with(script + "(3): warning: ")) << own[2];
    EXPECT_TRUE(gnu[2].starts_with(script + ":3: warning: ")) << gnu[2];
}

}  // namespace
}  // namespace brenta::test
