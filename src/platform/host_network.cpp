// The services of the network: the host's, or else the platform's.
#include <string>

#include "platform/host_services.h"
#include "platform/network_backend.h"

namespace brenta {

bool HostResolve(const char* host, CoreString& address) {
    // Some systems take the empty name for their own.
    if (!host || *host == 0) return false;
    const HostServices services = GetHostServices();
    if (services.resolveHost) {
        CoreString found;
        if (!services.resolveHost(services.context, host, found) || found.IsEmpty()) return false;
        address = found;
        return true;
    }
    std::string found;
    if (!PlatformResolve(host, found)) return false;
    address = CoreString(std::string_view(found));
    return true;
}

bool HostInternetSettings(InternetSettings& settings) {
    const HostServices services = GetHostServices();
    if (!services.internetSettings) return PlatformInternetSettings(settings);
    InternetSettings known;
    if (!services.internetSettings(services.context, known)) return false;
    if (known.source.IsEmpty()) known.source = "host";
    settings = known;
    return true;
}

bool HostIsOnline() {
    const HostServices services = GetHostServices();
    return services.isOnline ? services.isOnline(services.context) : PlatformIsOnline();
}

}  // namespace brenta
