#include "brenta/zip.h"

#include <chrono>
#include <filesystem>
#include <fstream>

#include "brenta/files.h"
#include "brenta/host.h"
#include "test_support.h"

namespace brenta::test {
namespace {

namespace fs = std::filesystem;

void WriteText(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

/// Adds an entry.
bool Put(const std::string& archive, const char* name, std::string text) {
    ZipFileInfo info;
    info.name = name;
    info.size = static_cast<std::uint32_t>(text.size());
    info.data = reinterpret_cast<unsigned char*>(text.data());
    return ZipFile(archive.c_str(), info);
}

bool AddFiles(const std::string& archive, const Texts& paths, bool namesOnly) {
    TOrderedList<CoreString> files;
    for (const std::string& path : paths)
        files.Add(path.c_str());
    return ZipFiles(archive.c_str(), files, namesOnly);
}

/// The text of an entry, or how reading it fails: "-" without, "--" with a buffer that was handed over.
std::string Get(const std::string& archive, const char* name) {
    ZipFileInfo info;
    info.name = name;
    const bool good = UnzipFile(archive.c_str(), info);
    std::string text = good ? std::string(info.data, info.data + info.size) : info.data ? "--" : "-";
    delete[] info.data;
    return text;
}

/// The directory as "name:size" texts; "-" at its end if it is refused.
Texts List(const std::string& archive) {
    TOrderedList<ZipFileInfo> entries;
    const bool good = GetZipDirectory(archive.c_str(), entries);
    Texts list;
    for (const ZipFileInfo& entry : entries)
        list.push_back(entry.name() + (":" + std::to_string(entry.size)));
    if (!good) list.emplace_back("-");
    return list;
}

/// A number in the archive's byte order.
void Store(std::string& bytes, std::size_t at, std::uint64_t value, int size) {
    for (int i = 0; i < size; ++i, value >>= 8)
        bytes[at + static_cast<std::size_t>(i)] = static_cast<char>(value & 0xFF);
}

TEST(Zip, WhatIsAddedIsFound) {
    const Scratch scratch;
    const std::string archive = scratch / "a.zip";
    HostServices services;
    services.currentTime = [](void*) { return 1000000000LL; };  // the same bytes at any time
    SetHostServices(services);
    const std::string large(1000000, 'x'), odd("a\0b\r\n\xFF", 6);
    EXPECT_TRUE(Put(archive, "readme.txt", "first"));
    EXPECT_TRUE(Put(archive, "README.TXT", "second"));
    EXPECT_TRUE(Put(archive, "\\work\\large", large));
    EXPECT_TRUE(Put(archive, "", odd));
    EXPECT_TRUE(Put(archive, "caf\xC3\xA9", ""));
    EXPECT_EQ(List(archive),
              (Texts{"readme.txt:5", "README.TXT:6", "\\work\\large:1000000", ":6", "caf\xC3\xA9:0"}));
    const std::pair<const char*, std::string> rows[] = {
        {"ReadMe.txt", "first"}, {"\\WORK\\large", large}, {"", odd}, {"caf\xC3\xA9", ""}, {"readme", "-"}};
    for (const int age : {0, 1}) {  // an archive that was not changed just now may be indexed
        fs::last_write_time(archive, fs::last_write_time(archive) - std::chrono::hours(age));
        for (const auto& [name, text] : rows)
            EXPECT_EQ(Get(archive, name), text) << name << age;
    }

    const std::string longest(65535, 'n');
    EXPECT_TRUE(Put(archive, longest.c_str(), "long"));
    EXPECT_FALSE(Put(archive, (longest + 'n').c_str(), "longer"));
    EXPECT_EQ(Get(archive, longest.c_str()), "long");

    ZipFileInfo none;
    none.size = 1;
    EXPECT_FALSE(ZipFile(archive.c_str(), none));
    unsigned char buffer[8] = {};
    ZipFileInfo given{"readme.txt", 7, 3, buffer};
    EXPECT_TRUE(UnzipFile(archive.c_str(), given));
    EXPECT_EQ(std::string(buffer, buffer + 6), std::string("first\0", 6));
    EXPECT_TRUE(given.size == 3 && given.reserved == 7);
    SetHostServices({});
    EXPECT_EQ(fs::directory_iterator(fs::path(archive).parent_path())->path(), archive)
        << "only the archive stays";
}

TEST(Zip, AnArchiveThatIsReadAgainAndAgainIsTheOneThatIsThere) {
    const Scratch scratch;
    const std::string archive = scratch / "a.zip", other = scratch / "b.zip";
    for (const char* text : {"one", "two"}) {
        EXPECT_TRUE(Put(other, "x", text) && Put(other, "y", Repeat(text, 100000)));
        fs::last_write_time(other, fs::last_write_time(other) - std::chrono::hours(1));
        fs::rename(other, archive);
        OnThreads(3, [&](int) {
            for (int i = 0; i < 50; ++i) {
                EXPECT_EQ(Get(archive, i % 3 == 0 ? "y" : "x").substr(0, 3), text);
                EXPECT_EQ(Get(archive, "none"), "-");
            }
        });
        for (const auto& open : fs::directory_iterator("/proc/self/fd")) {
            std::error_code gone;
            EXPECT_NE(fs::read_symlink(open, gone), archive) << "it can be replaced everywhere";
        }
    }
    fs::remove(archive);
    EXPECT_EQ(Get(archive, "x"), "-");
}

TEST(Zip, WritersWaitForEachOther) {
    const Scratch scratch;
    const std::string archive = scratch / "a.zip";
    const auto add = [&](char writer) {
        for (char i = '0'; i <= '9'; ++i)
            EXPECT_TRUE(Put(archive, (std::string{writer} + i).c_str(), "x"));
    };
    { const std::jthread a(add, 'a'), b(add, 'b'); }  // neither finds an archive
    EXPECT_EQ(List(archive).size(), 20U);
}

TEST(Zip, FilesByNameAndByPath) {
    const Scratch scratch;
    const std::string archive = scratch / "a.zip", sub = scratch / "sub", file = scratch / "sub/a.txt";
    fs::create_directory(sub);
    WriteText(file, "text");
    EXPECT_TRUE(AddFiles(archive, {}, true) && IsZipFile(archive.c_str()));
    EXPECT_EQ(List(archive), Texts{"-"});
    EXPECT_EQ(Get(archive, "a"), "-");
    EXPECT_TRUE(AddFiles(archive, {file}, true) && AddFiles(archive, {file}, false));
    const std::string path = StripDriveName(file.c_str())() + std::string(":4"), name = "a.txt:4";
    EXPECT_EQ(List(archive), (Texts{name, path}));
    // What comes before a file that cannot be read stays.
    EXPECT_FALSE(AddFiles(archive, {file, scratch / "none", file}, true));
    EXPECT_FALSE(AddFiles(archive, {archive}, true) || AddFiles(archive, {sub}, true));
    EXPECT_EQ(List(archive), (Texts{name, path, name}));
    EXPECT_FALSE(AddFiles(sub, {}, true) || AddFiles(scratch / "none/a.zip", {}, true));
}

TEST(Zip, OtherProgramsAgree) {
    const Scratch scratch;
    const std::string folder = scratch / "", text(70000, 'q');
    WriteText(scratch / "one", text);
    WriteText(scratch / "two", "2");
    if (!Shell(folder, "unzip -v && zip -v")) GTEST_SKIP() << "needs zip and unzip";
    EXPECT_TRUE(AddFiles(scratch / "ours.zip", {scratch / "one", scratch / "two"}, true) &&
                Put(scratch / "ours.zip", "three", "3"));
    EXPECT_TRUE(Shell(folder, "unzip -t ours.zip && mkdir out && unzip ours.zip -d out && cmp one out/one"));

    EXPECT_TRUE(Shell(folder, "zip -z theirs.zip one two </dev/null && zip -0 theirs.zip one"));
    EXPECT_EQ(List(scratch / "theirs.zip"), (Texts{"one:70000", "two:1"}));
    EXPECT_TRUE(Put(scratch / "theirs.zip", "four", "4") && Shell(folder, "unzip -t theirs.zip"));
    EXPECT_EQ(Get(scratch / "theirs.zip", "ONE"), text);

    EXPECT_TRUE(Shell(folder, "(echo '#!/bin/sh'; cat theirs.zip) > self.zip"));
    EXPECT_TRUE(Put(scratch / "self.zip", "five", "5"));
    EXPECT_EQ(Get(scratch / "self.zip", "two") + Get(scratch / "self.zip", "five"), "25");

    EXPECT_TRUE(Shell(folder, "zip -fz forced.zip two"));
    EXPECT_EQ(List(scratch / "forced.zip"), Texts{"two:1"});
    EXPECT_EQ(Get(scratch / "forced.zip", "two"), "2");
    EXPECT_TRUE(Shell(folder, "zip -P secret locked.zip two && zip -Z bzip2 other.zip one"));
    EXPECT_EQ(List(scratch / "locked.zip"), Texts{"two:1"});
    EXPECT_EQ(Get(scratch / "locked.zip", "two"), "-");
    EXPECT_EQ(Get(scratch / "other.zip", "one"), "-");

    if (!Shell(folder, "python3 -c pass")) return;
    EXPECT_TRUE(Shell(folder,
                      "python3 -c \"import zipfile as z; a = z.ZipFile('py.zip', 'w', z.ZIP_DEFLATED); "
                      "[a.writestr('n%d' % i, str(i)) for i in range(70000)]; a.writestr('x' * 400, 'long'); "
                      "a.writestr('../up', 'u'); a.close(); f = open('far.zip', 'wb'); f.seek(5 << 30); "
                      "a = z.ZipFile(f, 'w'); a.writestr('far', 'away'); a.close()\""));
    EXPECT_EQ(Get(scratch / "far.zip", "far"), "away") << "behind 4 GB";
    EXPECT_EQ(List(scratch / "py.zip").size(), 70002U);
    EXPECT_EQ(Get(scratch / "py.zip", std::string(400, 'X').c_str()) + Get(scratch / "py.zip", "../UP"),
              "longu");
    EXPECT_FALSE(Put(scratch / "py.zip", "last", "z")) << "more than the directory can count";
    EXPECT_EQ(Get(scratch / "py.zip", "n69999") + Get(scratch / "py.zip", "last"), "69999-");
}

TEST(Zip, DamagedArchivesAreRefusedAndKept) {
    const Scratch scratch;
    const std::string archive = scratch / "a.zip", text(5000, 'r');
    ASSERT_TRUE(Put(archive, "stay", "s") && Put(archive, "name", text));
    const std::string good = ReadFile(archive);
    const std::size_t end = good.size() - 22, entry = good.rfind("PK\1\2");
    const std::size_t local = good.find("PK\3\4", 4);
    struct Row {
        const char* what;
        std::string bytes;
        std::string read;  ///< of the entry "name"
        bool grows;        ///< whether an entry can be added
    };
    const auto with = [&](std::size_t at, std::uint64_t value, int size) {
        std::string bytes = good;
        Store(bytes, at, value, size);
        return bytes;
    };
    std::string stored = with(entry + 10, 0, 2);
    Store(stored, entry + 24, 0xFFFFFF9C, 4);
    const Row rows[] = {
        {"whole", good, text, true},
        {"no archive", "text", "-", false},
        {"comment cut", with(end + 20, 1, 2), text, false},
        {"no entries counted", with(end + 8, 0, 4), "-", false},
        {"start gone", good.substr(entry), "-", false},
        {"too many entries", with(end + 8, 0x90009, 4), text, false},
        {"damaged name entry", with(entry, 0, 4), "-", false},
        {"wrong checksum", with(entry + 16, 0, 4), "--", true},
        {"huge", with(entry + 24, 0xFFFFFFF0, 4), "-", true},
        {"huge stored", stored, "-", true},
        {"packed larger than the file", with(entry + 20, 0x7FFFFFFF, 4), "-", true},
        {"larger than real", with(entry + 24, 5001, 4), "--", true},
        {"smaller than real", with(entry + 24, 4999, 4), "--", true},
        {"damaged data", with(local + 36, 0, 4), "--", true},
        {"method 12", with(entry + 10, 12, 2), "-", true},
        {"encrypted", with(entry + 8, 1, 2), "-", true},
    };
    for (const Row& row : rows) {
        WriteText(archive, row.bytes);
        EXPECT_EQ(Get(archive, "name"), row.read) << row.what;
        EXPECT_EQ(Put(archive, "new", "n"), row.grows) << row.what;
        EXPECT_EQ(ReadFile(archive) == row.bytes, !row.grows) << row.what;
        EXPECT_EQ(Get(archive, "new"), row.grows ? "n" : "-") << row.what;
    }
    for (std::size_t size = 1; size < good.size(); ++size) {
        WriteText(archive, good.substr(0, size));
        EXPECT_FALSE(IsZipFile(archive.c_str()) || Put(archive, "new", "n")) << size;
        EXPECT_EQ(fs::file_size(archive), size);
    }
    for (const char* path : {static_cast<const char*>(nullptr), "", "/", "/dev/null"}) {
        ZipFileInfo info{"name", 0, 0, nullptr};
        EXPECT_FALSE(IsZipFile(path) || UnzipFile(path, info) || ZipFile(path, info));
    }
}

}  // namespace
}  // namespace brenta::test
