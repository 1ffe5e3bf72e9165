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
        if (only.op == Op::Text || only.op == Op::Char) {
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
    step.alternative = (atom->flags & REAtom::kAlternative) != 0;
    step.passable = step.alternative || (atom->flags & REAtom::kOptional) != 0;
    if ((atom->flags & REAtom::kRepeat) != 0) {
        step.what = step.op;
        step.op = step.op == Op::Set ? Op::SetRun : Op::Repeated;
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
    return single && !only.passable ? only : group;
}

// The bytes of which a chain has to take one first, or null if it may match without taking any, or sets tags.
const std::uint8_t* PatternProgram::FindFirstBytes(const Chain& chain) {
    RECharClass bytes{};
    for (std::uint32_t i = chain.begin; i < chain.end; ++i) {
        if (!AddFirstBytes(m_steps[i], bytes)) return nullptr;
        if (!m_steps[i].passable) return m_firstBytes.emplace_back(bytes).entries;
    }
    return nullptr;
}

// The same for one step; false for null.
bool PatternProgram::AddFirstBytes(const Step& step, RECharClass& bytes) const {
    const std::uint8_t* more = nullptr;
    switch (step.op == Op::Repeated ? step.what : step.op) {
        case Op::Char:
        case Op::Text:
            bytes.entries[Byte(*step.text)] = 1;
            return true;
        case Op::Set:
        case Op::SetRun:
            more = step.set;
            break;
        case Op::Group:
            more = m_chains[step.child].firstBytes;
            break;
        default:
            break;
    }
    for (std::size_t b = 0; more != nullptr && b < sizeof bytes.entries; ++b)
        bytes.entries[b] |= more[b];
    return more != nullptr;
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

// When you edit this loop: a case either goes on with the next step itself, as tags do, or sets `taken` to
// where its match ends, null for none. Recursion is one level per group, bounded where patterns are compiled.
PatternProgram::Stop PatternProgram::Walk(const Chain& chain, const char* p, CREToken* token) const {
    const Step* step = m_steps.data() + chain.begin;
    const Step* const end = m_steps.data() + chain.end;
    while (step != end) {
        const char* taken = nullptr;
        switch (step->op) {
            case Op::Empty:
                taken = p;
                break;
            case Op::Char:
                if (*p == *step->text) taken = p + 1;
                break;
            case Op::Text:
                if (*p == *step->text) taken = SkipText(p + 1, step->text + 1);
                break;
            case Op::Set:
                if (step->set[Byte(*p)] != 0) taken = p + 1;
                break;
            case Op::SetRun:
                taken = p;
                while (step->set[Byte(*taken)] != 0)
                    ++taken;
                if (taken == p) taken = nullptr;
                break;
            case Op::Group:
                taken = TryGroup(*step, p, token);
                break;
            case Op::Repeated:
                taken = Repeat(*step, p, token);
                break;
            case Op::OpenTag:
                token->tagStarts[step->tag] = p;
                ++step;
                continue;
            case Op::CloseTag:
                token->tagEnds[step->tag] = p;
                ++step;
                continue;
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

// Where the last successful try of a repeated atom ends, or null if the first one fails. A try that takes
// nothing is the last: the next would do the same.
const char* PatternProgram::Repeat(const Step& step, const char* p, CREToken* token) const {
    const char* done = nullptr;
    for (;;) {
        const char* end = p;
        if (step.what == Op::Group) {
            end = TryGroup(step, p, token);
        } else if (step.what != Op::Empty) {
            end = SkipText(p, step.text);
        }
        if (end == nullptr) return done;
        if (end == p) return end;
        done = p = end;
    }
}

}  // namespace brenta
