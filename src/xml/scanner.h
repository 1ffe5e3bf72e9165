// What the library's own readers share: classes of bytes, the way from a piece of the input to its
// identifier, and the reading of a file.
//
// A text is scanned where it lies, from begin to the NUL at end, and never changed: pieces are interned from
// their address and length. Every class that ends a piece holds the NUL and no class that is skipped does, so
// no loop needs to ask for the end of the text.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "brenta/names.h"
#include "xml/late_text.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Classes of bytes. "Low" are the bytes below 33 when read as signed: white space, control characters, and
// everything from 0x80 up.

enum ByteClass : std::uint8_t {
    kBlank = 1,              ///< 1 to 32
    kLow = 2,                ///< low, but not the NUL
    kSpace = 4,              ///< 9 to 13 and 32
    kTagEnd = 8,             ///< / > low
    kAttributeEnd = 16,      ///< = low
    kHtmlTagEnd = 32,        ///< > NUL space
    kHtmlAttributeEnd = 64,  ///< = > low
    kHtmlValueEnd = 128,     ///< / > NUL space
};

namespace detail {

constexpr std::array<std::uint8_t, 256> MakeByteClasses() {
    std::array<std::uint8_t, 256> table{};
    for (unsigned int c = 0; c < table.size(); ++c) {
        const bool low = c < 33 || c >= 0x80;
        const bool space = c == ' ' || (c >= '\t' && c <= '\r');
        unsigned int bits = 0;
        if (c >= 1 && c <= 32) bits |= kBlank;
        if (low && c != 0) bits |= kLow;
        if (space) bits |= kSpace;
        if (c == '/' || c == '>' || low) bits |= kTagEnd;
        if (c == '=' || low) bits |= kAttributeEnd;
        if (c == '>' || c == 0 || space) bits |= kHtmlTagEnd;
        if (c == '=' || c == '>' || low) bits |= kHtmlAttributeEnd;
        if (c == '/' || c == '>' || c == 0 || space) bits |= kHtmlValueEnd;
        table[c] = static_cast<std::uint8_t>(bits);
    }
    return table;
}

inline constexpr std::array<std::uint8_t, 256> kByteClasses = MakeByteClasses();

}  // namespace detail

inline bool IsByte(char c, ByteClass wanted) {
    return (detail::kByteClasses[static_cast<unsigned char>(c)] & wanted) != 0;
}

/// The first byte of the class; only for one that holds the NUL.
inline const char* SkipTo(const char* p, ByteClass stop) {
    while (!IsByte(*p, stop))
        ++p;
    return p;
}

/// The first byte outside the class; only for one without the NUL.
inline const char* SkipOver(const char* p, ByteClass skipped) {
    while (IsByte(*p, skipped))
        ++p;
    return p;
}

/// The first `wanted` from `p` on, or `end`, which holds the NUL.
inline const char* Find(const char* p, const char* end, char wanted) {
    const void* const found = std::memchr(p, wanted, static_cast<std::size_t>(end - p));
    return found != nullptr ? static_cast<const char*>(found) : end;
}

// ---------------------------------------------------------------------------------------------------------
// Eight bytes at a time. Names and values are a few bytes long, and of a different length each: a loop over
// their bytes mostly ends where the processor did not expect it, which costs more than the bytes themselves.
// So eight of them are looked at in one word, the first one lowest. A byte that is wanted has its highest bit
// set in the result, and so may some of those above the first one.

namespace detail {

inline constexpr std::uint64_t kEachByte = 0x0101010101010101u;
inline constexpr std::uint64_t kHighBits = 0x80 * kEachByte;

inline std::uint64_t BytesEqual(std::uint64_t word, char wanted) {
    const std::uint64_t differences = word ^ kEachByte * static_cast<unsigned char>(wanted);
    return (differences - kEachByte) & ~differences & kHighBits;
}

/// The low ones, and the NUL.
inline std::uint64_t BytesBelow33(std::uint64_t word) {
    return ((word - 33 * kEachByte) | word) & kHighBits;
}

/// The first byte at which `marks` of a word is not 0; from the last bytes before `end` on, one at which
/// `stop` of the byte is true, or `end`.
template <class Marks, class Stop>
const char* ScanWords(const char* p, const char* end, Marks marks, Stop stop) {
    for (; end - p >= 8; p += 8) {
        std::uint64_t word;
        std::memcpy(&word, p, sizeof word);
        if (const std::uint64_t found = marks(word)) return p + std::countr_zero(found) / 8;
    }
    while (p != end && !stop(*p))
        ++p;
    return p;
}

}  // namespace detail

