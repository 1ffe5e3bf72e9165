/// @file
/// CoreString, the library's own 8-bit string: an owned, always terminated text with its length, and a large
/// set of operations to search, edit, match, split and format it in place. Beside it stand the library's two
/// character substitutions: the per-character cipher and the keyed password transform.
///
/// Use it for every text that is built, edited or handed on. A text that is only compared again and again (a
/// net name, an element's tag) is better interned as a STRID (brenta/names.h); a text that is only read can
/// stay a `const char*`, which every operation here takes.
///
///     CoreString line("R9 = 4k7 ; pull-up");
///     CoreString name, value;
///     if (line.SplitAt(" = ", name, value)) value.Truncate(value.Find(" ;"));     // "R9", "4k7"
///     name.NextNumber(1);                                                         // "R10"
///     line.Format("%s -> %s", name(), value());                                   // "R10 -> 4k7"
///
/// Characters are signed bytes. Case, digit, space and control characters are those of 7-bit ASCII whatever
/// the locale; bytes of 128 and above (UTF-8, an 8-bit code page) belong to no class and pass unchanged.
/// Positions and lengths count bytes, from 0. Numbers are written and read with a decimal point whatever the
/// locale.
///
/// Arguments. A null text counts as the empty text unless an operation says otherwise, a negative start as 0,
/// and every argument may be (or point into) the string that is worked on. A NUL is never stored as a
/// character: a text ends at its first NUL, and adding a NUL adds nothing.
///
/// Lifetime. A pointer to the text (`operator const char*`, `operator()`, `View`) is valid until the next
/// operation that is not const; moving a string from one object to another ends it too.
///
/// Memory. A text of up to 15 bytes lies in the object itself; a longer one has a block of the general
/// allocator. Construction, assignment and the edits ask for just the size they need; only appending takes a
/// share more, so that a text can be built byte by byte in linear time. No operation throws: one that finds
/// no memory, or whose result would be longer than 2,147,483,639 bytes, leaves the string as it was (a
/// constructor: empty).
///
/// Threads. One string must not be used by two threads at once; different strings may be, and share nothing.
#pragma once

#include <bit>
#include <concepts>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "brenta/detail/class_name.h"
#include "brenta/export.h"
#include "brenta/heap.h"

namespace brenta {

class CString;
template <class K, class V>
class THeapIntMap;

/// An owned text of signed bytes; see the head of this file.
class BRENTA_API CoreString {
 public:
    // -------------------------------------------------------------------------------------------------------
    // Class queries; the object itself, when made with `new`, lives on the library's global heap

    /// The size of the object in bytes, without a block that it owns.
    virtual std::size_t SizeOf() const;
    /// "CoreString"
    virtual const char* GetClassName() const;
    /// "none"
    virtual const char* GetBaseClassName() const;
    virtual ~CoreString() {
        if (m_pBuffer != m_local) ReleaseBlock(m_pBuffer, m_capacity);
    }

    BRENTA_HEAP_OPERATORS

    // ------------------------------------------------------------------------------------------------------
    // Construction and assignment

    /// The empty string.
    CoreString() noexcept = default;

    /// A copy of a terminated text; null gives the empty string.
    CoreString(const char* text) noexcept {
        const std::size_t length = text == nullptr ? 0 : std::strlen(text);
        if (length < kLocalSize) {
            std::memcpy(m_local, text == nullptr ? "" : text, length);
            m_length = static_cast<int>(length);
        } else {
            AssignLong(text, length);
        }
    }

    /// A copy of the first `count` bytes of a text, or of all of it if it ends before. Null or a count below
    /// 1 gives the empty string. Nothing behind the end of the text or the last counted byte is read.
    CoreString(const char* text, int count) noexcept;

    /// A string of one character; '\0' gives the empty string.
    CoreString(char c) noexcept {
        m_local[0] = c;
        m_length = c != 0;
    }

    /// A copy of the view up to its first NUL.
    explicit CoreString(std::string_view text) noexcept;

