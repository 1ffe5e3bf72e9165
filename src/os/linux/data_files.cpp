// Linux: private files, locks among processes, versions of files.
#include "os/data_files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "os/os.h"

namespace brenta::os {

namespace {

constexpr mode_t kFolderForUser = 0700;
constexpr mode_t kFileForUser = 0600;

bool IsFolder(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

int TryLock(int file) {
    int result;
    do
        result = flock(file, LOCK_EX | LOCK_NB);
    while (result != 0 && errno == EINTR);
    return result == 0 ? 0 : errno;
}

}  // namespace

bool CreatePrivateFolder(const char* path) {
    const std::string folder = NativePath(path);
    for (std::size_t end = 0; end != std::string::npos;) {
        end = folder.find('/', end + 1);
        // What is not permitted or already there shows in the end.
        static_cast<void>(mkdir(folder.substr(0, end).c_str(), kFolderForUser));
    }
    return IsFolder(folder);
}

bool CreatePrivateFile(const char* path) {
    const int file =
        open(NativePath(path).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOCTTY, kFileForUser);
    if (file < 0) return errno == EEXIST;
    return close(file) == 0;
}

bool StampOfFile(const char* path, FileStamp& stamp) {
    constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
    struct stat info;
    if (stat(NativePath(path).c_str(), &info) != 0) return false;
    stamp.device = info.st_dev;
    stamp.file = info.st_ino;
    stamp.size = static_cast<std::uint64_t>(info.st_size);
    stamp.changed = info.st_mtim.tv_sec * kNanosecondsPerSecond + info.st_mtim.tv_nsec;
    return true;
}

FileLock::~FileLock() {
    if (m_handle != -1) close(static_cast<int>(m_handle));
}

// The system would wait for ever on behalf of a process that hangs, so the lock is asked for again and again.
bool FileLock::Acquire(const char* path, int milliseconds) {
    using Clock = std::chrono::steady_clock;
    m_handle = open(NativePath(path).c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY, kFileForUser);
    if (m_handle == -1) return false;
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(milliseconds);
    for (;;) {
        const int error = TryLock(static_cast<int>(m_handle));
        if (error != EWOULDBLOCK) return error == 0;
        if (Clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::microseconds(300));
    }
}

std::uint64_t ProcessId() {
    return static_cast<std::uint64_t>(getpid());
}

std::string BootId() {
    char text[64];
    const int file = open("/proc/sys/kernel/random/boot_id", O_RDONLY | O_CLOEXEC);
    if (file < 0) return "";
    const ssize_t count = read(file, text, sizeof(text));
    close(file);
    std::string id(text, count > 0 ? static_cast<std::size_t>(count) : 0);
    while (id.ends_with('\n'))
        id.pop_back();
    return id;
}

}  // namespace brenta::os
