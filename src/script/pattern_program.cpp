#include "script/pattern_program.h"

#include <algorithm>
#include <cstring>

namespace brenta {

namespace {

std::size_t Byte(char c) {
    return static_cast<unsigned char>(c);
}

// Where the text ends in `p` if `p` begins with it, else null.
const char* SkipText(const char* p, const char* text) {
    for (; *text != 0; ++p, ++text) {
        if (*p != *text) return nullptr;
    }
    return p;
}

}  // namespace

void PatternProgram::Clear() {
    m_steps.clear();
    m_chains.clear();
    m_firstBytes.clear();
    m_kinds.clear();
    for (auto& list : m_starts)
        list.clear();
}

// ---------------------------------------------------------------------------------------------------------------------
// Laying out

void PatternProgram::AddKind(CREToken* token) {
    // Groups lie before the chain they are in, so all steps that the kind adds are looked at.
    const std::size_t first = m_steps.size();
    Kind kind{token, LayOut(token->pattern), false, MayBreakLines(token->pattern), nullptr, 0};
    for (std::size_t i = first; i < m_steps.size(); ++i)
        kind.hasTags |= m_steps[i].op == Op::OpenTag || m_steps[i].op == Op::CloseTag;
    const Chain& chain = m_chains[kind.chain];
    if (chain.end - chain.begin == 1) {
        const Step& only = m_steps[chain.begin];
        if ((only.op == Op::Text || only.op == Op::Char) && !only.repeat) {
            kind.text = only.text;
            kind.textLength = std::strlen(only.text);
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

// The steps of a chain stand together, behind those of the groups in it.
std::uint32_t PatternProgram::LayOut(const REAtom* atoms) {
    std::vector<Step> steps;
    for (; atoms != nullptr; atoms = atoms->next)
        steps.push_back(MakeStep(atoms));
    DropTrailingEmpty(steps);
    LinkAlternatives(steps);
    Chain chain;
    chain.begin = static_cast<std::uint32_t>(m_steps.size());
    m_steps.insert(m_steps.end(), steps.begin(), steps.end());
    chain.end = static_cast<std::uint32_t>(m_steps.size());
    chain.firstBytes = FindFirstBytes(chain);
    m_chains.push_back(chain);
    return static_cast<std::uint32_t>(m_chains.size() - 1);
}

PatternProgram::Step PatternProgram::MakeStep(const REAtom* atom) {
    Step step;
    if (atom->child != nullptr) {
        step = MakeGroup(atom);
    } else if ((atom->flags & (REAtom::kOpenTag | REAtom::kCloseTag)) != 0) {
        step.op = (atom->flags & REAtom::kOpenTag) != 0 ? Op::OpenTag : Op::CloseTag;
        step.tag = atom->data;
    } else if ((atom->flags & REAtom::kCharClass) != 0) {
        step.op = Op::Set;
        step.set = reinterpret_cast<const RECharClass*>(atom->data)->entries;
    } else if (atom->data != 0) {
        step.text = StrPtr(static_cast<STRID>(atom->data));
        step.op = step.text[1] == 0 ? Op::Char : Op::Text;
    }
    step.repeat = (atom->flags & REAtom::kRepeat) != 0;
    step.alternative = (atom->flags & REAtom::kAlternative) != 0;
    step.passable = step.alternative || (atom->flags & REAtom::kOptional) != 0;
    if (step.op == Op::Set && step.repeat) {
        step.op = Op::SetRun;
        step.repeat = false;
    }
    return step;
}

PatternProgram::Step PatternProgram::MakeGroup(const REAtom* atom) {
    Step group;
    group.op = Op::Group;
    group.child = LayOut(atom->child);
    const Chain& chain = m_chains[group.child];
    if (chain.end - chain.begin != 1) return group;
    const Step& only = m_steps[chain.begin];
    const bool single = only.op == Op::Set || only.op == Op::Char || only.op == Op::Text;
    return single && !only.repeat && !only.passable ? only : group;
}

// The bytes of which a chain has to take one first, or null if it may match without taking any, or sets tags.
const std::uint8_t* PatternProgram::FindFirstBytes(const Chain& chain) {
    RECharClass bytes{};
    for (std::uint32_t i = chain.begin; i < chain.end; ++i) {
        const Step& step = m_steps[i];
        if (step.op == Op::Group) {
            const std::uint8_t* inner = m_chains[step.child].firstBytes;
            if (inner == nullptr) return nullptr;
            for (std::size_t b = 0; b < sizeof bytes.entries; ++b)
                bytes.entries[b] |= inner[b];
        } else if (!AddFirstByte(step, bytes)) {
            return nullptr;
        }
        if (!step.passable) return m_firstBytes.emplace_back(bytes).entries;
    }
    return nullptr;
}

// The same for a step that is no group; false for null.
bool PatternProgram::AddFirstByte(const Step& step, RECharClass& bytes) {
    switch (step.op) {
        case Op::Char:
        case Op::Text:
            bytes.entries[Byte(*step.text)] = 1;
            return true;
        case Op::Set:
        case Op::SetRun:
            for (std::size_t b = 0; b < sizeof bytes.entries; ++b)
                bytes.entries[b] |= step.set[b];
            return true;
        default:
            return false;
    }
}

// An empty atom at a chain's end takes nothing and ends nothing: an alternative before it passes just as
// well.
void PatternProgram::DropTrailingEmpty(std::vector<Step>& steps) {
    while (!steps.empty() && steps.back().op == Op::Empty)
        steps.pop_back();
}

// One alternative that matches ends its list: the walk goes on behind the first atom that carries no "|".
void PatternProgram::LinkAlternatives(std::vector<Step>& steps) {
    for (std::size_t i = 0; i < steps.size(); ++i) {
        if (!steps[i].alternative) continue;
        std::size_t last = i + 1;
        while (last < steps.size() && steps[last].alternative)
            ++last;
        steps[i].next = static_cast<std::uint32_t>(std::min(last + 1, steps.size()) - i);
    }
}

bool PatternProgram::MayBreakLines(const REAtom* atoms) {
    for (; atoms != nullptr; atoms = atoms->next) {
        if (MayBreakLines(atoms->child)) return true;
        if ((atoms->flags & REAtom::kCharClass) != 0) {
            if (reinterpret_cast<const RECharClass*>(atoms->data)->entries[Byte('\n')] != 0) return true;
        } else if ((atoms->flags & (REAtom::kOpenTag | REAtom::kCloseTag)) == 0) {
            if (std::strchr(StrPtr(static_cast<STRID>(atoms->data)), '\n') != nullptr) return true;
        }
    }
    return false;
}

// ---------------------------------------------------------------------------------------------------------------------
// Matching

PatternProgram::Match PatternProgram::Longest(const char* at) const {
    Match best;
    if (Byte(*at) >= m_starts.size()) return best;
    for (const std::uint32_t index : m_starts[Byte(*at)]) {
        const Kind& kind = m_kinds[index];
        std::size_t length = 0;
        if (kind.text == nullptr) {
            length = MatchKind(kind, at);
        } else if (kind.textLength > best.length) {
            length = SkipText(at, kind.text) != nullptr ? kind.textLength : 0;
        }
        if (length <= best.length) continue;
        best = {kind.token, length, best.length > 0, kind.mayBreakLines};
    }
    return best;
}

// The walk's place counts even where the chain fails: a kind matches what it has taken until then.
std::size_t PatternProgram::MatchKind(const Kind& kind, const char* at) const {
    if (kind.hasTags) {
        std::fill(std::begin(kind.token->tagStarts), std::end(kind.token->tagStarts), nullptr);
        std::fill(std::begin(kind.token->tagEnds), std::end(kind.token->tagEnds), nullptr);
    }
    return static_cast<std::size_t>(Walk(m_chains[kind.chain], at, kind.token).place - at);
}

// When you edit this loop: every case either goes on with the next step of a match, or falls out of the
// switch as "has not matched". Tags never do. Recursion is one level per group, bounded where patterns are
// compiled.
PatternProgram::Stop PatternProgram::Walk(const Chain& chain, const char* p, CREToken* token) const {
    const Step* step = m_steps.data() + chain.begin;
    const Step* const end = m_steps.data() + chain.end;
    while (step != end) {
        const char* taken = nullptr;
        switch (step->op) {
            case Op::OpenTag:
                token->tagStarts[step->tag] = p;
                ++step;
                continue;
            case Op::CloseTag:
                token->tagEnds[step->tag] = p;
                ++step;
                continue;
            case Op::SetRun:
                taken = p;
                while (step->set[Byte(*taken)] != 0)
                    ++taken;
                if (taken == p) taken = nullptr;
                break;
            default:
                taken = step->repeat ? Repeat(*step, p, token) : Try(*step, p, token);
                break;
        }
        if (taken != nullptr) {
            p = taken;
            step += step->next;
        } else if (step->passable) {
            ++step;
        } else {
            return {p, false};
        }
    }
    return {p, true};
}

const char* PatternProgram::TryGroup(const Step& step, const char* p, CREToken* token) const {
    const Chain& chain = m_chains[step.child];
    if (chain.firstBytes != nullptr && chain.firstBytes[Byte(*p)] == 0) return nullptr;
    const Stop stop = Walk(chain, p, token);
    return stop.complete ? stop.place : nullptr;
}

// One try of an atom at `p`: where it ends, or null.
inline const char* PatternProgram::Try(const Step& step, const char* p, CREToken* token) const {
    switch (step.op) {
        case Op::Char:
            return *p == *step.text ? p + 1 : nullptr;
        case Op::Set:
            return step.set[Byte(*p)] != 0 ? p + 1 : nullptr;
        case Op::Text:
            return SkipText(p, step.text);
        case Op::Group:
            return TryGroup(step, p, token);
        default:
            return p;
    }
}

// Where the last successful try ends, or null if the first one fails. A try that takes nothing is the last:
// the next would do the same.
const char* PatternProgram::Repeat(const Step& step, const char* p, CREToken* token) const {
    const char* end = Try(step, p, token);
    while (end != nullptr && end != p) {
        p = end;
        end = Try(step, p, token);
        if (end == nullptr) return p;
    }
    return end;
}

}  // namespace brenta
