/// @file
/// The platform seam for files that hold a person's own data: folders and files that nobody else may read,
/// locks among processes, and what tells one version of a file from the next. Paths as in os/os.h. What is
/// for the user alone has on Windows the rights that its folder hands down.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace brenta::os {

/// Creates a folder, and those above it that are missing, for the user alone. True also if it is there
/// already; its rights then stay as they are.
bool CreatePrivateFolder(const char* path);

/// Creates an empty file for the user alone. True also if there is anything of that name already, which is
/// not opened.
bool CreatePrivateFile(const char* path);

/// Which file a path leads to, and which version of it.
struct FileStamp {
    std::uint64_t device = 0;
    std::uint64_t file = 0;    ///< the file's number on its device
    std::uint64_t size = 0;    ///< in bytes
    std::int64_t changed = 0;  ///< time of the last change, in nanoseconds since 1970

    bool operator==(const FileStamp&) const = default;
    /// Whether both are the same file, be its content the same or not.
    bool IsSameFile(const FileStamp& other) const { return device == other.device && file == other.file; }
};

/// The stamp of whatever the path leads to; false, and `stamp` as it was, if that is nothing.
bool StampOfFile(const char* path, FileStamp& stamp);

/// Whether a stamp tells its file's version from those to come. A file that was changed a moment ago may
/// change again without its stamp telling: clocks of file systems tick slowly.
inline bool IsSettled(const FileStamp& stamp) {
    constexpr auto kSlowestTick = std::chrono::milliseconds(100);
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return now - std::chrono::nanoseconds(stamp.changed) > kSlowestTick;
}

/// A lock that excludes all other FileLocks of its path, in this process and in others, while it lives.
class FileLock {
 public:
    FileLock() = default;
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    /// Once per object. Waits so long at most; false if others held the lock all the time, or if it cannot
    /// be taken at all. The file is created, for the user alone, and stays.
    bool Acquire(const char* path, int milliseconds);

    /// As Acquire, but locks a file's own content, and creates none. Who only reads or writes the file feels
    /// nothing of it. A file that is replaced while this waits is locked anew. True also if there is no file,
    /// or its file system knows no locks. On Windows it is the path that is locked, for the programs of one
    /// user on one machine.
    bool AcquireExisting(const char* path, int milliseconds);

 private:
    std::intptr_t m_handle = -1;
    [[maybe_unused]] bool m_isOfName = false;  ///< Windows: the handle is one of a name, not of a file
};

/// The number of this process; another one in a forked child.
std::uint64_t ProcessId();

/// A text that stays the same until the system is started again; "" if it is unknown.
std::string BootId();

}  // namespace brenta::os
