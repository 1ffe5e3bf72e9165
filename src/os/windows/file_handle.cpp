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

std::string FullPath(const char* path) {
    constexpr DWORD kLongest = 32768;
    std::string full(kLongest, '\0');
    const DWORD length = GetFullPathNameA(path ? path : "", kLongest, full.data(), nullptr);
    full.resize(length < kLongest ? length : 0);
    return full;
}

}  // namespace brenta::os
