// CoreString's searches, matches and splits.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <optional>

#include "brenta/string.h"
#include "foundation/characters.h"
#include "foundation/text_search.h"

namespace brenta {

namespace {

constexpr std::size_t kNowhere = std::string_view::npos;

int Position(std::size_t place) {
    return place == kNowhere ? -1 : static_cast<int>(place);
}

// The first c, or null. What is sought is mostly near, where a call of memchr takes longer than the search.
const char* FindByte(const char* p, const char* pEnd, char c) {
    constexpr std::uint64_t kOnes = 0x0101010101010101u;
    constexpr int kWordsInline = 2;
    std::uint64_t word;
    for (int i = 0; i < kWordsInline && pEnd - p >= static_cast<std::ptrdiff_t>(sizeof(word)); ++i) {
        std::memcpy(&word, p, sizeof(word));
        word ^= kOnes * static_cast<unsigned char>(c);
        const std::uint64_t hits = (word - kOnes) & ~word & kOnes << 7;
        if (hits != 0) return p + FirstByteSet(hits);
        p += sizeof(word);
    }
    return static_cast<const char*>(std::memchr(p, c, static_cast<std::size_t>(pEnd - p)));
}

// Whether a pattern fits at the start of a text: "?" is any one byte, "*" ends the test with success.
bool Fits(const char* text, const char* pEnd, const char* pattern, bool ignoreCase) {
    for (; *pattern != 0; ++pattern, ++text) {
        if (*pattern == '*') return true;
        if (text == pEnd) return false;
        if (*pattern == '?' || *pattern == *text) continue;
        if (!ignoreCase || ToUpper(*pattern) != ToUpper(*text)) return false;
    }
    return true;
}

}  // namespace

// Trying place after place is fastest, unless text and pattern consist of the same few repeated pieces: then
// each try reads a long way before it fails. So the tries that fail have a budget, and a search that has used
// it up goes on by borders, where no byte of the text is read twice.
namespace {

struct AsItIs {
    char operator()(char c) const { return c; }
};

struct InLowerCase {
    char operator()(char c) const { return ToLower(c); }
};

// Bytes that failing tries may cost beside a few for each byte of the text.
class SearchBudget {
 public:
    // Whether there is more to spend, after a try of so many bytes that began at `place`.
    bool Spend(std::size_t bytes, std::size_t place) {
        m_spent += bytes;
        return m_spent < kPatience + kPerByte * place;
    }

 private:
    static constexpr std::size_t kPatience = 4096;
    static constexpr std::size_t kPerByte = 32;

