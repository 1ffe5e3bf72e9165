#include "workload.h"

namespace brenta::bench {

std::vector<Workload>& Workloads() {
    static std::vector<Workload> workloads;
    return workloads;
}

std::string CompareResults(const Workload& workload) {
    const std::string ours = workload.ours()->Check();
    const std::string theirs = workload.theirs()->Check();
    return ours == theirs ? "" : "ours '" + ours + "', " + workload.peer + " '" + theirs + "'";
}

}  // namespace brenta::bench
