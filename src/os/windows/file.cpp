// Windows: whole files and paths.
#include <algorithm>
#include <cstdint>
#include <exception>
#include <utility>

#include <fcntl.h>
#include <io.h>

#include "os/os.h"
#include "os/read_to_end.h"
#include "os/windows/file_handle.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace brenta::os {

namespace {

/// -1 for whatever is no regular file. Others may read, write, replace and delete the file meanwhile, as they
/// may elsewhere.
FileHandle OpenToRead(const char* path, DWORD access = GENERIC_READ) {
    FileHandle file =
        OpenFile(NativePath(path).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                 OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN);
    if (file.IsOpen() && GetFileType(file.Get()) != FILE_TYPE_DISK) return FileHandle();
    return file;
}

/// Opens a file to be written anew. The system refuses that for one that is hidden or its own unless it stays
/// so.
FileHandle OpenToWrite(const char* path, DWORD sharing) {
    constexpr DWORD kKept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    const std::string name = NativePath(path);
    const DWORD old = GetFileAttributesA(name.c_str());
    const DWORD attributes = old == INVALID_FILE_ATTRIBUTES ? 0 : old & kKept;
    return OpenFile(name.c_str(), GENERIC_WRITE, sharing, CREATE_ALWAYS, attributes);
}

/// The number of bytes read: 0 at the end, -1 after an error.
std::ptrdiff_t ReadSome(HANDLE file, char* buffer, std::size_t size) {
    DWORD count = 0;
    const auto piece = static_cast<DWORD>(std::min(size, FileHandle::kLargestPiece));
    return ReadFile(file, buffer, piece, &count, nullptr) ? static_cast<std::ptrdiff_t>(count) : -1;
}

}  // namespace

FileStatus ReadWholeFile(const char* path, std::string& content, std::size_t limit) try {
    const FileHandle file = OpenToRead(path);
    if (!file.IsOpen()) return FileStatus::CannotOpen;
    LARGE_INTEGER size;
    if (!GetFileSizeEx(file.Get(), &size)) return FileStatus::CannotRead;
    if (static_cast<std::uint64_t>(size.QuadPart) > limit) return FileStatus::CannotRead;
    return ReadToEnd(static_cast<std::size_t>(size.QuadPart), content, limit,
                     [&](char* buffer, std::size_t count) { return ReadSome(file.Get(), buffer, count); });
} catch (const std::exception&) {
    return FileStatus::CannotRead;
}

bool WriteWholeFile(const char* path, std::string_view content) try {
    FileHandle file = OpenToWrite(path, FILE_SHARE_READ);
    return file.IsOpen() && file.WriteAll(content) && file.Close();
} catch (const std::exception&) {
    return false;
}

FileReader::~FileReader() {
    const FileHandle closing(reinterpret_cast<void*>(m_handle));
}

bool FileReader::Open(const char* path) try {
    FileHandle file = OpenToRead(path);
    LARGE_INTEGER size;
    if (!file.IsOpen() || !GetFileSizeEx(file.Get(), &size)) return false;
    m_size = static_cast<std::uint64_t>(size.QuadPart);
    m_handle = reinterpret_cast<std::intptr_t>(file.Release());
    return true;
} catch (const std::exception&) {
    return false;
}

std::ptrdiff_t FileReader::Read(char* buffer, std::size_t size) {
    return ReadSome(reinterpret_cast<HANDLE>(m_handle), buffer, size);
}

bool TextFileWriter::Open(const char* path) try {
    m_handle =
        reinterpret_cast<std::intptr_t>(OpenToWrite(path, FILE_SHARE_READ | FILE_SHARE_WRITE).Release());
    return IsOpen();
} catch (const std::exception&) {
    return false;
}

bool TextFileWriter::Write(std::string_view text) try {
    std::string lines;
    lines.reserve(text.size() + static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')));
    for (const char c : text) {
        if (c == '\n') lines += '\r';
        lines += c;
    }
    return FileHandle::WriteAll(reinterpret_cast<HANDLE>(m_handle), lines);
} catch (const std::exception&) {
    return false;
}

bool TextFileWriter::Close() {
    return !IsOpen() || CloseHandle(reinterpret_cast<HANDLE>(std::exchange(m_handle, -1)));
}

std::FILE* OpenStream(const char* path, const char* mode) try {
    const bool changes = std::string_view(mode) != "rb";
    FileHandle file = OpenToRead(path, changes ? GENERIC_READ | GENERIC_WRITE : GENERIC_READ);
    if (!file.IsOpen()) return nullptr;
    const int number = _open_osfhandle(reinterpret_cast<std::intptr_t>(file.Get()),
                                       _O_BINARY | _O_NOINHERIT | (changes ? _O_RDWR : _O_RDONLY));
    if (number == -1) return nullptr;
    file.Release();
    std::FILE* const stream = _fdopen(number, mode);
    if (!stream) _close(number);
    return stream;
} catch (const std::exception&) {
    return nullptr;
}

PathKind KindOfPath(const char* path) {
    const DWORD attributes = GetFileAttributesA(path ? path : "");
    if (attributes == INVALID_FILE_ATTRIBUTES) return PathKind::Absent;
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return PathKind::Directory;
    return (attributes & FILE_ATTRIBUTE_OFFLINE) != 0 ? PathKind::Absent : PathKind::File;
}

bool IsAbsent(const char* path) {
    if (GetFileAttributesA(path ? path : "") != INVALID_FILE_ATTRIBUTES) return false;
    const DWORD error = GetLastError();
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND || error == ERROR_INVALID_NAME;
}

std::string NativePath(const char* path) {
    return path ? path : "";
}

}  // namespace brenta::os
