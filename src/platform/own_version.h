// The version of the library's own module.
#pragma once

#include "brenta/string.h"

namespace brenta {

/// As text: "4.0.0.0".
CoreString OwnVersion();

/// Whether a version text (numbers with points between them) stands for a newer one.
bool IsNewerThanOwn(const char* version);

}  // namespace brenta
