// Linux: the clock and what the system tells of itself.
#include "os/system.h"

#include <time.h>

namespace brenta::os {

long long CurrentTime() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return now.tv_sec;
}

}  // namespace brenta::os
