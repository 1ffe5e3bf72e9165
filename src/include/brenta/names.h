/// @file
/// Interned names (STRID), the table that issues them, and the text helpers that produce or consume them.
///
/// A name that is compared often - a script identifier, an XML element, a net, a designator - is interned
/// once and then handled as a STRID: one word that is the address of the table's own copy of the text. Equal
/// texts always have equal identifiers, whichever call interned them, so comparing two names is comparing two
/// words, and the text behind an identifier can be read at any time, by any thread, without a lock.
///
///     STRID net = StrId("GND");
///     if (StrId("GND+5V", 3) == net) std::puts(StrPtr(net));      // prints GND
///     TOrderedList<STRID> layers;
///     GetTokens("top;inner1;bottom", ";", layers);                // three names, in this order
///     if (StrPresent(userText)) Highlight(StrId(userText));       // a text never interned is no known name
///
/// Lifetime. The table owns its texts and keeps them until it is destroyed; the texts of the global table, on
/// which all free functions work, live until the library is unloaded. Nothing is ever given back: a program
/// that interns texts without bound (results computed in a loop, say) ends in the forced crash "String space
/// exhausted." after 1500 pages of 1,024,000 bytes. Keep such texts in a CoreString.
///
/// Cost. Interning a text that is known already takes one hash of the text and about two memory accesses, and
/// no lock, so any number of threads can do it side by side. A new text takes the table's lock for a moment,
/// its length + 17 bytes rounded up to a multiple of 8, and 10 to 21 bytes of index; the smaller indexes that
/// a growing table has left behind take at most as much again.
#pragma once

#include <cstddef>
#include <cstdint>

#include "brenta/containers.h"
#include "brenta/export.h"
#include "brenta/string.h"

namespace brenta {

class CString;
class NameStore;

/// An interned name: the address of its text, or kNoName.
enum class STRID : std::uintptr_t {};

/// The null identifier: "no name", and the identifier of the empty text.
inline constexpr STRID kNoName{};

// ---------------------------------------------------------------------------------------------------------------------
// Names of the global table

/// Interns a text and returns its identifier; the same text always gives the same one. The text is copied at
/// its first use. Null and "" give kNoName, and so does a table that is full, after its forced crash. Any
/// thread.
BRENTA_API STRID StrId(const char* text);

/// Interns the first `length` bytes of a text that need not be terminated. A NUL within them ends the text
/// early, so StrId("ab", 100) is StrId("ab"). Null and length 0 give kNoName. Any thread.
BRENTA_API STRID StrId(const char* text, unsigned int length);

/// Whether a text is interned already; interns nothing. False for null and "". Any thread.
BRENTA_API bool StrPresent(const char* text);

/// The text of an identifier, valid until the library is unloaded; "" for kNoName and for the reserved
/// identifier with all bits set, with which the script engine marks functions. Any thread.
inline const char* StrPtr(STRID id) {
    const auto address = static_cast<std::uintptr_t>(id);
    return address + 1 <= 1 ? "" : reinterpret_cast<const char*>(address);
}

/// Compares two names without regard to the case of the letters A to Z: negative, 0 or positive as the first
/// sorts before, with or after the second. Letters count as lower-case, other bytes as unsigned values;
/// kNoName is "".
BRENTA_API int StrIdICmp(STRID first, STRID second);

/// Whether a name holds no lower-case letter (a to z). True for kNoName.
BRENTA_API bool IsStrIdUpper(STRID id);

// ---------------------------------------------------------------------------------------------------------------------
// The table

/// A table of interned texts. The library's global one serves every free function; a table of its own is for
/// a host that wants to drop a closed set of names as a whole. Identifiers of different tables do not
/// compare.
///
/// Texts are carved from pages of a fixed size, at most 1500 of them; the first page comes with the first
/// text. Every operation may be called from any thread. A text that fits no page raises the forced crash
/// "String space exhausted." (site code 0x0504C003); when the handler resumes, StrId returns kNoName and the
/// table is as it was. The same, without a crash, is the answer when memory itself runs out.
class BRENTA_API CStringTable {
 public:
    /// `name` is kept for diagnosis, cut to 259 bytes (null counts as ""). `pageSize` is in bytes, a size
    /// below 1 counts as 0; a text that needs more gets a page of its own size and 100 bytes.
    CStringTable(const char* name, int pageSize);
    /// Releases all pages: every identifier of the table and its text die with it.
    virtual ~CStringTable();
    CStringTable(const CStringTable&) = delete;
    CStringTable& operator=(const CStringTable&) = delete;

