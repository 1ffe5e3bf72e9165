#include <cstring>
#include <string_view>

#include "brenta/framework.h"
#include "brenta/names.h"
#include "foundation/characters.h"
#include "foundation/intern.h"

namespace brenta {

namespace {

const char* SkipDelimiters(const char* p, const ByteSet& delimiters) {
    while (*p != 0 && delimiters.Has(*p))
        ++p;
    return p;
}

const char* FindDelimiter(const char* p, const ByteSet& delimiters) {
    while (*p != 0 && !delimiters.Has(*p))
        ++p;
    return p;
}

void AddName(const char* begin, const char* end, TOrderedList<STRID>& out) {
    const STRID name = InternName(std::string_view(begin, static_cast<std::size_t>(end - begin)));
    if (name != kNoName) out.Add(name);
}

bool IsBlankOrTab(char c) {
    return c == ' ' || c == '\t';
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// Tokens

void GetTokens(const char* text, const char* delimiters, TOrderedList<STRID>& out) {
    if (!text) return;
    const ByteSet set(delimiters);
    for (const char* p = SkipDelimiters(text, set); *p != 0;) {
        const char* end = FindDelimiter(p, set);
        AddName(p, end, out);
        p = SkipDelimiters(end, set);
    }
}

void GetTokensQuoted(const char* text, const char* delimiters, TOrderedList<STRID>& out) {
    if (!text) return;
    const ByteSet set(delimiters);
    for (const char* p = SkipDelimiters(text, set); *p != 0; p = SkipDelimiters(p, set)) {
        if (*p != '"') {
            const char* end = FindDelimiter(p, set);
            AddName(p, end, out);
            p = end;
            continue;
        }
        const char* end = p + 1 + std::strcspn(p + 1, "\"");
        AddName(p + 1, end, out);
        p = *end != 0 ? end + 1 : end;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Searching

/// The pattern is a row of segments between stars, and as it may match anywhere, there is a star before the
/// first and behind the last. Each segment is best matched at its first occurrence behind the one before, so
/// a failure only ever moves the current segment on by one byte; no earlier choice is taken back.
bool SearchStringForMatch(const char* pattern, const char* text) {
    if (!text || *text == 0) return false;
    const char* p = pattern ? pattern : "";
    const char* t = text;
    const char* segment = p;
    const char* start = t;
    for (;;) {
        while (*p == '*') {
            segment = ++p;
            start = t;
        }
        if (*p == 0) return true;
        if (*t == 0) return false;
        if (*p == '?' || ToLower(*p) == ToLower(*t)) {
            ++p;
            ++t;
        } else {
            p = segment;
            t = ++start;
        }
    }
}

const char* MatchClosing(char open, char close, const char* p) {
    if (!p) return nullptr;
    for (std::size_t depth = 0; *p != 0; ++p) {
        if (*p == close) {
            if (depth == 0) return p;
            --depth;
        } else if (*p == open) {
            ++depth;
        }
    }
    return nullptr;
}

// ---------------------------------------------------------------------------------------------------------------------
// Ends of a text

void TrimTrailingWhite(char* text) {
    if (!text) return;
    char* end = text + std::strlen(text);
    while (end > text && IsBlankOrTab(end[-1]))
        --end;
    *end = 0;
}

const char* SkipWhite(const char* text) {
    if (!text) return nullptr;
    while (IsBlankOrTab(*text))
        ++text;
    return text;
}

CoreString GetAlphaPrefix(const char* text) {
    if (!text) return CoreString();
    const char* end = text;
    while (IsAlpha(*end))
        ++end;
    return CoreString(std::string_view(text, static_cast<std::size_t>(end - text)));
}

CString& DecimalToBase26(int number, CString& out) {
    constexpr std::size_t kMaxDigits = 8;  // 26^7 > 2^31
    char digits[kMaxDigits];
    std::size_t first = kMaxDigits - 1;
    digits[first] = 0;
    do {
        const int digit = (number % 26 + 26) % 26;
        digits[--first] = static_cast<char>('A' + digit);
        number /= 26;
    } while (number > 0);
    return out = digits + first;
}

}  // namespace brenta
