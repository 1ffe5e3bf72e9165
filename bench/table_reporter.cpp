#include "table_reporter.h"

#include <algorithm>
#include <cstdio>

namespace brenta::bench {
namespace {

void PrintRow(const Workload& workload, double ours, double theirs, bool csv) {
    const std::string label = workload.family + "/" + workload.name;
    const double ratio = ours / theirs;
    if (csv) {
        std::printf("%s,%s,%.0f,%.0f,%.3f,%.2f\n", label.c_str(), workload.peer.c_str(), ours, theirs, ratio,
                    workload.limit);
        return;
    }
    std::printf("%-34s %-16s %10.3f %10.3f %7.2f %6.2f  %s\n", label.c_str(), workload.peer.c_str(),
                ours / 1e6, theirs / 1e6, ratio, workload.limit, ratio <= workload.limit ? "" : "over");
}

}  // namespace

std::string BenchmarkName(const Workload& workload, bool ours) {
    return workload.family + "/" + workload.name + "/" + (ours ? "brenta" : workload.peer);
}

bool TableReporter::ReportContext(const Context&) {
    return true;
}

void TableReporter::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
            m_times[run.run_name.function_name].push_back(run.real_accumulated_time * 1e9 /
                                                          static_cast<double>(run.iterations));
        }
    }
}

double TableReporter::MedianOf(const std::string& name) const {
    const auto found = m_times.find(name);
    if (found == m_times.end() || found->second.empty()) return 0;
    std::vector<double> times = found->second;
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
            std::fprintf(csv ? stderr : stdout, "%s/%s: results differ: %s\n", workload.family.c_str(),
                         workload.name.c_str(), difference->second.c_str());
            continue;
        }
        PrintRow(workload, MedianOf(BenchmarkName(workload, true)), MedianOf(BenchmarkName(workload, false)),
                 csv);
    }
}

}  // namespace brenta::bench
