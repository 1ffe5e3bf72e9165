/// @file
/// Part of the platform seam (os.h): the clock and what the system tells of itself.
#pragma once

#include <cstdint>
#include <string>

namespace brenta::os {

/// Seconds since 1970, UTC.
long long CurrentTime();

}  // namespace brenta::os
