// The shape of a script as far as its tokens show it: which bracket closes which, and what each is for.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <vector>

#include "brenta/lexer.h"

namespace brenta {

/// What a pair of brackets encloses.
enum class BracketRole : unsigned char {
    None,       ///< no bracket
    Group,      ///< ( ) around a part of an expression
    Call,       ///< ( ) behind a name
    Params,     ///< ( ) of a function's definition
    Header,     ///< ( ) behind if, while, for and foreach
    Output,     ///< ( ) behind print and execute
    Subscript,  ///< [ ]
    List,       ///< { } of a list
    Block,      ///< { } around statements
    ClassBody,  ///< { } of a class
};

/// A token list in an array, with brackets matched. Works on any list of tokens: what is not well formed has
/// no partners. Places outside the list, on either side, read as TOK_END.
class TokenOutline {
 public:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    explicit TokenOutline(TIter<ScriptToken*> first);

    std::size_t Count() const { return m_tokens.size(); }
    const ScriptToken& Token(std::size_t i) const { return *m_tokens[i]; }
    TokId Id(std::size_t i) const { return i < m_tokens.size() ? m_tokens[i]->id : TOK_END; }
    BracketRole Role(std::size_t i) const { return i < m_tokens.size() ? m_roles[i] : BracketRole::None; }
    /// The bracket at the other end of the pair; kNone for what is no bracket or has no partner.
    std::size_t Partner(std::size_t i) const { return i < m_tokens.size() ? m_partners[i] : kNone; }
    /// The opening bracket of the innermost pair around a token (for a bracket: around the pair); kNone at
    /// top level.
    std::size_t Enclosing(std::size_t i) const { return m_enclosing[i]; }

    bool IsNumber(std::size_t i) const { return Id(i) == DEC_CONSTANT || Id(i) == FLOAT_CONSTANT; }
    bool IsConstant(std::size_t i) const;
    /// Whether a value ends with this token, or begins with it.
    bool EndsValue(std::size_t i) const;
    bool BeginsValue(std::size_t i) const;
    /// Whether a statement, or a definition, can begin at this token.
    bool IsStatementStart(std::size_t i) const;
    // The searches below look at some hundred tokens at most, so a check takes linear time.

    /// The first place from `i` on that holds `id`, outside brackets opened on the way; kNone if the brackets
    /// around `i`, or the tokens, end before.
    std::size_t FindOutside(std::initializer_list<TokId> ids, std::size_t i) const;
    /// The expression around an operator, up to the next `,` or assignment on both sides: its first token,
    /// and the one behind its last.
    std::size_t ExpressionBegin(std::size_t i) const;
    std::size_t ExpressionEnd(std::size_t i) const;

 private:
    BracketRole RoleOfParen(std::size_t i) const;
    BracketRole RoleOfCurly(std::size_t i) const;

    std::vector<const ScriptToken*> m_tokens;
    std::vector<BracketRole> m_roles;
    std::vector<std::size_t> m_partners;
    std::vector<std::size_t> m_enclosing;
};

}  // namespace brenta
