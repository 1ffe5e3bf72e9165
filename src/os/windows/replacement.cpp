// Windows: files that take the place of others when they are whole.
//
// The system's ReplaceFile moves the old file away before the new one comes: a process that is ended between
// the two leaves none. So it is the last resort, for old files that somebody reads where the system cannot
// replace these at once; and the new file gets the rights of the old one when it is made. Virus scanners and
// search indexes open what has just been written and let nobody rename it for a moment, so a refusal is not
// believed at once.
#include <atomic>
#include <exception>
#include <string>
#include <string_view>

#include "os/os.h"
#include "os/windows/file_handle.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <aclapi.h>

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
    const FileHandle file = OpenFile(path.c_str(), GENERIC_WRITE, kShareAll, OPEN_EXISTING);
    const bool isReadOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    old.isWritable = !isReadOnly && (file.IsOpen() || GetLastError() == ERROR_SHARING_VIOLATION);
    old.isRegular = !file.IsOpen() || GetFileType(file.Get()) == FILE_TYPE_DISK;
    return old;
}

constexpr DWORD kLongestPath = 32768;

/// Where a symbolic link leads that a path ends with, if something is there; else the path itself.
std::string FollowLinks(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
        return path;
    const FileHandle file = OpenFile(path.c_str(), 0, kShareAll, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    std::string target(kLongestPath, '\0');
    const DWORD length = file.IsOpen() ? GetFinalPathNameByHandleA(file.Get(), target.data(), kLongestPath,
                                                                   FILE_NAME_NORMALIZED)
                                       : 0;
    if (length == 0 || length >= kLongestPath) return path;
    target.resize(length);
    return target;
}

/// Whether a list of rights holds some that do not come from the folder.
bool HasOwnRights(ACL* rights) {
    for (WORD i = 0; rights != nullptr && i < rights->AceCount; ++i) {
        void* entry = nullptr;
        if (GetAce(rights, i, &entry) && (static_cast<ACE_HEADER*>(entry)->AceFlags & INHERITED_ACE) == 0)
            return true;
    }
    return false;
}

/// Gives a new file the rights that the old one has of its own; false if that fails. Where there are none, or
/// the file system knows no rights, there is nothing to do: few may change rights on a share.
bool TakeRights(const std::string& name, const std::string& old) {
    PACL rights = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (GetNamedSecurityInfoA(old.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                              &rights, nullptr, &descriptor) != ERROR_SUCCESS)
        return true;
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    GetSecurityDescriptorControl(descriptor, &control, &revision);
    const bool isProtected = (control & SE_DACL_PROTECTED) != 0;
    const DWORD inheritance =
        isProtected ? PROTECTED_DACL_SECURITY_INFORMATION
                    : UNPROTECTED_DACL_SECURITY_INFORMATION;  // what the folder gives is added anew
    DWORD result = ERROR_SUCCESS;
    std::string path = name;
    if (isProtected || HasOwnRights(rights))
        result = SetNamedSecurityInfoA(path.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION | inheritance,
                                       nullptr, nullptr, rights, nullptr);
    LocalFree(descriptor);
    return result == ERROR_SUCCESS;
}

/// Creates a file with a name of its own in the folder of another.
FileHandle CreateBeside(const std::string& path, std::string& name) {
    static std::atomic<unsigned int> counter;
    const std::string folder = path.substr(0, path.find_last_of("\\/:") + 1);  // npos + 1 is 0
    for (;;) {
        name = folder + ".brenta-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++counter) +
               ".tmp";
        FileHandle file = OpenFile(name.c_str(), GENERIC_WRITE, FILE_SHARE_READ, CREATE_NEW);
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

/// What Windows 10 takes for a rename, in the form of its FileRenameInfoEx, which older headers lack.
struct RenameRequest {
    static constexpr auto kClass = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
    static constexpr DWORD kReplace = 1, kEvenIfOpen = 2;

    DWORD flags = kReplace | kEvenIfOpen;
    HANDLE rootFolder = nullptr;
    DWORD nameBytes = 0;
    wchar_t name[kLongestPath];
};

/// Renames at once, also over a file that others read; false where the system or the file system is too old.
bool RenameAtOnce(const char* from, const char* to) {
    RenameRequest request;
    const int length = MultiByteToWideChar(CP_ACP, 0, to, -1, request.name, static_cast<int>(kLongestPath));
    const FileHandle file = OpenFile(from, DELETE | SYNCHRONIZE, kShareAll, OPEN_EXISTING);
    if (length == 0 || !file.IsOpen()) return false;
    request.nameBytes = static_cast<DWORD>(length - 1) * sizeof(wchar_t);
    return SetFileInformationByHandle(file.Get(), RenameRequest::kClass, &request, sizeof request) != 0;
}

/// The last resort. The old file stands under a name of its own meanwhile, and comes back if the new one
/// cannot take its place.
bool ReplaceSlowly(const char* from, const char* to) {
    const std::string backup = std::string(from) + ".old";
    const bool isDone =
        ReplaceFileA(to, from, backup.c_str(),
                     REPLACEFILE_IGNORE_MERGE_ERRORS | REPLACEFILE_IGNORE_ACL_ERRORS, nullptr, nullptr) != 0;
    if (!isDone && GetFileAttributesA(to) == INVALID_FILE_ATTRIBUTES)
        MoveFileExA(backup.c_str(), to, MOVEFILE_WRITE_THROUGH);
    else
        DeleteFileA(backup.c_str());
    return isDone;
}

bool RenameOver(const char* from, const char* to) {
    const DWORD attributes = GetFileAttributesA(to);
    if (attributes != INVALID_FILE_ATTRIBUTES) SetFileAttributesA(from, attributes);
    return Insist([from, to] {
        if (RenameAtOnce(from, to) ||
            MoveFileExA(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            return true;
        const DWORD error = GetLastError();
        if (GetFileAttributesA(to) != INVALID_FILE_ATTRIBUTES && ReplaceSlowly(from, to)) return true;
        SetLastError(error);
        return false;
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
    FileHandle file = OpenFile(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING);
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
    // The current folder may change before the file is in place.
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
    const bool isWritten = (!old.exists || TakeRights(name, target)) && file.WriteAll(content) &&
                           FlushFileBuffers(file.Get()) && file.Close();
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
    FileHandle file = CreateBeside(target, name);
    if (!file.IsOpen()) return false;
    if (old.exists && !TakeRights(name, target)) {
        file.Close();
        DeleteFileA(name.c_str());
        return false;
    }
    m_path.swap(target);
    m_newPath.swap(name);
    return true;
} catch (const std::exception&) {
    return false;
}

bool Replacement::PutInPlace(bool (*rename)(const char* from, const char* to)) {
    const bool isWritten = Insist([this] {
        FileHandle file = OpenFile(m_newPath.c_str(), GENERIC_WRITE, kShareAll, OPEN_EXISTING);
        return file.IsOpen() && FlushFileBuffers(file.Get()) && file.Close();
    });
    if (!isWritten) return false;
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
