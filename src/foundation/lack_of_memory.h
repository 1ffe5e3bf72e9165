// How a boundary of the library answers a lack of memory: no exception leaves it.
#pragma once

#include <new>

namespace brenta {

/// What `work` returns, or `otherwise` if memory runs out on the way.
template <class Result, class Work>
Result OrWithoutMemory(Result otherwise, Work work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return otherwise;
    }
}

}  // namespace brenta
