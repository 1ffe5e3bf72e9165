#include "brenta/numeric.h"

#include <gtest/gtest.h>

#include <climits>
#include <tuple>
#include <utility>

namespace brenta {
namespace {

TEST(Numeric, Divisors) {
    const std::tuple<int, int, int> rows[] = {
        {12, 18, 6}, {-12, 18, 6}, {0, 7, 7}, {0, 0, 0}, {17, 5, 1}, {INT_MIN, 6, 2}, {INT_MIN, 0, INT_MAX}};
    for (const auto& [a, b, divisor] : rows)
        EXPECT_TRUE(gcd(a, b) == divisor && gcd(b, a) == divisor) << a << ' ' << b;
}

TEST(Numeric, Primes) {
    for (int i = 0; i < CorePrimeCount(); ++i) {
        EXPECT_TRUE(CorePrimeTest(CorePrime(i))) << CorePrime(i);
        EXPECT_EQ(CorePrimeAtLeast(CorePrime(i)), CorePrime(i));
        EXPECT_EQ(CorePrimeAtLeast(CorePrime(i) + 1), CorePrime(i + 1));
    }
    EXPECT_TRUE(CorePrime(-5) == 2 && CorePrimeAtLeast(INT_MIN) == 2);
    for (int n : {INT_MIN, -3, 0, 1, 4, 25, 49, 1000000, 2147483646})
        EXPECT_FALSE(CorePrimeTest(n)) << n;
    for (int n : {2, 3, 5, 2147483647})
        EXPECT_TRUE(CorePrimeTest(n)) << n;
}

TEST(Numeric, Shades) {
    // Colour, shadow, highlight, luminosity.
    const std::tuple<CoreColour, CoreColour, CoreColour, int> rows[] = {
        {CoreRgb(0, 0, 0), CoreRgb(0, 0, 0), CoreRgb(128, 128, 128), 0},
        {CoreRgb(300, 255, 999), CoreRgb(170, 170, 170), CoreRgb(255, 255, 255), 255},
        {CoreRgb(30, -1, 90), CoreRgb(20, 0, 60), CoreRgb(143, 128, 173), 19},
        {CoreRgb(0, 255, 0), CoreRgb(0, 170, 0), CoreRgb(128, 255, 128), 150}};
    for (const auto& [colour, shadow, highlight, luminosity] : rows) {
        EXPECT_TRUE(GetShadowColor(colour) == shadow && GetHighlightColor(colour) == highlight) << colour;
        EXPECT_EQ(RGBToLuminosity(colour), luminosity) << colour;
    }
}

TEST(Numeric, RandomNumbers) {
    CoreRandSeed(7);
    const int first = CoreRand(), second = CoreRand();
    EXPECT_NE(first, second);
    CoreRandSeed(7);
    EXPECT_TRUE(CoreRand() == first && CoreRand() == second);
    // Both ends come, in either order of the bounds, and nothing beyond.
    for (const auto& [least, most] : {std::pair(3, 2), {INT_MIN, INT_MIN + 1}, {5, 5}}) {
        bool low = false, high = false;
        for (int i = 0; i < 100; ++i) {
            const int number = CoreRand(least, most);
            EXPECT_TRUE(number == least || number == most);
            (number == least ? low : high) = true;
        }
        EXPECT_TRUE(low && high == (least != most));
    }
}

}  // namespace
}  // namespace brenta
