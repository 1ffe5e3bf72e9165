// Collects the times of all rounds and prints one row per workload: the medians and their ratio.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

#include "workload.h"

namespace brenta::bench {

class TableReporter : public benchmark::BenchmarkReporter {
 public:
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;

    /// `differences` holds the workloads whose results differ: they get a row that says so, and no times.
    void PrintTable(const std::vector<Workload>& workloads,
                    const std::map<std::string, std::string>& differences, bool csv) const;

 private:
    double MedianOf(const std::string& name) const;

    std::map<std::string, std::vector<double>> m_times;  // nanoseconds of each round, by benchmark
};

std::string BenchmarkName(const Workload& workload, bool ours);

}  // namespace brenta::bench
