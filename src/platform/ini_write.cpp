// What comes before a change of an initialisation file on every platform.
#include <string>
#include <string_view>

#include "os/data_files.h"
#include "os/os.h"
#include "platform/ini_file.h"
#include "platform/ini_text.h"

namespace brenta {

namespace {

constexpr int kLockMilliseconds = 5000;

}  // namespace

bool WriteIniValue(const std::string& path, std::string_view section, std::string_view key,
                   const std::string_view* value) {
    if (!IniText::CanSet(section, key, value ? *value : "")) return false;
    if (!value && os::IsAbsent(path.c_str())) return true;
    const std::string folder = path.substr(0, path.find_last_of("\\/"));
    os::FileLock lock;
    return os::CreatePrivateFolder(folder.c_str()) &&
           lock.Acquire((path + ".lock").c_str(), kLockMilliseconds) &&
           ChangeIniFile(path, section, key, value);
}

}  // namespace brenta
