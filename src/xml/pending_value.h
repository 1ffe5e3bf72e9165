// Attribute values that nobody has asked for yet.
//
// A text in the string table stays there for ever. That is right for names and for the values that a program
// works with, but a board brings millions of coordinates that are looked at as numbers, if at all, and
// dropped: interned, they would take longer than all the rest of loading, and some gigabytes of such files
// would fill the table. So a reader gives an attribute its value as a plain text. It becomes an identifier
// when somebody asks for it as one, or for a pointer that lives as long as the library; searches, comparisons
// and numbers read it where it is.
//
// The attribute has one word for its value. An identifier is an even address. A pending value is an odd
// number, whose lowest three bits say where the text is:
//
//     address  001     in the slab of the attribute (xml/tree_memory.h), which keeps it as long as that
//     address  011     in a block of its own, which the attribute owns
//     text  00000 111  in the word itself: up to six bytes and the end, behind the lowest byte
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

/// The way to these texts for readers. One thread at a time, like all of a document.
class PendingValue {
 public:
    /// Replaces the value by a copy of a text that holds no NUL. Throws std::bad_alloc.
    static void Set(CCoreXmlDomAttribute& attribute, std::string_view text);

    // Values for new attributes.

    static constexpr std::size_t kMostInside = 6;
    /// A text of at most kMostInside bytes.
    static STRID Inside(std::string_view text) {
        return text.empty() ? kNoName
                            : static_cast<STRID>(LoadBytes(text.data(), text.size()) << 8 | kInside);
    }
    /// A terminated text that lives as long as the attribute.
    static STRID Elsewhere(const char* text) { return At(text, kElsewhere); }
    /// A copy of a text. Throws std::bad_alloc.
    static STRID Owned(std::string_view text);

    /// Whether the attribute must free the text.
    static bool IsOwned(const CCoreXmlDomAttribute& attribute) {
        return (static_cast<std::uintptr_t>(attribute.m_value) & kKind) == kOwned;
    }

 private:
    friend class CCoreXmlDomAttribute;

    static constexpr std::uintptr_t kKind = 7;
    static constexpr std::uintptr_t kElsewhere = 1, kOwned = 3, kInside = 7;
    static constexpr int kKindBits = 3;

    static STRID At(const char* text, std::uintptr_t kind) {
        return static_cast<STRID>(reinterpret_cast<std::uintptr_t>(text) << kKindBits | kind);
    }
    static const char* Text(const CCoreXmlDomAttribute& attribute);
    /// The value becomes none.
    static void Drop(const CCoreXmlDomAttribute& attribute);
};

}  // namespace brenta
