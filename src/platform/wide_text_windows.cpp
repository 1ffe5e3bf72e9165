#include "platform/wide_text_windows.h"

#include <algorithm>
#include <limits>
#include <new>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace brenta {

namespace {

int LengthOf(std::size_t size) {
    if (size > static_cast<std::size_t>(std::numeric_limits<int>::max())) throw std::bad_alloc();
    return static_cast<int>(size);
}

}  // namespace

std::wstring Widened(std::string_view text) {
    const int size = LengthOf(text.size());
    if (size == 0) return {};
    const int count = MultiByteToWideChar(CP_ACP, 0, text.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(count), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text.data(), size, wide.data(), count);
    return wide;
}

std::string Narrowed(std::wstring_view text) {
    const int size = LengthOf(text.size());
    if (size == 0) return {};
    const int count = WideCharToMultiByte(CP_ACP, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(count), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), size, narrow.data(), count, nullptr, nullptr);
    return narrow;
}

bool HasLongCharacters() {
    CPINFO page;
    return GetCPInfo(CP_ACP, &page) && page.MaxCharSize > 1;
}

std::wstring WidenedBytes(std::string_view bytes) {
    std::wstring wide(bytes.size(), L'\0');
    std::transform(bytes.begin(), bytes.end(), wide.begin(),
                   [](char c) { return static_cast<wchar_t>(static_cast<unsigned char>(c)); });
    return wide;
}

bool NarrowedBytes(std::wstring_view text, std::string& bytes) {
    if (std::any_of(text.begin(), text.end(), [](wchar_t c) { return c > 0xff; })) return false;
    bytes.resize(text.size());
    std::transform(text.begin(), text.end(), bytes.begin(), [](wchar_t c) { return static_cast<char>(c); });
    return true;
}

}  // namespace brenta
