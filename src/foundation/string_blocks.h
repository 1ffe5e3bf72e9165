// The memory of CoreString's texts: blocks of the process's general allocator.
#pragma once

#include <cstddef>

namespace brenta {

/// The size to ask for when `bytes` are needed (1..INT_MAX): what the general allocators of all platforms set
/// aside for such a request anyway.
int BlockSize(std::size_t bytes);

/// A block of uninitialised bytes, or null. Any thread.
char* AcquireBlock(int size) noexcept;

/// The block with a new size, its content kept up to the smaller one, moved if need be; null, and the block
/// as it was, if there is no memory. Any thread.
char* ResizeBlock(char* pBlock, int oldSize, int newSize) noexcept;

/// Gives a block back. Any thread.
void FreeBlock(char* pBlock, int size) noexcept;

}  // namespace brenta
