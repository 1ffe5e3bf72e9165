#include "brenta/files.h"

#include <filesystem>
#include <fstream>

#include "test_support.h"

namespace brenta::test {
namespace {

using Text = const char*;

TEST(FileNames, TakenApart) {
    // Path; GetExtName, StripExtName, GetPathName, GetFileName with and without extension, StripFileName.
    const std::tuple<Text, Text, Text, Text, Text, Text, Text> rows[] = {
        {"a/b\\c.brd", "brd", "a/b\\c", "a/b\\", "c.brd", "c", "a\\b"},
        {"a.b.c", "c", "a.b", "./", "a.b.c", "a.b", "a.b.c"},
        {"rev.2/board", "2/board", "rev", "rev.2/", "board", "board", "rev.2"},
        {"a/b/c", "", "a/b/c", "a/b/", "c", "c", "a\\b"},
        {"/x", "", "/x", "/", "x", "x", ""},
        {"a//.", "", "a//", "a//", ".", "", "a\\"},
        {nullptr, "", "", "./", "", "", ""}};
    for (const auto& [path, ext, withoutExt, folder, name, baseName, parent] : rows) {
        EXPECT_EQ(GetExtName(path), ext);
        EXPECT_EQ(StripExtName(path), withoutExt);
        EXPECT_EQ(GetPathName(path), folder);
        EXPECT_TRUE(StripPathName(path) == name && GetFileName(path, true) == name);
        EXPECT_EQ(GetFileName(path, false), baseName);
        EXPECT_EQ(StripFileName(path), parent);
    }
}

TEST(FileNames, DrivesAndHosts) {
    // Path; GetDriveName, StripDriveName, GetUrlHostName, IsQualifiedFilename.
    const std::tuple<Text, Text, Text, Text, bool> rows[] = {
        {"a/b:c:d", "a/b:\\", "c:d", "", true},
        {"ftp://srv:81/a", "ftp:\\", "//srv:81/a", "ftp://srv:81", true},
        {"ftp://h", "ftp:\\", "//h", "ftp://h", true},
        {"x://h?q/r#f&a", "x:\\", "//h?q/r#f&a", "x://h", true},
        {"h/x", "", "h/x", "", false},
        {"\\h", "", "\\h", "", true},
        {nullptr, "", "", "", false}};
    for (const auto& [path, drive, behindDrive, host, qualified] : rows) {
        EXPECT_EQ(GetDriveName(path), drive);
        EXPECT_EQ(StripDriveName(path), behindDrive);
        EXPECT_EQ(GetUrlHostName(path), host);
        EXPECT_EQ(IsQualifiedFilename(path), qualified);
    }
}

TEST(FileNames, PutTogether) {
    // Two arguments; AddExt, ReplaceExt and AppendPaths of them.
    const std::tuple<Text, Text, Text, Text, Text> joined[] = {
        {"board", "brd", "board.brd", "board.brd", "board\\brd"},
        {"board.rev2", ".brd", "board.rev2", "board.brd", "board.rev2\\.brd"},
        {"a.b.c", "d", "a.b.c", "a.b", "a.b.c\\d"},
        {"dir.x/f", "..t", "dir.x/f", "dir..t", "dir.x/f\\..t"},
        {"a", "", "a.", "a.", "a\\"},
        {nullptr, "b", ".b", ".b", "\\b"},
        {"a\\", "//b", "a\\.//b", "a\\.//b", "a\\/b"},
        {"a", "/b", "a./b", "a./b", "a/b"}};
    for (const auto& [first, second, added, replaced, path] : joined) {
        EXPECT_EQ(AddExt(first, second), added);
        EXPECT_EQ(ReplaceExt(first, second), replaced);
        EXPECT_EQ(AppendPaths(first, second), path);
    }
    const std::tuple<Text, Text, Text, Text, Text> built[] = {
        {"lib", "parts", "r0603", "brd", "lib\\parts\\r0603.brd"},
        {"lib/", "parts\\", "r.", ".brd", "lib/parts\\r.brd"},
        {"a", "\\b", "c", "", "a\\\\b\\c"},
        {nullptr, "\\b\\", "c", nullptr, "\\b\\c"},
        {"a", "/", nullptr, "x", "a\\.x"},
        {"", "", "", "..x", ".x"}};
    for (const auto& [root, folder, name, ext, path] : built)
        EXPECT_EQ(BuildFilename(root, folder, name, ext), path);
}

TEST(FileNames, LegalNames) {
    for (Text name : {"a", "prn", "PRN", "con.txt", "com0", "com10", "a b", "d/b.brd", "\xC3\xA9", "aux:/x"})
        EXPECT_TRUE(IsLegalFilename(name)) << name;
    for (Text name :
         {"", " a", "a ", ".a", "a:b", "COM3", "con", "Aux", "NUL", "lpt9", "d/com1", "a/", "a\x01"})
        EXPECT_FALSE(IsLegalFilename(name)) << name;
    for (char c : std::string_view("<>|?*\""))
        EXPECT_FALSE(IsLegalFilename(CoreString("a") + c + 'b')) << c;
    EXPECT_FALSE(IsLegalFilename(nullptr));
}

TEST(FileNames, FormsAndExistence) {
    EXPECT_EQ(NormalizeFilename("a/B\\c\xE9", true), "A/B\\C\xE9");
    EXPECT_EQ(NormalizeFilename("a/B\\c", false), "a/B\\c");
    const Scratch scratch;
    const CoreString folder(scratch / "folder"), file = AppendPaths(folder, "board.brd");
    std::filesystem::create_directory(folder());
    std::ofstream(scratch / "folder/board.brd") << "x";
    EXPECT_TRUE(std::filesystem::exists(CoreNativePath(file)()));
    for (const CoreString& path :
         {file, folder, AppendPaths(folder, "x"), AppendPaths(file, ""), CoreString()}) {
        EXPECT_EQ(FileExists(path), path == file) << path;
        EXPECT_EQ(DirectoryExists(path), path == folder) << path;
    }
    EXPECT_FALSE(FileExists(nullptr) || DirectoryExists(nullptr));
    EXPECT_TRUE(DirectoryExists(AppendPaths(folder, "")));
    const std::string longest = Repeat("a/", 50000);
    EXPECT_FALSE(FileExists(longest.c_str()) || DirectoryExists(longest.c_str()));
    EXPECT_EQ(StripFileName((longest + "b").c_str()).GetLength(), 99999);
    EXPECT_EQ(NormalizeFilename(longest.c_str(), true).GetLength(), 100000);
    EXPECT_EQ(MakeRelativePath((longest + "b").c_str(), longest.c_str()), "b");
}

}  // namespace
}  // namespace brenta::test
