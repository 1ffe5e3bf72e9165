// The commands that read documents: what they print of them, and what they say of others.
#include <gtest/gtest.h>

#include <fstream>

#include "host_process.h"

namespace brenta::test {
namespace {

using Lines = std::vector<std::string>;

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
    EXPECT_TRUE(result.errors[0].ends_with(" (at byte 10)")) << result.errors[0];
}

}  // namespace
}  // namespace brenta::test
