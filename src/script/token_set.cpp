#include "script/token_set.h"

#include <array>

namespace brenta {

namespace {

// clang-format off

// Keywords stand before ID, which would match them as well.
//
// CHAR_CONSTANT: between the quotes stands either a backslash and an escape sequence (or any other character), or one
// character. A group of its own holds the first half: "|" would otherwise bind only the atoms beside it, and a plain
// character could never follow the quote.
//
// LINE_COMMENT holds the line-end characters themselves. Outside a set they are white space to the pattern compiler, so
// the group at its end is empty and the line end is left for WS.
constexpr TokenKind kTokenSet[] = {
    {TOK__HALT,       "TOK__HALT",       "_halt",       "_halt"},
    {TOK_PRINT,       "TOK_PRINT",       "print",       "print"},
    {TOK_EXECUTE,     "TOK_EXECUTE",     "execute",     "execute"},
    {TOK_INCLUDE,     "TOK_INCLUDE",     "include",     nullptr},
    {TOK_FUNCTION,    "TOK_FUNCTION",    "function",    "function"},
    {TOK_INTERFACE,   "TOK_INTERFACE",   "interface",   nullptr},
    {TOK_METHOD,      "TOK_METHOD",      "method",      nullptr},
    {TOK_IF,          "TOK_IF",          "if",          "if"},
    {TOK_ELSE,        "TOK_ELSE",        "else",        "else"},
    {TOK_FOR,         "TOK_FOR",         "for",         "for"},
    {TOK_FOREACH,     "TOK_FOREACH",     "foreach",     "foreach"},
    {TOK_IN,          "TOK_IN",          "in",          "in"},
    {TOK_WHILE,       "TOK_WHILE",       "while",       "while"},
    {TOK_CONTINUE,    "TOK_CONTINUE",    "continue",    "continue"},
    {TOK_BREAK,       "TOK_BREAK",       "break",       "break"},
    {TOK_RETURN,      "TOK_RETURN",      "return",      "return"},
    {TOK_VAR,         "TOK_VAR",         "var",         "var"},
    {TOK_AS,          "TOK_AS",          "as",          nullptr},
    {TOK_CLASS,       "TOK_CLASS",       "class",       "class"},
    {TOK_INHERITS,    "TOK_INHERITS",    "inherits",    "inherits"},
    {TOK_ENUM,        "TOK_ENUM",        "enum",        "enum"},
    {TOK_TRUE,        "TOK_TRUE",        "true",        "true"},
    {TOK_FALSE,       "TOK_FALSE",       "false",       "false"},
    {TOK_NULL,        "TOK_NULL",        "null",        "null"},

    {TOK_LBRACKET,    "TOK_LBRACKET",    "\\[",         "["},
    {TOK_RBRACKET,    "TOK_RBRACKET",    "\\]",         "]"},
    {TOK_LPAREN,      "TOK_LPAREN",      "\\(",         "("},
    {TOK_RPAREN,      "TOK_RPAREN",      "\\)",         ")"},
    {TOK_LCURLY,      "TOK_LCURLY",      "\\{",         "{"},
    {TOK_RCURLY,      "TOK_RCURLY",      "\\}",         "}"},
    {TOK_COMMA,       "TOK_COMMA",       "\\,",         ","},
    {TOK_SEMI,        "TOK_SEMI",        "\\;",         ";"},
    {TOK_MEMBER,      "TOK_MEMBER",      "\\.",         "."},

    {TOK_ASSIGN,      "TOK_ASSIGN",      "\\=",         "="},
    {TOK_MUL_ASSIGN,  "TOK_MUL_ASSIGN",  "\\*\\=",      "*="},
    {TOK_DIV_ASSIGN,  "TOK_DIV_ASSIGN",  "\\/\\=",      "/="},
    {TOK_MOD_ASSIGN,  "TOK_MOD_ASSIGN",  "\\%\\=",      "%="},
    {TOK_ADD_ASSIGN,  "TOK_ADD_ASSIGN",  "\\+\\=",      "+="},
    {TOK_SUB_ASSIGN,  "TOK_SUB_ASSIGN",  "\\-\\=",      "-="},
    {TOK_SHL_ASSIGN,  "TOK_SHL_ASSIGN",  "\\<\\<\\=",   "<<="},
    {TOK_SHR_ASSIGN,  "TOK_SHR_ASSIGN",  "\\>\\>\\=",   ">>="},
    {TOK_AND_ASSIGN,  "TOK_AND_ASSIGN",  "\\&\\=",      "&="},
    {TOK_XOR_ASSIGN,  "TOK_XOR_ASSIGN",  "\\^\\=",      "^="},
    {TOK_OR_ASSIGN,   "TOK_OR_ASSIGN",   "\\|\\=",      "|="},

    {TOK_INC,         "TOK_INC",         "\\+\\+",      "++"},
    {TOK_DEC,         "TOK_DEC",         "\\-\\-",      "--"},
    {TOK_SHL,         "TOK_SHL",         "\\<\\<",      "<<"},
    {TOK_SHR,         "TOK_SHR",         "\\>\\>",      ">>"},
    {TOK_AND,         "TOK_AND",         "\\&",         "&"},
    {TOK_OR,          "TOK_OR",          "\\|",         "|"},
    {TOK_XOR,         "TOK_XOR",         "\\^",         "^"},
    {TOK_INV,         "TOK_INV",         "\\~",         "~"},
    {TOK_NOT,         "TOK_NOT",         "\\!",         "!"},
    {TOK_LOG_OR,      "TOK_LOG_OR",      "\\|\\|",      "||"},
    {TOK_LOG_AND,     "TOK_LOG_AND",     "\\&\\&",      "&&"},
    {TOK_ADD,         "TOK_ADD",         "\\+",         "+"},
    {TOK_SUB,         "TOK_SUB",         "\\-",         "-"},
    {TOK_MUL,         "TOK_MUL",         "\\*",         "*"},
    {TOK_DIV,         "TOK_DIV",         "\\/",         "/"},
    {TOK_MOD,         "TOK_MOD",         "\\%",         "%"},
    {TOK_EQ,          "TOK_EQ",          "\\=\\=",      "=="},
    {TOK_NOT_EQ,      "TOK_NOT_EQ",      "\\!\\=",      "!="},
    {TOK_LESS,        "TOK_LESS",        "\\<",         "<"},
    {TOK_GREATER,     "TOK_GREATER",     "\\>",         ">"},
    {TOK_LEQ,         "TOK_LEQ",         "\\<\\=",      "<="},
    {TOK_GEQ,         "TOK_GEQ",         "\\>\\=",      ">="},

    {CHAR_CONSTANT,   "CHAR_CONSTANT",
     "'<1>((\\\\(([ntvbrfa\\?\\\\'\"])|([0-9]([0-9])?)|(x[0-9a-fA-F]([0-9a-fA-F])?)|[!']))|[!'])</1>'",
     "character"},
    {BINARY_CONSTANT, "BINARY_CONSTANT", "0b<1>[01]+</1>",                 "binary constant"},
    {DEC_CONSTANT,    "DEC_CONSTANT",
     "<1>[0-9]+</1><2>(in|ins|cm|cms|mil|mils|mm|mms)?</2>",               "decimal constant"},
    {HEX_CONSTANT,    "HEX_CONSTANT",    "0x<1>[0-9a-fA-F]+</1>",          "integer constant"},
    {FLOAT_CONSTANT,  "FLOAT_CONSTANT",
     "<1>(([0-9]*.[0-9]+)|([0-9]+.[0-9]*))</1><2>(in|ins|cm|cms|mil|mils|mm|mms)?</2>",
     "float constant"},
    {SLITERAL,        "SLITERAL",        "\"<1>([!\"])*</1>\"",            "string literal"},
    {ID,              "ID",              "[_a-zA-Z][_a-zA-Z0-9]*",         "identifier"},
    {BLOCK_COMMENT,   "BLOCK_COMMENT",   "/\\*!((\\*/)*)\\*/",             nullptr},
    {LINE_COMMENT,    "LINE_COMMENT",    "//[!\n\r]*(\n|\r)",              nullptr},
    {WS,              "WS",              "[ \t\r\n]+",                     nullptr},
};

// clang-format on

constexpr std::size_t kIdCount = WS + 1;

constexpr auto MakeErrorTexts() {
    std::array<const char*, kIdCount> texts{};
    for (const TokenKind& kind : kTokenSet)
        texts[static_cast<std::size_t>(kind.id)] = kind.errorText;
    return texts;
}

constexpr auto kErrorTexts = MakeErrorTexts();

}  // namespace

std::span<const TokenKind> TokenSet() {
    return kTokenSet;
}

const char* TokenErrorText(int id) {
    const auto index = static_cast<std::size_t>(id);
    const bool known = index < kErrorTexts.size() && kErrorTexts[index] != nullptr;
    return known ? kErrorTexts[index] : "unknown token id";
}

}  // namespace brenta
