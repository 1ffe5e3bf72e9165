// The token kinds of a lexer laid out for matching: atoms in arrays, and for each byte the kinds that can
// start with it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "brenta/lexer.h"

namespace brenta {

/// Answers which kind matches the most at a place; see brenta/lexer.h for the rules.
///
/// Compiled patterns are chains of single atoms, pleasant to build and slow to walk. Here each chain is a run
/// of entries in one array, with what the walk needs precomputed:
///
/// - where to go on after an entry has matched, which for an alternative is behind the last one of its list;
/// - whether the walk passes an entry that has not matched, which is the same for an optional one and an
/// alternative;
/// - a group around a single set or literal is that set or literal;
/// - a kind that is just a literal is not walked at all, and not even compared when it could not win.
///
/// None of this changes an answer. A slow matcher that follows the rules word by word stands with the tests
/// (tests/script/literal_matcher.h), and the two are compared on random patterns.
class PatternProgram {
 public:
    /// What Longest found.
    struct Match {
        CREToken* token = nullptr;  ///< null when no kind matches anything
        std::size_t length = 0;
        bool displaced = false;  ///< a longer match took the place of a shorter one
    };

    /// Forgets all kinds.
    void Clear();
    /// Adds a kind behind those before. Its atoms, sets and texts are referred to, not copied.
    void AddKind(CREToken* token);
    /// Enters the kind added last in the start list of a byte. Entering it twice changes nothing; neither
    /// does a byte that can start no token, which are 0 and those of 128 and more.
    void AddStart(unsigned char byte);
    /// The longest match at `at`, by the kind added first among equals. Fills in the tag positions of the
    /// kinds with tags that it tries; those of the winner stay until it is tried again.
    Match Longest(const char* at) const;

 private:
    enum class Op : std::uint8_t { Empty, Literal, Class, Group, OpenTag, CloseTag };

    struct Entry {
        Op op = Op::Empty;
        bool repeat = false;
        bool passable = false;     // the walk goes on when this has not matched
        bool alternative = false;  // only while the chain is being laid out
        std::uint8_t tag = 0;
        std::uint32_t next = 0;             // where the walk goes on when this has matched
        std::uint32_t child = 0;            // Group: its chain
        std::uint32_t childEnd = 0;         //
        const char* literal = nullptr;      // Literal
        const std::uint8_t* set = nullptr;  // Class
    };

    struct Kind {
        CREToken* token;
        std::uint32_t begin;  // its chain
        std::uint32_t end;
        bool hasTags;
        const char* literal;  // not null: the whole pattern is this text
        std::size_t literalLength;
    };

    struct Range {
        std::uint32_t begin;
        std::uint32_t end;
    };

    Range LayOut(const REAtom* chain);
    Entry MakeEntry(const REAtom* atom);
    static void DropTrailingEmpty(std::vector<Entry>& chain);
    static void LinkAlternatives(std::vector<Entry>& chain);

    std::size_t MatchKind(const Kind& kind, const char* at) const;
    const char* Walk(Range chain, const char* p, CREToken* token, bool& complete) const;
    const char* Try(const Entry& entry, const char* p, CREToken* token) const;

    std::vector<Entry> m_entries;
    std::vector<Kind> m_kinds;
    std::array<std::vector<std::uint32_t>, 128> m_starts;  // per byte: indices of kinds, in the order added
};

}  // namespace brenta
