// Random choices that are the same on every platform.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <string>

namespace brenta::test {

class Chooser {
 public:
    explicit Chooser(std::uint32_t seed) : m_random(seed) {}

    int Below(int bound) { return static_cast<int>(m_random() % static_cast<std::uint32_t>(bound)); }
    bool Chance(int percent) { return Below(100) < percent; }
    const char* OneOf(std::span<const char* const> choices) {
        return choices[static_cast<std::size_t>(Below(static_cast<int>(choices.size())))];
    }
    /// From one to `most` choices, one behind the other.
    std::string SomeOf(std::span<const char* const> choices, int most) {
        std::string text;
        for (int left = 1 + Below(most); left > 0; --left)
            text += OneOf(choices);
        return text;
    }

 private:
    std::mt19937 m_random;
};

}  // namespace brenta::test
