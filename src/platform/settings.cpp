#include <new>
#include <string>
#include <string_view>

#include "brenta/settings.h"
#include "foundation/lack_of_memory.h"
#include "foundation/numbers.h"
#include "foundation/string_blocks.h"
#include "platform/host_services.h"
#include "platform/ini_file.h"

namespace brenta {

namespace {

/// What one reading yields at most.
constexpr std::size_t kLongestValue = 259;

/// "" if the folder for application data is unknown.
std::string IniFileName() {
    t_stringsLacked = false;
    const bool isKnown = !GetAppDataFolder().IsEmpty();
    const CoreString file = GetAppDataFileName(nullptr, GetAppName(false, false) + ".ini", nullptr);
    if (t_stringsLacked) throw std::bad_alloc();
    return isKnown ? std::string(file) : "";
}

using TextReader = bool (*)(const char* section, const char* key, CoreString& value);

bool ReadNumber(TextReader read, const char* section, const char* key, int& value) {
    CoreString text;
    const bool found = read(section, key, text);
    value = ParseInt(text);
    return found;
}

CoreString Decimal(int value) {
    CoreString text;
    text << value;
    return text;
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------
// The initialisation file

bool GetAppValue(const char* section, const char* key, CoreString& value) try {
    const std::string file = section && key ? IniFileName() : "";
    const std::string text = file.empty() ? "" : ReadIniValue(file, section, key);
    value.SetEmpty();
    value = text.substr(0, kLongestValue).c_str();
    return !value.IsEmpty();
} catch (const std::bad_alloc&) {
    value.SetEmpty();
    return false;
}

bool GetAppValue(const char* section, const char* key, int& value) {
    return ReadNumber(&GetAppValue, section, key, value);
}

bool SetAppValue(const char* section, const char* key, const char* value) try {
    const std::string file = section && key ? IniFileName() : "";
    const std::string_view text = value ? value : "";
    return !file.empty() && WriteIniValue(file, section, key, value ? &text : nullptr);
} catch (const std::bad_alloc&) {
    return false;
}

bool SetAppValue(const char* section, const char* key, int value) {
    return SetAppValue(section, key, Decimal(value));
}

bool GetAppNames(const char* section, TOrderedList<CoreString>& names) try {
    const std::string file = IniFileName();
    const std::string_view name = section ? section : "";
    names.RemoveAll();
    if (file.empty()) return false;
    for (const std::string& found : ListIniNames(file, section ? &name : nullptr))
        AddOrThrow(names, CoreString(found.c_str()));
    if (t_stringsLacked) throw std::bad_alloc();
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
    return ReadNumber(&GetRegValue, section, key, value);
}

bool SetRegValue(const char* section, const char* key, const char* value) {
    return section && key && HostWriteProfile(section, key, value);
}

bool SetRegValue(const char* section, const char* key, int value) {
    return SetRegValue(section, key, Decimal(value));
}

}  // namespace brenta
