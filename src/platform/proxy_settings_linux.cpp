#include <string>

#include "os/os.h"
#include "platform/child.h"
#include "platform/network_backend.h"
#include "platform/proxy_settings.h"

namespace brenta {

bool PlatformInternetSettings(InternetSettings& settings) {
    if (SettingsFromEnvironment(&os::GetEnvironment, settings)) return true;
    // The desktop's own program knows where its settings are kept.
    constexpr const char* kListSettings[] = {"gsettings", "list-recursively", "org.gnome.system.proxy",
                                             nullptr};
    ChildLimits limits;
    limits.seconds = 3;
    const ChildResult listing = RunProgram(kListSettings, limits);
    if (listing.error == 0 && listing.status == 0 && SettingsFromDesktop(listing.output, settings))
        return true;
    settings = InternetSettings();
    settings.source = "none";
    return true;
}

}  // namespace brenta
