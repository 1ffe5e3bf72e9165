// The two orders of texts.
#pragma once

namespace brenta {

/// Natural order, case-sensitive: -1, 0 or 1 as the first text sorts before, with or after the second. Bytes
/// compare as signed values, the end of a text counts as 0, and two runs of decimal digits at the same place
/// compare as numbers of any length; among equal numbers the one with fewer leading zeros comes first, unless
/// a letter decides. Null sorts before every text.
///
/// With bytes of 128 and above this is no strict weak order ("a" and "a\xE9" are each greater than the
/// other): a sort that may meet them needs a tie-break of its own.
int CompareNatural(const char* a, const char* b);

/// Byte by byte as unsigned values, the letters A to Z taken as lower-case: -1, 0 or 1. Null sorts before
/// every text.
int CompareIgnoringCase(const char* a, const char* b);

}  // namespace brenta
