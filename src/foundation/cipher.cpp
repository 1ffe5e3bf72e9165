// The two character substitutions: the per-character cipher and the keyed password transform.
#include <cstddef>

#include "brenta/framework.h"
#include "brenta/string.h"

namespace brenta {

namespace {

// The cipher of the characters from '!' to '~', in their order. Texts enciphered by one installation are read
// by another, so this may never change.
constexpr char kCipherText[] =
    "^{f=\"}PGerS9_TC]#vt*bI>[,iJF;O/yB3q<M0uW\\?d2H+L"
    "Xaw)`m1R7Nj@5hUszl4Kn-6&QAkx~Z!:EV'Dc%$|8Y.go(p";
constexpr int kFirst = '!';
constexpr int kCount = '~' - '!' + 1;
static_assert(sizeof(kCipherText) == kCount + 1);

struct SubstitutionTable {
    char entries[128] = {};
};

constexpr SubstitutionTable MakeCipherTable() {
    SubstitutionTable table;
    for (int c = 0; c < 128; ++c)
        table.entries[c] = static_cast<char>(c);
    for (int i = 0; i < kCount; ++i)
        table.entries[kFirst + i] = kCipherText[i];
    return table;
}

constexpr SubstitutionTable kCipherTable = MakeCipherTable();

constexpr SubstitutionTable MakeClearTable() {
    SubstitutionTable table;
    for (int c = 0; c < 128; ++c)
        table.entries[static_cast<std::size_t>(kCipherTable.entries[c])] = static_cast<char>(c);
    return table;
}

constexpr SubstitutionTable kClearTable = MakeClearTable();

// Each table undoes the other only if no character stands in kCipherText twice.
constexpr bool TablesAreInverse() {
    for (int c = 0; c < 128; ++c) {
        if (kClearTable.entries[static_cast<std::size_t>(kCipherTable.entries[c])] != c) return false;
    }
    return true;
}
static_assert(TablesAreInverse());

char Substitute(const SubstitutionTable& table, char c) {
    return c < 0 ? c : table.entries[static_cast<std::size_t>(c)];
}

// The remainder of a division by 255 that truncates toward zero, which keeps the sign of the sum.
constexpr int Reduce(int sum) {
    return sum % 255;
}

}  // namespace

char CoreGetCypherChar(char c) {
    return Substitute(kCipherTable, c);
}

char CoreGetClearChar(char c) {
    return Substitute(kClearTable, c);
}

void CoreString::Encrypt() {
    for (int i = 0; i < m_length; ++i)
        m_pBuffer[i] = CoreGetCypherChar(m_pBuffer[i]);
}

void CoreString::Decrypt() {
    for (int i = 0; i < m_length; ++i)
        m_pBuffer[i] = CoreGetClearChar(m_pBuffer[i]);
}

// Both transforms work modulo 255 and shift the outcome by one, so that ordinary text never meets the
// terminator 0.
void EncryptPassword(CString& plain, CString& key, CString& result) {
    CString enciphered;
    for (int i = 0; !key.IsEmpty() && i < plain.GetLength(); ++i) {
        const int sum = plain.GetAt(i) + key.GetAt(i % key.GetLength());
        enciphered += static_cast<char>(static_cast<unsigned char>(Reduce(sum) + 1));
    }
    result = enciphered;
}

void DecryptPassword(CString& result, CString& key, CString& cipher) {
    CString plain;
    for (int i = 0; !key.IsEmpty() && i < cipher.GetLength(); ++i) {
        const int sum = cipher.GetAt(i) - key.GetAt(i % key.GetLength()) - 1;
        plain += static_cast<char>(static_cast<unsigned char>(Reduce(sum)));
    }
    result = plain;
}

}  // namespace brenta
