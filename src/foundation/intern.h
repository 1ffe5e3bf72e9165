// The library's own short way into the global string table.
#pragma once

#include <string_view>

#include "brenta/names.h"

namespace brenta {

/// Interns a text that need not be terminated; a NUL in it ends it early. Saves what the exported forms spend
/// on finding the text's end.
STRID InternName(std::string_view text);

}  // namespace brenta
