// brenta registry: keys and values of the registry.
#include "brenta/registry.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "command.h"
#include "console.h"
#include "style.h"

namespace brenta::host {
namespace {

struct RegistryOptions {
    std::string path, name, value;
    std::string type = "string";  ///< of the value to set: string, int, dword, bool or float
};

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

/// The type and the value; only the size of what is no value of the known types.
std::pair<std::string, std::string> Describe(CCoreRegistry& registry, const char* name) {
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
    return {type, value};
}

/// What failed, and the code unless that says only that there is no such key or value.
int Fail(const std::string& what, const CCoreRegistry& registry) {
    const DWORD code = registry.GetLastErrorCode();
    constexpr DWORD kNotFound = 2;
    Complain(what + (code == 0 || code == kNotFound ? "" : " (error " + std::to_string(code) + ")"));
    return 1;
}

/// Selects the key of the options, with `create` as a new one; complains if that fails.
bool Open(CCoreRegistry& registry, const RegistryOptions& options, bool create) {
    const std::string path = KeyOf(options.path).path;
    if (registry.SetKey(path.c_str(), create)) return true;
    if (create) registry.SetKey(path.c_str(), false);  // records why
    Fail("key '" + options.path + (create ? "' cannot be created" : "' does not exist"), registry);
    return false;
}

int Get(CCoreRegistry& registry, const RegistryOptions& options) {
    if (!registry.ValueExists(options.name.c_str()))
        return Fail("there is no value '" + options.name + "' in '" + options.path + "'", registry);
    const auto [type, value] = Describe(registry, options.name.c_str());
    Table({{"type", 8}, {"value", 16}}).Row({type, value});
    return 0;
}

int List(CCoreRegistry& registry, const RegistryOptions&) {
    TOrderedList<CoreString> names;
    registry.GetSubKeyNames(names);
    for (const CoreString& name : names)
        PrintLine(std::string(name) + "\\");
    registry.GetValueNames(names);
    Table table({{"name", 16}, {"type", 8}, {"value", 16}});
    for (const CoreString& name : names) {
        const auto [type, value] = Describe(registry, name);
        table.Row({name(), type, value});
    }
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

int DeleteKey(CCoreRegistry& registry, const RegistryOptions& options) {
    return registry.DeleteKey(KeyOf(options.path).path.c_str())
               ? 0
               : Fail("'" + options.path + "' cannot be deleted", registry);
}

int DeleteValue(CCoreRegistry& registry, const RegistryOptions& options) {
    if (registry.DeleteValue(options.name.c_str())) return 0;
    return Fail("there is no value '" + options.name + "' in '" + options.path + "'", registry);
}

// ---------------------------------------------------------------------------------------------------------
// The command line

std::vector<std::string> SuggestKeys(const std::vector<std::string>&) {
    return {"HKCU\\", "HKLM\\", "HKCR\\", "HKU\\"};
}

std::vector<std::string> SuggestValues(const std::vector<std::string>& before) {
    const Key key = KeyOf(before[0]);
    CCoreRegistry registry(key.root);
    TOrderedList<CoreString> names;
    if (registry.SetKey(key.path.c_str(), false)) registry.GetValueNames(names);
    std::vector<std::string> suggestions;
    for (const CoreString& name : names)
        suggestions.emplace_back(name());
    return suggestions;
}

using Operation = int (*)(CCoreRegistry&, const RegistryOptions&);

int Run(const RegistryOptions& options, Operation operation, bool create = false) {
    CCoreRegistry registry(KeyOf(options.path).root);
    return Open(registry, options, create) ? operation(registry, options) : 1;
}

Command DefineAction(Command& command, const std::shared_ptr<RegistryOptions>& options, const char* name,
                     const char* summary) {
    Command action = command.Action(name, summary);
    action.TakeDashesAsWords();
    action.Word("PATH", options->path, WordKind::kText, "HKCU, HKLM, HKCR or HKU, and names behind \\");
    action.Suggest(&SuggestKeys);
    return action;
}

void DefineSet(Command& command, const std::shared_ptr<RegistryOptions>& options) {
    Command set = DefineAction(command, options, "set", "Write a value; a key that is missing is created");
    set.Word("NAME", options->name, WordKind::kText, "The value's name; '' is the key's default value");
    set.Suggest(&SuggestValues);
    set.Word("VALUE", options->value, WordKind::kText, "The value");
    set.Choice("-t,--type", "TYPE", options->type, {"string", "int", "dword", "bool", "float"},
               "string (default), int, dword, bool or float");
    set.Example("brenta registry set 'HKCU\\Software\\Demo' Step 25 --type int");
    set.Run([options] { return Run(*options, &Set, true); });
}

void DefineDelete(Command& command, const std::shared_ptr<RegistryOptions>& options) {
    Command remove = DefineAction(command, options, "delete", "Delete a value, or a key with all below it");
    const auto names = std::make_shared<std::vector<std::string>>();  // "" is a name, too
    remove.OptionalWords("NAME", *names, WordKind::kText, "The value; without it the key");
    remove.Suggest(&SuggestValues);
    remove.Example("brenta registry delete 'HKCU\\Software\\Demo' Step");
    remove.Run([options, names] {
        if (names->empty()) return Run(*options, &DeleteKey);
        int status = 0;
        for (const std::string& name : *names) {
            options->name = name;
            status = std::max(status, Run(*options, &DeleteValue));
        }
        return status;
    });
}

void Define(Command& command) {
    const auto options = std::make_shared<RegistryOptions>();
    command.Explain(
        "A path without a root belongs to the current user. Quote it, for the shell takes \\ for something "
        "else.");
    command.Example("brenta registry set 'HKCU\\Software\\Demo' Step 25 --type int");
    command.Example("brenta registry list 'HKCU\\Software\\Demo'");

    Command get = DefineAction(command, options, "get", "Print a value and its type");
    get.OptionalWord("NAME", options->name, WordKind::kText,
                     "The value's name; the default value without it");
    get.Suggest(&SuggestValues);
    get.Example("brenta registry get 'HKCU\\Software\\Demo' Step");
    get.Run([options] { return Run(*options, &Get); });
    DefineSet(command, options);
    DefineDelete(command, options);
    Command list =
        DefineAction(command, options, "list", "Print the names of sub-keys, and names, types and values");
    list.Run([options] { return Run(*options, &List); });
}

const CommandEntry entry("registry", CommandGroup::kData, "Read and write the registry", &Define);

}  // namespace
}  // namespace brenta::host
