// The class of every token kind: what decides the shape of an expression tree.
//
// One word per kind, the lexer's tokens and the parser's own node kinds alike: the priority in the low byte,
// flags above it. Only the priority, kTerminatorToken and kAssignmentToken steer anything; the other flags
// say what a token is and are kept for whoever looks at a table of tokens.
#pragma once

#include <array>
#include <cstdint>

#include "brenta/lexer.h"

namespace brenta {

inline constexpr std::uint32_t kPriorityMask = 0xFF;
inline constexpr std::uint32_t kAssignmentToken = 0x100;  ///< = and the ten compound assignments
inline constexpr std::uint32_t kBinaryToken = 0x200;
inline constexpr std::uint32_t kOperandToken = 0x400;
inline constexpr std::uint32_t kUnaryToken = 0x800;
inline constexpr std::uint32_t kOpeningToken = 0x1000;
inline constexpr std::uint32_t kTerminatorToken = 0x2000;  ///< ends an expression: ; ) ] }

inline constexpr int kTokenClassCount = 81;

/// Filled by the compiler, so every thread finds it complete.
extern const std::array<std::uint32_t, kTokenClassCount> kTokenClasses;

/// The word of a TokId or NodeKind; 0 for the end marker and every number that is no kind.
inline std::uint32_t TokenClass(int kind) {
    return kind >= 0 && kind < kTokenClassCount ? kTokenClasses[static_cast<std::size_t>(kind)] : 0;
}

inline std::int16_t TokenPriority(int kind) {
    return static_cast<std::int16_t>(TokenClass(kind) & kPriorityMask);
}
inline bool IsAssignmentKind(int kind) {
    return (TokenClass(kind) & kAssignmentToken) != 0;
}
inline bool IsOperandKind(int kind) {
    return (TokenClass(kind) & kOperandToken) != 0;
}
/// Whether an expression ends before a token of this kind.
inline bool EndsExpression(int kind) {
    return kind == TOK_END || (TokenClass(kind) & kTerminatorToken) != 0;
}

/// The text that stands for a node kind: "f()", "{}", "[]" for the parser's own, else the token's.
const char* KindText(int kind);

}  // namespace brenta
