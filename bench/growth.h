// Rows that compare a workload with ten of a tenth of it: a ratio of 1 is growth in proportion, 10 is
// quadratic.
#pragma once

#include <string>

#include "workload.h"

namespace brenta::bench {

/// `prepare(size)` makes the work, a function without arguments. Work of `10 * size` is measured beside ten
/// times that of `size`.
template <class Prepare>
void AddGrowth(const std::string& family, const std::string& name, int size, Prepare prepare) {
    const auto large = [=] {
        return [work = prepare(10 * size)] {
            work();
            return 0;
        };
    };
    const auto small = [=] {
        return [work = prepare(size)] {
            for (int i = 0; i < 10; ++i)
                work();
            return 0;
        };
    };
    Workloads().push_back({family, name, "ten of a tenth", 1.1, Prepared(large), Prepared(small)});
}

}  // namespace brenta::bench