/// The end of an attribute's name: the first byte of kAttributeEnd.
inline const char* SkipAttributeName(const char* p, const char* end) {
    return detail::ScanWords(
        p, end, [](std::uint64_t word) { return detail::BytesEqual(word, '=') | detail::BytesBelow33(word); },
        [](char c) { return IsByte(c, kAttributeEnd); });
}

/// The end of a tag's name: the first byte of kTagEnd.
inline const char* SkipTagName(const char* p, const char* end) {
    return detail::ScanWords(
        p, end,
        [](std::uint64_t word) {
            return detail::BytesEqual(word, '/') | detail::BytesEqual(word, '>') | detail::BytesBelow33(word);
        },
        [](char c) { return IsByte(c, kTagEnd); });
}

/// The first byte that is one of two.
inline const char* FindEither(const char* p, const char* end, char first, char second) {
    return detail::ScanWords(
        p, end,
        [=](std::uint64_t word) {
            return detail::BytesEqual(word, first) | detail::BytesEqual(word, second);
        },
        [=](char c) { return c == first || c == second; });
}

/// The piece from `start` to `end`.
inline std::string_view Piece(const char* start, const char* end) {
    return {start, static_cast<std::size_t>(end - start)};
}

// ---------------------------------------------------------------------------------------------------------
// Identifiers

/// The entities that a reader knows.
enum class Entities {
    Xml,   ///< lt gt quot apos amp
    Html,  ///< these, nbsp, reg, trade and copy; the last four also with "&amp;" for their "&"
};

/// `out` becomes `text` with its entities decoded, each once.
void DecodeEntities(std::string_view text, Entities entities, std::string& out);

/// Interns the pieces of one text. Names come again and again, so a small cache spares most of them the way
/// through the string table. Every operation throws std::bad_alloc when the table takes no more names.
///
/// Names also come in the same order again and again: a pad has a name, then an x, then a y. So each name
/// remembers the one that came behind it last, and what is read next is first compared with that.
class PieceInterner {
 public:
    explicit PieceInterner(Entities entities) : m_entities(entities) {}
    PieceInterner(const PieceInterner&) = delete;
    PieceInterner& operator=(const PieceInterner&) = delete;

    /// A name as it stands.
    STRID Name(std::string_view text);
    /// A name with its entities decoded.
    STRID DecodedName(std::string_view text);
    /// No name, but a value or a run of data, with its entities decoded; good until the next call.
    std::string_view Text(std::string_view text);

    /// If the name that is due stands at `p`, and `="` right behind it, the length of all that; else 0.
    std::size_t PassDue(const char* p, const char* end, STRID& name);

 private:
    struct Entry {
        std::uint64_t start = 0;
        std::size_t length = 0;
        STRID id = kNoName;
        // The first eight bytes of the name and `="`, as far as the mask goes; no text has those of an unused
        // entry, which stands for the empty name.
        std::uint64_t due = 1;
        std::uint64_t dueMask = 0;
        Entry* pNext = nullptr;  // the name behind it
    };
    static constexpr unsigned int kCacheBits = 8;
    static constexpr std::uint64_t kBehindName = '=' | '"' << 8;

    static Entry MakeEntry(std::uint64_t start, std::string_view text);

    const Entities m_entities;
    std::string m_decoded;
    std::array<Entry, std::size_t{1} << kCacheBits> m_cache;
    Entry m_none;
    Entry* m_pLast = &m_none;
};

inline std::size_t PieceInterner::PassDue(const char* p, const char* end, STRID& name) {
    Entry* const due = m_pLast->pNext;
    if (due == nullptr || static_cast<std::size_t>(end - p) < due->length + 8) return 0;
    if ((LoadBytes(p, 8) & due->dueMask) != due->due) return 0;
    if (due->length > 6) {
        const char* const behind = p + due->length;
        if (*behind != '=' || behind[1] != '"' || std::memcmp(p, StrPtr(due->id), due->length) != 0) return 0;
    }
    m_pLast = due;
    name = due->id;
    return due->length + 2;
}

// ---------------------------------------------------------------------------------------------------------
// Files

/// Reads a whole file for a reader; false if it cannot be read. A null path is no file.
bool ReadText(const char* path, std::string& text);

}  // namespace brenta
