// Any bytes as the path of a registry key and, behind a line break, as the name of a value: both are refused
// or found again, in another spelling too, until they are deleted.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "brenta/host.h"
#include "brenta/registry.h"
#include "os/data_files.h"
#include "platform/own_registry.h"
#include "platform/registry_path.h"

namespace {

using brenta::CCoreRegistry;

constexpr std::size_t kMaxInput = 2048;

void Check(bool holds) {
    if (!holds) std::abort();
}

/// A folder for the registry, which goes with the process.
struct Folder {
    Folder() {
        brenta::HostServices services;
        services.context = this;
        services.applicationDataFolder = [](void* self, brenta::CoreString& folder) {
            folder = static_cast<Folder*>(self)->path.c_str();
            return true;
        };
        brenta::SetHostServices(services);
    }
    ~Folder() {
        brenta::SetHostServices({});
        std::filesystem::remove_all(path);
    }
    const std::string path =
        (std::filesystem::temp_directory_path() / ("brenta_fuzz_" + std::to_string(brenta::os::ProcessId())))
            .string();
    const brenta::test::OwnRegistry registry{path, true};
};

/// The same key in upper case, with every separator doubled.
std::string OtherSpelling(const std::string& path) {
    std::string other;
    for (const char c : path) {
        other += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        if (c == '\\') other += c;
    }
    return other;
}

void CheckNames(const brenta::RegistryPath& path) {
    std::string joined;
    for (const std::string_view name : path.Names()) {
        Check(!name.empty() && name.size() <= 255 && name.find('\\') == std::string_view::npos);
        joined.append(name).append("\\");
    }
    Check(path.Names().size() <= 512);
    Check(brenta::RegistryPath(joined.c_str()).Names() == path.Names());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Folder folder;
    if (size > kMaxInput) return 0;
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::size_t end = std::min(input.find('\n'), input.size());
    const std::string path = input.substr(0, end).c_str();
    const std::string name = input.substr(std::min(end + 1, input.size())).c_str();
    const brenta::RegistryPath parts(path.c_str());
    CheckNames(parts);

    // Deep keys are slow to make, and no different.
    if (parts.Names().size() > 8) return 0;
    CCoreRegistry key(brenta::HKEY_CURRENT_USER);
    const bool isGood = parts.Error() == brenta::RegistryError::None;
    Check(key.SetKey(path.c_str(), true) == isGood);
    if (!isGood || parts.IsEmpty()) return 0;
    const std::string other = OtherSpelling(path);
    Check(key.KeyExists(other.c_str()) && key.WriteString(name.c_str(), path.c_str()));
    CCoreRegistry again(brenta::HKEY_CURRENT_USER);
    Check(again.SetKey(other.c_str(), false));
    Check(again.GetDataSize(OtherSpelling(name).c_str()) == static_cast<int>(path.size()) + 1 ||
          name.find('\\') != std::string::npos);
    Check(again.DeleteKey(std::string(parts.Names().front()).c_str()));
    Check(!key.KeyExists(path.c_str()) && key.GetSubKeyCount() == -1);
    key.ClearKey();
    Check(key.GetSubKeyCount() == 0);
    return 0;
}
