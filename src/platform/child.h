// Work that may hang or crash, done in a process of its own.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace brenta {

inline constexpr int kChildCrashed = -1;   ///< or wrote more than it may
inline constexpr int kChildTimedOut = -2;  ///< and was stopped

/// What a child left.
struct ChildResult {
    int error = 0;       ///< 0 if it ended by itself; else one of those above or the system's error number
    int status = 0;      ///< its exit status, if error is 0
    std::string output;  ///< what it wrote, if error is 0
};

struct ChildLimits {
    int seconds = 10;
    std::size_t outputBytes = 65536;
    std::size_t memoryBytes = std::size_t{256} << 20;  ///< beyond what this process has
};

/// Runs work() in a copy of this process that is left with standard output alone, which is collected; the
/// result of work is the exit status. Other threads do not exist there and what they had locked stays
/// locked: work uses nothing of the library, only the C and C++ libraries and what it loads itself. The
/// handlers of the host's signals do not run there, nor does anything at its exit.
ChildResult RunInChild(const std::function<int()>& work, const ChildLimits& limits);

/// Runs a program, looked for along the search path; status 127 if there is none.
ChildResult RunProgram(const char* const* arguments, const ChildLimits& limits);

}  // namespace brenta
