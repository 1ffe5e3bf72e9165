#include <climits>

#include "brenta/framework.h"
#include "brenta/string.h"
#include "test_support.h"

namespace brenta::test {
namespace {

TEST(Cipher, PermutesThePrintableCharacters) {
    CoreString all;
    for (int i = CHAR_MIN; i <= CHAR_MAX; ++i) {
        const char c = static_cast<char>(i);
        all += c;
        EXPECT_EQ(CoreGetClearChar(CoreGetCypherChar(c)), c);
        EXPECT_EQ(CoreGetCypherChar(c) == c, c < '!' || c > '~') << i;
    }
    CoreString text(all);
    text.Encrypt();
    EXPECT_NE(text, all);
    text.SortChars();
    EXPECT_EQ(text, all);
    text.Encrypt();
    text.Decrypt();
    EXPECT_EQ(text, all);
}

TEST(Password, AddsTheKeyModulo255) {
    const char* const kRows[][3] = {
        {"a", "b", "\xC4"},          // 97 + 98 + 1
        {"ab", "\x01", "\x63\x64"},  // the key is repeated
        {"\x7F", "\x7F", "\xFF"},    // 254 + 1
        {"\xFF", "\x01", "\x01"},    // -1 + 1 + 1
        {"\xFF", "\xFE", "\xFE"},    // -3 + 1
        {"ab", "", ""},
    };
    for (const auto& [plain, key, enciphered] : kRows) {
        CString text(plain), keyText(key), result("old");
        EncryptPassword(text, keyText, result);
        EXPECT_TRUE(result == enciphered) << plain;
    }
}

TEST(Password, RoundTripsAllBytesButFivePairs) {
    int failures = 0;
    for (int pair = 0; pair < 255 * 255; ++pair) {
        const char bytes[] = {static_cast<char>(1 + pair / 255), static_cast<char>(1 + pair % 255)};
        CString text(bytes, 1), key(bytes + 1, 1);
        EncryptPassword(text, key, text);
        EXPECT_TRUE(text.GetAt(0) != 0 || bytes[0] < 0 || bytes[1] < 0);
        DecryptPassword(text, key, text);
        const bool same = text == CString(bytes, 1);
        EXPECT_TRUE(same || bytes[0] < ' ' || bytes[0] > '~') << pair;
        failures += !same;
    }
    EXPECT_EQ(failures, 5);
}

}  // namespace
}  // namespace brenta::test
