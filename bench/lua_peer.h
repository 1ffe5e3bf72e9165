// Lua 5.4 as the peer of the script engine.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "workload.h"

struct lua_State;

namespace brenta::bench {

/// Loads `source` and, each round, calls its global function `Main`; the result is what Main returns.
std::unique_ptr<Contender> MakeLuaContender(const std::string& source);

/// Each round makes a fresh state and loads `source` without running anything but its definitions.
std::unique_ptr<Contender> MakeLuaLoader(const std::string& source);

}  // namespace brenta::bench
