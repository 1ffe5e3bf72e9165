#include <new>
#include <string>
#include <string_view>

#include "brenta/settings.h"
#include "foundation/numbers.h"
#include "platform/host_services.h"
#include "platform/ini_file.h"

namespace brenta {

namespace {

/// What one reading yields at most.
constexpr std::size_t kLongestValue = 259;

/// "" if the folder for application data is unknown.
std::string IniFileName() {
    if (GetAppDataFolder().IsEmpty()) return "";
    return std::string(GetAppDataFileName(nullptr, GetAppName(false, false) + ".ini", nullptr));
}

bool WriteValue(const char* section, const char* key, const char* value) try {
    const std::string file = IniFileName();
    if (file.empty() || !section || !key) return false;
    const std::string_view text = value ? value : "";
    return WriteIniValue(file, section, key, value ? &text : nullptr);
} catch (const std::bad_alloc&) {
    return false;
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------
// The initialisation file

bool GetAppValue(const char* section, const char* key, CoreString& value) try {
    const std::string file = section && key ? IniFileName() : "";
    value.SetEmpty();
    if (file.empty()) return false;
    const std::string text = ReadIniValue(file, section, key).substr(0, kLongestValue);
    value = text.c_str();
    return !value.IsEmpty();
} catch (const std::bad_alloc&) {
    value.SetEmpty();
    return false;
}

bool GetAppValue(const char* section, const char* key, int& value) {
    CoreString text;
    const bool found = GetAppValue(section, key, text);
    value = ParseInt(text);
    return found;
}

bool SetAppValue(const char* section, const char* key, int value) {
    CoreString text;
    text << value;
    return SetAppValue(section, key, text);
}

bool SetAppValue(const char* section, const char* key, const char* value) {
    return WriteValue(section, key, value);
}

bool GetAppNames(const char* section, TOrderedList<CoreString>& names) try {
    const std::string file = IniFileName();
    const std::string_view name = section ? section : "";
    names.RemoveAll();
    if (file.empty()) return false;
    for (const std::string& found : ListIniNames(file, section ? &name : nullptr))
        names.Add(CoreString(found.c_str()));
    return names.GetCount() > 0;
} catch (const std::bad_alloc&) {
    names.RemoveAll();
    return false;
}

// ---------------------------------------------------------------------------------------------------------
// The host application's settings

bool GetRegValue(const char* section, const char* key, CoreString& value) {
    CoreString text;
    if (section && key) HostReadProfile(section, key, text);
    value = text;
    return !value.IsEmpty();
}

bool GetRegValue(const char* section, const char* key, int& value) {
    CoreString text;
    const bool found = GetRegValue(section, key, text);
    value = ParseInt(text);
    return found;
}

bool SetRegValue(const char* section, const char* key, int value) {
    CoreString text;
    text << value;
    return SetRegValue(section, key, text);
}

bool SetRegValue(const char* section, const char* key, const char* value) {
    return section && key && HostWriteProfile(section, key, value);
}

}  // namespace brenta
