// Linux: whole files and paths.
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <exception>
#include <utility>

#include "os/os.h"
#include "os/read_to_end.h"

namespace brenta::os {

namespace {

/// A file descriptor that closes itself.
class Descriptor {
 public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor() {
        if (m_number >= 0) close(m_number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return m_number; }
    /// Closes now; false if the system reports a late write error.
    bool Close() { return close(Release()) == 0; }
    /// Hands the descriptor over to the caller.
    int Release() { return std::exchange(m_number, -1); }

 private:
    int m_number;
};

/// read() that does not stop for signals.
ssize_t ReadSome(int file, char* buffer, std::size_t size) {
    ssize_t count;
    do
        count = read(file, buffer, size);
    while (count < 0 && errno == EINTR);
    return count;
}

/// -1 for whatever is no regular file. Without O_NONBLOCK opening a pipe that nobody writes to would wait for
/// ever.
int OpenToRead(const char* path, struct stat& info, int access = O_RDONLY) {
    Descriptor file(open(NativePath(path).c_str(), access | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    const bool regular = file.Get() >= 0 && fstat(file.Get(), &info) == 0 && S_ISREG(info.st_mode);
    return regular ? file.Release() : -1;
}

/// -1 also for a pipe that nobody reads from, which opening would wait for. What is opened waits when it is
/// written to, as usual.
int OpenToWrite(const char* path) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    Descriptor file(open(NativePath(path).c_str(), kFlags, 0666));
    if (file.Get() < 0 || fcntl(file.Get(), F_SETFL, 0) != 0) return -1;
    return file.Release();
}

bool WriteAll(int file, std::string_view content) {
    while (!content.empty()) {
        const ssize_t count = write(file, content.data(), content.size());
        if (count == 0 || (count < 0 && errno != EINTR)) return false;
        if (count > 0) content.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

/// Where the symbolic links lead that a path ends with, also if nothing is there.
std::string FollowLinks(std::string path) {
    constexpr int kMostLinks = 40;
    char target[PATH_MAX];
    for (int i = 0; i < kMostLinks; ++i) {
        const ssize_t size = readlink(path.c_str(), target, sizeof(target));
        if (size < 0 || size == sizeof(target)) break;
        const std::string_view next(target, static_cast<std::size_t>(size));
        if (!next.starts_with('/'))
            path.resize(path.rfind('/') + 1);  // npos + 1 is 0
        else
            path.clear();
        path += next;
    }
    return path;
}

/// Whether the system has just said that there is nothing, and not that it cannot tell.
bool SaysAbsent(int error) {
    return error == ENOENT || error == ENOTDIR;
}

/// What is to be replaced, if there is anything; false if the system cannot tell.
bool LookAtOld(const std::string& path, struct stat& info, bool& exists) {
    exists = stat(path.c_str(), &info) == 0;
    return exists || SaysAbsent(errno);
}

/// Gives a new file the rights and, as far as possible, the owner of an old one.
bool TakeRights(int file, const struct stat& old) {
    if (fchown(file, old.st_uid, old.st_gid) != 0 && fchown(file, static_cast<uid_t>(-1), old.st_gid) != 0) {
        // The owner is the writer then, as for any new file.
    }
    return fchmod(file, old.st_mode & 07777) == 0;
}

/// Creates a file with a name of its own in the folder of another, and with its rights. Returns a descriptor,
/// or -1 and an error number.
int CreateBeside(const std::string& path, const struct stat* old, std::string& name) {
    static std::atomic<unsigned int> counter;
    const std::string folder = path.substr(0, path.rfind('/') + 1);  // npos + 1 is 0
    int number = -1;
    do {
        name = folder + ".brenta-" + std::to_string(getpid()) + "-" + std::to_string(++counter) + ".tmp";
        number = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (number < 0 && errno == EEXIST);
    if (number < 0 || old == nullptr || TakeRights(number, *old)) return number;
    close(number);
    unlink(name.c_str());
    errno = EIO;
    return -1;
}

/// Writes a file beside another and renames it to `path`. Returns 0, or what went wrong.
int WriteBeside(const std::string& path, std::string_view content, const struct stat* old) {
    std::string name;
    Descriptor file(CreateBeside(path, old, name));
    if (file.Get() < 0) return errno;
    const bool written = WriteAll(file.Get(), content) && fsync(file.Get()) == 0 && file.Close() &&
                         rename(name.c_str(), path.c_str()) == 0;
    if (written) return 0;
    unlink(name.c_str());
    return EIO;
}

/// rename() that replaces nothing. On file systems that know neither that nor second names for a file,
/// something that appears at the last moment is replaced.
bool RenameToNew(const char* from, const char* to) {
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
    if (link(from, to) == 0) {
        unlink(from);  // failing leaves a second name, and no harm
        return true;
    }
    struct stat info;
    return errno != EEXIST && lstat(to, &info) != 0 && rename(from, to) == 0;
}

/// Overwrites a file in place, once there is certainly room for its new content.
bool Overwrite(const std::string& path, std::string_view content, off_t oldSize) {
    Descriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
    const auto size = static_cast<off_t>(content.size());
    if (file.Get() < 0) return false;
    if (size > oldSize && posix_fallocate(file.Get(), oldSize, size - oldSize) != 0) {
        // What was reserved goes again; where that fails, too, the old content is still there.
        static_cast<void>(ftruncate(file.Get(), oldSize) == 0);
        return false;
    }
    return WriteAll(file.Get(), content) && ftruncate(file.Get(), size) == 0 && fsync(file.Get()) == 0 &&
           file.Close();
}

}  // namespace

FileStatus ReadWholeFile(const char* path, std::string& content, std::size_t limit) try {
    struct stat info;
    const Descriptor file(OpenToRead(path, info));
    if (file.Get() < 0) return FileStatus::CannotOpen;
    const auto size = static_cast<std::size_t>(info.st_size);
    if (size > limit) return FileStatus::CannotRead;
    return ReadToEnd(size, content, limit,
                     [&](char* buffer, std::size_t count) { return ReadSome(file.Get(), buffer, count); });
} catch (const std::exception&) {
    return FileStatus::CannotRead;
}

bool WriteWholeFile(const char* path, std::string_view content) {
    Descriptor file(OpenToWrite(path));
    return file.Get() >= 0 && WriteAll(file.Get(), content) && file.Close();
}

bool ReplaceWholeFile(const char* path, std::string_view content) try {
    const std::string target = FollowLinks(NativePath(path));
    struct stat old;
    bool exists;
    if (!LookAtOld(target, old, exists)) return false;
    if (!exists) return WriteBeside(target, content, nullptr) == 0;
    if (S_ISDIR(old.st_mode)) return false;
    if (!S_ISREG(old.st_mode)) return WriteWholeFile(target.c_str(), content);
    if (access(target.c_str(), W_OK) != 0) return false;
    const int error = WriteBeside(target, content, &old);
    const bool folderIsClosed = error == EACCES || error == EPERM || error == EROFS;
    return error == 0 || (folderIsClosed && Overwrite(target, content, old.st_size));
} catch (const std::exception&) {
    return false;
}

FileReader::~FileReader() {
    const Descriptor closing(static_cast<int>(m_handle));
}

bool FileReader::Open(const char* path) {
    struct stat info;
    m_handle = OpenToRead(path, info);
    if (m_handle == -1) return false;
    m_size = static_cast<std::uint64_t>(info.st_size);
    return true;
}

std::ptrdiff_t FileReader::Read(char* buffer, std::size_t size) {
    return ReadSome(static_cast<int>(m_handle), buffer, size);
}

bool TextFileWriter::Open(const char* path) {
    m_handle = OpenToWrite(path);
    return IsOpen();
}

bool TextFileWriter::Write(std::string_view text) {
    return WriteAll(static_cast<int>(m_handle), text);
}

bool TextFileWriter::Close() {
    return !IsOpen() || close(static_cast<int>(std::exchange(m_handle, -1))) == 0;
}

Replacement::~Replacement() {
    if (!m_newPath.empty()) unlink(m_newPath.c_str());
}

bool Replacement::Create(const char* path) try {
    std::string target = FollowLinks(NativePath(path)), name;
    struct stat old;
    bool exists;
    if (!LookAtOld(target, old, exists)) return false;
    if (exists && (!S_ISREG(old.st_mode) || access(target.c_str(), W_OK) != 0)) return false;
    const Descriptor file(CreateBeside(target, exists ? &old : nullptr, name));
    if (file.Get() < 0) return false;
    m_path.swap(target);
    m_newPath.swap(name);
    return true;
} catch (const std::exception&) {
    return false;
}

bool Replacement::PutInPlace(bool (*rename)(const char* from, const char* to)) {
    Descriptor file(open(m_newPath.c_str(), O_WRONLY | O_CLOEXEC));
    if (file.Get() < 0 || fsync(file.Get()) != 0 || !file.Close()) return false;
    if (!rename(m_newPath.c_str(), m_path.c_str())) return false;
    m_newPath.clear();
    return true;
}

bool Replacement::Commit() {
    return PutInPlace([](const char* from, const char* to) { return rename(from, to) == 0; });
}

bool Replacement::CommitAsNew() {
    return PutInPlace(&RenameToNew);
}

std::FILE* OpenStream(const char* path, const char* mode) try {
    const bool changes = std::string_view(mode) != "rb";
    struct stat info;
    Descriptor file(OpenToRead(path, info, changes ? O_RDWR : O_RDONLY));
    std::FILE* const stream = file.Get() < 0 ? nullptr : fdopen(file.Get(), mode);
    if (stream) file.Release();
    return stream;
} catch (const std::exception&) {
    return nullptr;
}

PathKind KindOfPath(const char* path) {
    struct stat info;
    if (stat(NativePath(path).c_str(), &info) != 0) return PathKind::Absent;
    return S_ISDIR(info.st_mode) ? PathKind::Directory : PathKind::File;
}

bool IsAbsent(const char* path) {
    struct stat info;
    return stat(NativePath(path).c_str(), &info) != 0 && SaysAbsent(errno);
}

std::string NativePath(const char* path) {
    std::string native(path ? path : "");
    std::replace(native.begin(), native.end(), '\\', '/');
    return native;
}

}  // namespace brenta::os
