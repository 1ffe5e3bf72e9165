#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <utility>

#include "host_process.h"
#include "test_support.h"

namespace brenta::test {
namespace {

TEST(DocumentCommands, PrintWhatTheReadersMake) {
    const char* const library = "<a k=\"1\" b=\"&lt;&quot;\"><!-- c --><b/><b n=\"2\"><c/></b></a>";
    const std::tuple<const char*, Lines, Lines, Lines> rows[] = {
        {library, {"xml"}, {"a k=\"1\" b=\"<&quot;\"", "  b", "  b n=\"2\"", "    c"}, {}},
        {library, {"xml", "--quick"}, {"a k=\"1\" b=\"<&quot;\"", "  b", "  b n=\"2\"", "    c"}, {}},
        {"<a>text</a>", {"xml", "--platform"}, {"a"}, {}},
        {"<a>text</a>",
         {"xml", "-q"},
         {},
         {"Inner text not valid in this reader.",
          "brenta: 'file' is nothing for the quick reader; 'brenta xml --platform' takes all XML"}},
        {"<p>one<i>two</i></p>",
         {"html"},
         {"Root", "  p", "    Text \"one\"", "    i", "      Text \"two\""},
         {}},
        {"text",
         {"html"},
         {"Root"},
         {"Bad XML format.",
          "brenta: 'file' was read in part: the page ends inside a tag, or has one that the reader does not "
          "take"}},
        {library, {"records"}, {"1\tb", "2\tb n=\"2\"  (1 child)", "2 records"}, {}},
        {"<a><b/><c>",
         {"records"},
         {"1\tb", "1 record"},
         {"brenta: 'file' is malformed behind these records"}},
        {library, {"report"}, {}, {"brenta: 'file' is no part library: it has no drawing/library/packages"}},
    };
    for (auto [text, words, output, errors] : rows) {
        std::ofstream(ScratchFolder() / "file", std::ios::binary) << text;
        words.push_back("file");
        const HostResult result = RunHost(words);
        EXPECT_EQ(result.output, output) << words[0] << ' ' << text;
        EXPECT_EQ(result.errors, errors) << words[0] << ' ' << text;
        EXPECT_EQ(result.status, errors.empty() ? 0 : 1) << words[0] << ' ' << text;
    }
}

TEST(DocumentCommands, SayInOneLineWhatIsWrongWithAFile) {
    for (const char* command : {"xml", "html", "records", "report"}) {
        EXPECT_EQ(RunHost({command, "none"}).errors, Lines{"brenta: 'none' does not exist"}) << command;
        EXPECT_EQ(RunHost({command, "."}).errors, Lines{"brenta: '.' is a folder"}) << command;
    }
    std::ofstream(ScratchFolder() / "file", std::ios::binary) << "<a><b></a>";
    const HostResult result = RunHost({"xml", "file"});
    ASSERT_EQ(result.errors.size(), 1u);
    EXPECT_TRUE(result.errors[0].starts_with("brenta: 'file' cannot be read: ")) << result.errors[0];
    EXPECT_TRUE(result.errors[0].ends_with(" (at byte 10)") || kIsWindows) << result.errors[0];
}

/// The one library in the folder BRENTA_DATA whose file name ends with the given text; "" if there is none.
std::string Library(const std::string& name) {
    const char* const folder = std::getenv("BRENTA_DATA");
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder != nullptr ? folder : "", error))
        if (entry.path().filename().string().ends_with(name)) return fs::absolute(entry.path()).string();
    return "";
}

// Figures worked out by hand from the coordinates in the files.
TEST(DocumentCommands, ReportOnRealLibraries) {
    const std::tuple<const char*, std::size_t, Lines> rows[] = {
        {"Resistors.lbr",
         39,
         {"0805 2 0 70.9 1.800 102.4 x 47.2 2.600 x 1.200",
          "2506_AR 16 0 31.5 0.800 238.2 x 102.4 6.050 x 2.600",
          "SLIDER-XLARGE 0 3 278.4 7.071 3112.8 x 356.9 79.064 x 9.064"}},
        {"LED.lbr",
         53,
         {"LED_5MM 0 2 100.0 2.540 174.0 x 74.0 4.420 x 1.880",
          "LED-1206 2 0 118.1 3.000 165.4 x 55.1 4.200 x 1.400",
          "FKIT-LED-1206 2 0 112.0 2.844 175.0 x 71.0 4.444 x 1.803"}},
        {"IC-Power.lbr",
         53,
         {"MSOP8 8 0 25.6 0.650 92.5 x 220.5 2.350 x 5.600",
          "SO08 8 0 50.0 1.270 174.0 x 293.0 4.420 x 7.442",
          "TDFN-8 9 0 19.7 0.500 141.7 x 74.0 3.600 x 1.880"}},
    };
    for (const auto& [name, packages, figures] : rows) {
        const std::string library = Library(name);
        if (library.empty()) GTEST_SKIP() << "no " << name << " in BRENTA_DATA";
        const HostResult result = RunHost({"report", library});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.output.size(), packages + 1) << name;
        Lines lines;
        for (std::string line : result.output) {
            std::erase_if(
                line, [before = ' '](char c) mutable { return std::exchange(before, c) == ' ' && c == ' '; });
            lines.push_back(line);
        }
        for (const std::string& line : figures)
            EXPECT_NE(std::find(lines.begin(), lines.end(), line), lines.end()) << line;
    }
}

}  // namespace
}  // namespace brenta::test
