// The tokens of the scripting language.
#pragma once

#include <span>

#include "brenta/lexer.h"

namespace brenta {

struct TokenKind {
    TokId id;
    const char* name;
    const char* pattern;
    const char* errorText;  ///< null for kinds that no message calls by name
};

/// All kinds in the order in which they are defined, which decides between matches of equal length.
std::span<const TokenKind> TokenSet();

/// What a kind is called in messages: "unknown token id" for those without a text and for all other numbers.
const char* TokenErrorText(int id);

}  // namespace brenta
