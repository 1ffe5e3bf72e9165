#include "script/token_classes.h"

#include "script/sub_expression.h"

namespace brenta {
namespace {

struct Row {
    int first;
    int last;
    std::uint32_t word;
};

// Equal priorities group from the left. The gaps carry no meaning; what counts is the order, and that
// operands stand above all operators, so that an operand always attaches under the operator before it.
constexpr Row kRows[] = {
    {TOK_ASSIGN, TOK_OR_ASSIGN, kAssignmentToken | kBinaryToken | kUnaryToken | 7},
    {TOK_LOG_OR, TOK_LOG_OR, kBinaryToken | 10},
    {TOK_LOG_AND, TOK_LOG_AND, kBinaryToken | 12},
    {TOK_OR, TOK_OR, kBinaryToken | 14},
    {TOK_XOR, TOK_XOR, kBinaryToken | 16},
    {TOK_AND, TOK_AND, kBinaryToken | 18},
    {TOK_EQ, TOK_NOT_EQ, kBinaryToken | 20},
    {TOK_LESS, TOK_GEQ, kBinaryToken | 22},
    {TOK_SHL, TOK_SHR, kBinaryToken | 25},
    {TOK_ADD, TOK_SUB, kBinaryToken | 28},
    {TOK_MUL, TOK_MOD, kBinaryToken | 30},
    {TOK_INV, TOK_NOT, kUnaryToken | 34},
    {TOK_INC, TOK_DEC, kUnaryToken | 35},
    {TOK_LBRACKET, TOK_LBRACKET, kOpeningToken | 37},
    {TOK_LPAREN, TOK_LPAREN, kOpeningToken | 37},
    {TOK_LCURLY, TOK_LCURLY, kOpeningToken | 37},
    {TOK_MEMBER, TOK_MEMBER, kOpeningToken | kBinaryToken | 37},
    {TOK_RBRACKET, TOK_RBRACKET, kTerminatorToken | 37},
    {TOK_RPAREN, TOK_RPAREN, kTerminatorToken | 37},
    {TOK_RCURLY, TOK_RCURLY, kTerminatorToken | 37},
    {TOK_SEMI, TOK_SEMI, kTerminatorToken | 2},
    {TOK_COMMA, TOK_COMMA, 2},
    {TOK_PRINT, TOK__HALT, 4},
    {TOK_TRUE, TOK_NULL, kOperandToken | 43},
    {CHAR_CONSTANT, SLITERAL, kOperandToken | 43},
    {ID, ID, kOperandToken | 46},
    {kCallNode, kSubscriptNode, kOpeningToken | 37},
};

constexpr std::array<std::uint32_t, kTokenClassCount> MakeTable() {
    std::array<std::uint32_t, kTokenClassCount> table{};
    for (const Row& row : kRows) {
        for (int kind = row.first; kind <= row.last; ++kind) {
            table[static_cast<std::size_t>(kind)] = row.word;
        }
    }
    return table;
}

}  // namespace

constinit const std::array<std::uint32_t, kTokenClassCount> kTokenClasses = MakeTable();

const char* KindText(int kind) {
    switch (kind) {
        case kCallNode:
            return "f()";
        case kListNode:
            return "{}";
        case kSubscriptNode:
            return "[]";
        default:
            return CCoreScriptLexer::GetTokenErrorText(static_cast<TokId>(kind));
    }
}

}  // namespace brenta
