#include "script/surprises.h"

#include <algorithm>
#include <array>
#include <climits>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "script/token_classes.h"
#include "script/token_outline.h"

namespace brenta {

namespace {

using std::size_t;
constexpr size_t kNone = TokenOutline::kNone;

// How far from a && or || a guard and what it guards are looked for, and how many blocks outwards a variable.
constexpr size_t kGuardReach = 40;
constexpr size_t kScopeReach = 100;

std::string Quoted(TokId id) {
    return "'" + std::string(CCoreScriptLexer::GetTokenErrorText(id)) + "'";
}

std::string_view TextOf(const ScriptToken& token) {
    return {token.text, token.length};
}

bool IsUnitName(std::string_view text) {
    static constexpr std::array<std::string_view, 13> kNames = {
        "in",   "ins", "inch", "inches", "cm",         "cms",         "mil",
        "mils", "mm",  "mms",  "um",     "millimeter", "millimeters",
    };
    return std::find(kNames.begin(), kNames.end(), text) != kNames.end();
}

// What joins a number to a neighbour more strongly than a sum does.
bool IsFactorSign(TokId id) {
    return id == TOK_MUL || id == TOK_DIV || id == TOK_MOD || id == TOK_MEMBER;
}

// A constant of which only the beginning is there; it has the value 0.
bool IsCutShort(const ScriptToken& token) {
    const bool isInteger =
        token.id == CHAR_CONSTANT || token.id == BINARY_CONSTANT || token.id == HEX_CONSTANT;
    return isInteger && token.length == 0;
}

bool EndsWith(const ScriptToken& token, std::string_view end) {
    return TextOf(token).ends_with(end);
}

// One rule per function, called at each token that may be the heart of its surprise.
class SurpriseFinder {
 public:
    explicit SurpriseFinder(const TIter<ScriptToken*>& first) : m_outline(first), m_scopes(1) {}

    void Run(TOrderedList<ScriptWarning>& warnings) {
        for (size_t i = 0; i < m_outline.Count(); ++i) {
            TrackScope(i);
            CheckToken(i);
            if (m_outline.EndsValue(i) && m_outline.BeginsValue(i + 1)) CheckNeighbours(i);
        }
        std::stable_sort(m_findings.begin(), m_findings.end(),
                         [](const Finding& a, const Finding& b) { return a.place < b.place; });
        for (const Finding& finding : m_findings) {
            const ScriptToken& token = Token(finding.place);
            warnings.Add({{token.file, token.line}, finding.text.c_str()});
        }
    }

 private:
    struct Finding {
        size_t place;
        std::string text;
    };
    /// What is known of a variable.
    struct Declared {
        bool isList = false;
        bool certain = false;  // declared whenever its block runs
    };
    using Scope = std::map<STRID, Declared>;

    TokId Id(size_t i) const { return m_outline.Id(i); }
    const ScriptToken& Token(size_t i) const { return m_outline.Token(i); }
    BracketRole Role(size_t i) const { return m_outline.Role(i); }
    bool Is(size_t i, BracketRole role) const { return Role(i) == role; }

    void Warn(size_t i, const std::string& text);
    void CheckToken(size_t i);
    void TrackScope(size_t i);

    // operators and values
    void CheckUnary(size_t i);
    void CheckSum(size_t i);
    void CheckComment(size_t i);
    void CheckQuotient(size_t i);
    void CheckLogic(size_t i);
    void CheckAssignment(size_t i);
    void CheckNeighbours(size_t i);
    void CheckNumber(size_t i);
    void CheckText(size_t i);
    void CheckSubscript(size_t i);
    // statements
    void CheckCurly(size_t i);
    void CheckSemicolon(size_t i);
    void CheckElse(size_t i);
    void CheckHeader(size_t i);
    void CheckForHeader(size_t open);
    void CheckDeclaration(size_t i);
    void Declare(size_t i, bool isList);

    size_t FindGuarded(size_t k, size_t begin, size_t op) const;
    bool IsSameName(size_t i, size_t other) const;
    bool IsTested(size_t use, size_t begin, size_t end) const;
    bool IsBounded(size_t use, size_t begin, size_t end) const;
    bool IsListInitialiser(size_t i) const;
    const Declared* Find(STRID name) const;

