/// @file
/// Small numeric helpers: the greatest common divisor, primes for table sizes, shades of colours, and a
/// generator of pseudo-random numbers.
///
///     TIntMap<STRID, int> parts(CorePrimeAtLeast(2 * partCount));   // a size that spreads keys well
///     CoreColour face = CoreRgb(200, 120, 40);
///     Frame(GetHighlightColor(face), GetShadowColor(face));         // a raised button
///     Label(RGBToLuminosity(face) < 128 ? kWhite : kBlack);         // that can be read
///
/// Everything takes constant or logarithmic time, allocates nothing and may be called from any thread.
#pragma once

#include <cstdint>

#include "brenta/export.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Numbers

/// The greatest number that divides both, never negative; signs do not matter. gcd(a, 0) is |a|, gcd(0, 0) is
/// 0. A result of 2,147,483,648 (both are the smallest int, or one is and the other is 0) is returned as
/// INT_MAX.
BRENTA_API int gcd(int a, int b);

// The prime table: primes that about double from one to the next, for the sizes of hash tables.

/// How many primes the table holds.
BRENTA_API int CorePrimeCount();
/// Prime number `index` of the table, counted from 0, in ascending order; an index outside gives the nearest.
BRENTA_API int CorePrime(int index);
/// The first prime of the table that is at least n; the last, if none is.
BRENTA_API int CorePrimeAtLeast(int n);
/// Whether a number, of the table or not, is prime. Takes time in proportion to the number's square root.
BRENTA_API bool CorePrimeTest(int n);

// ---------------------------------------------------------------------------------------------------------
// Colours

/// A colour: red in the lowest byte, then green, then blue; the highest byte is 0.
using CoreColour = std::uint32_t;

/// A colour from its parts, 0 to 255; those beyond count as the nearest.
constexpr CoreColour CoreRgb(int red, int green, int blue) {
    const auto part = [](int value) {
        return static_cast<CoreColour>(value < 0 ? 0 : value > 255 ? 255 : value);
    };
    return part(red) | part(green) << 8 | part(blue) << 16;
}

/// The shade for the edges in the dark: two thirds of each part. Black stays black.
BRENTA_API CoreColour GetShadowColor(CoreColour colour);
/// The shade for the edges in the light: each part half way to white. White stays white.
BRENTA_API CoreColour GetHighlightColor(CoreColour colour);
/// How bright a colour looks, 0 to 255: 0.299 red + 0.587 green + 0.114 blue, rounded.
BRENTA_API int RGBToLuminosity(CoreColour colour);

// ---------------------------------------------------------------------------------------------------------
// Pseudo-random numbers. Each thread has a sequence of its own, which begins as after CoreRandSeed(1) and is
// the same on every platform. For placing and shuffling; worthless for secrets.

/// Starts the calling thread's sequence anew; equal seeds give equal sequences.
BRENTA_API void CoreRandSeed(std::uint32_t seed);
/// The next number of the sequence: 0 to 0x7FFFFFFF.
BRENTA_API int CoreRand();
/// A number from `least` to `most`, both included and all equally likely; bounds in the wrong order are
/// exchanged.
BRENTA_API int CoreRand(int least, int most);

}  // namespace brenta
