// Windows: whole files and paths.
#include <algorithm>
#include <atomic>
#include <cstdint>
#include <exception>
#include <utility>

#include "os/os.h"

#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <windows.h>

namespace brenta::os {

namespace {

/// A file handle that closes itself.
class File {
 public:
    explicit File(HANDLE handle) : m_handle(handle) {}
    ~File() {
        if (IsOpen()) CloseHandle(m_handle);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool IsOpen() const { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return m_handle; }

 private:
    HANDLE m_handle;
};

constexpr std::size_t kLargestPiece = 1u << 30;

bool ReadExactly(HANDLE file, char* buffer, std::size_t size) {
    while (size > 0) {
        DWORD count = 0;
        const auto piece = static_cast<DWORD>(std::min(size, kLargestPiece));
        if (!ReadFile(file, buffer, piece, &count, nullptr) || count == 0) return false;
        buffer += count;
        size -= count;
    }
    return true;
}

bool WriteAll(HANDLE file, std::string_view content) {
    while (!content.empty()) {
        DWORD count = 0;
        const auto piece = static_cast<DWORD>(std::min(content.size(), kLargestPiece));
        if (!WriteFile(file, content.data(), piece, &count, nullptr) || count == 0) return false;
        content.remove_prefix(count);
    }
    return true;
}

}  // namespace

FileStatus ReadWholeFile(const char* path, std::string& content, std::size_t limit) try {
    const File file(CreateFileA(NativePath(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.IsOpen() || GetFileType(file.Get()) != FILE_TYPE_DISK) return FileStatus::CannotOpen;
    LARGE_INTEGER size;
    if (!GetFileSizeEx(file.Get(), &size)) return FileStatus::CannotRead;
    if (static_cast<std::uint64_t>(size.QuadPart) > limit) return FileStatus::CannotRead;
    std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
    if (!ReadExactly(file.Get(), bytes.data(), bytes.size())) return FileStatus::CannotRead;
    content.swap(bytes);
    return FileStatus::Ok;
} catch (const std::exception&) {
    return FileStatus::CannotRead;
}

bool WriteWholeFile(const char* path, std::string_view content) {
    const File file(CreateFileA(NativePath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    return file.IsOpen() && WriteAll(file.Get(), content);
}

bool ReplaceWholeFile(const char* path, std::string_view content) try {
    static std::atomic<unsigned int> counter;
    const std::string target = NativePath(path);
    const DWORD attributes = GetFileAttributesA(target.c_str());
    const bool present = attributes != INVALID_FILE_ATTRIBUTES;
    if (present && (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) != 0) return false;
    const std::string beside =
        target + "." + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++counter) + ".tmp";
    bool written;
    {
        const File file(CreateFileA(beside.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file.IsOpen()) return false;
        written = WriteAll(file.Get(), content) && FlushFileBuffers(file.Get());
    }
    if (written && present) {
        written = ReplaceFileA(target.c_str(), beside.c_str(), nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS,
                               nullptr, nullptr);
    } else if (written) {
        written = MoveFileExA(beside.c_str(), target.c_str(), MOVEFILE_WRITE_THROUGH);
    }
    if (!written) DeleteFileA(beside.c_str());
    return written;
} catch (const std::exception&) {
    return false;
}

FileReader::~FileReader() {
    const File closing(reinterpret_cast<HANDLE>(m_handle));
}

bool FileReader::Open(const char* path) {
    const HANDLE handle =
        CreateFileA(NativePath(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    m_handle = reinterpret_cast<std::intptr_t>(handle);
    LARGE_INTEGER size;
    if (m_handle == -1 || GetFileType(handle) != FILE_TYPE_DISK || !GetFileSizeEx(handle, &size))
        return false;
    m_size = static_cast<std::uint64_t>(size.QuadPart);
    return true;
}

std::ptrdiff_t FileReader::Read(char* buffer, std::size_t size) {
    DWORD count = 0;
    const auto piece = static_cast<DWORD>(std::min(size, kLargestPiece));
    if (!ReadFile(reinterpret_cast<HANDLE>(m_handle), buffer, piece, &count, nullptr)) return -1;
    return static_cast<std::ptrdiff_t>(count);
}

bool TextFileWriter::Open(const char* path) {
    m_handle = reinterpret_cast<std::intptr_t>(CreateFileA(NativePath(path).c_str(), GENERIC_WRITE,
                                                           FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                                           CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    return IsOpen();
}

bool TextFileWriter::Write(std::string_view text) try {
    std::string lines;
    for (const char c : text) {
        if (c == '\n') lines += '\r';
        lines += c;
    }
    return WriteAll(reinterpret_cast<HANDLE>(m_handle), lines);
} catch (const std::exception&) {
    return false;
}

bool TextFileWriter::Close() {
    return !IsOpen() || CloseHandle(reinterpret_cast<HANDLE>(std::exchange(m_handle, -1)));
}

PathKind KindOfPath(const char* path) {
    const DWORD attributes = GetFileAttributesA(NativePath(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return PathKind::Absent;
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return PathKind::Directory;
    return (attributes & FILE_ATTRIBUTE_OFFLINE) != 0 ? PathKind::Absent : PathKind::File;
}

bool IsAbsent(const char* path) {
    if (GetFileAttributesA(NativePath(path).c_str()) != INVALID_FILE_ATTRIBUTES) return false;
    const DWORD error = GetLastError();
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

std::string NativePath(const char* path) {
    return path ? path : "";
}

}  // namespace brenta::os
