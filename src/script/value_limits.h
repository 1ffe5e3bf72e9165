// The bounds on what a script can build and how deep it can go. A script that meets one gets one clear error
// at the place where it happened; the engine goes on working.
#pragma once

#include <cstddef>
#include <cstdint>

namespace brenta {

inline constexpr std::size_t kMaxStringLength = 64u << 20;  ///< bytes: "String too long."
inline constexpr std::uint64_t kMaxListWeight = 16u
                                                << 20;  ///< elements, nested ones included: "List too large."
inline constexpr std::uint32_t kMaxListDepth = 1000;    ///< levels: "List nested too deeply."
inline constexpr int kMaxExpressionDepth = 200;         ///< brackets: "Expression nested too deeply."
inline constexpr int kMaxAssignmentChain = 20;          ///< targets of a = b = c ...: the same text
inline constexpr int kMaxStatementDepth = 1000;  ///< blocks, branches, loops: "Statement nested too deeply."
inline constexpr int kMaxNestedRuns = 100;  ///< execute within execute, host re-entry: "Call stack overflow."
inline constexpr int kMaxIncludeDepth = 64;                ///< include within include
inline constexpr std::size_t kMaxIncludes = 10'000;        ///< files of one load, each as often as included
inline constexpr std::size_t kMaxSourceSize = 256u << 20;  ///< bytes of one source file, and of one load
inline constexpr std::size_t kMaxNameLength =
    1'000'000;  ///< bytes of a text that becomes a name: "String too long."
/// Pages of the table of names (it has 1500): "String space exhausted." A script must not bring it to its
/// end.
inline constexpr int kMaxNamePages = 1200;
inline constexpr std::size_t kMessageLimit = 60000;  ///< characters of one message

}  // namespace brenta
