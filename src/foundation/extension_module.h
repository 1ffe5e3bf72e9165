// The library's own record in the chain of modules.
#pragma once

#include "brenta/framework.h"

namespace brenta {

extern CExtensionModule g_extensionModule;

}  // namespace brenta
