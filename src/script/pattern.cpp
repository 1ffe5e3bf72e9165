#include "script/pattern.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "foundation/characters.h"

namespace brenta {

namespace {

constexpr std::string_view kOperators = "|)<?+*([>!";
constexpr char kLastTag = '4';

bool IsOperator(char c) {
    return kOperators.find(c) != std::string_view::npos;
}

REAtom* AppendAtom(REAtom* atom) {
    atom->next = new REAtom;
    return atom->next;
}

// Enters every byte from one end of a range to the other, whichever is the lower.
void AddRange(RECharClass& set, char from, char to) {
    const unsigned int a = static_cast<unsigned char>(from);
    const unsigned int b = static_cast<unsigned char>(to);
    std::fill(set.entries + std::min(a, b), set.entries + std::max(a, b) + 1, std::uint8_t{1});
}

void Negate(RECharClass& set) {
    for (std::uint8_t& entry : set.entries)
        entry ^= 1;
    set.entries[0] = 0;
}

}  // namespace

bool PatternCompiler::Compile(REAtom* root) {
    return CompileChain(root, 0) && (*m_p == 0 || Fail("Unexpected ')'."));
}

// chain := { "!" | tag | operand [ "*" | "+" | "?" | "|" ] }, up to the end of the pattern or a ")"
//
// `atom` is always the empty atom at the end of the chain, to be filled in place. One more is appended
// whenever the pattern goes on, so that a chain closed by ")" ends with an empty atom; the matching rules are
// in terms of that.
bool PatternCompiler::CompileChain(REAtom* atom, int depth) {
    for (;;) {
        SkipWhite();
        if (*m_p == 0 || *m_p == ')') return true;
        if (*m_p == '!') {
            atom->flags |= REAtom::kNegated;
            ++m_p;
            continue;
        }
        if (*m_p == '<') {
            if (!CompileTag(atom)) return false;
        } else {
            if (!CompileOperand(atom, depth)) return false;
            ReadPostfix(atom);
        }
        if (*m_p == 0) return true;
        atom = AppendAtom(atom);
    }
}

// tag := "<" [ "/" ] ( "1" | "2" | "3" | "4" ) ">"
bool PatternCompiler::CompileTag(REAtom* atom) {
    ++m_p;
    SkipWhite();
    const bool closing = *m_p == '/';
    if (closing) ++m_p;
    if (*m_p < '1' || *m_p > kLastTag) return Fail("Tag specifier out of range. Use 1 to 8.");
    const char digit = *m_p++;
    if (*m_p != '>') return Fail("Missing closing '>' in tag.");
    ++m_p;
    atom->flags |= closing ? REAtom::kCloseTag : REAtom::kOpenTag;
    atom->data = static_cast<std::uintptr_t>(digit - '0');
    return true;
}

// operand := "(" chain ")" | "[" items "]" | literal, which may be empty
bool PatternCompiler::CompileOperand(REAtom* atom, int depth) {
    switch (*m_p) {
        case '(':
            return CompileGroup(atom, depth);
        case '[':
            return CompileClass(atom);
        case '>':
            // An operator character that begins nothing: it would be read as empty atoms without end.
            return Fail("Unexpected '>'.");
        default:
            return CompileLiteral(atom);
    }
}

bool PatternCompiler::CompileGroup(REAtom* atom, int depth) {
    if (depth == kMaxGroupDepth) return Fail("Groups nested too deeply.");
    ++m_p;
    atom->child = new REAtom;
    if (!CompileChain(atom->child, depth + 1)) return false;
    if (*m_p != ')') return Fail("Missing closing ')'.");
    ++m_p;
    return true;
}

bool PatternCompiler::CompileClass(REAtom* atom) {
    ++m_p;
    const bool negated = *m_p == '!';
    if (negated) ++m_p;
    RECharClass set{};
    if (!CompileItems(set)) return false;
    if (negated) Negate(set);
    atom->flags |= REAtom::kCharClass;
    atom->data = reinterpret_cast<std::uintptr_t>(m_lexer.AddCharClass(set));
    return true;
}

// items := { character | escape | end "-" end }, up to "]"
//
// A range's end, unless it was an escape, is the start of a range that follows: [a-c-e] is [a-e].
bool PatternCompiler::CompileItems(RECharClass& set) {
    char start = 0;  // the character before, if a range may start with it
    bool inRange = false;
    for (; *m_p != ']'; ++m_p) {
        char c = *m_p;
        const bool escaped = c == '\\';
        if (c == 0 || (escaped && m_p[1] == 0)) return Fail("Missing closing ']'.");
        if (c == '-') {
            if (inRange) return Fail("Already in a range specification.");
            if (start == 0) return Fail("Missing start character in range.");
            inRange = true;
            continue;
        }
        if (escaped) ReadEscape(c);
        AddRange(set, inRange ? start : c, c);
        start = inRange && escaped ? char{0} : c;
        inRange = false;
    }
    if (inRange) return Fail("Missing closing ']'.");
    ++m_p;
    return true;
}

bool PatternCompiler::CompileLiteral(REAtom* atom) {
    std::string text;
    for (; *m_p != 0 && !IsOperator(*m_p); ++m_p) {
        char c = *m_p;
        if (c == '\\' && !ReadEscape(c)) return Fail("Missing character after '\\'.");
        text += c;
    }
    atom->data = static_cast<std::uintptr_t>(StrId(text.c_str()));
    return true;
}

void PatternCompiler::ReadPostfix(REAtom* atom) {
    SkipWhite();
    switch (*m_p) {
        case '*':
            atom->flags |= REAtom::kRepeat | REAtom::kOptional;
            break;
        case '+':
            atom->flags |= REAtom::kRepeat;
            break;
        case '?':
            atom->flags |= REAtom::kOptional;
            break;
        case '|':
            atom->flags |= REAtom::kAlternative;
            break;
        default:
            return;
    }
    ++m_p;
    SkipWhite();
}

// Steps from a backslash onto the character behind it and gives what both stand for; false at the pattern's
// end.
bool PatternCompiler::ReadEscape(char& c) {
    if (m_p[1] == 0) return false;
    c = *++m_p;
    if (c == 'r') c = '\r';
    if (c == 'n') c = '\n';
    if (c == 't') c = '\t';
    return true;
}

void PatternCompiler::SkipWhite() {
    while (IsSpace(*m_p))
        ++m_p;
}

bool PatternCompiler::Fail(const char* message) {
    m_error = message;
    return false;
}

void FreeAtoms(REAtom* chain) {
    while (chain != nullptr) {
        REAtom* next = chain->next;
        FreeAtoms(chain->child);
        delete chain;
        chain = next;
    }
}

REAtom* CopyAtoms(const REAtom* chain, ClassMapper mapClass, void* context) {
    REAtom* copy = nullptr;
    REAtom** end = &copy;
    for (; chain != nullptr; chain = chain->next) {
        auto* atom = new REAtom;
        atom->flags = chain->flags;
        atom->data = chain->data;
        if ((chain->flags & REAtom::kCharClass) != 0) {
            auto* set = mapClass(reinterpret_cast<RECharClass*>(chain->data), context);
            atom->data = reinterpret_cast<std::uintptr_t>(set);
        }
        atom->child = CopyAtoms(chain->child, mapClass, context);
        *end = atom;
        end = &atom->next;
    }
    return copy;
}

}  // namespace brenta
