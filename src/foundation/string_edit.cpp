// CoreString's edits. Those that keep or shorten the text work in place; those that lengthen it find out by
// how much first.
#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdio>
#include <memory>

#include "brenta/framework.h"
#include "brenta/string.h"
#include "foundation/characters.h"
#include "foundation/text_search.h"
#include "os/os.h"

namespace brenta {

namespace {

bool IsUrlReserved(char c) {
    constexpr std::string_view kReserved = " \"#$%&+,/:;<=>?@[\\]^`{|}";
    return IsControl(c) || kReserved.find(c) != std::string_view::npos;
}

}  // namespace

// ----------------------------------------------------------------------------------------------------------
// Replacing

int CoreString::Replace(char from, char to) {
    if (from == 0 || to == 0) return 0;
    int count = 0;
    for (int i = 0; i < m_length; ++i) {
        count += m_pBuffer[i] == from;
        m_pBuffer[i] = m_pBuffer[i] == from ? to : m_pBuffer[i];
    }
    return count;
}

int CoreString::ReplaceAny(const char* set, char to) {
    if (to == 0) return 0;
    const ByteSet bytes(set);
    int count = 0;
    for (int i = 0; i < m_length; ++i) {
        if (!bytes.Has(m_pBuffer[i])) continue;
        m_pBuffer[i] = to;
        ++count;
    }
    return count;
}

int CoreString::Replace(const char* from, const char* to) {
    if (from == nullptr || *from == 0) return 0;
    if (to == nullptr) to = "";
    if (Owns(from) || Owns(to)) {
        const CoreString ownFrom(from);
        const CoreString ownTo(to);
        return Replace(ownFrom(), ownTo());
    }
    const std::string_view source = from;
    const std::string_view target = to;
    return target.size() <= source.size() ? ReplaceInPlace(source, target) : ReplaceGrowing(source, target);
}

int CoreString::ReplaceInPlace(std::string_view from, std::string_view to) {
    int count = 0;
    std::size_t read = 0;
    char* write = m_pBuffer;
    for (;;) {
        const std::size_t place = FindText(View(), from, read);
        if (place == std::string_view::npos) break;
        if (write != m_pBuffer + read) std::memmove(write, m_pBuffer + read, place - read);
        write = std::copy(to.begin(), to.end(), write + (place - read));
        read = place + from.size();
        ++count;
    }
    if (write == m_pBuffer + read) return count;
    const std::size_t rest = static_cast<std::size_t>(m_length) - read;
    std::memmove(write, m_pBuffer + read, rest);
    CutTo(static_cast<int>(write + rest - m_pBuffer));
    return count;
}

// Written into a string that grows as it goes, so that each occurrence is searched for once.
int CoreString::ReplaceGrowing(std::string_view from, std::string_view to) {
    std::size_t place = FindText(View(), from, 0);
    if (place == std::string_view::npos) return 0;
    CoreString result;
    if (!result.Reserve(static_cast<std::size_t>(m_length))) return 0;
    std::size_t count = 0;
    std::size_t read = 0;
    for (; place != std::string_view::npos; place = FindText(View(), from, read), ++count) {
        result.AppendBytes(m_pBuffer + read, place - read).AppendBytes(to.data(), to.size());
        read = place + from.size();
    }
    const auto length = static_cast<std::size_t>(m_length);
    result.AppendBytes(m_pBuffer + read, length - read);
    const bool complete = result.View().size() == length + count * (to.size() - from.size());
    if (!complete) return 0;
    result.GiveBackRoom();
    *this = std::move(result);
    return static_cast<int>(count);
}

// ----------------------------------------------------------------------------------------------------------
// The whole text

void CoreString::MakeUpper() {
    std::transform(m_pBuffer, m_pBuffer + m_length, m_pBuffer, ToUpper);
}

void CoreString::MakeLower() {
    std::transform(m_pBuffer, m_pBuffer + m_length, m_pBuffer, ToLower);
}

void CoreString::MakeReverse() {
    std::reverse(m_pBuffer, m_pBuffer + m_length);
}

void CoreString::SortChars() {
    int counts[UCHAR_MAX + 1] = {};
    for (const char c : *this)
        ++counts[c - CHAR_MIN];
    char* write = m_pBuffer;
    for (int c = CHAR_MIN; c <= CHAR_MAX; ++c)
        write = std::fill_n(write, counts[c - CHAR_MIN], static_cast<char>(c));
}

// ----------------------------------------------------------------------------------------------------------
// The ends of the text

void CoreString::Trim() {
    TrimTrailing();
    TrimLeading();
}

void CoreString::TrimLeading() {
    TrimLeft(static_cast<int>(std::find_if_not(begin(), end(), IsSpace) - begin()));
}

void CoreString::TrimTrailing() {
    int length = m_length;
    while (length > 0 && IsSpace(m_pBuffer[length - 1]))
        --length;
    Truncate(length);
}

void CoreString::TrimLeft(int n) {
    if (n < 1) return;
    const int length = m_length - std::min(n, m_length);
    std::memmove(m_pBuffer, m_pBuffer + (m_length - length), static_cast<std::size_t>(length));
    CutTo(length);
}

void CoreString::TrimRight(int n) {
    if (n >= 1) CutTo(m_length - std::min(n, m_length));
}

void CoreString::PadLeft(int width, char fill) {
    const int length = m_length;
    if (width <= length || fill == 0 || !SetLength(static_cast<std::size_t>(width))) return;
    std::memmove(m_pBuffer + (width - length), m_pBuffer, static_cast<std::size_t>(length));
    std::fill_n(m_pBuffer, width - length, fill);
}

void CoreString::PadRight(int width, char fill) {
    const int length = m_length;
    if (width <= length || fill == 0 || !SetLength(static_cast<std::size_t>(width))) return;
    std::fill_n(m_pBuffer + length, width - length, fill);
}

bool CoreString::StripBrackets(char bracket) {
    if (m_length < 2 || m_pBuffer[0] != bracket || GetLastChar() != bracket) return false;
    TrimRight(1);
    TrimLeft(1);
    return true;
}

bool CoreString::NextNumber(int step) {
    int behind = m_length;
    while (behind > 0 && !IsDigit(m_pBuffer[behind - 1]))
        --behind;
    int first = behind;
    while (first > 0 && IsDigit(m_pBuffer[first - 1]))
        --first;
    if (first == behind) return false;
    if (first > 0 && m_pBuffer[first - 1] == '-') --first;

    long long number = 0;
    if (std::from_chars(begin() + first, begin() + behind, number).ec != std::errc()) return false;
    if (step > 0 ? number > LLONG_MAX - step : number < LLONG_MIN - step) return false;
    char digits[24];
    const char* const pDigitsEnd = std::to_chars(digits, digits + sizeof(digits), number + step).ptr;

    const std::string_view before = View().substr(0, static_cast<std::size_t>(first));
    const std::string_view sum(digits, static_cast<std::size_t>(pDigitsEnd - digits));
    const std::string_view after = View().substr(static_cast<std::size_t>(behind));
    CoreString result;
    if (!result.Reserve(before.size() + sum.size() + after.size())) return false;
    result.AppendBytes(before.data(), before.size());
    result.AppendBytes(sum.data(), sum.size()).AppendBytes(after.data(), after.size());
    *this = std::move(result);
    return true;
}

// ----------------------------------------------------------------------------------------------------------
// Into other forms

CoreString& CoreString::EscapeURL(CoreString& out) const {
    constexpr char kHexDigits[] = "0123456789abcdef";
    const auto escapes = static_cast<std::size_t>(std::count_if(begin(), end(), IsUrlReserved));
    CoreString result;
    if (!result.SetLength(static_cast<std::size_t>(m_length) + 2 * escapes)) return out;
    char* write = result.m_pBuffer;
    for (const char c : *this) {
        if (IsUrlReserved(c)) {
            *write++ = '%';
            *write++ = kHexDigits[c >> 4];
            *write++ = kHexDigits[c & 15];
        } else {
            *write++ = c;
        }
    }
    return out = std::move(result);
}

bool CoreString::SaveToFile(const char* path) const {
    struct Closer {
        void operator()(std::FILE* pFile) const { std::fclose(pFile); }
    };
    std::unique_ptr<std::FILE, Closer> pFile(std::fopen(os::NativePath(path).c_str(), "wt"));
    if (!pFile) {
        CoreString message;
        message.Format("Failed to create file %s.", path == nullptr ? "" : path);
        AfxMessageBox(message);
        return false;
    }
    const bool written = std::fputs(m_pBuffer, pFile.get()) >= 0 && std::fflush(pFile.get()) == 0;
    return std::fclose(pFile.release()) == 0 && written;
}

}  // namespace brenta