    /// Interns a terminated text, see the free function.
    STRID StrId(const char* text);
    /// Interns the first `length` bytes of a text, see the free function.
    STRID StrId(const char* text, unsigned int length);
    /// Whether the terminated text is interned already.
    bool IsId(const char* text) const;

    /// The table's own name as it was kept, not an interned one; good as long as the table.
    const char* GetName() const { return m_name; }
    /// Pages allocated so far, 0 to 1500.
    int GetPageCount() const;
    /// Number of texts interned so far.
    std::size_t GetNameCount() const;

 private:
    friend class NameStore;

    char m_name[260];
    NameStore* m_pStore;
};

// ---------------------------------------------------------------------------------------------------------------------
// Keys

/// The key of a terminated text, 0 to 0x7FFFFFFF: a sum over its bytes, so anagrams share it. 0 for null and
/// "". Keys are the same in every run and build and may be stored; the table's own index does not use them.
BRENTA_API int StringKey(const char* text);

/// The key of exactly `length` bytes, NUL being a byte like any other: a sum as well, but not the one of the
/// terminated form, so the two keys of a text differ. 0 for null. One sum in four billion gives the one
/// negative key, INT_MIN: never use a key as an index without masking it.
BRENTA_API int StringKey(const char* text, unsigned int length);

// ---------------------------------------------------------------------------------------------------------------------
// Text to names

/// Cuts a text at every run of bytes of `delimiters` and adds the pieces to `out` as names, in order. `out`
/// keeps what it held. A null or empty text adds nothing; null or empty delimiters make the whole text one
/// piece.
BRENTA_API void GetTokens(const char* text, const char* delimiters, TOrderedList<STRID>& out);

/// Like GetTokens, but a double quote at the start of a piece opens a run that goes up to the next double
/// quote (or the end of the text) with delimiters taken literally. The quotes are not part of the name, ""
/// adds nothing, and a quote inside a piece is an ordinary byte:
///
///     GetTokensQuoted("a \"b c\" d", " ", out);       // a, b c, d
BRENTA_API void GetTokensQuoted(const char* text, const char* delimiters, TOrderedList<STRID>& out);

// ---------------------------------------------------------------------------------------------------------------------
// Plain texts

/// Whether a pattern matches the text anywhere: '*' stands for any run of bytes, also none, '?' for exactly
/// one, every other byte for itself, letters A to Z in either case. An empty text matches nothing, not even
/// "*"; an empty pattern matches every other text. Null counts as "". Time is at most proportional to the
/// product of the two lengths, in practice to their sum.
BRENTA_API bool SearchStringForMatch(const char* pattern, const char* text);

/// The address of the `close` byte that ends the level on which `p` starts, with the `open` bytes met on the
/// way nesting; null if the text ends first, and for a null text. With open equal to close the first one ends
/// the level.
///
///     MatchClosing('(', ')', "a(b)c)d");              // the second ')'
BRENTA_API const char* MatchClosing(char open, char close, const char* p);

/// Cuts the blanks and tabs at the end of a text, in place. Null is left alone.
BRENTA_API void TrimTrailingWhite(char* text);

/// The address of the first byte that is neither blank nor tab, at the latest the terminator. Null gives
/// null.
BRENTA_API const char* SkipWhite(const char* text);

/// The run of letters (A to Z, a to z) with which a text starts, "" if it starts otherwise or is null: "R" of
/// "R12".
BRENTA_API CoreString GetAlphaPrefix(const char* text);

/// Writes a number in base 26 with the digits A (zero) to Z into `out` and returns it: 0 is A, 25 Z, 26 BA,
/// 701 BAZ. These are not the column names of a spreadsheet. A negative number gives one letter, its residue
/// modulo 26.
BRENTA_API CString& DecimalToBase26(int number, CString& out);

}  // namespace brenta