    CoreString(const CoreString& other) noexcept : m_length(other.m_length) {
        std::memcpy(m_local, other.m_local, kLocalSize);
        if (m_length >= kLocalSize) CopyLong(other);
    }

    /// Takes the other string's text over and leaves that string empty.
    CoreString(CoreString&& other) noexcept { TakeFrom(other); }

    /// Replaces the text by another, by a view up to its first NUL, or by one character. Null and '\0' give
    /// the empty string.
    CoreString& operator=(const char* text);
    CoreString& operator=(std::string_view text);
    CoreString& operator=(char c);
    /// Replaces the text by the other's; assigning a string to itself does nothing.
    CoreString& operator=(const CoreString& other) {
        if (other.m_length < kLocalSize && m_pBuffer == m_local) {
            m_length = other.m_length;
            std::memmove(m_local, other.m_local, kLocalSize);
        } else if (this != &other) {
            AssignBytes(other.m_pBuffer, static_cast<std::size_t>(other.m_length));
        }
        return *this;
    }
    /// Takes the other string's text over and leaves that string empty; onto itself, nothing.
    CoreString& operator=(CoreString&& other) noexcept {
        if (this == &other) return *this;
        if (m_pBuffer != m_local) ReleaseBlock(m_pBuffer, m_capacity);
        TakeFrom(other);
        return *this;
    }

    // ------------------------------------------------------------------------------------------------------
    // Appending. Null, "" and '\0' leave the string unchanged. Constant time per byte in the long run.

    CoreString& operator+=(char c) {
        if (c == 0) return *this;
        if (m_length + 1 >= m_capacity) return AppendBytes(&c, 1);
        m_pBuffer[m_length] = c;
        m_pBuffer[++m_length] = 0;
        return *this;
    }
    CoreString& operator+=(const char* text) {
        return text == nullptr ? *this : AppendBytes(text, std::strlen(text));
    }
    CoreString& operator+=(const CoreString& text) {
        return AppendBytes(text.m_pBuffer, static_cast<std::size_t>(text.m_length));
    }
    CoreString& operator+=(std::string_view text);

    /// A new string: this text and the other behind it.
    CoreString operator+(char c) const&;
    CoreString operator+(const char* text) const&;
    CoreString operator+(const CoreString& text) const&;
    CoreString operator+(char c) && { return static_cast<CoreString&&>(*this += c); }
    CoreString operator+(const char* text) && { return static_cast<CoreString&&>(*this += text); }
    CoreString operator+(const CoreString& text) && { return static_cast<CoreString&&>(*this += text); }
    friend CoreString operator+(const char* first, const CoreString& second) {
        return CoreString(first) + second;
    }

    /// Appends a number or a text and returns the string itself: a double as with the format "%f" (six
    /// decimals), the integers as with "%d" and "%u", a char as the character.
    CoreString& operator<<(double value);
    CoreString& operator<<(unsigned int value);
    CoreString& operator<<(unsigned short value) { return *this << static_cast<unsigned int>(value); }
    CoreString& operator<<(int value);
    CoreString& operator<<(short value) { return *this << static_cast<int>(value); }
    CoreString& operator<<(char c) { return *this += c; }
    CoreString& operator<<(const char* text) { return *this += text; }

    // ------------------------------------------------------------------------------------------------------
    // Access

    /// The terminated text, never null; valid until the string changes.
    operator const char*() const { return m_pBuffer; }
    /// The same, for places where a conversion does not happen by itself, such as the arguments behind "...".
    const char* operator()() const { return m_pBuffer; }
    /// The text as a view, all of its stored length; valid until the string changes.
    std::string_view View() const { return {m_pBuffer, static_cast<std::size_t>(m_length)}; }

