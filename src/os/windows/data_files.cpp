// Windows: private files, locks among processes, versions of files. Rights are those that the folder hands
// down. The one for application data is the whole machine's: others may read there, and lock, what they may
// not change.
#include "os/data_files.h"

#include <chrono>
#include <string>
#include <thread>

#include "os/os.h"
#include "os/windows/file_handle.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace brenta::os {

namespace {

/// Opens for nothing but questions, letting others do as they like.
FileHandle OpenToAsk(const char* path) {
    return OpenFile(NativePath(path).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
}

std::uint64_t Joined(DWORD high, DWORD low) {
    return static_cast<std::uint64_t>(high) << 32 | low;
}

std::int64_t SinceNineteenSeventy(const FILETIME& time) {
    constexpr std::int64_t kSinceSixteenHundred = 116'444'736'000'000'000;  // in 100 nanoseconds
    const auto ticks = static_cast<std::int64_t>(Joined(time.dwHighDateTime, time.dwLowDateTime));
    return (ticks - kSinceSixteenHundred) * 100;
}

bool StampOfHandle(HANDLE file, FileStamp& stamp) {
    BY_HANDLE_FILE_INFORMATION info;
    if (!GetFileInformationByHandle(file, &info)) return false;
    stamp.device = info.dwVolumeSerialNumber;
    stamp.file = Joined(info.nFileIndexHigh, info.nFileIndexLow);
    stamp.size = Joined(info.nFileSizeHigh, info.nFileSizeLow);
    stamp.changed = SinceNineteenSeventy(info.ftLastWriteTime);
    return true;
}

std::chrono::steady_clock::time_point After(int milliseconds) {
    return std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
}

/// Locks the first byte.
bool TakeLock(HANDLE file, std::chrono::steady_clock::time_point end) {
    for (;;) {
        OVERLAPPED start{};
        if (LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &start))
            return true;
        if (GetLastError() != ERROR_LOCK_VIOLATION || std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

/// A name for a lock that stands for a file's path, in whatever case it is written.
std::string LockName(const char* path) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char c : FullPath(path))
        hash = (hash ^ static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c + 32 : c)) * 0x100000001B3;
    return "Local\\brenta-" + std::to_string(hash);
}

}  // namespace

bool CreatePrivateFolder(const char* path) {
    const std::string folder = NativePath(path);
    for (std::size_t end = 0; end != std::string::npos;) {
        end = folder.find_first_of("\\/", end + 1);
        CreateDirectoryA(folder.substr(0, end).c_str(), nullptr);
    }
    return KindOfPath(path) == PathKind::Directory;
}

bool CreatePrivateFile(const char* path) {
    FileHandle file = OpenFile(NativePath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, CREATE_NEW);
    return file.IsOpen() ? file.Close() : GetLastError() == ERROR_FILE_EXISTS;
}

bool StampOfFile(const char* path, FileStamp& stamp) {
    const FileHandle file = OpenToAsk(path);
    return file.IsOpen() && StampOfHandle(file.Get(), stamp);
}

FileLock::~FileLock() {
    if (m_handle == -1) return;
    const auto handle = reinterpret_cast<HANDLE>(m_handle);
    if (m_isOfName) ReleaseMutex(handle);
    CloseHandle(handle);
}

bool FileLock::Acquire(const char* path, int milliseconds) {
    FileHandle file =
        OpenFile(NativePath(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_ALWAYS);
    if (!file.IsOpen()) return false;
    const HANDLE handle = file.Release();
    m_handle = reinterpret_cast<std::intptr_t>(handle);
    return TakeLock(handle, After(milliseconds));
}

// A file that is open cannot be replaced at once everywhere. So the lock is not one of the file, but one of
// its name among the user's programs; who adds to it from another machine is noticed by the file's stamp.
bool FileLock::AcquireExisting(const char* path, int milliseconds) {
    if (IsAbsent(path)) return true;
    // No more rights than it takes: those of a program that runs as administrator hands out few.
    const HANDLE mutex = CreateMutexExA(nullptr, LockName(path).c_str(), 0, SYNCHRONIZE | MUTEX_MODIFY_STATE);
    if (mutex == nullptr) return false;
    const DWORD waited = WaitForSingleObject(mutex, static_cast<DWORD>(milliseconds));
    if (waited == WAIT_OBJECT_0 || waited == WAIT_ABANDONED) {
        m_handle = reinterpret_cast<std::intptr_t>(mutex);
        m_isOfName = true;
        return true;
    }
    CloseHandle(mutex);
    return false;
}

std::uint64_t ProcessId() {
    return GetCurrentProcessId();
}

std::string BootId() {
    return "";
}

}  // namespace brenta::os
