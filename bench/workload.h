// A workload: the same work done by this library and by a peer, with a result that must be equal.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace brenta::bench {

/// One side of a workload. Made before the clock runs; Run is what is measured, and returns its result as
/// text.
class Contender {
 public:
    virtual ~Contender() = default;
    virtual std::string Run() = 0;
};

struct Workload {
    std::string family;  ///< what './dev bench FAMILY' selects
    std::string name;
    std::string peer;
    double limit;  ///< the ratio ours / peer that is aimed at
    std::function<std::unique_ptr<Contender>()> ours;
    std::function<std::unique_ptr<Contender>()> theirs;
};

/// All workloads of the program, in the order added.
std::vector<Workload>& Workloads();

/// Runs both sides once; "" when their results agree, else what differs.
std::string CompareResults(const Workload& workload);

}  // namespace brenta::bench
