// Rows that compare a workload with ten of a tenth of it: a ratio of 1 is growth in proportion, 10 is
// quadratic.
#pragma once

#include <string>
#include <vector>

#include "workload.h"

namespace brenta::bench {

/// `prepare(size, part)` makes the work, a function without arguments. Work of `10 * size` is measured beside
/// ten works of `size`, the parts 0 to 9: what all of them work on is as much as for the large one.
template <class Prepare>
void AddGrowth(const std::string& family, const std::string& name, int size, Prepare prepare) {
    const auto large = [=] {
        return [work = prepare(10 * size, 0)] {
            work();
            return 0;
        };
    };
    const auto small = [=] {
        std::vector<decltype(prepare(size, 0))> works;
        for (int part = 0; part < 10; ++part)
            works.push_back(prepare(size, part));
        return [works] {
            for (const auto& work : works)
                work();
            return 0;
        };
    };
    Workloads().push_back({family, name, "ten of a tenth", 1.1, Prepared(large), Prepared(small)});
}

}  // namespace brenta::bench
