// Linux: the clock and what the system tells of itself.
#include "os/system.h"

#include <time.h>

namespace brenta::os {

long long CurrentTime() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return now.tv_sec;
}

LocalDate LocalDateOf(long long secondsSince1970) {
    const time_t moment = secondsSince1970;
    tm local{};
    if (!localtime_r(&moment, &local)) return {};
    return {local.tm_sec, local.tm_min, local.tm_hour, local.tm_mday, local.tm_mon, local.tm_year + 1900};
}

}  // namespace brenta::os
