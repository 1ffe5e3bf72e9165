// CoreString's comparisons.
//
// Natural order is defined as a walk over both texts that compares the numbers that begin at the same place
// in both, and single bytes elsewhere. Up to the first place where the texts differ that walk finds nothing
// to decide, so it need not be taken: it is enough to find that place, with eight bytes at a time where the
// lengths are known, and to go back to the start of the run of digits around it, if there is one. What is
// decided there is what the walk would decide.
#include <cstdint>
#include <cstring>

#include "brenta/string.h"
#include "foundation/characters.h"
#include "foundation/text_compare.h"
#include "foundation/text_search.h"

namespace brenta {

namespace {

// Compares the numbers whose digits begin at a and at b, whatever their length.
int CompareNumbers(const char* a, const char* b) {
    while (*a == '0')
        ++a;
    while (*b == '0')
        ++b;
    int order = 0;  // of the first digits that differ
    for (; IsDigit(*a) && IsDigit(*b); ++a, ++b) {
        if (order == 0 && *a != *b) order = *a < *b ? -1 : 1;
    }
    if (IsDigit(*a)) return 1;
    return IsDigit(*b) ? -1 : order;
}

int CompareBytes(char a, char b) {
    if (b == 0) return a == 0 ? 0 : 1;
    return a == b ? 0 : a < b ? -1 : 1;
}

// Decides between two texts that are the same before `place` and of which one, but not both alone, has a
// digit there, behind other digits: the longer run is the greater number, or the same with more leading
// zeros.
int OrderOfRuns(const char* a, const char* b, std::size_t place) {
    std::size_t start = place;
    while (start > 0 && IsDigit(a[start - 1]))
        --start;
    if (!IsDigit(a[start]) || !IsDigit(b[start])) return CompareBytes(a[place], b[place]);
    const int order = CompareNumbers(a + start, b + start);
    if (order != 0) return order;
    std::size_t end = start;
    while (IsDigit(a[end]) && IsDigit(b[end]))
        ++end;
    if (IsDigit(a[end])) return a[end] < b[end] ? -1 : 1;
    return CompareBytes(a[end], b[end]);
}

// Decides between two texts that are the same before `place` and differ there, or both end.
int OrderAt(const char* a, const char* b, std::size_t place) {
    const bool digitInA = IsDigit(a[place]);
    const bool digitInB = IsDigit(b[place]);
    if (!digitInA && !digitInB) return CompareBytes(a[place], b[place]);
    if (!digitInA || !digitInB) return OrderOfRuns(a, b, place);
    // Two numbers of equal length: the first digit that differs decides.
    std::size_t end = place + 1;
    while (IsDigit(a[end]) && IsDigit(b[end]))
        ++end;
    if (IsDigit(a[end]) || IsDigit(b[end])) return OrderOfRuns(a, b, place);
    return CompareBytes(a[place], b[place]);
}

std::uint64_t Load(const char* text) {
    std::uint64_t word;
    std::memcpy(&word, text, sizeof(word));
    return word;
}

bool HasZeroByte(std::uint64_t word) {
    return ((word - 0x0101010101010101u) & ~word & 0x8080808080808080u) != 0;
}

// The first place at or after `place` where the texts differ or both end.
std::size_t FirstDifference(const char* a, const char* b, std::size_t place) {
    while (a[place] == b[place] && a[place] != 0)
        ++place;
    return place;
}

}  // namespace

int CompareNatural(const char* a, const char* b) {
    if (a == nullptr || b == nullptr) return a == b ? 0 : a == nullptr ? -1 : 1;
    return OrderAt(a, b, FirstDifference(a, b, 0));
}

int CompareIgnoringCase(const char* a, const char* b) {
    if (a == nullptr || b == nullptr) return a == b ? 0 : a == nullptr ? -1 : 1;
    while (*a != 0 && ToLower(*a) == ToLower(*b))
        ++a, ++b;
    const auto first = static_cast<unsigned char>(ToLower(*a));
    const auto second = static_cast<unsigned char>(ToLower(*b));
    return first == second ? 0 : first < second ? -1 : 1;
}

int CoreString::CompareFunc(const char* a, const char* b) {
    return CompareNatural(a, b);
}

int CoreString::Compare(const char* text, bool ignoreCase) const {
    return ignoreCase ? CompareIgnoringCase(m_pBuffer, text) : CompareFunc(m_pBuffer, text);
}

// CompareFunc of two strings, whose known lengths let it take eight bytes at a time.
int CoreString::OrderOfAll(const CoreString& other) const {
    const char* const a = m_pBuffer;
    const char* const b = other.m_pBuffer;
    const auto length = static_cast<std::size_t>(m_length < other.m_length ? m_length : other.m_length);
    std::size_t place = 0;
    for (; place + sizeof(std::uint64_t) <= length; place += sizeof(std::uint64_t)) {
        const std::uint64_t word = Load(a + place);
        const std::uint64_t difference = word ^ Load(b + place);
        if (HasZeroByte(word)) break;
        if (difference != 0) return OrderAt(a, b, place + FirstByteSet(difference));
    }
    return OrderAt(a, b, FirstDifference(a, b, place));
}

}  // namespace brenta
