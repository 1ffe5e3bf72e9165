// brenta_bench [--csv] [--rounds N] [FAMILY[/NAME]]: measures this library beside its peers; of a family, the
// workloads whose names begin with NAME.
// brenta_bench --peak-of ours|theirs FAMILY/NAME: what such a process prints whose memory is measured.
//
// Both sides of a workload must first give the same result. Then every side runs N rounds (9 unless told
// otherwise), the rounds of all sides in random order, so that a slow moment of the machine does not fall on
// one side alone.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "families.h"
#include "peak_memory.h"
#include "table_reporter.h"
#include "workload.h"

namespace brenta::bench {
namespace {

struct Options {
    bool csv = false;
    int rounds = 9;
    std::string peakOf;
    std::string wanted;
};

Options ReadOptions(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--csv") {
            options.csv = true;
        } else if (word == "--rounds" && i + 1 < argc) {
            options.rounds = std::max(1, std::atoi(argv[++i]));
        } else if (word == "--peak-of" && i + 1 < argc) {
            options.peakOf = argv[++i];
        } else {
            options.wanted = word;
        }
    }
    return options;
}

/// A process of its own takes the same memory each time.
void RegisterPeak(const Workload& workload, bool ours) {
    benchmark::RegisterBenchmark(BenchmarkName(workload, ours).c_str(),
                                 [workload, ours](benchmark::State& state) {
                                     for (auto _ : state)
                                         state.SetIterationTime(PeakOfProcess(workload, ours) * 1e-9);
                                 })
        ->Iterations(1)
        ->UseManualTime();
}

void RegisterSide(const Workload& workload, bool ours, int rounds) {
    if (workload.clock == Clock::Memory) return RegisterPeak(workload, ours);
    const auto make = ours ? workload.ours : workload.theirs;
    benchmark::RegisterBenchmark(BenchmarkName(workload, ours).c_str(),
                                 [make](benchmark::State& state) {
                                     const std::unique_ptr<Contender> contender = make();
                                     for (auto _ : state)
                                         benchmark::DoNotOptimize(contender->Run());
                                 })
        ->Iterations(1)
        ->Repetitions(rounds)
        ->MeasureProcessCPUTime();
}

void AddAllWorkloads() {
    AddScriptWorkloads();
    AddUnitWorkloads();
    AddNameWorkloads();
    AddHeapWorkloads();
    AddStringWorkloads();
    AddContainerWorkloads();
    AddGrowthWorkloads();
    AddThreadWorkloads();
    AddDocumentWorkloads();
    AddStreamWorkloads();
    AddDocumentGrowthWorkloads();
    AddArchiveWorkloads();
}

int PrintPeakOf(const Options& options) {
    for (const Workload& workload : Workloads())
        if (workload.Label() == options.wanted) return PrintPeak(workload, options.peakOf == "ours");
    return 2;
}

int Run(const Options& options) {
    std::vector<Workload> chosen;
    for (const Workload& workload : Workloads()) {
        const bool named = options.wanted.find('/') != std::string::npos;
        const std::string& wanted = options.wanted;
        if (wanted.empty() || (named ? workload.Label().starts_with(wanted) : workload.family == wanted))
            chosen.push_back(workload);
    }
    if (chosen.empty()) {
        std::fprintf(stderr, "There are no benchmarks named '%s'.\n", options.wanted.c_str());
        return 2;
    }
    std::map<std::string, std::string> differences;
    for (const Workload& workload : chosen) {
        const std::string difference = CompareResults(workload);
        if (!difference.empty()) {
            differences[BenchmarkName(workload, true)] = difference;
            continue;
        }
        RegisterSide(workload, true, options.rounds);
        RegisterSide(workload, false, options.rounds);
    }
    TableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.PrintTable(chosen, differences, options.csv);
    return differences.empty() ? 0 : 1;
}

}  // namespace
}  // namespace brenta::bench

int main(int argc, char** argv) {
    // A desktop application has threads. This library and its peers all take short cuts in a process that has
    // never had a second one; nothing measured here does.
    std::thread([] {}).join();
    const brenta::bench::Options options = brenta::bench::ReadOptions(argc, argv);
    std::string program = argv[0];
    std::string interleaved = "--benchmark_enable_random_interleaving=true";
    char* words[] = {program.data(), interleaved.data(), nullptr};
    int count = 2;
    benchmark::Initialize(&count, words);
    brenta::bench::AddAllWorkloads();
    return options.peakOf.empty() ? brenta::bench::Run(options) : brenta::bench::PrintPeakOf(options);
}
