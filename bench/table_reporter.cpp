#include "table_reporter.h"

#include <algorithm>
#include <cstdio>

namespace brenta::bench {
namespace {

/// A label as a field of a line that is split at its commas.
std::string WithoutCommas(std::string label) {
    std::erase(label, ',');
    return label;
}

void PrintRow(const Workload& workload, double ours, double theirs, bool csv) {
    const std::string label = workload.Label();
    const double ratio = ours / theirs;
    if (csv) {
        std::printf("%s,%s,%.0f,%.0f,%.3f,%.2f\n", WithoutCommas(label).c_str(), workload.peer.c_str(), ours,
                    theirs, ratio, workload.limit);
        return;
    }
    std::printf("%-34s %-16s %10.3f %10.3f %7.2f %6.2f  %s\n", label.c_str(), workload.peer.c_str(),
                ours / 1e6, theirs / 1e6, ratio, workload.limit, ratio <= workload.limit ? "" : "over");
}

}  // namespace

std::string BenchmarkName(const Workload& workload, bool ours) {
    return workload.Label() + "/" + (ours ? "brenta" : workload.peer);
}

bool TableReporter::ReportContext(const Context&) {
    return true;
}

void TableReporter::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
            const double scale = 1e9 / static_cast<double>(run.iterations);
            m_rounds[run.run_name.function_name].push_back(
                {run.cpu_accumulated_time * scale, run.real_accumulated_time * scale});
        }
    }
}

double TableReporter::MedianOf(const Workload& workload, bool ours) const {
    const auto found = m_rounds.find(BenchmarkName(workload, ours));
    if (found == m_rounds.end() || found->second.empty()) return 0;
    std::vector<double> times;
    for (const Round& round : found->second)
        times.push_back(workload.clock == Clock::Processor ? round.processor : round.wall);
    std::sort(times.begin(), times.end());
    const std::size_t middle = times.size() / 2;
    return times.size() % 2 == 1 ? times[middle] : (times[middle - 1] + times[middle]) / 2;
}

void TableReporter::PrintTable(const std::vector<Workload>& workloads,
                               const std::map<std::string, std::string>& differences, bool csv) const {
    if (csv) {
        std::printf("workload,peer,ours_ns,peer_ns,ratio,limit\n");
    } else {
        std::printf("%-34s %-16s %10s %10s %7s %6s\n", "workload", "peer", "ours ms", "peer ms", "ratio",
                    "limit");
    }
    for (const Workload& workload : workloads) {
        const auto difference = differences.find(BenchmarkName(workload, true));
        if (difference != differences.end()) {
            std::fprintf(csv ? stderr : stdout, "%s: results differ: %s\n", workload.Label().c_str(),
                         difference->second.c_str());
            continue;
        }
        PrintRow(workload, MedianOf(workload, true), MedianOf(workload, false), csv);
    }
}

}  // namespace brenta::bench
