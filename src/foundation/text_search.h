// Searches in plain bytes, shared by CoreString and the readers.
#pragma once

#include <string_view>

namespace brenta {

/// The position of the first occurrence of `text` in `where` at or after `start`, or npos. The empty text is
/// found at start.
std::size_t FindText(std::string_view where, std::string_view text, std::size_t start);

/// The same without regard to the case of the letters A to Z.
std::size_t FindTextIgnoringCase(std::string_view where, std::string_view text, std::size_t start);

}  // namespace brenta
