#include <filesystem>
#include <fstream>
#include <sstream>

#include "agreement.h"
#include "brenta/files.h"
#include "brenta/host.h"
#include "brenta/registry.h"
#include "brenta/settings.h"
#include "chooser.h"
#include "test_support.h"

namespace brenta::test {

namespace {

constexpr const char* kSections[] = {"Grid", "Colours", "grid", "A b", "S"};
constexpr const char* kKeys[] = {"Step", "step", "Layer 1", "k", "Path", "x.y"};
constexpr const char* kValues[] = {"1",       "-25",    "text",  "two words", "C:\\Parts\\a.lbr", "a=b",
                                   "v1 ; no", "0x1F",   "12abc", "'quoted'",  "\"in quotes\"",    "",
                                   "#3366FF", "[in it]"};

/// Lines as people write them.
std::string IniFile(Chooser& choose) {
    static constexpr const char* kOdd[] = {"; note", "#k=1", "", "lonely", "[open", "\t"};
    const char* const end = choose.Chance(40) ? "\r\n" : "\n";
    std::string text;
    for (int lines = choose.Below(12); lines > 0; --lines) {
        if (choose.Chance(25)) {
            text += "[" + std::string(choose.OneOf(kSections)) + "]";
        } else if (choose.Chance(20)) {
            text += choose.OneOf(kOdd);
        } else {
            const char* const blank = choose.Chance(20) ? " " : "";
            text += std::string(choose.OneOf(kKeys)) + blank + "=" + blank + choose.OneOf(kValues);
        }
        if (lines > 1 || choose.Chance(80)) text += end;
    }
    return text;
}

template <class... Parts>
std::string Line(const Parts&... parts) {
    std::ostringstream line;
    ((line << parts << '|'), ...);
    return line.str() + '\n';
}

std::string Listed(const TOrderedList<CoreString>& names) {
    std::string text = "{";
    for (const CoreString& name : names)
        text += std::string(name()) + "|";
    return text + "}";
}

/// One reading, writing or listing, and what came of it.
std::string SettingStep(Chooser& choose) {
    const char* const section = choose.OneOf(kSections);
    const char* const key = choose.OneOf(kKeys);
    const char* const value = choose.OneOf(kValues);
    const std::string place = std::string(section) + "/" + key;
    const int kind = choose.Below(5);
    int number = choose.Below(2000) - 1000;
    if (kind == 0) return Line("set", place, value, SetAppValue(section, key, value));
    if (kind == 1) return Line("set", place, number, SetAppValue(section, key, number));
    if (kind == 2) return Line("number", place, GetAppValue(section, key, number), number);
    TOrderedList<CoreString> names;
    const bool isListed = kind == 3 && GetAppNames(choose.Chance(30) ? nullptr : section, names);
    if (kind == 3) return Line("names", place, isListed, Listed(names));
    CoreString text;
    const bool isFound = GetAppValue(section, key, text);
    return Line("text", place, isFound, text());
}

}  // namespace

std::string TellOfSettings() {
    constexpr int kFiles = 200;
    const Scratch scratch;
    std::string folder = scratch / "";
    HostServices services;
    services.context = &folder;
    services.executablePath = [](void*, CoreString& path) { return !(path = "tool.exe").IsEmpty(); };
    services.applicationDataFolder = [](void* self, CoreString& path) {
        return !(path = static_cast<std::string*>(self)->c_str()).IsEmpty();
    };
    SetHostServices(services);
    std::string story;
    Chooser choose(2);
    for (int i = 0; i < kFiles; ++i) {
        const std::string content = IniFile(choose);
        folder = scratch / std::to_string(i).c_str();
        const std::string name = CoreNativePath(GetAppDataFileName(nullptr, "tool", "ini"))();
        std::filesystem::create_directories(std::filesystem::path(name).parent_path());
        std::ofstream(name, std::ios::binary) << content;
        story += "-- " + std::to_string(i) + '\n' + content + '\n';
        for (int steps = 0; steps < 20; ++steps)
            story += SettingStep(choose);
    }
    SetHostServices({});
    return story;
}

namespace {

constexpr const char* kRegistryRoot = "Software\\Orvane Works\\Agreement";
constexpr const char* kPaths[] = {"",  "A",      "A\\B", "a\\b\\C", "D e", "A\\B\\",
                                  "Z", "A\\\\B", "\\A",  "D e\\F",  "G.h", "A\\B\\C\\D"};
constexpr const char* kNames[] = {"", "Width", "WIDTH", "Colour", "with space", "a\\b"};

std::string KeyPath(Chooser& choose) {
    const std::string path = choose.OneOf(kPaths);
    return path.empty() ? kRegistryRoot : std::string(kRegistryRoot) + "\\" + path;
}

std::string ReadAll(CCoreRegistry& key, const char* name) {
    return Line("read", name, key.GetDataType(name), key.GetDataSize(name), key.ReadBool(name, true),
                key.ReadInt(name, -7), key.ReadDword(name, 7), key.ReadFloat(name, 0.5),
                key.ReadString(name, "none")());
}

std::string WriteOne(Chooser& choose, CCoreRegistry& key, const char* name) {
    const int kind = choose.Below(5);
    if (kind == 0) return Line("bool", name, key.WriteBool(name, choose.Chance(50)));
    if (kind == 1) return Line("int", name, key.WriteInt(name, choose.Below(100000) - 50000));
    if (kind == 2) return Line("dword", name, key.WriteDword(name, 0x80000000u));
    if (kind == 3) return Line("float", name, key.WriteFloat(name, choose.Below(1000) / 8.0));
    return Line("text", name, key.WriteString(name, choose.OneOf(kValues)));
}

std::string ListAll(CCoreRegistry& key) {
    TOrderedList<CoreString> values, keys;
    const bool isGood = key.GetValueNames(values) && key.GetSubKeyNames(keys);
    return Line("list", isGood, Listed(values), Listed(keys), key.GetValueCount(), key.GetSubKeyCount());
}

std::string RegistryStep(Chooser& choose, CCoreRegistry& key) {
    const std::string path = KeyPath(choose);
    const char* const name = choose.OneOf(kNames);
    const int kind = choose.Below(10);
    if (kind == 0) return Line("set key", path, key.SetKey(path.c_str(), true));
    if (kind == 1) return Line("open key", path, key.SetKey(path.c_str(), false));
    if (kind == 2) return Line("exists", path, key.KeyExists(path.c_str()));
    if (kind == 3) return Line("delete key", path, key.DeleteKey(path.c_str()));
    if (kind == 4) return Line("delete value", name, key.DeleteValue(name));
    if (kind == 5) return ReadAll(key, name);
    if (kind == 6) return ListAll(key);
    if (kind == 7) return choose.Chance(50) ? Line("save", key.SaveKey()) : Line("restore", key.RestoreKey());
    return WriteOne(choose, key, name);
}

}  // namespace

std::string TellOfRegistry() {
    constexpr int kSequences = 200;
    std::string story;
    Chooser choose(3);
    for (int i = 0; i < kSequences; ++i) {
        story += "-- " + std::to_string(i) + '\n';
        CCoreRegistry key(HKEY_CURRENT_USER);
        key.DeleteKey(kRegistryRoot);
        key.SetKey(kRegistryRoot, true);
        for (int steps = 0; steps < 30; ++steps)
            story += RegistryStep(choose, key) + Line(key.GetLastErrorCode(), key.GetKeyPath()());
    }
    CCoreRegistry(HKEY_CURRENT_USER).DeleteKey(kRegistryRoot);
    return story;
}

}  // namespace brenta::test
