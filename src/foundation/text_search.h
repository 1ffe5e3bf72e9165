// Searches in plain bytes, shared by CoreString and the readers.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace brenta {

/// The position of the first occurrence of `text` in `where` at or after `start`, or npos. The empty text is
/// found at start.
std::size_t FindText(std::string_view where, std::string_view text, std::size_t start);

/// The same without regard to the case of the letters A to Z.
std::size_t FindTextIgnoringCase(std::string_view where, std::string_view text, std::size_t start);

/// The place, in memory, of the first byte of a word that is not zero; 8 for zero.
inline std::size_t FirstByteSet(std::uint64_t word) {
    const int bits =
        std::endian::native == std::endian::little ? std::countr_zero(word) : std::countl_zero(word);
    return static_cast<std::size_t>(bits) / 8;
}

}  // namespace brenta
