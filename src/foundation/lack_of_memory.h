// How a boundary of the library answers a lack of memory: no exception leaves it.
#pragma once

#include <new>

#include "brenta/containers.h"

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

/// Adds to a list where a value less would make a wrong result: throws std::bad_alloc instead.
template <class T>
void AddOrThrow(TOrderedList<T>& list, const T& value) {
    const T* const last = list.GetTail();
    list.Add(value);
    if (list.GetTail() == last) throw std::bad_alloc();
}

}  // namespace brenta
