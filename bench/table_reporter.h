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
    /// Nanoseconds of one round, by both clocks.
    struct Round {
        double processor;
        double wall;
    };

    double MedianOf(const Workload& workload, bool ours) const;

    std::map<std::string, std::vector<Round>> m_rounds;  // by benchmark
};

std::string BenchmarkName(const Workload& workload, bool ours);

}  // namespace brenta::bench
