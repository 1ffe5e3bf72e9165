#include "peak_memory.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace brenta::bench {
namespace {

/// A line of the kernel's report on this process, in bytes.
long StatusLine(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(name + ":")) return std::atol(line.c_str() + name.size() + 1) * 1024;
    return 0;
}

}  // namespace

double PeakOfProcess(const Workload& workload, bool ours) {
    const std::string command = std::string("exec /proc/$PPID/exe --peak-of ") + (ours ? "ours" : "theirs") +
                                " '" + workload.Label() + "'";
    std::FILE* const output = popen(command.c_str(), "r");
    if (output == nullptr) return 0;
    long peak = 0;
    if (std::fscanf(output, "%ld", &peak) != 1) peak = 0;
    return pclose(output) == 0 ? static_cast<double>(peak) : 0;
}

int PrintPeak(const Workload& workload, bool ours) {
    const std::unique_ptr<Contender> contender = (ours ? workload.ours : workload.theirs)();
    const long before = StatusLine("VmRSS");
    contender->Run();
    std::printf("%ld\n", StatusLine("VmHWM") - before);
    return 0;
}

}  // namespace brenta::bench
