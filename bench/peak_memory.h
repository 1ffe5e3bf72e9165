// The most memory that one side of a workload takes, in a process that does nothing else.
#pragma once

#include <string>

#include "workload.h"

namespace brenta::bench {

/// Runs this program again for one side and returns the bytes that its Run added at most; 0 if that failed.
double PeakOfProcess(const Workload& workload, bool ours);

/// What that process does: runs the side and prints the number. Returns its exit code.
int PrintPeak(const Workload& workload, bool ours);

}  // namespace brenta::bench
