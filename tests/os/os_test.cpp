// The platform seam: files, folders, the stack's end, and the lock.
#include "os/os.h"

#include <filesystem>

#include "test_support.h"

namespace brenta::os {
namespace {

TEST(Os, ReadsRegularFilesWhole) {
    const test::Scratch scratch;
    const std::string kBytes("a\0b\r\n\xff", 6), kLarge(300000, 'x');
    ASSERT_TRUE(WriteWholeFile((scratch / "bytes").c_str(), kBytes));
    ASSERT_TRUE(WriteWholeFile((scratch / "large").c_str(), "longer than the next"));
    ASSERT_TRUE(WriteWholeFile((scratch / "large").c_str(), kLarge));
    ASSERT_TRUE(WriteWholeFile((scratch / "empty").c_str(), ""));
    std::filesystem::create_directory(scratch / "folder");
    constexpr auto kOk = FileStatus::Ok, kCannotOpen = FileStatus::CannotOpen,
                   kCannotRead = FileStatus::CannotRead;
    const std::tuple<std::string, std::size_t, FileStatus, std::string, PathKind> kRows[] = {
        {scratch / "bytes", SIZE_MAX, kOk, kBytes, PathKind::File},
        {scratch / "folder\\..\\bytes", SIZE_MAX, kOk, kBytes, PathKind::File},
        {scratch / "bytes", 6, kOk, kBytes, PathKind::File},
        {scratch / "large", SIZE_MAX, kOk, kLarge, PathKind::File},
        {scratch / "empty", 0, kOk, "", PathKind::File},
        {scratch / "bytes", 5, kCannotRead, "old", PathKind::File},
        {scratch / "absent", SIZE_MAX, kCannotOpen, "old", PathKind::Absent},
        {scratch / "folder", SIZE_MAX, kCannotOpen, "old", PathKind::Directory},
        {"", SIZE_MAX, kCannotOpen, "old", PathKind::Absent},
    };
    for (const auto& [path, limit, status, expected, kind] : kRows) {
        SCOPED_TRACE(path);
        std::string content = "old";
        EXPECT_EQ(ReadWholeFile(path.c_str(), content, limit), status);
        EXPECT_EQ(content, expected);
        EXPECT_EQ(KindOfPath(path.c_str()), kind);
    }
    std::string content;
    EXPECT_EQ(ReadWholeFile(nullptr, content), FileStatus::CannotOpen);
    EXPECT_FALSE(WriteWholeFile((scratch / "absent\\file").c_str(), ""));
    EXPECT_FALSE(WriteWholeFile((scratch / "folder").c_str(), ""));
}

TEST(Os, KnowsItsProcess) {
    test::SetVariable("BRENTA_ABSENT", nullptr);
    std::string value = "old";
    EXPECT_FALSE(GetEnvironment("BRENTA_ABSENT", value) || GetEnvironment(nullptr, value));
    EXPECT_EQ(value, "old");
    EXPECT_TRUE(std::filesystem::exists(ExecutablePath()));
    EXPECT_FALSE(DebuggerAttached() || LibraryIsUnloading());
    const auto stackLeft = [] {
        const char here = 0;
        return reinterpret_cast<std::uintptr_t>(&here) - StackLimit();
    };
    EXPECT_GT(stackLeft(), 1u << 20);
    EXPECT_LT(stackLeft(), std::uintptr_t{1} << 40);
    std::thread([&] { EXPECT_GT(stackLeft(), 1u << 20); }).join();
}

}  // namespace
}  // namespace brenta::os
