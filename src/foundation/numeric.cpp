#include "brenta/numeric.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <numeric>
#include <utility>

namespace brenta {

// ---------------------------------------------------------------------------------------------------------------------
// Numbers

int gcd(int a, int b) {
    // In a wider type, since the smallest int has no positive counterpart.
    const long long divisor = std::gcd(static_cast<long long>(a), static_cast<long long>(b));
    return static_cast<int>(std::min<long long>(divisor, std::numeric_limits<int>::max()));
}

namespace {

/// The first prime behind each power of two times about one and a half, as far from powers of two as can be:
/// keys that differ in high bits only would meet in a size close to one.
constexpr int kPrimes[] = {
    2,       5,       11,       23,       47,       97,        193,       389,       769,       1543,
    3079,    6151,    12289,    24593,    49157,    98317,     196613,    393241,    786433,    1572869,
    3145739, 6291469, 12582917, 25165843, 50331653, 100663319, 201326611, 402653189, 805306457, 1610612741};

}  // namespace

int CorePrimeCount() {
    return static_cast<int>(std::size(kPrimes));
}

int CorePrime(int index) {
    return kPrimes[std::clamp(index, 0, CorePrimeCount() - 1)];
}

int CorePrimeAtLeast(int n) {
    const int* const found = std::lower_bound(std::begin(kPrimes), std::end(kPrimes), n);
    return found == std::end(kPrimes) ? std::end(kPrimes)[-1] : *found;
}

bool CorePrimeTest(int n) {
    if (n < 4) return n > 1;
    if (n % 2 == 0 || n % 3 == 0) return false;
    for (long long divisor = 5; divisor * divisor <= n; divisor += 6) {
        if (n % divisor == 0 || n % (divisor + 2) == 0) return false;
    }
    return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Colours

namespace {

int Part(CoreColour colour, int index) {
    return static_cast<int>(colour >> (8 * index) & 0xFF);
}

}  // namespace

CoreColour GetShadowColor(CoreColour colour) {
    const auto shade = [colour](int index) { return Part(colour, index) * 2 / 3; };
    return CoreRgb(shade(0), shade(1), shade(2));
}

CoreColour GetHighlightColor(CoreColour colour) {
    const auto shade = [colour](int index) { return (Part(colour, index) + 256) / 2; };
    return CoreRgb(shade(0), shade(1), shade(2));
}

int RGBToLuminosity(CoreColour colour) {
    return (299 * Part(colour, 0) + 587 * Part(colour, 1) + 114 * Part(colour, 2) + 500) / 1000;
}

// ---------------------------------------------------------------------------------------------------------------------
// Pseudo-random numbers: a counter that steps by an odd constant, its bits mixed by two multiplications.
// Every seed is good, and the period is 2 to the power of 64.

namespace {

constinit thread_local std::uint64_t t_state = 1;

std::uint32_t NextBits() {
    t_state += 0x9E3779B97F4A7C15;
    std::uint64_t bits = t_state;
    bits = (bits ^ bits >> 30) * 0xBF58476D1CE4E5B9;
    bits = (bits ^ bits >> 27) * 0x94D049BB133111EB;
    return static_cast<std::uint32_t>(bits >> 32);
}

}  // namespace

void CoreRandSeed(std::uint32_t seed) {
    t_state = seed;
}

int CoreRand() {
    return static_cast<int>(NextBits() >> 1);
}

int CoreRand(int least, int most) {
    if (least > most) std::swap(least, most);
    const auto count = static_cast<std::uint64_t>(static_cast<long long>(most) - least + 1);
    // The numbers above the last full round are thrown again: they would favour the lower results.
    const std::uint64_t limit = (std::uint64_t{1} << 32) / count * count;
    std::uint64_t bits;
    do
        bits = NextBits();
    while (bits >= limit);
    return static_cast<int>(static_cast<long long>(bits % count) + least);
}

}  // namespace brenta
