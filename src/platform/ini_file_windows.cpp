// Initialisation files by the system's own functions, which every other program on the machine uses for them,
// too. Their wide forms, as the narrow ones end the process over a text of 32,768 characters.
#include <algorithm>
#include <set>

#include "os/data_files.h"
#include "os/os.h"
#include "platform/ini_file.h"
#include "platform/registry_path.h"
#include "platform/wide_text_windows.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace brenta {

namespace {

constexpr std::size_t kLargestAnswer = std::size_t{1} << 24;

/// A file that has no full path would be taken for one of the system's folder. "" on failure.
std::wstring FullPath(const std::string& path) {
    const std::wstring wide = Widened(path);
    std::wstring full(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            GetFullPathNameW(wide.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
        const bool fits = length < full.size();
        full.resize(length);
        if (fits) return full;
    }
}

/// How often to ask while that is the error. A file that is being replaced is denied for a moment; one that
/// is denied for longer is not for this user.
int AttemptsFor(DWORD error) {
    if (error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION) return 50;
    return error == ERROR_ACCESS_DENIED ? 5 : 1;
}

/// What the system answers; waits a moment for whoever is writing the file. `section` and `key` may be null,
/// to ask for all names.
std::wstring Ask(const std::wstring& file, const wchar_t* section, const wchar_t* key) {
    if (file.empty()) return {};
    constexpr DWORD kPause = 10;  // milliseconds
    // A list ends with two terminators, and a text with one.
    const std::size_t endSize = section && key ? 1 : 2;
    std::wstring answer(512, L'\0');
    for (int attempt = 1;;) {
        SetLastError(ERROR_SUCCESS);
        const DWORD length = GetPrivateProfileStringW(section, key, L"", answer.data(),
                                                      static_cast<DWORD>(answer.size()), file.c_str());
        if (length + endSize >= answer.size() && answer.size() < kLargestAnswer) {
            answer.resize(4 * answer.size());
        } else if (length == 0 && attempt < AttemptsFor(GetLastError())) {
            ++attempt;
            Sleep(kPause);
        } else {
            answer.resize(length);
            return answer;
        }
    }
}

/// Changes the file at that path, which nobody else has in use.
bool Change(const char* path, const std::wstring& section, const std::wstring& key,
            const std::wstring* value) {
    const std::wstring file = FullPath(path);
    if (file.empty()) return false;
    const bool isWritten = WritePrivateProfileStringW(section.c_str(), key.c_str(),
                                                      value ? value->c_str() : nullptr, file.c_str());
    WritePrivateProfileStringW(nullptr, nullptr, nullptr, file.c_str());  // whatever is kept back until later
    return isWritten;
}

}  // namespace

std::string ReadIniValue(const std::string& path, std::string_view section, std::string_view key) {
    return Narrowed(Ask(FullPath(path), Widened(section).c_str(), Widened(key).c_str()));
}

std::vector<std::string> ListIniNames(const std::string& path, const std::string_view* section) {
    const std::wstring name = section ? Widened(*section) : std::wstring();
    const std::wstring list = Ask(FullPath(path), section ? name.c_str() : nullptr, nullptr);
    std::vector<std::string> names;
    std::set<std::string> known;
    for (std::size_t at = 0; at < list.size();) {
        const std::size_t end = std::min(list.find(L'\0', at), list.size());
        std::string found = Narrowed(list.substr(at, end - at));
        at = end + 1;
        if (!found.empty() && known.insert(FoldedName(found)).second) names.push_back(std::move(found));
    }
    return names;
}

bool ChangeIniFile(const std::string& path, std::string_view section, std::string_view key,
                   const std::string_view* value) {
    // The system writes a file over, which a crash would cut; so it gets a copy, which then takes the place.
    std::string content;
    if (os::ReadWholeFile(path.c_str(), content) != os::FileStatus::Ok && !os::IsAbsent(path.c_str()))
        return false;
    const std::wstring text = value ? Widened(*value) : std::wstring();
    os::Replacement file;
    return file.Create(path.c_str()) && os::WriteWholeFile(file.NewPath().c_str(), content) &&
           Change(file.NewPath().c_str(), Widened(section), Widened(key), value ? &text : nullptr) &&
           file.Commit();
}

}  // namespace brenta
