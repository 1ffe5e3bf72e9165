// brenta registry: keys and values of the registry.
#include "brenta/registry.h"

#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "commands.h"
#include "console.h"

namespace brenta::host {
namespace {

struct RootName {
    std::string_view name, shortName;
    HKEY root;
};

const RootName* FindRoot(std::string_view name) {
    static const std::array<RootName, 4> roots = {{{"HKEY_CLASSES_ROOT", "HKCR", HKEY_CLASSES_ROOT},
                                                   {"HKEY_CURRENT_USER", "HKCU", HKEY_CURRENT_USER},
                                                   {"HKEY_LOCAL_MACHINE", "HKLM", HKEY_LOCAL_MACHINE},
                                                   {"HKEY_USERS", "HKU", HKEY_USERS}}};
    for (const RootName& root : roots)
        if (root.name == name || root.shortName == name) return &root;
    return nullptr;
}

/// Root and key of a path such as HKCU\Software; a path without a root belongs to the current user.
struct Key {
    HKEY root = HKEY_CURRENT_USER;
    std::string path;
};

Key KeyOf(const std::string& text) {
    const std::size_t end = text.find('\\');
    std::string first = text.substr(0, end);
    for (char& c : first)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    const RootName* const root = FindRoot(first);
    if (!root) return {HKEY_CURRENT_USER, text};
    return {root->root, end == std::string::npos ? "" : text.substr(end + 1)};
}

/// What the library's own operations store in such a value.
std::string TypeName(DWORD type, int size) {
    if (type == REG_SZ || type == REG_EXPAND_SZ) return "string";
    if (type == REG_DWORD && size == 4) return "dword";
    if (type == REG_BINARY && size == 1) return "bool";
    if (type == REG_BINARY && size == 4) return "int";
    if (type == REG_BINARY && size == 8) return "float";
    return "type " + std::to_string(type);
}

std::string Shortest(double value) {
    char text[32];
    for (int digits = 15; digits <= 17; ++digits) {
        std::snprintf(text, sizeof(text), "%.*g", digits, value);
        if (std::strtod(text, nullptr) == value) break;
    }
    return text;
}

/// The type and the value, separated by a tab; only the size of what is no value of the known types.
std::string Describe(CCoreRegistry& registry, const char* name) {
    const int size = registry.GetDataSize(name);
    const std::string type = TypeName(registry.GetDataType(name), size);
    std::string value = std::to_string(size) + " bytes";
    if (type == "bool") value = registry.ReadBool(name, false) ? "true" : "false";
    if (type == "int") value = std::to_string(registry.ReadInt(name, 0));
    if (type == "dword") value = std::to_string(registry.ReadDword(name, 0));
    if (type == "float") value = Shortest(registry.ReadFloat(name, 0));
    if (type == "string") {
        const CoreString text = registry.ReadString(name, "");
        if (registry.GetLastErrorCode() == 0) value = text;
    }
    return type + "\t" + value;
}

/// What failed, and the code unless that says only that there is no such key or value.
int Fail(const std::string& what, const CCoreRegistry& registry) {
    const DWORD code = registry.GetLastErrorCode();
    constexpr DWORD kNotFound = 2;
    Complain(what + (code == 0 || code == kNotFound ? "" : " (error " + std::to_string(code) + ")"));
    return 1;
}

int Get(CCoreRegistry& registry, const RegistryOptions& options) {
    if (!registry.ValueExists(options.name.c_str()))
        return Fail("there is no value '" + options.name + "' in '" + options.path + "'", registry);
    PrintLine(Describe(registry, options.name.c_str()));
    return 0;
}

int List(CCoreRegistry& registry) {
    TOrderedList<CoreString> names;
    registry.GetSubKeyNames(names);
    for (const CoreString& name : names)
        PrintLine(std::string(name) + "\\");
    registry.GetValueNames(names);
    for (const CoreString& name : names)
        PrintLine(std::string(name) + "\t" + Describe(registry, name));
    return 0;
}

/// Writes the text as a value of the type; false if it is no such value, or cannot be written.
bool Write(CCoreRegistry& registry, const RegistryOptions& options) {
    const char* const name = options.name.c_str();
    const char* const text = options.value.c_str();
    char* end = nullptr;
    if (options.type == "string") return registry.WriteString(name, text);
    if (options.type == "bool") {
        const bool isTrue = options.value == "true" || options.value == "1";
        return (isTrue || options.value == "false" || options.value == "0") &&
               registry.WriteBool(name, isTrue);
    }
    if (options.type == "float") {
        const double number = std::strtod(text, &end);
        return end != text && *end == 0 && registry.WriteFloat(name, number);
    }
    const long long number = std::strtoll(text, &end, 10);
    if (end == text || *end != 0) return false;
    if (options.type == "dword")
        return number >= 0 && number <= UINT32_MAX && registry.WriteDword(name, static_cast<DWORD>(number));
    return number >= INT32_MIN && number <= INT32_MAX && registry.WriteInt(name, static_cast<int>(number));
}

int Set(CCoreRegistry& registry, const RegistryOptions& options) {
    if (Write(registry, options)) return 0;
    return Fail("'" + options.value + "' is no " + options.type + ", or cannot be written", registry);
}

int DeleteValue(CCoreRegistry& registry, const RegistryOptions& options) {
    if (registry.DeleteValue(options.name.c_str())) return 0;
    return Fail("there is no value '" + options.name + "' in '" + options.path + "'", registry);
}

}  // namespace

int RegistryCommand(const RegistryOptions& options) {
    const Key key = KeyOf(options.path);
    CCoreRegistry registry(key.root);
    const bool create = options.action == "set";
    if (!registry.SetKey(key.path.c_str(), create)) {
        if (create) registry.SetKey(key.path.c_str(), false);  // records why
        return Fail("key '" + options.path + (create ? "' cannot be created" : "' does not exist"), registry);
    }
    if (options.action == "get") return Get(registry, options);
    if (options.action == "list") return List(registry);
    if (create) return Set(registry, options);
    if (options.hasName) return DeleteValue(registry, options);
    return registry.DeleteKey(key.path.c_str()) ? 0
                                                : Fail("'" + options.path + "' cannot be deleted", registry);
}

}  // namespace brenta::host
