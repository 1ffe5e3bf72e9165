#include "script/token_outline.h"

#include <algorithm>

#include "script/token_classes.h"

namespace brenta {

namespace {

// How many tokens a search looks at. No statement that a person writes is longer, and a file of a million
// tokens without a semicolon is still checked in no time.
constexpr std::size_t kReach = 200;

bool Closes(TokId close, TokId open) {
    return (open == TOK_LPAREN && close == TOK_RPAREN) || (open == TOK_LBRACKET && close == TOK_RBRACKET) ||
           (open == TOK_LCURLY && close == TOK_RCURLY);
}

}  // namespace

// Roles depend on the tokens before only, so one pass finds them all. A closing bracket that does not fit is
// left alone.
TokenOutline::TokenOutline(TIter<ScriptToken*> first) {
    std::vector<std::size_t> open;
    for (; first.Get() != nullptr; first.Next()) {
        const std::size_t i = m_tokens.size();
        m_tokens.push_back(*first.Get());
        m_roles.push_back(BracketRole::None);
        m_partners.push_back(kNone);
        const TokId id = Id(i);
        if (!open.empty() && Closes(id, Id(open.back()))) {
            m_partners[i] = open.back();
            m_partners[open.back()] = i;
            m_roles[i] = m_roles[open.back()];
            open.pop_back();
        }
        m_enclosing.push_back(open.empty() ? kNone : open.back());
        if (id == TOK_LPAREN) m_roles[i] = RoleOfParen(i);
        if (id == TOK_LCURLY) m_roles[i] = RoleOfCurly(i);
        if (id == TOK_LBRACKET) m_roles[i] = BracketRole::Subscript;
        if (m_roles[i] != BracketRole::None && m_partners[i] == kNone) open.push_back(i);
    }
}

BracketRole TokenOutline::RoleOfParen(std::size_t i) const {
    switch (Id(i - 1)) {
        case ID:
            return Id(i - 2) == TOK_FUNCTION ? BracketRole::Params : BracketRole::Call;
        case TOK_IF:
        case TOK_WHILE:
        case TOK_FOR:
        case TOK_FOREACH:
            return BracketRole::Header;
        case TOK_PRINT:
        case TOK_EXECUTE:
            return BracketRole::Output;
        default:
            return BracketRole::Group;
    }
}

BracketRole TokenOutline::RoleOfCurly(std::size_t i) const {
    const bool classHead = Id(i - 1) == ID && (Id(i - 2) == TOK_CLASS || Id(i - 2) == TOK_INHERITS);
    if (classHead) return BracketRole::ClassBody;
    return IsStatementStart(i) ? BracketRole::Block : BracketRole::List;
}

// What comes before tells: the end of a statement, or a head that is followed by one. A "}" or ")" that ends
// a value does not.
bool TokenOutline::IsStatementStart(std::size_t i) const {
    const std::size_t before = i - 1;
    switch (Id(before)) {
        case TOK_SEMI:
        case TOK_ELSE:
        case TOK__HALT:
        case TOK_END:
            return true;
        case TOK_LCURLY:
        case TOK_RCURLY:
            return Role(before) == BracketRole::Block || Role(before) == BracketRole::ClassBody;
        case TOK_RPAREN:
            return Role(before) == BracketRole::Header || Role(before) == BracketRole::Params ||
                   Role(before) == BracketRole::Output;
        default:
            return false;
    }
}

bool TokenOutline::IsConstant(std::size_t i) const {
    const TokId id = Id(i);
    return (id >= CHAR_CONSTANT && id <= SLITERAL) || (id >= TOK_TRUE && id <= TOK_NULL);
}

bool TokenOutline::EndsValue(std::size_t i) const {
    switch (Id(i)) {
        case ID:
        case TOK_RBRACKET:
            return true;
        case TOK_RPAREN:
            return Role(i) == BracketRole::Group || Role(i) == BracketRole::Call;
        case TOK_RCURLY:
            return Role(i) == BracketRole::List;
        default:
            return IsConstant(i);
    }
}

bool TokenOutline::BeginsValue(std::size_t i) const {
    switch (Id(i)) {
        case ID:
            return true;
        case TOK_LPAREN:
            return Role(i) == BracketRole::Group;
        case TOK_LCURLY:
            return Role(i) == BracketRole::List;
        default:
            return IsConstant(i);
    }
}

std::size_t TokenOutline::FindOutside(std::initializer_list<TokId> ids, std::size_t i) const {
    const std::size_t end = std::min(m_tokens.size(), i + kReach);
    for (; i < end; ++i) {
        if (std::find(ids.begin(), ids.end(), Id(i)) != ids.end()) return i;
        if (Partner(i) == kNone) continue;
        if (Partner(i) < i) return kNone;
        i = Partner(i);
    }
    return kNone;
}

std::size_t TokenOutline::ExpressionBegin(std::size_t i) const {
    for (std::size_t steps = 0; i > 0 && !IsStatementStart(i) && steps < kReach; ++steps) {
        const TokId before = Id(i - 1);
        const bool opens = m_roles[i - 1] != BracketRole::None && Partner(i - 1) > i - 1;
        if (opens || before == TOK_COMMA || before == TOK_RETURN || IsAssignmentKind(before)) break;
        i = Partner(i - 1) != kNone ? Partner(i - 1) : i - 1;
    }
    return i;
}

std::size_t TokenOutline::ExpressionEnd(std::size_t i) const {
    const std::size_t end = std::min(m_tokens.size(), i + kReach);
    for (; i < end; ++i) {
        if (EndsExpression(Id(i)) || Id(i) == TOK_COMMA) return i;
        if (Partner(i) != kNone) i = Partner(i);
    }
    return std::min(i, m_tokens.size());
}

}  // namespace brenta
