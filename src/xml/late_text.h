// Values of attributes, and texts of elements, that nobody has asked for yet.
//
// A text in the string table stays there for ever. That is right for names and for the values that a program
// works with, but a board brings millions of coordinates that are looked at as numbers, if at all, and
// dropped: interned, they would take longer than all the rest of loading, and some gigabytes of such files
// would fill the table. So a reader gives an attribute its value as a plain text (CLateText). It becomes an
// identifier when somebody asks for it as one, or for a pointer that lives as long as the library; searches,
// comparisons and numbers read it where it is.
//
// There is one word for it. An identifier is an even address. A text that is not interned yet is an odd
// number, whose lowest three bits say where it is:
//
// - 001: in the slab of its attribute or element (xml/tree_memory.h), which lasts as long as that; the other
//   bits are its address.
// - 011: in a block of its own, which goes with the word; the other bits are its address.
// - 111: in the word itself, up to six bytes and the end, behind the lowest byte.
//
// Addresses are shifted to the left by three bits, of which no program's addresses make use.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "brenta/xml.h"

namespace brenta {

/// Up to eight bytes as a number, the first one lowest, filled up with zeros.
inline std::uint64_t LoadBytes(const char* bytes, std::size_t count) {
    static_assert(std::endian::native == std::endian::little);
    const auto load = [bytes]<class Number>(Number number, std::size_t at) {
        std::memcpy(&number, bytes + at, sizeof number);
        return std::uint64_t{number} << 8 * at;
    };
    if (count >= 8) return load(std::uint64_t{}, 0);
    if (count >= 4) return load(std::uint32_t{}, 0) | load(std::uint32_t{}, count - 4);
    if (count >= 2) return load(std::uint16_t{}, 0) | load(std::uint16_t{}, count - 2);
    return count == 0 ? 0 : load(std::uint8_t{}, 0);
}

/// What such words are made of, for readers.
class LateTextWord {
 public:
    static constexpr std::size_t kMostInside = 6;

    /// A text of at most kMostInside bytes, none of them a NUL.
    static STRID Inside(std::string_view text) {
        return text.empty() ? kNoName
                            : static_cast<STRID>(LoadBytes(text.data(), text.size()) << 8 | kInside);
    }
    /// A terminated text that lives as long as the word.
    static STRID Elsewhere(const char* text) { return At(text, kElsewhere); }
    /// A copy of a text. Throws std::bad_alloc.
    static STRID Owned(std::string_view text);

    /// The word takes the place of the one before.
    static void Put(CLateText& text, STRID word);
    /// A text that need not live on. Throws std::bad_alloc.
    static void PutCopy(CLateText& text, std::string_view copied) {
        Put(text, copied.size() <= kMostInside ? Inside(copied) : Owned(copied));
    }

    /// Whether the text is in a block of its own.
    static bool IsOwned(const CLateText& text) {
        return (static_cast<std::uintptr_t>(text.m_word) & kKind) == kOwned;
    }

 private:
    friend class CLateText;

    static constexpr std::uintptr_t kKind = 7;
    static constexpr std::uintptr_t kElsewhere = 1, kOwned = 3, kInside = 7;
    static constexpr int kKindBits = 3;

    static STRID At(const char* text, std::uintptr_t kind) {
        return static_cast<STRID>(reinterpret_cast<std::uintptr_t>(text) << kKindBits | kind);
    }
    static const char* Text(const CLateText& text);
};

}  // namespace brenta
