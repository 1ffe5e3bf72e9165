// The token kinds of a lexer laid out for matching: atoms in arrays, and for each byte the kinds that can
// start with it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "brenta/lexer.h"

namespace brenta {

/// Answers which kind matches the most at a place; see brenta/lexer.h for the rules.
///
/// Compiled patterns are chains of single atoms, pleasant to build and slow to walk. Here each chain is a run
/// of steps in one array, with what the walk needs precomputed:
///
/// - where to go on after a step has matched, which for an alternative is behind the last one of its list;
/// - whether the walk passes a step that has not matched, which is the same for an optional one and an
///   alternative;
/// - a group around a single set or text is that set or text;
/// - a group knows the bytes that it can start with, if it cannot match without taking one, and is not
///   entered for others. (Groups with tags are: what a failed try records stays recorded.)
/// - a kind that is just a text is not walked at all, and not even compared when it could not win.
///
/// None of this changes an answer. A slow matcher that follows the rules word by word stands with the tests
/// (tests/script/literal_matcher.h), and the two are compared on random patterns.
class PatternProgram {
 public:
    /// What Longest found.
    struct Match {
        CREToken* token = nullptr;  ///< null when no kind matches anything
        std::size_t length = 0;
        bool displaced = false;      ///< a longer match took the place of a shorter one
        bool mayBreakLines = false;  ///< the kind's pattern has line feeds in it
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
    enum class Op : std::uint8_t {
        Empty,
        Char,      // a text of one character
        Text,      // of more
        Set,       // one byte of it
        SetRun,    // a repeated set
        Group,     //
        Repeated,  // any other atom, `what`, with "+" or "*"
        OpenTag,
        CloseTag,
    };

    struct Step {
        Op op = Op::Empty;
        Op what = Op::Empty;
        bool passable = false;     // the walk goes on when this has not matched
        bool alternative = false;  // "|" follows
        std::uint32_t next = 1;    // steps to go when this has matched
        union {
            const char* text = nullptr;
            const std::uint8_t* set;
            std::uintptr_t tag;
            std::uint32_t child;  // index of a Chain
        };
    };

    struct Chain {
        std::uint32_t begin = 0;  // indices of steps
        std::uint32_t end = 0;
        const std::uint8_t* firstBytes = nullptr;  // not null: the group has to start with one of these
    };

    struct Kind {
        CREToken* token;
        std::uint32_t chain;
        bool hasTags;
        bool mayBreakLines;
        const char* text;  // not null: the whole pattern is this text
        std::size_t textLength;
    };

    /// Where a walk stopped, and whether that was the end of the chain.
    struct Stop {
        const char* place;
        bool complete;
    };

    std::uint32_t LayOut(const REAtom* atoms);
    Step MakeStep(const REAtom* atom);
    Step MakeGroup(const REAtom* atom);
    const std::uint8_t* FindFirstBytes(const Chain& chain);
    bool AddFirstBytes(const Step& step, RECharClass& bytes) const;
    static void DropTrailingEmpty(std::vector<Step>& steps);
    static void LinkAlternatives(std::vector<Step>& steps);
    static bool MayBreakLines(const REAtom* atoms);

    std::size_t MatchKind(const Kind& kind, const char* at) const;
    Stop Walk(const Chain& chain, const char* p, CREToken* token) const;
    const char* TryGroup(const Step& step, const char* p, CREToken* token) const;
    const char* Repeat(const Step& step, const char* p, CREToken* token) const;

    std::vector<Step> m_steps;
    std::vector<Chain> m_chains;
    std::deque<RECharClass> m_firstBytes;
    std::vector<Kind> m_kinds;
    std::array<std::vector<std::uint32_t>, 128> m_starts;  // per byte: indices of kinds, in the order added
};

}  // namespace brenta
