// Linux: the executable's path, the application-data folder and the environment.
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

#include "os/os.h"

namespace brenta::os {

namespace {

/// The home folder: $HOME, or what the user database says.
std::string HomeFolder() {
    std::string home;
    if (GetEnvironment("HOME", home) && !home.empty()) return home;
    std::vector<char> buffer(16384);
    passwd entry;
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found) return "";
    return found->pw_dir ? found->pw_dir : "";
}

std::string WithoutEndSeparators(std::string folder) {
    while (folder.size() > 1 && folder.back() == '/')
        folder.pop_back();
    return folder;
}

}  // namespace

std::string ExecutablePath() {
    std::string path(256, '\0');
    for (;;) {
        const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
        if (length < 0) return "";
        if (static_cast<std::size_t>(length) < path.size()) {
            path.resize(static_cast<std::size_t>(length));
            break;
        }
        path.resize(2 * path.size());
    }
    // So the system marks a running file that was replaced, by an update for example.
    constexpr std::string_view kReplaced = " (deleted)";
    if (path.ends_with(kReplaced)) path.resize(path.size() - kReplaced.size());
    return path;
}

std::string ApplicationDataFolder() {
    std::string folder;
    if (GetEnvironment("BRENTA_APPDATA", folder) && !folder.empty()) return WithoutEndSeparators(folder);
    if (GetEnvironment("XDG_DATA_HOME", folder) && folder.starts_with('/'))
        return WithoutEndSeparators(folder);
    const std::string home = HomeFolder();
    if (home.empty()) return "";
    return (home == "/" ? home : WithoutEndSeparators(home) + '/') + ".local/share";
}

bool GetEnvironment(const char* name, std::string& value) {
    const char* text = name ? std::getenv(name) : nullptr;
    if (!text) return false;
    value = text;
    return true;
}

}  // namespace brenta::os
