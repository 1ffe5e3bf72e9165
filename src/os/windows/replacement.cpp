// Windows: files that take the place of others when they are whole.
//
// ReplaceFile gives the new file the rights, the attributes and the time of creation of the old one. Virus
// scanners and search indexes open what has just been written and let nobody rename it for a moment, so a
// refusal is not believed at once.
#include <atomic>
#include <exception>
#include <string>
#include <string_view>

#include "os/os.h"
#include "os/windows/file_handle.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace brenta::os {

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// What stands at a path that is to be replaced.
struct OldFile {
    bool isKnown = false;  ///< false if the system cannot tell
    bool exists = false;
    bool isRegular = false;
    bool isWritable = false;
};

OldFile LookAtOld(const std::string& path) {
    OldFile old;
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        old.isKnown = IsAbsent(path.c_str());
        return old;
    }
    old.isKnown = old.exists = true;
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return old;
    const FileHandle file(CreateFileA(path.c_str(), GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    const bool isReadOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    old.isWritable = !isReadOnly && (file.IsOpen() || GetLastError() == ERROR_SHARING_VIOLATION);
    old.isRegular = !file.IsOpen() || GetFileType(file.Get()) == FILE_TYPE_DISK;
    return old;
}

constexpr DWORD kLongestPath = 32768;

/// The path from the drive on: the current folder may change before the file is in place.
std::string FullPath(const char* path) {
    std::string full(kLongestPath, '\0');
    const DWORD length = GetFullPathNameA(path ? path : "", kLongestPath, full.data(), nullptr);
    full.resize(length < kLongestPath ? length : 0);
    return full;
}

/// Where a symbolic link leads that a path ends with, if something is there; else the path itself.
std::string FollowLinks(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
        return path;
    const FileHandle file(
        CreateFileA(path.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    std::string target(kLongestPath, '\0');
    const DWORD length = file.IsOpen() ? GetFinalPathNameByHandleA(file.Get(), target.data(), kLongestPath,
                                                                   FILE_NAME_NORMALIZED)
                                       : 0;
    if (length == 0 || length >= kLongestPath) return path;
    target.resize(length);
    return target;
}

/// Creates a file with a name of its own in the folder of another.
FileHandle CreateBeside(const std::string& path, std::string& name) {
    static std::atomic<unsigned int> counter;
    const std::string folder = path.substr(0, path.find_last_of("\\/:") + 1);  // npos + 1 is 0
    for (;;) {
        name = folder + ".brenta-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++counter) +
               ".tmp";
        FileHandle file(CreateFileA(name.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
        if (file.IsOpen() || GetLastError() != ERROR_FILE_EXISTS) return file;
    }
}

bool MayPass(DWORD error) {
    return error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED ||
           error == ERROR_LOCK_VIOLATION || error == ERROR_UNABLE_TO_REMOVE_REPLACED;
}

/// Repeats what others may keep from happening for a moment.
template <class Step>
bool Insist(const Step& step) {
    constexpr int kAttempts = 10;
    constexpr DWORD kPause = 10;  // milliseconds
    for (int i = 1; !step(); ++i) {
        if (i == kAttempts || !MayPass(GetLastError())) return false;
        Sleep(kPause);
    }
    return true;
}

bool RenameOver(const char* from, const char* to) {
    return Insist([from, to] {
        if (ReplaceFileA(to, from, nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr)) return true;
        // Also where there is no old file, or a file system that cannot exchange them.
        return MoveFileExA(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
    });
}

bool RenameToNew(const char* from, const char* to) {
    return Insist([from, to] {
        return GetFileAttributesA(to) == INVALID_FILE_ATTRIBUTES &&
               MoveFileExA(from, to, MOVEFILE_WRITE_THROUGH);
    });
}

/// Overwrites a file in place, once there is certainly room for its new content.
bool Overwrite(const std::string& path, std::string_view content) {
    FileHandle file(CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER oldSize;
    if (!file.IsOpen() || !GetFileSizeEx(file.Get(), &oldSize)) return false;
    FILE_ALLOCATION_INFO room{};
    room.AllocationSize.QuadPart = static_cast<long long>(content.size());
    if (room.AllocationSize.QuadPart > oldSize.QuadPart &&
        !SetFileInformationByHandle(file.Get(), FileAllocationInfo, &room, sizeof room))
        return false;
    return file.WriteAll(content) && SetEndOfFile(file.Get()) && FlushFileBuffers(file.Get()) && file.Close();
}

}  // namespace

bool ReplaceWholeFile(const char* path, std::string_view content) try {
    const std::string target = FollowLinks(FullPath(path));
    const OldFile old = LookAtOld(target);
    if (!old.isKnown) return false;
    if (old.exists && !old.isRegular) return old.isWritable && WriteWholeFile(target.c_str(), content);
    if (old.exists && !old.isWritable) return false;
    std::string name;
    FileHandle file = CreateBeside(target, name);
    if (!file.IsOpen()) {
        return old.exists && GetLastError() == ERROR_ACCESS_DENIED && Overwrite(target, content);
    }
    const bool isWritten = file.WriteAll(content) && FlushFileBuffers(file.Get()) && file.Close();
    if (isWritten && RenameOver(name.c_str(), target.c_str())) return true;
    file.Close();
    DeleteFileA(name.c_str());
    return false;
} catch (const std::exception&) {
    return false;
}

Replacement::~Replacement() {
    if (!m_newPath.empty()) DeleteFileA(m_newPath.c_str());
}

bool Replacement::Create(const char* path) try {
    std::string target = FollowLinks(FullPath(path)), name;
    const OldFile old = LookAtOld(target);
    if (!old.isKnown || (old.exists && !(old.isRegular && old.isWritable))) return false;
    const FileHandle file = CreateBeside(target, name);
    if (!file.IsOpen()) return false;
    m_path.swap(target);
    m_newPath.swap(name);
    return true;
} catch (const std::exception&) {
    return false;
}

bool Replacement::PutInPlace(bool (*rename)(const char* from, const char* to)) {
    FileHandle file(CreateFileA(m_newPath.c_str(), GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.IsOpen() || !FlushFileBuffers(file.Get()) || !file.Close()) return false;
    if (!rename(m_newPath.c_str(), m_path.c_str())) return false;
    m_newPath.clear();
    return true;
}

bool Replacement::Commit() {
    return PutInPlace(&RenameOver);
}

bool Replacement::CommitAsNew() {
    return PutInPlace(&RenameToNew);
}

}  // namespace brenta::os
