#include "brenta/names.h"

#include <array>
#include <cstring>
#include <new>

#include "foundation/characters.h"
#include "foundation/intern.h"
#include "foundation/library_statics.h"
#include "foundation/name_store.h"
#include "foundation/text_compare.h"

namespace brenta {

namespace {

// One body for the exported forms, which the table's and the free functions both contain whole: a call of one
// exported function by another takes a detour.

inline STRID InternTerminated(NameStore* pStore, const char* text) {
    if (!pStore || !text) return kNoName;
    const std::size_t length = std::strlen(text);
    return length != 0 ? pStore->Intern(text, length) : kNoName;
}

inline STRID InternCounted(NameStore* pStore, const char* text, std::size_t length) {
    return pStore && text ? pStore->InternCounted(text, length) : kNoName;
}

inline bool IsKnown(const NameStore* pStore, const char* text) {
    return pStore && text && *text != 0 && pStore->IsKnown(text, std::strlen(text));
}

inline NameStore* GlobalStore() {
    return NameStore::Of(GlobalStrings());
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// The table

CStringTable::CStringTable(const char* name, int pageSize)
    : m_name(), m_pStore(new (std::nothrow) NameStore(pageSize)) {
    if (!name) return;
    for (std::size_t i = 0; i + 1 < sizeof(m_name) && name[i] != 0; ++i)
        m_name[i] = name[i];
}

CStringTable::~CStringTable() {
    delete m_pStore;
}

STRID CStringTable::StrId(const char* text) {
    return InternTerminated(m_pStore, text);
}

STRID CStringTable::StrId(const char* text, unsigned int length) {
    return InternCounted(m_pStore, text, length);
}

bool CStringTable::IsId(const char* text) const {
    return IsKnown(m_pStore, text);
}

int CStringTable::GetPageCount() const {
    return m_pStore ? m_pStore->GetPageCount() : 0;
}

std::size_t CStringTable::GetNameCount() const {
    return m_pStore ? m_pStore->GetNameCount() : 0;
}

// ---------------------------------------------------------------------------------------------------------------------
// The global table

STRID StrId(const char* text) {
    return InternTerminated(GlobalStore(), text);
}

STRID StrId(const char* text, unsigned int length) {
    return InternCounted(GlobalStore(), text, length);
}

STRID InternName(std::string_view text) {
    NameStore* pStore = GlobalStore();
    return pStore ? pStore->InternView(text) : kNoName;
}

bool StrPresent(const char* text) {
    return IsKnown(GlobalStore(), text);
}

int StrIdICmp(STRID first, STRID second) {
    return first == second ? 0 : CompareIgnoringCase(StrPtr(first), StrPtr(second));
}

bool IsStrIdUpper(STRID id) {
    const char* text = StrPtr(id);
    while (*text != 0 && !IsLower(*text))
        ++text;
    return *text == 0;
}

// ---------------------------------------------------------------------------------------------------------------------
// Keys

namespace {

/// 256 words of a fixed pseudo-random sequence (a Weyl sequence, scrambled), for the codes -128 to 127 in
/// this order. Keys may be stored by hosts, so the words must never change.
constexpr std::array<std::uint32_t, 256> MakeKeyTable() {
    std::array<std::uint32_t, 256> table{};
    std::uint64_t state = 0x2545F4914F6CDD1Dull;
    for (std::uint32_t& word : table) {
        state += 0x9E3779B97F4A7C15ull;
        std::uint64_t mixed = (state ^ state >> 29) * 0xBF58476D1CE4E5B9ull;
        mixed = (mixed ^ mixed >> 32) * 0x94D049BB133111EBull;
        word = static_cast<std::uint32_t>(mixed >> 32);
    }
    return table;
}

constexpr std::array<std::uint32_t, 256> kKeyTable = MakeKeyTable();

std::uint32_t KeyWord(char c) {
    return kKeyTable[static_cast<std::size_t>(static_cast<signed char>(c) + 128)];
}

}  // namespace

int StringKey(const char* text) {
    if (!text) return 0;
    std::uint32_t sum = 0;
    for (; *text != 0; ++text)
        sum += KeyWord(*text) + static_cast<std::uint32_t>(static_cast<signed char>(*text));
    return static_cast<int>(sum & 0x7FFFFFFFu);
}

int StringKey(const char* text, unsigned int length) {
    if (!text) return 0;
    std::uint32_t even = 0;
    std::uint32_t odd = 0;
    for (unsigned int pair = 0; pair + 1 < length; pair += 2) {
        even += KeyWord(text[pair]);
        odd += KeyWord(text[pair + 1]);
    }
    const std::uint32_t last = length % 2 != 0 ? KeyWord(text[length - 1]) : 0;
    const std::uint32_t sum = even + odd + last;
    return static_cast<int>(static_cast<std::int32_t>(sum) < 0 ? 0u - sum : sum);
}

}  // namespace brenta
