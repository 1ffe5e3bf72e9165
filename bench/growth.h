// Rows that compare a workload with ten of a tenth of it: a ratio of 1 is growth in proportion, 10 is
// quadratic.
#pragma once

#include <string>
#include <type_traits>
#include <vector>

#include "workload.h"

namespace brenta::bench {

template <class Work>
void KeepAll(const std::vector<Work>& works) {
    if constexpr (std::is_void_v<std::invoke_result_t<const Work&>>) {
        for (const Work& work : works)
            work();
    } else {
        std::vector<std::invoke_result_t<const Work&>> results;
        for (const Work& work : works)
            results.push_back(work());
    }
}

/// `prepare(size, part)` makes the work, a function without arguments. Work of `10 * size` is measured beside
/// ten works of `size`, the parts 0 to 9: what all of them work on is as much as for the large one. So are
/// their results, if they return any, which are all kept until the last is there: with both sides in the same
/// amount of memory, what differs is not the work of the processor's caches.
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
            KeepAll(works);
            return 0;
        };
    };
    Workloads().push_back({family, name, "ten of a tenth", 1.1, Prepared(large), Prepared(small)});
}

}  // namespace brenta::bench
