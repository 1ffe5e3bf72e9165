// Character classes and case of 7-bit ASCII, the same on every platform and in every locale. Bytes of 128 and
// above, which are negative chars, belong to no class and have no case.
#pragma once

#include <cstddef>
#include <cstdint>

namespace brenta {

namespace detail {

inline constexpr std::uint8_t kDigitBit = 1;
inline constexpr std::uint8_t kUpperBit = 2;
inline constexpr std::uint8_t kLowerBit = 4;
inline constexpr std::uint8_t kSpaceBit = 8;
inline constexpr std::uint8_t kControlBit = 16;
inline constexpr std::uint8_t kHexLetterBit = 32;

struct CharacterTable {
    std::uint8_t bits[256] = {};

    constexpr CharacterTable() {
        for (int c = 0; c < 128; ++c) {
            unsigned int b = 0;
            if (c >= '0' && c <= '9') b |= kDigitBit;
            if (c >= 'A' && c <= 'Z') b |= kUpperBit;
            if (c >= 'a' && c <= 'z') b |= kLowerBit;
            if (c == ' ' || (c >= '\t' && c <= '\r')) b |= kSpaceBit;
            if (c < ' ' || c == 127) b |= kControlBit;
            if ((c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f')) b |= kHexLetterBit;
            bits[c] = static_cast<std::uint8_t>(b);
        }
    }
};

inline constexpr CharacterTable kCharacters;

constexpr bool HasBits(char c, unsigned int wanted) {
    return (kCharacters.bits[static_cast<unsigned char>(c)] & wanted) != 0;
}

}  // namespace detail

constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
constexpr bool IsUpper(char c) {
    return c >= 'A' && c <= 'Z';
}
constexpr bool IsLower(char c) {
    return c >= 'a' && c <= 'z';
}
constexpr bool IsAlpha(char c) {
    return detail::HasBits(c, detail::kUpperBit | detail::kLowerBit);
}
constexpr bool IsAlnum(char c) {
    return detail::HasBits(c, detail::kUpperBit | detail::kLowerBit | detail::kDigitBit);
}
constexpr bool IsHexDigit(char c) {
    return detail::HasBits(c, detail::kDigitBit | detail::kHexLetterBit);
}
/// Blank, \t, \n, \v, \f and \r.
constexpr bool IsSpace(char c) {
    return detail::HasBits(c, detail::kSpaceBit);
}
/// The codes below 32 and 127.
constexpr bool IsControl(char c) {
    return detail::HasBits(c, detail::kControlBit);
}

constexpr char ToLower(char c) {
    return IsUpper(c) ? static_cast<char>(c + ('a' - 'A')) : c;
}
constexpr char ToUpper(char c) {
    return IsLower(c) ? static_cast<char>(c - ('a' - 'A')) : c;
}

/// The value of a hexadecimal digit; only for IsHexDigit(c).
constexpr int HexDigitValue(char c) {
    return IsDigit(c) ? c - '0' : ToLower(c) - 'a' + 10;
}

/// A set of bytes with a test in constant time; holds what a terminated text holds (null: nothing), never the
/// NUL.
class ByteSet {
 public:
    explicit ByteSet(const char* text) {
        if (text == nullptr) return;
        for (; *text != 0; ++text)
            Add(*text);
    }

    void Add(char c) { m_words[Index(c) >> 6] |= std::uint64_t{1} << (Index(c) & 63); }
    bool Has(char c) const { return (m_words[Index(c) >> 6] >> (Index(c) & 63) & 1) != 0; }

 private:
    static constexpr std::size_t Index(char c) { return static_cast<unsigned char>(c); }

    std::uint64_t m_words[4] = {};
};

}  // namespace brenta
