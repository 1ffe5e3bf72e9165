// The folder that GetAppDataFolder and the registry stand on.
#pragma once

#include "brenta/string.h"

namespace brenta {

/// The platform's folder for application data, or the one that the host names; "" if it is unknown.
CoreString ApplicationDataRoot();

}  // namespace brenta
