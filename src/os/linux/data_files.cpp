// Linux: private files, locks among processes, versions of files.
#include "os/data_files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <limits>
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

/// 0, EWOULDBLOCK, or why there can be no lock.
int TryLock(int file) {
    int result;
    do
        result = flock(file, LOCK_EX | LOCK_NB);
    while (result != 0 && errno == EINTR);
    return result == 0 ? 0 : errno;
}

/// As TryLock. Some network file systems keep others from reading what is locked; a byte far behind the end
/// is read by nobody.
int TryLockBehindEnd(int file) {
    struct flock range {};
    range.l_type = F_WRLCK;
    range.l_whence = SEEK_SET;
    range.l_start = std::numeric_limits<off_t>::max() - 1;
    range.l_len = 1;
    int result;
    do
        result = fcntl(file, F_OFD_SETLK, &range);
    while (result != 0 && errno == EINTR);
    return result == 0 ? 0 : errno == EACCES || errno == EAGAIN ? EWOULDBLOCK : errno;
}

/// The system would wait for ever on behalf of a process that hangs, so the lock is asked for again and
/// again.
template <class Try>
int TryUntil(std::chrono::steady_clock::time_point end, const Try& tryLock) {
    for (;;) {
        const int error = tryLock();
        if (error != EWOULDBLOCK || std::chrono::steady_clock::now() >= end) return error;
        std::this_thread::sleep_for(std::chrono::microseconds(300));
    }
}

std::chrono::steady_clock::time_point After(int milliseconds) {
    return std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
}

bool IsFileAt(int file, const char* path) {
    struct stat open, named;
    return fstat(file, &open) == 0 && stat(NativePath(path).c_str(), &named) == 0 &&
           open.st_dev == named.st_dev && open.st_ino == named.st_ino;
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

bool FileLock::Acquire(const char* path, int milliseconds) {
    m_handle = open(NativePath(path).c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY, kFileForUser);
    return m_handle != -1 &&
           TryUntil(After(milliseconds), [&] { return TryLock(static_cast<int>(m_handle)); }) == 0;
}

bool FileLock::AcquireExisting(const char* path, int milliseconds) {
    const auto end = After(milliseconds);
    for (;;) {
        const int file = open(NativePath(path).c_str(), O_RDWR | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
        m_handle = file;
        if (file == -1) return errno == ENOENT;
        const int error = TryUntil(end, [&] { return TryLockBehindEnd(file); });
        if (error == EWOULDBLOCK) return false;
        if (error != 0 || IsFileAt(file, path)) return true;
        close(file);
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
