// brenta zip and brenta log.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "host_process.h"
#include "test_support.h"

namespace brenta::test {
namespace {

void Write(const char* name, const std::string& text) {
    std::ofstream(ScratchFolder() / name, std::ios::binary) << text;
}

/// An archive of one stored entry, as somebody else might make it.
std::string ArchiveOf(const std::string& name) {
    const auto number = [](std::size_t value, int size) {
        std::string bytes;
        for (int i = 0; i < size; ++i, value >>= 8)
            bytes += static_cast<char>(value & 0xFF);
        return bytes;
    };
    const std::string head = std::string("\x14\0\0\0\0\0\0\0\0\0", 10) + number(0xE8B7BE43, 4) +
                             number(1, 4) + number(1, 4) + number(name.size(), 2) +
                             number(0, 2);  // the checksum is that of "a"
    const std::string local = "PK\3\4" + head + name + "a";
    const std::string central = std::string("PK\1\2\x14\0", 6) + head + std::string(14, '\0') + name;
    return local + central + std::string("PK\5\6\0\0\0\0\1\0\1\0", 12) + number(central.size(), 4) +
           number(local.size(), 4) + number(0, 2);
}

TEST(ArchiveCommands, PackAndUnpack) {
    fs::create_directory(ScratchFolder() / "parts");
    Write("parts/one", "1");
    Write("two", "22");
    EXPECT_EQ(RunHost({"zip", "add", "p.zip", "parts/one", "two"}).status, 0);
    EXPECT_EQ(RunHost({"zip", "list", "p.zip"}).output, (Lines{"1\tparts/one", "2\ttwo"}));
    EXPECT_EQ(RunHost({"zip", "extract", "-d", "unpacked", "p.zip"}).status, 0);
    EXPECT_EQ(ReadText((ScratchFolder() / "unpacked/parts/one").string()), "1");
    EXPECT_EQ(RunHost({"zip", "extract", "-d", "unpacked", "p.zip", "two"}).errors,
              Lines{"brenta: '" + (fs::path("unpacked") / "two").string() +
                    "' exists already (--overwrite replaces it)"});
    EXPECT_EQ(RunHost({"zip", "extract", "-o", "-d", "unpacked", "p.zip", "two"}).status, 0);
    EXPECT_EQ(RunHost({"zip", "add", "-j", "p.zip", "parts/one", "two"}).status, 0);
    const HostResult test = RunHost({"zip", "test", "p.zip"});
    EXPECT_EQ(test.output, Lines{"p.zip: 4 entries, 1 bad"});
    EXPECT_EQ(test.errors, Lines{"brenta: 'two' cannot be reached behind 'two'"});
    for (const char* action : {"list", "test", "add", "extract"})
        EXPECT_EQ(RunHost({"zip", action, "two"}).errors, Lines{"brenta: 'two' is no zip archive"}) << action;
}

TEST(ArchiveCommands, UnpackNothingOutsideTheFolder) {
    Write("good.zip", ArchiveOf("sub\\.\\good"));
    EXPECT_EQ(RunHost({"zip", "extract", "-d", "inside", "good.zip"}).status, 0);
    EXPECT_EQ(ReadText((ScratchFolder() / "inside/sub/good").string()), "a");
    const char* const names[] = {"../up", "/tmp/up", "sub/../../up", "..\\up", "C:up", "\\up"};
    for (const std::string name : names) {
        Write("evil.zip", ArchiveOf(name));
        const HostResult result = RunHost({"zip", "extract", "-d", "inside", "evil.zip"});
        EXPECT_EQ(result.errors,
                  Lines{"brenta: '" + name + "' leads out of the folder; nothing was unpacked"});
        EXPECT_EQ(result.status, 1);
    }
}

TEST(ArchiveCommands, ReportOfMessages) {
    SetVariable("BROWSER", "true");  // nothing is to be seen
    const HostResult result =
        RunHost({"log", "--report", "r.html", "--title", "A<B"},
                "a(b).scr(12): warning: <i>\nhello\nx.scr(3): Unknown (4)\nerror: top\nx (3) y:\n");
    EXPECT_EQ(result.output, (Lines{"hello", "x (3) y:", "r.html: 1 warning, 2 errors"}));
    const std::string page = ReadText((ScratchFolder() / "r.html").string());
    for (const char* text : {">A&lt;B<", ">a(b).scr(12) : warning: &lt;i><",
                             ">x.scr(3) : error: Unknown (4)<", "\"#ff0000\">error: top<"})
        EXPECT_NE(page.find(text), std::string::npos) << text;
    EXPECT_EQ(RunHost({"log"}, "nothing\n").output, (Lines{"nothing", "no warnings, no errors, no report"}));
    EXPECT_EQ(RunHost({"log", "-r", "none/r"}, "error: x\n").errors,
              Lines{"brenta: 'none/r' cannot be written"});
}

}  // namespace
}  // namespace brenta::test
