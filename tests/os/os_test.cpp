// The platform seam: files, folders, the stack's end, and the lock.
#include "os/os.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <thread>
#include <vector>

namespace brenta::os {
namespace {

/// A folder of the test's own that goes with it.
class Scratch {
 public:
    Scratch() {
        std::string name = testing::TempDir() + "brenta_os_XXXXXX";
        m_path = mkdtemp(name.data());
    }
    ~Scratch() { std::filesystem::remove_all(m_path); }
    std::string operator/(const char* name) const { return m_path + "/" + name; }

 private:
    std::string m_path;
};

TEST(Os, ReadsRegularFilesWhole) {
    const Scratch scratch;
    const std::string kBytes("a\0b\r\n\xff", 6), kLarge(300000, 'x');
    ASSERT_TRUE(WriteWholeFile((scratch / "bytes").c_str(), kBytes));
    ASSERT_TRUE(WriteWholeFile((scratch / "large").c_str(), "longer than the next"));
    ASSERT_TRUE(WriteWholeFile((scratch / "large").c_str(), kLarge));
    ASSERT_TRUE(WriteWholeFile((scratch / "empty").c_str(), ""));
    ASSERT_EQ(mkfifo((scratch / "pipe").c_str(), 0600), 0);
    std::filesystem::create_directory(scratch / "folder");
    struct {
        std::string path;
        std::size_t limit;
        FileStatus status;
        std::string content;
        PathKind kind;
    } const kCases[] = {
        {scratch / "bytes", SIZE_MAX, FileStatus::Ok, kBytes, PathKind::File},
        {scratch / "folder\\..\\bytes", SIZE_MAX, FileStatus::Ok, kBytes, PathKind::File},
        {scratch / "bytes", 6, FileStatus::Ok, kBytes, PathKind::File},
        {scratch / "large", SIZE_MAX, FileStatus::Ok, kLarge, PathKind::File},
        {scratch / "empty", 0, FileStatus::Ok, "", PathKind::File},
        {scratch / "bytes", 5, FileStatus::CannotRead, "old", PathKind::File},
        {"/proc/self/cmdline", 3, FileStatus::CannotRead, "old", PathKind::File},
        {scratch / "absent", SIZE_MAX, FileStatus::CannotOpen, "old", PathKind::Absent},
        {scratch / "folder", SIZE_MAX, FileStatus::CannotOpen, "old", PathKind::Directory},
        {scratch / "pipe", SIZE_MAX, FileStatus::CannotOpen, "old", PathKind::File},
        {"/dev/zero", SIZE_MAX, FileStatus::CannotOpen, "old", PathKind::File},
        {"", SIZE_MAX, FileStatus::CannotOpen, "old", PathKind::Absent},
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.path);
        std::string content = "old";
        EXPECT_EQ(ReadWholeFile(row.path.c_str(), content, row.limit), row.status);
        EXPECT_EQ(content, row.content);
        EXPECT_EQ(KindOfPath(row.path.c_str()), row.kind);
    }
    std::string content;
    EXPECT_EQ(ReadWholeFile(nullptr, content), FileStatus::CannotOpen);
    EXPECT_EQ(ReadWholeFile("/proc/self/status", content), FileStatus::Ok);  // its size says 0
    EXPECT_NE(content.find("TracerPid"), std::string::npos);
    EXPECT_FALSE(WriteWholeFile((scratch / "absent\\file").c_str(), ""));
    EXPECT_FALSE(WriteWholeFile((scratch / "folder").c_str(), ""));
}

TEST(Os, FindsTheApplicationDataFolder) {
    struct {
        const char *own, *data, *home, *result;
    } const kCases[] = {
        {"/own", "/data", "/home/u", "/own"},
        {"/own/", nullptr, nullptr, "/own"},
        {"", "/data//", "/home/u", "/data"},
        {nullptr, "relative", "/home/u/", "/home/u/.local/share"},
        {nullptr, nullptr, "/home/u", "/home/u/.local/share"},
        {nullptr, "", "/", "/.local/share"},
    };
    const auto set = [](const char* name, const char* value) {
        value ? setenv(name, value, 1) : unsetenv(name);
    };
    for (const auto& row : kCases) {
        set("BRENTA_APPDATA", row.own);
        set("XDG_DATA_HOME", row.data);
        set("HOME", row.home);
        EXPECT_EQ(ApplicationDataFolder(), row.result);
    }
    std::string value = "old";
    EXPECT_FALSE(GetEnvironment("BRENTA_APPDATA", value));
    EXPECT_FALSE(GetEnvironment(nullptr, value));
    EXPECT_EQ(value, "old");
}

TEST(Os, KnowsItsProcess) {
    EXPECT_TRUE(std::filesystem::equivalent(ExecutablePath(), "/proc/self/exe"));
    EXPECT_FALSE(DebuggerAttached());
    EXPECT_FALSE(LibraryIsUnloading());
    const auto stackLeft = [] {
        const char here = 0;
        return reinterpret_cast<std::uintptr_t>(&here) - StackLimit();
    };
    EXPECT_GT(stackLeft(), 1u << 20);
    EXPECT_LT(stackLeft(), std::uintptr_t{1} << 40);
    std::thread([&] { EXPECT_GT(stackLeft(), 1u << 20); }).join();
}

TEST(Os, LockExcludesAndReenters) {
    static constinit Lock lock;
    int count = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&count, i] {
            for (int k = 0; k < 5000; ++k) {
                const LockGuard outer(lock);
                const LockGuard inner(lock);
                const int seen = count;
                if (k % 1000 == i) std::this_thread::sleep_for(std::chrono::microseconds(200));
                count = seen + 1;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(count, 20000);
}

}  // namespace
}  // namespace brenta::os
