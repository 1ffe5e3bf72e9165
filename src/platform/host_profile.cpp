// The host application's own settings: the host keeps them, or else the registry does.
#include <new>
#include <string>

#include "brenta/registry.h"
#include "platform/host_services.h"
#include "platform/registry_path.h"
#include "platform/registry_store.h"

namespace brenta {

namespace {

using registry_store::Place;
using registry_store::Root;

constexpr const char* kSettingsKey = "Software\\Orvane Works\\Brenta V4\\Settings\\";

/// Calls action(place) for the key of a section; a name that is missing leaves nothing to do.
template <class Action>
bool AtSection(const char* section, const char* key, const Action& action) try {
    if (!section || *section == 0 || !key || *key == 0) return false;
    const std::string name = std::string(kSettingsKey) + section;
    const RegistryPath path(name.c_str());
    return path.Error() == RegistryError::None && action(Place{Root::CurrentUser, path});
} catch (const std::bad_alloc&) {
    return false;
}

bool ReadSetting(const char* section, const char* key, CoreString& value) {
    return AtSection(section, key, [&](const Place& place) {
        registry_store::Value found;
        const RegistryError error = registry_store::ReadValue(place, key, UINT64_MAX, found);
        if (error == RegistryError::None && found.type == REG_SZ) value = found.data.c_str();
        return error == RegistryError::None || error == RegistryError::NotFound;
    });
}

bool RemoveSetting(const char* section, const char* key) {
    return AtSection(section, key, [&](const Place& place) {
        const RegistryError error = registry_store::DeleteValue(place, key);
        return error == RegistryError::None || error == RegistryError::NotFound;
    });
}

bool WriteSetting(const char* section, const char* key, const char* value) {
    return AtSection(section, key, [&](const Place& place) {
        const std::string text(value);
        return registry_store::CreateKey(place) == RegistryError::None &&
               registry_store::WriteValue(place, key, REG_SZ, {text.c_str(), text.size() + 1}) ==
                   RegistryError::None;
    });
}

}  // namespace

bool HostReadProfile(const char* section, const char* key, CoreString& value) {
    const HostServices services = GetHostServices();
    value.SetEmpty();
    if (!services.readProfile) return ReadSetting(section, key, value);
    const bool read = services.readProfile(services.context, section, key, value);
    if (!read) value.SetEmpty();
    return read;
}

bool HostWriteProfile(const char* section, const char* key, const char* value) {
    const HostServices services = GetHostServices();
    if (services.writeProfile) return services.writeProfile(services.context, section, key, value);
    return value ? WriteSetting(section, key, value) : RemoveSetting(section, key);
}

}  // namespace brenta