    TokenOutline m_outline;
    std::vector<Finding> m_findings;
    std::vector<Scope> m_scopes;  // the first is the global one
};

void SurpriseFinder::Warn(size_t i, const std::string& text) {
    m_findings.push_back({i, text});
}

void SurpriseFinder::CheckToken(size_t i) {
    switch (Id(i)) {
        case TOK_ADD:
        case TOK_SUB:
            CheckUnary(i);
            CheckSum(i);
            break;
        case TOK_INV:
        case TOK_NOT:
            CheckUnary(i);
            break;
        case TOK_INC:
        case TOK_DEC:
            Warn(i, "There is no " + Quoted(Id(i)) +
                        ": \"Illigal expression.\" when it runs. Write 'x = x + 1'.");
            break;
        case TOK_DIV:
            CheckComment(i);
            CheckQuotient(i);
            break;
        case TOK_LOG_AND:
        case TOK_LOG_OR:
            CheckLogic(i);
            break;
        case TOK_NULL:
            if (Id(i + 1) == TOK_EQ || Id(i + 1) == TOK_NOT_EQ)
                Warn(i, "A null on the left is neither equal nor unequal to anything. Put it on the right.");
            break;
        case TOK_LBRACKET:
            CheckSubscript(i);
            break;
        case TOK_LCURLY:
            CheckCurly(i);
            break;
        case TOK_SEMI:
            CheckSemicolon(i);
            break;
        case TOK_ELSE:
            CheckElse(i);
            break;
        case TOK_LPAREN:
            if (Is(i, BracketRole::Header)) CheckHeader(i);
            break;
        case TOK_VAR:
            CheckDeclaration(i);
            break;
        case TOK_IN:
            // The loop's variable may hide one of the same name that holds a list.
            if (Id(i - 1) == ID) m_scopes.back().try_emplace(Token(i - 1).GetValue()).first->second = {};
            break;
        case TOK_FUNCTION:
            if (Is(m_outline.Enclosing(i), BracketRole::ClassBody))
                Warn(i,
                     "A function inside a class can never be called. Define it outside, with the object as a "
                     "parameter.");
            break;
        case SLITERAL:
            CheckText(i);
            break;
        default:
            if (IsAssignmentKind(Id(i))) CheckAssignment(i);
            if (m_outline.IsConstant(i)) CheckNumber(i);
            break;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Operators and values

// A unary operator binds only behind an operator of lower priority; otherwise it takes that operator's right
// side away.
void SurpriseFinder::CheckUnary(size_t i) {
    const TokId before = Id(i - 1);
    const bool isOperator =
        (before >= TOK_LOG_OR && before <= TOK_MOD) || before == TOK_INV || before == TOK_NOT;
    if (!isOperator || TokenPriority(before) < TokenPriority(Id(i))) return;
    const std::string sign = Quoted(Id(i)).substr(1, 1);
    const std::string other = Quoted(before).substr(1, Quoted(before).size() - 2);
    Warn(i, "The '" + sign + "' does not belong to what follows: the '" + other +
                "' before it goes first, without a right side. Put it in brackets: '" + other + " (" + sign +
                "x)'.");
}

// A constant length and a bare constant number, and nothing beside them that would make a ratio or a factor
// of either.
void SurpriseFinder::CheckSum(size_t i) {
    if (!m_outline.IsNumber(i - 1) || !m_outline.IsNumber(i + 1)) return;
    if (Token(i - 1).hasUnit == Token(i + 1).hasUnit) return;
    const size_t bare = Token(i - 1).hasUnit ? i + 1 : i - 1;
    if (IsFactorSign(Id(i - 2)) || IsFactorSign(Id(i + 2)) || Token(bare).number == 0) return;
    Warn(bare, "A number without a unit counts ten-millionths of an inch here. Give it a unit as well.");
}

// The words of a would-be comment are tokens like any others, and nothing else is worth saying about them.
void SurpriseFinder::CheckComment(size_t i) {
    if (Id(i - 1) != TOK_MUL) return;
    const size_t begin = m_outline.ExpressionBegin(i);
    while (!m_findings.empty() && m_findings.back().place >= begin)
        m_findings.pop_back();
    Warn(i, "'/* ... */' is no comment: what stands between is part of the script. Write '//' on each line.");
}

// 1/8in: the unit belongs to the 8 alone.
void SurpriseFinder::CheckQuotient(size_t i) {
    if (!m_outline.IsNumber(i - 1) || !m_outline.IsNumber(i + 1)) return;
    if (Token(i - 1).hasUnit || !Token(i + 1).hasUnit || IsFactorSign(Id(i - 2))) return;
    Warn(i,
         "The unit belongs to the last number alone: this is a plain number divided by a length, nearly 0. "
         "Put the unit on the first number ('1in/8') or write the length out ('0.125in').");
}

// Both sides of && and || are always evaluated, so the left one cannot guard the right one. Reported where it
// looks as if it should.
void SurpriseFinder::CheckLogic(size_t i) {
    const size_t begin = std::max(m_outline.ExpressionBegin(i), i - std::min(i, kGuardReach));
    const size_t end = std::min(m_outline.ExpressionEnd(i), i + kGuardReach);
    for (size_t k = i + 1; k < end; ++k) {
        const size_t guarded = FindGuarded(k, begin, i);
        if (guarded == kNone) continue;
        Warn(i, "Both sides of " + Quoted(Id(i)) + " are always evaluated: the test of '" +
                    Token(guarded).text + "' does not protect the right side. Use an 'if' within an 'if'.");
        return;
    }
}

// The name, if any, that the left side (from `begin` to `op`) tests and the token at `k` on the right side
// relies on: the object of a member, the list or the index of a subscript, the argument of a call.
size_t SurpriseFinder::FindGuarded(size_t k, size_t begin, size_t op) const {
    const bool member = Id(k) == TOK_MEMBER;
    const bool subscript = Id(k) == TOK_LBRACKET;
    const bool call = Id(k) == TOK_LPAREN && Is(k, BracketRole::Call);
    if ((member || subscript) && Id(k - 1) == ID && IsTested(k - 1, begin, op)) return k - 1;
    if ((!subscript && !call) || m_outline.Partner(k) == kNone) return kNone;
    const size_t end = std::min(m_outline.Partner(k), k + kGuardReach);
    for (size_t inner = k + 1; inner < end; ++inner) {
        if (Id(inner) != ID) continue;
        if (IsTested(inner, begin, op) || (subscript && IsBounded(inner, begin, op))) return inner;
    }
    return kNone;
}

bool SurpriseFinder::IsSameName(size_t i, size_t other) const {
    return Id(i) == ID && Id(other) == ID && Token(i).GetValue() == Token(other).GetValue() &&
           Id(i - 1) != TOK_MEMBER;
}

// Whether the tokens from `begin` to `end` test the variable at `use`: by itself, or against null.
bool SurpriseFinder::IsTested(size_t use, size_t begin, size_t end) const {
    const auto joins = [](TokId id) { return id == TOK_LOG_AND || id == TOK_LOG_OR; };
    for (size_t i = begin; i < end; ++i) {
        if (!IsSameName(i, use)) continue;
        if ((Id(i + 1) == TOK_EQ || Id(i + 1) == TOK_NOT_EQ) && Id(i + 2) == TOK_NULL) return true;
        const bool starts = i == begin || Id(i - 1) == TOK_NOT || joins(Id(i - 1)) ||
                            (Id(i - 1) == TOK_LPAREN && Is(i - 1, BracketRole::Group));
        if (starts && (joins(Id(i + 1)) || (Id(i + 1) == TOK_RPAREN && !Is(i + 1, BracketRole::Call))))
            return true;
    }
    return false;
}

// Whether they compare it with a bound, which is no other index of the right side: `i < j && a[i] > a[j]` is
// fine.
bool SurpriseFinder::IsBounded(size_t use, size_t begin, size_t end) const {
    const auto orders = [](TokId id) { return id >= TOK_LESS && id <= TOK_GEQ; };
    for (size_t i = begin; i < end; ++i) {
        if (!IsSameName(i, use) || (!orders(Id(i - 1)) && !orders(Id(i + 1)))) continue;
        const size_t bound = orders(Id(i + 1)) ? i + 2 : i - 2;
        bool isIndex = false;
        const size_t last = std::min(m_outline.ExpressionEnd(end), end + kGuardReach);
        for (size_t k = end; k < last; ++k)
            isIndex |= IsSameName(k, bound) && Is(m_outline.Enclosing(k), BracketRole::Subscript);
        if (!isIndex) return true;
    }
    return false;
}

// A scalar stored into a variable that holds a list.
void SurpriseFinder::CheckAssignment(size_t i) {
    if (Id(i - 1) != ID || !m_outline.IsStatementStart(i - 1)) return;
    if (!m_outline.IsConstant(i + 1) || Id(i + 2) != TOK_SEMI) return;
    const Declared* variable = Find(Token(i - 1).GetValue());
    if (variable == nullptr || !variable->isList) return;
    const std::string name = Token(i - 1).text;
    Warn(i,
         "'" + name +
             "' holds a list, and a list takes only lists: \"Assigning a scalar to a structure or list.\" " +
             "when it runs. To append an element write '" + name + " = " + name + " + x'.");
}

void SurpriseFinder::CheckNeighbours(size_t i) {
    const ScriptToken& token = Token(i);
    const ScriptToken& next = Token(i + 1);
    if (IsCutShort(token)) return;  // CheckNumber says why
    const bool number = m_outline.IsNumber(i) || token.id == HEX_CONSTANT;
    if (number && next.id == ID && TextOf(next) == "s" && token.hasUnit)
        return Warn(i,
                    "Units have no plural: the 's' is a name of its own. Write 'in', 'mil', 'cm' or 'mm'.");
    if (number && next.id == ID && IsUnitName(TextOf(next)))
        return Warn(i,
                    "A unit belongs directly behind its number: '12mil'. The units are in, mil, cm and mm.");
    if (number && next.id == ID && (*next.text == 'e' || *next.text == 'E'))
        return Warn(i, "A number has no exponent. Write it out: '0.001'.");
    if (token.id == SLITERAL && EndsWith(token, "\\"))
        return Warn(i, "A text has no escape sequences: it ends at the first '\"', also behind a '\\'.");
    if (next.id == TOK_LPAREN)
        return Warn(
            i + 1,
            "Only a name directly before '(' is called; here the brackets are a value of their own. Store "
            "the function in a variable and call that.");
    Warn(i + 1,
         "Two values stand side by side, and one of them is lost. An operator, a ',' or a ';' is missing.");
}

void SurpriseFinder::CheckNumber(size_t i) {
    const ScriptToken& token = Token(i);
    if (m_outline.IsNumber(i) && Id(i + 1) == TOK_IN)
        return Warn(i,
                    "A unit belongs directly behind its number: '12in'. The units are in, mil, cm and mm.");
    if (token.hasUnit && token.number == INT_MIN)
        return Warn(i, "The length is too large and becomes -2147483648. Lengths end at about 214in.");
    if (token.id == DEC_CONSTANT && token.number == INT_MAX && TextOf(token) != "2147483647")
        return Warn(i,
                    "The number is too large and becomes 2147483647. With a '.' behind it, it is a float.");
    if (!IsCutShort(token)) return;
    if (token.id == HEX_CONSTANT) Warn(i, "'0x' without a digit is 0.");
    if (token.id == BINARY_CONSTANT) Warn(i, "'0b' without a digit 0 or 1 is 0.");
    if (token.id == CHAR_CONSTANT) Warn(i, "A character constant without a character is 0.");
}

void SurpriseFinder::CheckText(size_t i) {
    if (Id(i + 1) == TOK_END)
        return Warn(i, "The text is not closed: it takes the rest of the file. A '\"' is missing.");
    if (EndsWith(Token(i), "\\n") || EndsWith(Token(i), "\\t"))
        Warn(i,
             "A text has no escape sequences: the backslash and the letter stay as they are. A text may span "
             "lines.");
}

void SurpriseFinder::CheckSubscript(size_t i) {
    if (Id(i - 1) == ID) return;
    if (m_outline.EndsValue(i - 1)) {
        Warn(i,
             "A '[' must directly follow a name. Store what stands before it in a variable: 'var row = "
             "x[1];', then "
             "'row[2]'.");
    } else {
        Warn(i, "A '[' must directly follow a name. A list is written in braces: '{1, 2}'.");
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Statements

void SurpriseFinder::CheckCurly(size_t i) {
    if (Is(i, BracketRole::List) && Id(i + 1) == TOK_RCURLY)
        Warn(i, "'{}' is null, not an empty list. Start the list with its first element.");
}

// A lone ';' is skipped wherever a statement is expected.
void SurpriseFinder::CheckSemicolon(size_t i) {
    const bool behindHeader = Id(i - 1) == TOK_RPAREN && Is(i - 1, BracketRole::Header);
    if (!behindHeader && Id(i - 1) != TOK_ELSE) return;
    const TokId keyword = behindHeader ? Id(m_outline.Partner(i - 1) - 1) : TOK_ELSE;
    Warn(i, "The ';' is skipped: the next statement belongs to the " + Quoted(keyword) +
                ". Remove it, or write '{ }'.");
}

// An 'else' belongs to an 'if' only directly behind its statement. The ';' behind a print, an execute or a
// block is none of theirs, and ends the 'if'.
void SurpriseFinder::CheckElse(size_t i) {
    if (Id(i - 1) != TOK_SEMI) return;
    const BracketRole before = Role(i - 2);
    const bool closed = before == BracketRole::Output || before == BracketRole::Block ||
                        Id(i - 2) == TOK_SEMI || Id(i - 2) == TOK__HALT;
    if (closed)
        Warn(i,
             "The ';' before it ends the 'if', and the 'else' fails when it runs. Remove the ';', or put the "
             "branch "
             "into braces.");
}

void SurpriseFinder::CheckHeader(size_t i) {
    if (Id(i - 1) == TOK_FOR) return CheckForHeader(i);
    if (Id(i + 1) == TOK_RPAREN && Id(i - 1) != TOK_FOREACH)
        Warn(i, "A condition without an expression is false.");
}

void SurpriseFinder::CheckForHeader(size_t open) {
    if (Id(open + 1) == TOK_SEMI) {
        Warn(open,
             "The first part of a 'for' cannot be left out: the ';' is skipped and the condition takes its "
             "place. "
             "Use 'while'.");
        return;
    }
    const size_t semicolon = m_outline.FindOutside({TOK_SEMI}, open + 1);
    if (semicolon != kNone && Id(semicolon + 1) == TOK_SEMI)
        Warn(open, "A condition without an expression is false: the loop never runs. Write 'true'.");
}

// declaration := `var` ID [ `[` expression `]` ] [ `as` ID ] [ `=` expression ]
void SurpriseFinder::CheckDeclaration(size_t i) {
    if (Id(i + 1) != ID) return;
    size_t behind = i + 2;
    const bool isArray = Id(behind) == TOK_LBRACKET && m_outline.Partner(behind) != kNone;
    if (isArray) behind = m_outline.Partner(behind) + 1;
    if (Id(behind) == TOK_AS) behind += 2;
    if (isArray && Id(behind) == TOK_ASSIGN)
        Warn(behind,
             "This assigns to the element behind the last, which is out of bounds. Write 'var a = {1, 2};' "
             "for a "
             "list with first values.");
    if (Id(m_outline.FindOutside({TOK_COMMA, TOK_SEMI, TOK_VAR}, behind)) == TOK_COMMA)
        Warn(i,
             "One 'var' declares one variable; with a ',' nothing is assigned at all. Write a 'var' for "
             "each.");
    Declare(i, isArray || IsListInitialiser(i + 2));
}

bool SurpriseFinder::IsListInitialiser(size_t i) const {
    if (Id(i) != TOK_ASSIGN || !Is(i + 1, BracketRole::List) || Id(i + 2) == TOK_RCURLY) return false;
    const size_t close = m_outline.Partner(i + 1);
    return close != kNone && Id(close + 1) == TOK_SEMI;
}

// Enters a variable in its block, where a second one of its name fails without a word. The first one may be
// the only statement of a branch and never run.
void SurpriseFinder::Declare(size_t i, bool isList) {
    const size_t enclosing = m_outline.Enclosing(i);
    if (Is(enclosing, BracketRole::ClassBody)) return;
    const size_t statement = Is(enclosing, BracketRole::Header) ? enclosing - 1 : i;
    const bool isBranch = Id(statement - 1) == TOK_ELSE || Is(statement - 1, BracketRole::Header);
    const STRID name = Token(i + 1).GetValue();
    const auto [place, isNew] = m_scopes.back().try_emplace(name);
    if (!isNew && place->second.certain && !isBranch && m_scopes.size() > 1)
        Warn(i, std::string("A second 'var ") + StrPtr(name) +
                    "' in one block fails when it runs, without a message of "
                    "its own. Declare it once before, or use another name.");
    place->second = {isList, !isBranch};
}

void SurpriseFinder::TrackScope(size_t i) {
    if (!Is(i, BracketRole::Block) || m_outline.Partner(i) == kNone) return;
    if (Id(i) == TOK_LCURLY) m_scopes.emplace_back();
    if (Id(i) == TOK_RCURLY) m_scopes.pop_back();
}

const SurpriseFinder::Declared* SurpriseFinder::Find(STRID name) const {
    const size_t last = m_scopes.size() - std::min(m_scopes.size(), kScopeReach);
    for (size_t n = m_scopes.size(); n-- > last;) {
        const auto found = m_scopes[n].find(name);
        if (found != m_scopes[n].end()) return &found->second;
    }
    return nullptr;
}

}  // namespace

void FindSurprises(const TIter<ScriptToken*>& first, TOrderedList<ScriptWarning>& warnings) {
    SurpriseFinder(first).Run(warnings);
}

}  // namespace brenta
