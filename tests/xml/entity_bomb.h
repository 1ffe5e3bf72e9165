// Ten entities, each of which stands for ten of the one before.
#pragma once

#include "test_support.h"

namespace brenta::test {

inline std::string BombLevel(int level) {
    const std::string inner = level == 0 ? "a" : "&e" + std::to_string(level - 1) + ";";
    return "<!ENTITY e" + std::to_string(level) + " '" + Repeat(inner, 10) + "'>";
}

/// The declarations; e9 is ten thousand million characters long.
inline std::string EntityBomb() {
    std::string all;
    for (int level = 0; level < 10; ++level)
        all += BombLevel(level);
    return all;
}

}  // namespace brenta::test
