// Linux: whole files and paths.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <utility>

#include "os/os.h"

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
int OpenToRead(const char* path, struct stat& info) {
    Descriptor file(open(NativePath(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    const bool regular = file.Get() >= 0 && fstat(file.Get(), &info) == 0 && S_ISREG(info.st_mode);
    return regular ? file.Release() : -1;
}

int OpenToWrite(const char* path) {
    return open(NativePath(path).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY, 0666);
}

bool WriteAll(int file, std::string_view content) {
    while (!content.empty()) {
        const ssize_t count = write(file, content.data(), content.size());
        if (count < 0 && errno != EINTR) return false;
        if (count > 0) content.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

/// The file may be shorter or longer by now than its size said, as files under /proc always are.
FileStatus ReadToEnd(int file, std::size_t expected, std::string& content, std::size_t limit) {
    constexpr std::size_t kLeastRoom = 4096;
    std::string bytes;
    std::size_t used = 0;
    for (;;) {
        const std::size_t room = std::max(used == 0 ? expected + 1 : used, kLeastRoom);
        bytes.resize(used + room);
        const ssize_t count = ReadSome(file, bytes.data() + used, room);
        if (count < 0) return FileStatus::CannotRead;
        used += static_cast<std::size_t>(count);
        if (used > limit) return FileStatus::CannotRead;
        if (count == 0) break;
    }
    bytes.resize(used);
    content.swap(bytes);
    return FileStatus::Ok;
}

}  // namespace

FileStatus ReadWholeFile(const char* path, std::string& content, std::size_t limit) try {
    struct stat info;
    const Descriptor file(OpenToRead(path, info));
    if (file.Get() < 0) return FileStatus::CannotOpen;
    const auto size = static_cast<std::size_t>(info.st_size);
    if (size > limit) return FileStatus::CannotRead;
    return ReadToEnd(file.Get(), size, content, limit);
} catch (const std::exception&) {
    return FileStatus::CannotRead;
}

bool WriteWholeFile(const char* path, std::string_view content) {
    Descriptor file(OpenToWrite(path));
    return file.Get() >= 0 && WriteAll(file.Get(), content) && file.Close();
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

PathKind KindOfPath(const char* path) {
    struct stat info;
    if (stat(NativePath(path).c_str(), &info) != 0) return PathKind::Absent;
    return S_ISDIR(info.st_mode) ? PathKind::Directory : PathKind::File;
}

std::string NativePath(const char* path) {
    std::string native(path ? path : "");
    std::replace(native.begin(), native.end(), '\\', '/');
    return native;
}

}  // namespace brenta::os
