#include "script/pattern_program.h"

#include <algorithm>
#include <cstring>

namespace brenta {

void PatternProgram::Clear() {
    m_entries.clear();
    m_kinds.clear();
    for (auto& list : m_starts)
        list.clear();
}

// ---------------------------------------------------------------------------------------------------------------------
// Laying out

void PatternProgram::AddKind(CREToken* token) {
    const Range chain = LayOut(token->pattern);
    Kind kind{token, chain.begin, chain.end, false, nullptr, 0};
    // Tags inside groups lie before the kind's own chain, so all entries since the kind before are looked at.
    const std::size_t first = m_kinds.empty() ? 0 : m_kinds.back().end;
    for (std::size_t i = first; i < m_entries.size(); ++i)
        kind.hasTags |= m_entries[i].tag != 0;
    if (chain.end - chain.begin == 1) {
        const Entry& only = m_entries[chain.begin];
        if (only.op == Op::Literal && !only.repeat) {
            kind.literal = only.literal;
            kind.literalLength = std::strlen(only.literal);
        }
    }
    m_kinds.push_back(kind);
}

void PatternProgram::AddStart(unsigned char byte) {
    if (byte == 0 || byte >= m_starts.size()) return;
    const auto kind = static_cast<std::uint32_t>(m_kinds.size() - 1);
    auto& list = m_starts[byte];
    if (list.empty() || list.back() != kind) list.push_back(kind);
}

// The entries of a chain stand together, behind those of the groups in it.
PatternProgram::Range PatternProgram::LayOut(const REAtom* chain) {
    std::vector<Entry> entries;
    for (; chain != nullptr; chain = chain->next)
        entries.push_back(MakeEntry(chain));
    DropTrailingEmpty(entries);
    LinkAlternatives(entries);
    const auto begin = static_cast<std::uint32_t>(m_entries.size());
    for (Entry& entry : entries) {
        entry.next += begin;
        m_entries.push_back(entry);
    }
    return {begin, static_cast<std::uint32_t>(m_entries.size())};
}

PatternProgram::Entry PatternProgram::MakeEntry(const REAtom* atom) {
    Entry entry;
    if (atom->child != nullptr) {
        const Range child = LayOut(atom->child);
        entry.op = Op::Group;
        entry.child = child.begin;
        entry.childEnd = child.end;
        if (child.end - child.begin == 1) {
            const Entry& only = m_entries[child.begin];
            const bool plain = !only.repeat && !only.passable;
            if (plain && (only.op == Op::Literal || only.op == Op::Class)) entry = only;
        }
    } else if ((atom->flags & REAtom::kOpenTag) != 0) {
        entry.op = Op::OpenTag;
        entry.tag = static_cast<std::uint8_t>(atom->data);
    } else if ((atom->flags & REAtom::kCloseTag) != 0) {
        entry.op = Op::CloseTag;
        entry.tag = static_cast<std::uint8_t>(atom->data);
    } else if ((atom->flags & REAtom::kCharClass) != 0) {
        entry.op = Op::Class;
        entry.set = reinterpret_cast<const RECharClass*>(atom->data)->entries;
    } else if (atom->data != 0) {
        entry.op = Op::Literal;
        entry.literal = StrPtr(static_cast<STRID>(atom->data));
    }
    entry.repeat = (atom->flags & REAtom::kRepeat) != 0;
    entry.alternative = (atom->flags & REAtom::kAlternative) != 0;
    entry.passable = entry.alternative || (atom->flags & REAtom::kOptional) != 0;
    return entry;
}

// An empty atom at a chain's end takes nothing and ends nothing, unless it is the last of a list of
// alternatives.
void PatternProgram::DropTrailingEmpty(std::vector<Entry>& chain) {
    while (!chain.empty() && chain.back().op == Op::Empty) {
        if (chain.size() > 1 && chain[chain.size() - 2].alternative) return;
        chain.pop_back();
    }
}

// One alternative that matches ends its list: the walk goes on behind the first atom that carries no "|".
void PatternProgram::LinkAlternatives(std::vector<Entry>& chain) {
    for (std::size_t i = 0; i < chain.size(); ++i) {
        std::size_t next = i + 1;
        if (chain[i].alternative) {
            while (next < chain.size() && chain[next].alternative)
                ++next;
            next = std::min(next + 1, chain.size());
        }
        chain[i].next = static_cast<std::uint32_t>(next);
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Matching

namespace {

// The length of the text if `p` begins with it, else 0.
std::size_t BeginsWith(const char* p, const char* text) {
    std::size_t length = 0;
    while (text[length] != 0 && p[length] == text[length])
        ++length;
    return text[length] == 0 ? length : 0;
}

}  // namespace

PatternProgram::Match PatternProgram::Longest(const char* at) const {
    Match best;
    const auto byte = static_cast<unsigned char>(*at);
    if (byte >= m_starts.size()) return best;
    for (const std::uint32_t index : m_starts[byte]) {
        const Kind& kind = m_kinds[index];
        std::size_t length = 0;
        if (kind.literal == nullptr) {
            length = MatchKind(kind, at);
        } else if (kind.literalLength > best.length) {
            length = BeginsWith(at, kind.literal);
        }
        if (length <= best.length) continue;
        best.displaced |= best.length > 0;
        best.token = kind.token;
        best.length = length;
    }
    return best;
}

// The walk's place counts even where the chain fails: a kind matches what it has taken until then.
std::size_t PatternProgram::MatchKind(const Kind& kind, const char* at) const {
    if (kind.hasTags) {
        std::fill(std::begin(kind.token->tagStarts), std::end(kind.token->tagStarts), nullptr);
        std::fill(std::begin(kind.token->tagEnds), std::end(kind.token->tagEnds), nullptr);
    }
    bool complete = false;
    const char* end = Walk({kind.begin, kind.end}, at, kind.token, complete);
    return static_cast<std::size_t>(end - at);
}

const char* PatternProgram::Walk(Range chain, const char* p, CREToken* token, bool& complete) const {
    for (std::uint32_t i = chain.begin; i < chain.end;) {
        const Entry& entry = m_entries[i];
        if (entry.tag != 0) {
            (entry.op == Op::OpenTag ? token->tagStarts : token->tagEnds)[entry.tag] = p;
            ++i;
            continue;
        }
        const char* end = Try(entry, p, token);
        if (end == nullptr) {
            if (!entry.passable) {
                complete = false;
                return p;
            }
            ++i;
            continue;
        }
        // A try that takes nothing is the last one: the next would do the same.
        while (entry.repeat && end != p) {
            p = end;
            const char* again = Try(entry, p, token);
            if (again == nullptr) break;
            end = again;
        }
        p = end;
        i = entry.next;
    }
    complete = true;
    return p;
}

// One try at `p`: where it ends, or null.
const char* PatternProgram::Try(const Entry& entry, const char* p, CREToken* token) const {
    switch (entry.op) {
        case Op::Literal: {
            const std::size_t length = BeginsWith(p, entry.literal);
            return length == 0 ? nullptr : p + length;
        }
        case Op::Class:
            return entry.set[static_cast<unsigned char>(*p)] != 0 ? p + 1 : nullptr;
        case Op::Group: {
            bool complete = false;
            const char* end = Walk({entry.child, entry.childEnd}, p, token, complete);
            return complete ? end : nullptr;
        }
        default:
            return p;
    }
}

}  // namespace brenta