    /// Byte i, without a check: the caller keeps i within 0..GetLength(), where the last is the terminator
    /// and may be read but not written. A 0 written within the text leaves the stored length as it is; use
    /// SetAt to cut.
    template <std::integral I>
    char& operator[](I i) {
        return m_pBuffer[static_cast<std::ptrdiff_t>(i)];
    }
    template <std::integral I>
    const char& operator[](I i) const {
        return m_pBuffer[static_cast<std::ptrdiff_t>(i)];
    }

    const char* begin() const { return m_pBuffer; }
    const char* end() const { return m_pBuffer + m_length; }

    /// A string is no condition: the conversion to a pointer would make every string true. Ask IsEmpty().
    explicit operator bool() const = delete;

    int GetLength() const { return m_length; }
    /// The length of a text; 0 for null. A text of more than INT_MAX bytes counts INT_MAX.
    static int GetLength(const char* text);
    /// True if the length is 0 or the first byte is 0.
    bool IsEmpty() const { return m_length == 0 || m_pBuffer[0] == 0; }
    /// The last byte; 0 in an empty string.
    char GetLastChar() const { return m_length < 1 ? '\0' : m_pBuffer[m_length - 1]; }

    /// Becomes the empty string and gives its memory back.
    void SetEmpty();
    /// Stores c at byte i; a c of 0 cuts the string there. An i outside the text does nothing.
    void SetAt(int i, char c);
    /// Cuts the text to its first n bytes (n below 0 counts as 0); one that is not longer stays.
    void Truncate(int n);
    /// A copy of the first n bytes; n below 0 counts as 0, n beyond the length as the length.
    CoreString Left(int n) const;
    /// Removes the first n bytes and returns them: Left(n) and TrimLeft(n).
    CoreString RemoveLeft(int n);

    // ------------------------------------------------------------------------------------------------------
    // Comparison
    //
    // The operators use the natural order, case-sensitive: texts compare byte by byte, but runs of decimal
    // digits compare as numbers of any length, so that "item9" < "item10", and "a1" < "a01" as the number
    // with fewer leading zeros. Two texts are equal only if they are the same. A null text is less than any
    // other, and equal to none.
    //
    // Bytes compare as signed values, and the end of a text counts as 0. Among texts with bytes of 128 and
    // above this is therefore no total order ("a" and "a\xE9" are each greater than the other): never hand
    // these operators to std::sort or std::map when such texts can occur.

    /// Negative, 0 or positive as this text sorts before, with or after the other: in natural order, or with
    /// ignoreCase byte by byte as unsigned values, the letters taken as lower-case ("_" before "a").
    int Compare(const char* text, bool ignoreCase = false) const;

    friend bool operator==(const CoreString& a, const CoreString& b) { return a.Equals(b); }
    friend bool operator==(const CoreString& a, const char* b) {
        return b != nullptr && std::strcmp(a.m_pBuffer, b) == 0;
    }
    friend bool operator==(const CoreString& a, std::string_view b) { return a.View() == b; }
    friend bool operator<(const CoreString& a, const CoreString& b) { return a.Order(b) < 0; }
    friend bool operator<(const CoreString& a, const char* b) { return CompareFunc(a, b) < 0; }
    friend bool operator<(const char* a, const CoreString& b) { return CompareFunc(a, b) < 0; }
    friend bool operator<=(const CoreString& a, const CoreString& b) { return a.Order(b) <= 0; }
    friend bool operator<=(const CoreString& a, const char* b) { return CompareFunc(a, b) <= 0; }
    friend bool operator<=(const char* a, const CoreString& b) { return CompareFunc(a, b) <= 0; }
    friend bool operator>(const CoreString& a, const CoreString& b) { return a.Order(b) > 0; }
    friend bool operator>(const CoreString& a, const char* b) { return CompareFunc(a, b) > 0; }
    friend bool operator>(const char* a, const CoreString& b) { return CompareFunc(a, b) > 0; }
    friend bool operator>=(const CoreString& a, const CoreString& b) { return a.Order(b) >= 0; }
    friend bool operator>=(const CoreString& a, const char* b) { return CompareFunc(a, b) >= 0; }
    friend bool operator>=(const char* a, const CoreString& b) { return CompareFunc(a, b) >= 0; }

