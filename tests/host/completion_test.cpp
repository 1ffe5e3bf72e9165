// Completion of command lines: what the program offers, and what bash makes of it.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "host_process.h"
#include "test_support.h"

namespace brenta::test {
namespace {

void PrepareFolder() {
    SetVariable("BRENTA_APPDATA", (ScratchFolder() / "completion").string().c_str());
    fs::create_directories(ScratchFolder() / "complete/boards");
    fs::current_path(ScratchFolder() / "complete");
    std::ofstream("panel.scr") << "function Main()\n{\n}\nfunction Fit (a)\n{\n}\n";
    std::ofstream("panel with blanks.SCR").flush();
    std::ofstream("parts.lbr").flush();
    RunHost({"config", "set", "Grid", "Step", "25"});
    RunHost({"zip", "add", "-j", "complete/a.zip", "complete/panel.scr"});
}

TEST(Completion, OffersWhatMayStandThere) {
    PrepareFolder();
    const std::pair<Lines, Lines> rows[] = {{{"zi"}, {"zip"}},
                                            {{"help", "e"}, {"eval", "exec"}},
                                            {{"help", "config", "l"}, {"list"}},
                                            {{"eval", "--"}, {"--help", "--units"}},
                                            {{"eval", "-u", "m"}, {"mil", "mm"}},
                                            {{"eval", "--units", "mm", "-"}, {"--help", "--units"}},
                                            {{"eval", "--", "-"}, {}},
                                            {{"run", ""}, {":files scr"}},
                                            {{"run", "complete/panel.scr", ""}, {"Main", "Fit"}},
                                            {{"run", "-r", "complete/panel.scr", "F"}, {"Fit"}},
                                            {{"run", "panel.scr", "Fit", "a", ""}, {":files"}},
                                            {{"config", "get", ""}, {"Grid"}},
                                            {{"config", "get", "Grid", ""}, {"Step"}},
                                            {{"registry", "set", "--type", "d"}, {"dword"}},
                                            {{"registry", "list", "HKC"}, {"HKCU\\", "HKCR\\"}},
                                            {{"zip", "extract", "-d", ""}, {":folders"}},
                                            {{"zip", "extract", "complete/a.zip", ""}, {"panel.scr"}},
                                            {{"nothing", "x"}, {}},
                                            {{"xml", "a", ""}, {}}};
    for (const auto& [words, offered] : rows) {
        Lines all = {"__complete"};
        all.insert(all.end(), words.begin(), words.end());
        Lines lines = RunHost(all).output;
        for (std::string& line : lines)
            line = line.substr(0, line.find('\t'));
        EXPECT_EQ(lines, offered) << words.front() << " ... " << words.back();
    }
}

/// What bash would put into the line, with the completion file read. The pieces of a name with a line end are
/// no names; Wine finds no such file, nor its folder empty, so that it stays no longer.
Lines CompleteInBash(const std::string& words) {
    std::ofstream("complete.sh", std::ios::binary)
        << ">$'panel\\nboards.scr'\n. '" << BRENTA_COMPLETION_FILE << "'\ncompopt() { :; }\nCOMP_WORDS=("
        << words << ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\nbrenta() { " << BRENTA_EMULATOR << " '"
        << BRENTA_HOST_PROGRAM << "' \"$@\"; }\n_brenta brenta\nrm panel?boards.scr\n"
        << "[ ${#COMPREPLY[@]} -eq 0 ] || printf '%s\\n' \"${COMPREPLY[@]}\" >offered\n";
    std::ofstream("offered").flush();
    EXPECT_TRUE(Shell(fs::current_path().string(), "bash complete.sh"));
    return SplitLines(ReadText("offered"));
}

TEST(Completion, WorksInBash) {
    if (!Shell(ScratchFolder().string(), "bash -c :")) GTEST_SKIP() << "no bash";
    PrepareFolder();
    const std::pair<const char*, std::set<std::string>> rows[] = {
        {"brenta zi", {"zip"}},
        {"brenta eval -u ''", {"in", "mil", "cm", "mm"}},
        {"brenta run p", {"panel.scr", "panel with blanks.SCR"}},
        {"brenta run ''", {"panel.scr", "panel with blanks.SCR", "boards"}},
        {"brenta zip extract -d ''", {"boards"}},
        {"brenta report par", {"parts.lbr"}},
        {"brenta registry get HKL", {"HKLM\\\\"}},
        {"brenta run 'panel\\ w'", {"panel with blanks.SCR"}},
        {"brenta run '\"panel w'", {"panel with blanks.SCR"}},
        {"brenta zip extract '\"a\".\\zip' ''", {"panel.scr"}},
        {"brenta registry get \\'HKL", {"HKLM\\"}},
        {"brenta xml a b ''", {}}};
    for (const auto& [words, offered] : rows) {
        const Lines lines = CompleteInBash(words);
        EXPECT_EQ(std::set<std::string>(lines.begin(), lines.end()), offered) << words;
    }
}

}  // namespace
}  // namespace brenta::test
