#include <string>
#include <string_view>

#include "brenta/files.h"
#include "brenta/host.h"
#include "brenta/settings.h"
#include "os/os.h"
#include "platform/application_places.h"

namespace brenta {

namespace {

constexpr std::string_view kSeparators = "\\/";

/// The answer of a host's service, or of the platform where the host left the service to the library; "" if
/// unknown.
using PlaceService = bool (*)(void* context, CoreString& place);

CoreString AskFor(PlaceService service, void* context, std::string (*platformDefault)()) {
    if (!service) return CoreString(std::string_view(platformDefault()));
    CoreString place;
    return service(context, place) ? place : CoreString();
}

CoreString ExecutablePath() {
    const HostServices services = GetHostServices();
    return AskFor(services.executablePath, services.context, &os::ExecutablePath);
}

}  // namespace

CoreString GetAppName(bool fullPath, bool keepExtension) {
    const CoreString path = ExecutablePath();
    const std::string_view whole = path.View();
    const std::size_t separator = whole.find_last_of(kSeparators);
    const std::size_t nameStart = separator == std::string_view::npos ? 0 : separator + 1;
    const std::size_t dot = whole.rfind('.');
    // An extension stands behind the name's first byte: ".tool" is a name and "app-1.2" a folder's.
    const bool hasExtension = dot != std::string_view::npos && dot > nameStart;
    const std::string_view kept = keepExtension || !hasExtension ? whole : whole.substr(0, dot);
    return CoreString(fullPath ? kept : kept.substr(nameStart));
}

CoreString GetAppPath() {
    const CoreString path = ExecutablePath();
    const std::string_view whole = path.View();
    const std::size_t separator = whole.find_last_of(kSeparators);
    if (separator == std::string_view::npos) return CoreString();
    // The separator of a root ("/", "C:\") belongs to the folder's name.
    const bool isRoot = separator == 0 || whole[separator - 1] == ':';
    return CoreString(whole.substr(0, separator + (isRoot ? 1 : 0)));
}

CoreString ApplicationDataRoot() {
    const HostServices services = GetHostServices();
    return AskFor(services.applicationDataFolder, services.context, &os::ApplicationDataFolder);
}

CoreString GetAppDataFolder() {
    const CoreString folder = ApplicationDataRoot();
    return folder.IsEmpty() ? CoreString() : AppendPaths(folder, GetAppName(false, false));
}

CoreString GetAppDataFileName(const char* subFolder, const char* name, const char* extension) {
    return BuildFilename(AppendPaths(GetAppDataFolder(), subFolder), nullptr, name, extension);
}

}  // namespace brenta
