// Windows: the executable's path, the application-data folder and the environment.
#include "os/os.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <shlobj.h>

namespace brenta::os {

std::string ExecutablePath() {
    std::string path(MAX_PATH, '\0');
    for (;;) {
        const DWORD length = GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) return "";
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(2 * path.size());
    }
}

std::string ApplicationDataFolder() {
    std::string folder;
    if (!GetEnvironment("BRENTA_APPDATA", folder) || folder.empty()) {
        char path[MAX_PATH];
        if (SHGetFolderPathA(nullptr, CSIDL_COMMON_APPDATA, nullptr, SHGFP_TYPE_CURRENT, path) != S_OK)
            return "";
        folder = path;
    }
    while (folder.size() > 3 && (folder.back() == '\\' || folder.back() == '/'))
        folder.pop_back();
    return folder;
}

bool GetEnvironment(const char* name, std::string& value) {
    if (!name) return false;
    std::string text(128, '\0');
    for (;;) {
        SetLastError(ERROR_SUCCESS);
        const DWORD length = GetEnvironmentVariableA(name, text.data(), static_cast<DWORD>(text.size()));
        if (length == 0 && GetLastError() != ERROR_SUCCESS) return false;
        const bool fits = length < text.size();
        text.resize(length);
        if (fits) break;
    }
    value = text;
    return true;
}

}  // namespace brenta::os