    // ------------------------------------------------------------------------------------------------------
    // Searching. A search returns -1 when it finds nothing, when start is at or beyond the length, and for a
    // null text or set.
    //
    // Beware: Find(const char*) counts its result from the start of the string, while Find(char) and FindAny
    // count theirs from `start`; whoever passes a start other than 0 to these adds it to the result.

    /// The position, counted from 0, of the first occurrence of a text at or after start. The empty text is
    /// found at start.
    int Find(const char* text, bool ignoreCase = false, int start = 0) const;
    /// The position, counted from start, of the first c at or after start.
    int Find(char c, bool ignoreCase = false, int start = 0) const;
    /// The position, counted from start, of the first byte at or after start that is one of the bytes of
    /// `set`.
    int FindAny(const char* set, bool ignoreCase = false, int start = 0) const;
    /// Whether any byte of the string is in the set; false for an empty string or set.
    bool Contains(const char* set) const;

    /// Whether the string begins with a pattern, in which "?" stands for any one byte and "*" for all the
    /// rest, also for an empty one; what follows the "*" is not looked at. The empty pattern fits every
    /// string, null none.
    bool BeginsWith(const char* pattern, bool ignoreCase = false) const;
    /// Whether the pattern of BeginsWith fits at some position of the string. False for an empty string and
    /// for null.
    bool Match(const char* pattern, bool ignoreCase = false) const;
    /// Whether the string is a decimal number: leading space, one sign at most, digits with one point at
    /// most, at least one digit and nothing behind. "-12.5", " 7" and "7." are; "7 ", "1-2", "." and "1e5"
    /// are not.
    bool IsAllNumeric() const;

    // ------------------------------------------------------------------------------------------------------
    // Editing in place. Operations that count return the number of replacements.

    /// Replaces every byte `from`. Nothing happens, and 0 is returned, if either is '\0'.
    int Replace(char from, char to);
    /// Replaces every byte that is in the set. Nothing happens, and 0 is returned, for a `to` of '\0'.
    int ReplaceAny(const char* set, char to);
    /// Replaces every occurrence of a text, going on behind each replacement, so that a replacement that
    /// holds `from` is not replaced again. A null `to` counts as "". Nothing happens for an empty or null
    /// `from`.
    int Replace(const char* from, const char* to);

    /// Turn the letters a to z into upper case, A to Z into lower case; all other bytes stay.
    void MakeUpper();
    void MakeLower();
    /// Puts the bytes into the opposite order.
    void MakeReverse();
    /// Sorts the bytes in ascending order of their signed values: those of 128 and above come first.
    void SortChars();

    /// Remove the space characters (blank, `\t`, `\n`, `\v`, `\f`, `\r`) at both ends, at the start, at the
    /// end.
    void Trim();
    void TrimLeading();
    void TrimTrailing();
    /// Remove n bytes from the start, from the end. An n below 1 does nothing, one beyond the length empties
    /// the string.
    void TrimLeft(int n);
    void TrimRight(int n);
    /// Extend the text to `width` bytes with `fill` before it, behind it; a text that long already stays, and
    /// so does any with a fill of '\0'.
    void PadLeft(int width, char fill);
    void PadRight(int width, char fill);
    /// Removes the first and the last byte if both are `bracket`, and says whether it did. A single byte is
    /// not a pair.
    bool StripBrackets(char bracket);

    /// Replaces the text by a formatted one of 65,535 bytes at most; what is longer is cut. Arguments may
    /// point into the string itself.
    ///
    /// The format is that of printf with d i u o x X c s p f F e E g G a A and %%, the flags - + # 0 and
    /// blank, width and precision (numbers or *), and the sizes hh h l ll j z t L as well as I64 and I32. It
    /// does not follow the locale, and its digits are the same on all platforms. A null text prints "(null)".
    /// A conversion it does not know, %n and wide characters among them, makes the whole result empty. A null
    /// format counts as "".
    [[gnu::format(printf, 2, 3)]] void Format(const char* format, ...);
    /// The same with an argument list, which stays as it is.
    [[gnu::format(printf, 2, 0)]] void FormatV(const char* format, std::va_list arguments);

