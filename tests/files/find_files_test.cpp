#include <filesystem>
#include <fstream>

#include "brenta/files.h"
#include "brenta/host.h"
#include "test_support.h"

namespace brenta::test {
namespace {

namespace fs = std::filesystem;
using Text = const char*;

/// The texts of a result behind a prefix that all have in common.
Texts Found(const TOrderedList<STRID>& list, std::size_t prefix = 0) {
    Texts texts;
    for (const STRID id : list)
        texts.emplace_back(StrPtr(id) + prefix);
    return texts;
}

TEST(FindFiles, FolderByFolderSortedByBytes) {
    const Scratch scratch;
    const std::string folder = scratch / "top";
    fs::create_directories(folder + "/b/deep");
    fs::create_directories(folder + "/C");
    for (Text name : {"z.brd", "A.BRD", "a.txt", "b/x.brd", "b/deep/y.brd", "C/q.brd"})
        std::ofstream(folder + "/" + name) << name;
    if (!kIsWindows) std::ofstream(folder + "/b\\odd.brd") << "a name that nobody can pass";
    std::error_code noLinks;
    fs::create_directory_symlink("..", folder + "/b/up", noLinks);
    if (!noLinks) fs::create_symlink("none", folder + "/dangling.brd");
    ASSERT_TRUE(!noLinks || kIsWindows);
    const std::tuple<Text, bool, Texts> rows[] = {
        {"*.brd", false, {"A.BRD", "z.brd"}},
        {"*.brd", true, {"A.BRD", "z.brd", "C\\q.brd", "b\\x.brd", "b\\deep\\y.brd"}},
        {"", false, {"A.BRD", "a.txt", "z.brd"}},
        {"*.*", false, {"A.BRD", "a.txt", "z.brd"}},
        {"?.*T*", true, {"a.txt"}},
        {"*a*a*a*b", true, {}},
        {nullptr, false, {"A.BRD", "a.txt", "z.brd"}}};
    for (const auto& [pattern, deep, expected] : rows) {
        TOrderedList<STRID> paths, names;
        EXPECT_TRUE(FindFiles(folder.c_str(), pattern, paths, deep, true));
        EXPECT_EQ(Found(paths, folder.size() + 1), expected) << deep;
        EXPECT_TRUE(FindFiles((folder + "/").c_str(), pattern, names, deep, false));
        for (const std::string& name : Found(names))
            EXPECT_EQ(name.find_first_of("\\/"), std::string::npos);
        EXPECT_EQ(names.GetCount(), static_cast<int>(expected.size()));
    }
    TOrderedList<STRID> flat, deep, expanded;
    EXPECT_TRUE(FindSubDirectories(folder.c_str(), flat, false) &&
                FindSubDirectories(folder.c_str(), deep, true));
    EXPECT_EQ(Found(flat, folder.size() + 1), (Texts{"C", "b"}));
    Texts all = {"C", "b", "b\\deep", "b\\up"};
    if (noLinks) all.pop_back();
    EXPECT_EQ(Found(deep, folder.size() + 1), all);
    EXPECT_TRUE(ExpandFilename((folder + "\\b\\?.brd").c_str(), expanded) &&
                ExpandFilename("plain", expanded));
    EXPECT_EQ(Found(expanded), (Texts{folder + "\\b\\x.brd", "plain"}));
    EXPECT_FALSE(ExpandFilename((folder + "/*.none").c_str(), expanded) || ExpandFilename("", expanded) ||
                 FindFiles((folder + "/none").c_str(), "*", expanded, true, true) ||
                 FindSubDirectories((folder + "/a.txt").c_str(), expanded, true));
    EXPECT_EQ(expanded.GetCount(), 2);
}

TEST(FindFiles, RelativePaths) {
    // Path, base, result.
    const std::tuple<Text, Text, Text> rows[] = {{"a\\b\\c", "a\\d", "..\\b\\c"},
                                                 {"a/b/c", "a/b", "c"},
                                                 {"a/b", "a/b/", "."},
                                                 {"a", "a/b", ".."},
                                                 {"/x/y", "/z", "..\\x\\y"},
                                                 {"a/./b//c", "a/x/../b", "c"},
                                                 {"C:\\x", "c:/y", "..\\x"},
                                                 {"C:\\x", "D:\\x", "C:\\x"},
                                                 {"\\\\srv\\lib\\a", "//SRV/lib/b", "..\\a"},
                                                 {"\\\\srv\\lib", "\\\\srv\\lib\\b", ".."},
                                                 {"\\\\srv\\lib\\a", "\\\\srv\\old\\a", "\\\\srv\\lib\\a"},
                                                 {"/x", "x", "/x"},
                                                 {"ab", "a", "..\\ab"},
                                                 {"../a", "../b", "..\\a"},
                                                 {"a", "../b", "a"},
                                                 {"/../a", "/", "a"},
                                                 {"x", nullptr, "x"},
                                                 {nullptr, nullptr, "."}};
    for (const auto& [path, base, relative] : rows)
        EXPECT_EQ(MakeRelativePath(path, base), relative) << (path ? path : "null");
}

TEST(FindFiles, FoldersAreChosenThroughTheHost) {
    CoreString folder("old");
    EXPECT_FALSE(BrowseForDirectory(folder));
    HostServices services;
    services.browseForFolder = [](void* context, const char*, CoreString& chosen) {
        chosen += "new";
        return context != nullptr;
    };
    for (const bool agrees : {false, true}) {
        services.context = agrees ? &folder : nullptr;
        SetHostServices(services);
        EXPECT_EQ(BrowseForDirectory(folder), agrees);
        EXPECT_EQ(folder, agrees ? "oldnew" : "old");
    }
    SetHostServices({});
}

}  // namespace
}  // namespace brenta::test
