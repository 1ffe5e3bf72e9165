// A slow matcher that follows the rules of the pattern language word by word on the atoms as compiled: the
// oracle for the library's own, which lays patterns out and leaves work away.
#pragma once

#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "brenta/lexer.h"
#include "script/pattern.h"

namespace brenta::fuzz {

class LiteralMatcher {
 public:
    struct Token {
        int id = 0;
        std::size_t length = 0;
        bool skip = false;
        bool displaced = false;
        const char* starts[5] = {};
        const char* ends[5] = {};
    };

    /// False if the pattern does not compile.
    bool Define(int id, const char* pattern, bool skip) {
        auto kind = std::make_unique<CREToken>(kNoName, id, skip);
        kind->pattern = new REAtom;
        if (!PatternCompiler(m_classes, pattern).Compile(kind->pattern)) return false;
        m_kinds.push_back(std::move(kind));
        return true;
    }

    /// What the lexer has to find at `at`; id 0 for nothing.
    Token Next(const char* at) {
        Token best;
        for (const auto& kind : m_kinds) {
            if (!StartsWith(kind->pattern, static_cast<unsigned char>(*at))) continue;
            m_token = Token();
            Walk(kind->pattern, at);
            m_token.length = static_cast<std::size_t>(m_stop - at);
            if (m_token.length <= best.length) continue;
            m_token.displaced = best.displaced || best.length > 0;
            m_token.id = kind->id;
            m_token.skip = kind->skip;
            best = m_token;
        }
        return best;
    }

    /// Some patterns need very many tries of atoms: gives up after a number of them, and answers anything
    /// then.
    void GiveUpAfter(long steps) { m_stepsLeft = steps; }
    bool GaveUp() const { return m_stepsLeft < 0; }

 private:
    static bool Has(const REAtom* atom, unsigned int flags) { return (atom->flags & flags) != 0; }

    static bool IsInSet(const REAtom* atom, unsigned char byte) {
        return reinterpret_cast<const RECharClass*>(atom->data)->entries[byte] != 0;
    }

    static bool StartsWith(const REAtom* atom, unsigned char byte) {
        if (byte == 0 || byte >= 128) return false;
        for (; atom != nullptr; atom = atom->next) {
            if (Has(atom, REAtom::kOpenTag | REAtom::kCloseTag)) continue;
            if (atom->child != nullptr) {
                if (StartsWith(atom->child, byte)) return true;
            } else if (Has(atom, REAtom::kCharClass)) {
                if (IsInSet(atom, byte)) return true;
            } else if (atom->data != 0) {
                if (static_cast<unsigned char>(*StrPtr(static_cast<STRID>(atom->data))) == byte) return true;
            }
            if (!Has(atom, REAtom::kOptional | REAtom::kAlternative)) return false;
        }
        return false;
    }

    // Walks a chain from `p`; false where it fails. Either way m_stop is where it stopped.
    bool Walk(const REAtom* atom, const char* p) {
        while (atom != nullptr) {
            m_stop = p;
            if (Has(atom, REAtom::kOpenTag)) m_token.starts[atom->data] = p;
            if (Has(atom, REAtom::kCloseTag)) m_token.ends[atom->data] = p;
            if (Has(atom, REAtom::kOpenTag | REAtom::kCloseTag)) {
                atom = atom->next;
                continue;
            }
            int matches = 0;
            const char* tried = p;
            while (Try(atom, tried)) {
                ++matches;
                const bool empty = tried == p;
                p = tried;
                if (empty || !Has(atom, REAtom::kRepeat)) break;
            }
            if (matches > 0 && Has(atom, REAtom::kAlternative)) {
                atom = atom->next;
                while (atom != nullptr && Has(atom, REAtom::kAlternative))
                    atom = atom->next;
            } else if (matches == 0 && !Has(atom, REAtom::kOptional | REAtom::kAlternative)) {
                m_stop = p;
                return false;
            }
            if (atom != nullptr) atom = atom->next;
        }
        m_stop = p;
        return true;
    }

    // One try of an atom: moves `p` behind what it matches.
    bool Try(const REAtom* atom, const char*& p) {
        if (m_stepsLeft < 0 || --m_stepsLeft < 0) return false;
        if (atom->child != nullptr) {
            if (!Walk(atom->child, p)) return false;
            p = m_stop;
            return true;
        }
        if (Has(atom, REAtom::kCharClass)) return IsInSet(atom, static_cast<unsigned char>(*p)) && ++p;
        const char* text = StrPtr(static_cast<STRID>(atom->data));
        if (std::strncmp(p, text, std::strlen(text)) != 0) return false;
        p += std::strlen(text);
        return true;
    }

    CCoreLexer m_classes;  // keeps the sets
    std::vector<std::unique_ptr<CREToken>> m_kinds;
    Token m_token;
    const char* m_stop = nullptr;
    long m_stepsLeft = std::numeric_limits<long>::max();
};

}  // namespace brenta::fuzz