    /// Adds step to the last decimal number of the text, to which a "-" directly before its digits belongs,
    /// and writes the sum without leading zeros: with step 1 "R9" becomes "R10", "Pad-3" "Pad-2", "U1A"
    /// "U2A". False, and no change, if there is no digit or a number does not fit into 64 bits.
    bool NextNumber(int step);

    /// Writes the text into `out` with each control character, space and any of "#$%&+,/:;<=>?@[\]^`{|}
    /// replaced by "%" and two lower-case hexadecimal digits, and returns `out` (which may be this string).
    /// Bytes of 128 and above pass.
    CoreString& EscapeURL(CoreString& out) const;

    /// Replace each byte by its entry of the cipher table, of the clear table. Only the 94 printable
    /// characters from "!" to "~" have an entry; all others stay. A veil for casual eyes, no protection.
    void Encrypt();
    void Decrypt();

    /// Writes the text, up to its first 0 byte, into a text file, which is created or overwritten. If it
    /// cannot be created, the host's message box shows "Failed to create file %s." and the result is false;
    /// if the text cannot be written in full, the result is false without a message.
    bool SaveToFile(const char* path) const;

    // ------------------------------------------------------------------------------------------------------
    // Splitting. The outputs may be the string itself.

    /// Cuts at the first occurrence of a separator at or after start: left is the text before it, right the
    /// text behind it. Without one, for an empty or null separator, and for a start at or beyond the length,
    /// the result is false, left a copy of the string and right empty.
    bool SplitAt(const char* separator, CoreString& left, CoreString& right, int start = 0) const;
    /// The same for one character, with two differences kept for its callers: the hit's position counted from
    /// start, not from 0, is where left is cut; and right is untouched when start is at or beyond the length.
    bool SplitAt(char separator, CoreString& left, CoreString& right, int start = 0) const;
    /// Removes and returns the text up to the next delimiter, and removes that delimiter. Delimiters at the
    /// very start are passed over in the search and stay in the token: ",,a,b" gives ",,a" and leaves "b".
    /// Without a further delimiter the token is the whole text and the string becomes empty.
    CoreString ExtractToken(char delimiter);

 private:
    static constexpr int kLocalSize = 16;

    static int CompareFunc(const char* a, const char* b);
    // Most texts that differ do so in their first eight bytes, which can be read whatever the length: the
    // object's own are always initialised, and a block holds sixteen at least. The lengths do not decide, as
    // a 0 may have been written into a text.

    // The first of these places where the texts differ or this one ends; 8 if there is none.
    std::size_t FirstStop(const CoreString& other) const {
        std::uint64_t a, b;
        std::memcpy(&a, m_pBuffer, sizeof(a));
        std::memcpy(&b, other.m_pBuffer, sizeof(b));
        // A zero byte gets its top bit set; a byte above one may do so too, which does not matter.
        const std::uint64_t ends = (a - 0x0101010101010101u) & ~a & 0x8080808080808080u;
        const std::uint64_t stops = (a ^ b) | ends;
        const int bits =
            std::endian::native == std::endian::little ? std::countr_zero(stops) : std::countl_zero(stops);
        return static_cast<std::size_t>(bits) / 8;
    }
    // Bytes that differ decide the order unless one is a digit: it may belong to a number.
    int Order(const CoreString& other) const {
        const std::size_t place = FirstStop(other);
        const char a = m_pBuffer[place];
        const char b = other.m_pBuffer[place];
        const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
        if (place == 8 || isDigit(a) || isDigit(b)) return OrderOfAll(other);
        return b == 0 ? a != 0 : a == b ? 0 : a < b ? -1 : 1;
    }
    int OrderOfAll(const CoreString& other) const;
    bool Equals(const CoreString& other) const {
        const std::size_t place = FirstStop(other);
        if (place < 8) return m_pBuffer[place] == other.m_pBuffer[place];
        return std::strcmp(m_pBuffer + 8, other.m_pBuffer + 8) == 0;
    }

