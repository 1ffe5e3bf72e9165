// Memory of the bodies behind counted values; see script/value.h.
#pragma once

#include <cstddef>

#include "script/value.h"

namespace brenta {

/// A block of the general allocator, given back with std::free. Throws std::bad_alloc.
void* AcquireBody(std::size_t size);
/// The block in a new size, its content kept and perhaps moved. Throws std::bad_alloc, and the block is as it
/// was.
void* ResizeBody(void* block, std::size_t size);
/// The room for `needed` elements that keeps repeated appending linear.
std::size_t GrownCapacity(std::size_t capacity, std::size_t needed);

/// Shapes; null passes through both.
Shape* RetainShape(Shape* shape);
void ReleaseShape(Shape* shape);

}  // namespace brenta
