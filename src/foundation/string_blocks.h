// The memory of CoreString's texts: blocks of the process's general allocator.
#pragma once

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdlib>

namespace brenta {

/// The longest text that a block can hold; its size is an int, and a multiple of 8.
inline constexpr std::size_t kLongestText = INT_MAX - 8;

/// The size to ask for when `bytes` are needed: what the general allocators of all platforms set aside
/// for such a request anyway. They start blocks at multiples of 16, behind a header of 8 bytes, and have none
/// below
/// 24. `bytes` is 1 to kLongestText + 1.
inline int BlockSize(std::size_t bytes) {
    constexpr std::size_t kHeader = 8;
    constexpr std::size_t kStep = 16;
    const std::size_t whole = (bytes + kHeader + kStep - 1) / kStep * kStep;
    return static_cast<int>(std::clamp<std::size_t>(whole - kHeader, 3 * kHeader, kLongestText + 1));
}

/// The largest block that is taken and given back without a lock.
inline constexpr int kLargestSmallBlock = 32 * 1024;

char* AcquireLargeBlock(int size) noexcept;
char* ResizeLargeBlock(char* pBlock, int newSize) noexcept;
void FreeLargeBlock(char* pBlock) noexcept;

/// A block of uninitialised bytes, or null. Any thread.
inline char* AcquireBlock(int size) noexcept {
    if (size > kLargestSmallBlock) return AcquireLargeBlock(size);
    return static_cast<char*>(std::malloc(static_cast<std::size_t>(size)));
}

/// The block with a new size, its content kept up to the smaller one, moved if need be; null, and the block
/// as it was, if there is no memory. Any thread.
inline char* ResizeBlock(char* pBlock, int oldSize, int newSize) noexcept {
    if (std::max(oldSize, newSize) > kLargestSmallBlock) return ResizeLargeBlock(pBlock, newSize);
    return static_cast<char*>(std::realloc(pBlock, static_cast<std::size_t>(newSize)));
}

/// Gives a block back. Any thread.
inline void FreeBlock(char* pBlock, int size) noexcept {
    if (size > kLargestSmallBlock) return FreeLargeBlock(pBlock);
    std::free(pBlock);
}

}  // namespace brenta
