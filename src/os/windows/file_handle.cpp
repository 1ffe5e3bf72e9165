#include "os/windows/file_handle.h"

#include <algorithm>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace brenta::os {

void* FileHandle::Closed() {
    return INVALID_HANDLE_VALUE;
}

bool FileHandle::IsOpen() const {
    return m_handle != INVALID_HANDLE_VALUE;
}

bool FileHandle::Close() {
    return !IsOpen() || CloseHandle(Release()) != 0;
}

void* FileHandle::Release() {
    return std::exchange(m_handle, Closed());
}

bool FileHandle::WriteAll(void* handle, std::string_view content) {
    while (!content.empty()) {
        DWORD count = 0;
        const auto piece = static_cast<DWORD>(std::min(content.size(), kLargestPiece));
        if (!WriteFile(handle, content.data(), piece, &count, nullptr) || count == 0) return false;
        content.remove_prefix(count);
    }
    return true;
}

namespace {

/// Pipes are among the devices of a machine: \\.\pipe\name.
bool MayBePipe(std::string_view path) {
    constexpr std::string_view kFolder = "pipe\\";
    const auto isSame = [](char c, char lower) { return (c >= 'A' && c <= 'Z' ? c + 32 : c) == lower; };
    return path.starts_with("\\\\") &&
           std::search(path.begin(), path.end(), kFolder.begin(), kFolder.end(), isSame) != path.end();
}

}  // namespace

// For files the same flag has another meaning: to leave content where it is that is kept on other machines.
FileHandle OpenFile(const char* nativePath, unsigned long access, unsigned long sharing,
                    unsigned long creation, unsigned long flags) {
    if (MayBePipe(nativePath)) flags |= SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;
    return FileHandle(CreateFileA(nativePath, access, sharing, nullptr, creation, flags, nullptr));
}

std::string FullPath(const char* path) {
    constexpr DWORD kLongest = 32768;
    std::string full(kLongest, '\0');
    const DWORD length = GetFullPathNameA(path ? path : "", kLongest, full.data(), nullptr);
    full.resize(length < kLongest ? length : 0);
    return full;
}

}  // namespace brenta::os
