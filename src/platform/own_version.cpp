#include "platform/own_version.h"

#include "brenta/system.h"

namespace brenta {

namespace {

CoreVersion Own() {
    CoreVersion version;
    GetModuleVersion(version);
    return version;
}

}  // namespace

CoreString OwnVersion() {
    return GetVersionString(Own());
}

bool IsNewerThanOwn(const char* version) {
    CoreVersion offered;
    return GetVersionFromString(version, offered) && CompareVersions(offered, Own()) > 0;
}

}  // namespace brenta
