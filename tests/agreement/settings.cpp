#include <filesystem>
#include <fstream>

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
    const std::string place = std::string(section) + "/" + key;
    CoreString text;
    int number = 0;
    TOrderedList<CoreString> names;
    switch (choose.Below(5)) {
        case 0: {
            const char* const value = choose.OneOf(kValues);
            return "set " + place + " " + value + " " + std::to_string(SetAppValue(section, key, value)) +
                   '\n';
        }
        case 1: {
            const int value = choose.Below(2000) - 1000;
            return "set " + place + " " + std::to_string(value) + " " +
                   std::to_string(SetAppValue(section, key, value)) + '\n';
        }
        case 2: {
            const bool found = GetAppValue(section, key, number);
            return "number " + place + " " + std::to_string(found) + " " + std::to_string(number) + '\n';
        }
        case 3: {
            const bool found = GetAppNames(choose.Chance(30) ? nullptr : section, names);
            return "names " + place + " " + std::to_string(found) + " " + Listed(names) + '\n';
        }
        default: {
            const bool found = GetAppValue(section, key, text);
            return "text " + place + " " + std::to_string(found) + " <" + text() + ">\n";
        }
    }
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
    return "type " + std::to_string(key.GetDataType(name)) + " size " +
           std::to_string(key.GetDataSize(name)) + " bool " + std::to_string(key.ReadBool(name, true)) +
           " int " + std::to_string(key.ReadInt(name, -7)) + " dword " +
           std::to_string(key.ReadDword(name, 7)) + " float " + std::to_string(key.ReadFloat(name, 0.5)) +
           " text <" + key.ReadString(name, "none")() + ">";
}

std::string WriteOne(Chooser& choose, CCoreRegistry& key, const char* name) {
    switch (choose.Below(5)) {
        case 0:
            return "bool " + std::to_string(key.WriteBool(name, choose.Chance(50)));
        case 1:
            return "int " + std::to_string(key.WriteInt(name, choose.Below(100000) - 50000));
        case 2:
            return "dword " + std::to_string(key.WriteDword(name, 0x80000000u));
        case 3:
            return "float " + std::to_string(key.WriteFloat(name, choose.Below(1000) / 8.0));
        default:
            return "text " + std::to_string(key.WriteString(name, choose.OneOf(kValues)));
    }
}

std::string ListAll(CCoreRegistry& key) {
    TOrderedList<CoreString> values, keys;
    std::string text = std::to_string(key.GetValueNames(values));
    text += Listed(values) + " " + std::to_string(key.GetSubKeyNames(keys));
    text += Listed(keys) + " " + std::to_string(key.GetValueCount());
    return text + " " + std::to_string(key.GetSubKeyCount());
}

std::string RegistryStep(Chooser& choose, CCoreRegistry& key) {
    const std::string path = KeyPath(choose);
    const char* const name = choose.OneOf(kNames);
    std::string told;
    switch (choose.Below(10)) {
        case 0:
            told = "set key " + path + " " + std::to_string(key.SetKey(path.c_str(), true));
            break;
        case 1:
            told = "open key " + path + " " + std::to_string(key.SetKey(path.c_str(), false));
            break;
        case 2:
            told = "exists " + path + " " + std::to_string(key.KeyExists(path.c_str()));
            break;
        case 3:
            told = "delete key " + path + " " + std::to_string(key.DeleteKey(path.c_str()));
            break;
        case 4:
            told = "delete value " + std::string(name) + " " + std::to_string(key.DeleteValue(name));
            break;
        case 5:
            told = "read " + std::string(name) + " " + ReadAll(key, name);
            break;
        case 6:
            told = "list " + ListAll(key);
            break;
        case 7:
            told = choose.Chance(50) ? "save " + std::to_string(key.SaveKey())
                                     : "restore " + std::to_string(key.RestoreKey());
            break;
        default:
            told = "write " + std::string(name) + " " + WriteOne(choose, key, name);
            break;
    }
    return told + " error " + std::to_string(key.GetLastErrorCode()) + " at " + key.GetKeyPath()() + '\n';
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
            story += RegistryStep(choose, key);
    }
    CCoreRegistry(HKEY_CURRENT_USER).DeleteKey(kRegistryRoot);
    return story;
}

}  // namespace brenta::test