    std::size_t m_spent = 0;
};

// Where a byte differs from the pattern's, the search goes on with the longest beginning of the pattern that
// also ends there: borders[i] is the length of the longest one that ends the first i bytes. Nothing without
// memory for them.
template <class Fold>
std::optional<std::size_t> FindByBorders(std::string_view where, std::string_view text, std::size_t start,
                                         Fold fold) {
    const std::unique_ptr<std::size_t[]> borders(new (std::nothrow) std::size_t[text.size() + 1]());
    if (!borders) return std::nullopt;
    const auto grow = [&](std::size_t matched, char c) {
        while (matched > 0 && fold(text[matched]) != fold(c))
            matched = borders[matched];
        return fold(text[matched]) == fold(c) ? matched + 1 : 0;
    };
    for (std::size_t i = 1; i < text.size(); ++i)
        borders[i + 1] = grow(borders[i], text[i]);
    std::size_t matched = 0;
    for (std::size_t place = start; place < where.size(); ++place) {
        matched = grow(matched, where[place]);
        if (matched == text.size()) return place + 1 - matched;
    }
    return kNowhere;
}

}  // namespace

std::size_t FindText(std::string_view where, std::string_view text, std::size_t start) {
    if (start > where.size() || text.size() > where.size() - start) return kNowhere;
    if (text.empty()) return start;
    const char* place = where.data() + start;
    const char* const pLast = where.data() + (where.size() - text.size());
    const char tail = text.back();
    const std::size_t rest = text.size() - 1;
    SearchBudget budget;
    while (place <= pLast) {
        place = FindByte(place, pLast + 1, text.front());
        if (place == nullptr) return kNowhere;
        const auto offset = static_cast<std::size_t>(place - where.data());
        if (place[rest] == tail) {
            if (std::memcmp(place, text.data(), rest) == 0) return offset;
            if (!budget.Spend(rest, offset - start)) {
                if (const auto found = FindByBorders(where, text, offset + 1, AsItIs())) return *found;
                budget = SearchBudget();
            }
        }
        ++place;
    }
    return kNowhere;
}

std::size_t FindTextIgnoringCase(std::string_view where, std::string_view text, std::size_t start) {
    if (start > where.size() || text.size() > where.size() - start) return kNowhere;
    if (text.empty()) return start;
    const char first = ToLower(text.front());
    SearchBudget budget;
    for (std::size_t place = start; place <= where.size() - text.size(); ++place) {
        if (ToLower(where[place]) != first) continue;
        std::size_t i = 1;
        while (i < text.size() && ToLower(where[place + i]) == ToLower(text[i]))
            ++i;
        if (i == text.size()) return place;
        if (!budget.Spend(i, place - start)) {
            if (const auto found = FindByBorders(where, text, place + 1, InLowerCase())) return *found;
            budget = SearchBudget();
        }
    }
    return kNowhere;
}

int CoreString::Find(const char* text, bool ignoreCase, int start) const {
    if (text == nullptr || start >= m_length) return -1;
    const auto first = static_cast<std::size_t>(std::max(start, 0));
    return Position(ignoreCase ? FindTextIgnoringCase(View(), text, first) : FindText(View(), text, first));
}

int CoreString::Find(char c, bool ignoreCase, int start) const {
    if (start >= m_length) return -1;
    const std::string_view rest = View().substr(static_cast<std::size_t>(std::max(start, 0)));
    if (!ignoreCase || ToLower(c) == ToUpper(c)) return Position(rest.find(c));
    return Position(FindTextIgnoringCase(rest, {&c, 1}, 0));
}

int CoreString::FindAny(const char* set, bool ignoreCase, int start) const {
    if (set == nullptr || start >= m_length) return -1;
    ByteSet bytes(set);
    if (ignoreCase) {
        for (; *set != 0; ++set) {
            bytes.Add(ToLower(*set));
            bytes.Add(ToUpper(*set));
        }
    }
    const char* const pStart = m_pBuffer + std::max(start, 0);
    const char* place = std::find_if(pStart, end(), [&](char c) { return bytes.Has(c); });
    return place == end() ? -1 : static_cast<int>(place - pStart);
}

bool CoreString::Contains(const char* set) const {
    return FindAny(set) >= 0;
}

bool CoreString::BeginsWith(const char* pattern, bool ignoreCase) const {
    return pattern != nullptr && Fits(begin(), end(), pattern, ignoreCase);
}

bool CoreString::Match(const char* pattern, bool ignoreCase) const {
    if (pattern == nullptr) return false;
    for (const char* place = begin(); place < end(); ++place) {
        if (Fits(place, end(), pattern, ignoreCase)) return true;
    }
    return false;
}

bool CoreString::IsAllNumeric() const {
    const char* place = std::find_if_not(begin(), end(), IsSpace);
    if (place != end() && (*place == '+' || *place == '-')) ++place;
    bool digits = false;
    bool point = false;
    for (; place != end(); ++place) {
        if (IsDigit(*place)) {
            digits = true;
        } else if (*place == '.' && !point) {
            point = true;
        } else {
            return false;
        }
    }
    return digits;
}

bool CoreString::SplitAt(const char* separator, CoreString& left, CoreString& right, int start) const {
    const std::string_view mark = separator == nullptr ? std::string_view() : separator;
    const int place = mark.empty() ? -1 : Find(separator, false, start);
    CoreString before = place >= 0 ? Left(place) : *this;
    CoreString behind;
    if (place >= 0) behind = View().substr(static_cast<std::size_t>(place) + mark.size());
    left = std::move(before);
    right = std::move(behind);
    return place >= 0;
}

bool CoreString::SplitAt(char separator, CoreString& left, CoreString& right, int start) const {
    const bool beyond = start >= m_length;
    const int offset = Find(separator, false, start);
    CoreString before = offset >= 0 ? Left(offset) : *this;
    CoreString behind;
    if (offset >= 0) {
        const int place = std::max(start, 0) + offset;
        behind = View().substr(static_cast<std::size_t>(place) + 1);
    }
    left = std::move(before);
    if (!beyond) right = std::move(behind);
    return offset >= 0;
}

CoreString CoreString::ExtractToken(char delimiter) {
    const std::size_t text = View().find_first_not_of(delimiter);
    const std::size_t mark = text == kNowhere ? kNowhere : View().find(delimiter, text);
    if (mark == kNowhere) return std::move(*this);
    CoreString token = Left(static_cast<int>(mark));
    TrimLeft(static_cast<int>(mark) + 1);
    return token;
}

}  // namespace brenta