    void TakeFrom(CoreString& other) noexcept {
        m_length = other.m_length;
        m_capacity = other.m_capacity;
        std::memcpy(m_local, other.m_local, kLocalSize);
        m_pBuffer = other.m_pBuffer == other.m_local ? m_local : other.m_pBuffer;
        other.m_pBuffer = other.m_local;
        other.m_capacity = kLocalSize;
        other.m_length = 0;
        other.m_local[0] = 0;
    }
    bool Owns(const char* text) const;
    void AssignBytes(const char* text, std::size_t length) noexcept;
    void CopyLong(const CoreString& other) noexcept;
    void AssignLong(const char* text, std::size_t length) noexcept;
    CoreString& AppendBytes(const char* text, std::size_t count);
    bool Grow(std::size_t count);
    bool Reserve(std::size_t length);
    bool SetLength(std::size_t length);
    bool SetCapacity(int capacity) noexcept;
    void CutTo(int length);
    void GiveBackRoom();
    int ReplaceInPlace(std::string_view from, std::string_view to);
    int ReplaceGrowing(std::string_view from, std::string_view to);
    static void ReleaseBlock(char* pBlock, int size) noexcept;

    char* m_pBuffer = m_local;      // m_local, or a block of the general allocator
    int m_length = 0;               // bytes before the terminator
    int m_capacity = kLocalSize;    // bytes at m_pBuffer, terminator included
    char m_local[kLocalSize] = {};  // the text itself while it is shorter than this
};

// ----------------------------------------------------------------------------------------------------------
// Per-character cipher

/// The cipher table's entry for a character: a fixed permutation of the 94 printable characters from "!" to
/// "~". Every other character, and every byte of 128 and above, is returned as it is. Any thread.
BRENTA_API char CoreGetCypherChar(char c);

/// The clear table's entry: undoes CoreGetCypherChar. Any thread.
BRENTA_API char CoreGetClearChar(char c);

// ----------------------------------------------------------------------------------------------------------
// Keyed password transform

/// Adds the key, repeated as often as needed, to the text byte by byte and puts the outcome into `result`,
/// which has the text's length. For 7-bit text and key the result holds no 0 byte; with bytes of 128 and
/// above it can, so that it must be carried with its length. An empty key gives an empty result. `result` may
/// be one of the other two. Keeps passwords from being read by chance in a settings file; it is no
/// encryption.
BRENTA_API void EncryptPassword(CString& plain, CString& key, CString& result);

/// Undoes EncryptPassword: `result` receives the plain text of `cipher`. Mind the order of the arguments,
/// which is not that of EncryptPassword. An empty key gives an empty result.
BRENTA_API void DecryptPassword(CString& result, CString& key, CString& cipher);

// ----------------------------------------------------------------------------------------------------------
// The string heap

/// The one object, built when the library is loaded and before any string, that stands for the memory of all
/// CoreString blocks. It is there to be seen in dumps of the library's objects; a host has no use for a
/// second one.
class BRENTA_API CStringHeap {
 public:
    CStringHeap();
    CStringHeap(const CStringHeap&) = delete;
    CStringHeap& operator=(const CStringHeap&) = delete;

    /// 44, in every build.
    virtual std::size_t SizeOf() const;
    /// "CStringHeap"
    virtual const char* GetClassName() const;
    /// "none"
    virtual const char* GetBaseClassName() const;
    virtual ~CStringHeap();

 private:
    THeapIntMap<void*, int>*
        m_pBlocks;  // 1023 buckets; kept for those who look at it, filled by no operation
};

}  // namespace brenta
