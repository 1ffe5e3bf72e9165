#include "xml/com_msxml.h"

#include <shlwapi.h>

#include <algorithm>
#include <climits>

#include "foundation/characters.h"
#include "os/os.h"
#include "os/programs.h"
#include "platform/wide_text_windows.h"

namespace brenta {

namespace {

constexpr std::string_view kFileScheme = "file:";

bool IsFileAddress(std::string_view name) {
    return name.size() >= kFileScheme.size() &&
           std::equal(kFileScheme.begin(), kFileScheme.end(), name.begin(),
                      [](char lower, char c) { return lower == ToLower(c); });
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------
// Texts: most are ASCII, which is the same in all code pages, and are not worth a call of the system.

std::wstring ToWide(std::string_view text) {
    const bool plain = std::all_of(text.begin(), text.end(), [](char c) { return c >= 0; });
    return plain ? std::wstring(text.begin(), text.end()) : Widened(text);
}

void AppendNarrow(std::wstring_view text, std::string& out) {
    if (!std::all_of(text.begin(), text.end(), [](wchar_t c) { return c < 0x80; })) {
        out += Narrowed(text);
        return;
    }
    const std::size_t start = out.size();
    out.resize(start + text.size());
    std::transform(text.begin(), text.end(), out.begin() + static_cast<std::ptrdiff_t>(start),
                   [](wchar_t c) { return static_cast<char>(c); });
}

std::wstring_view ComText::Wide() const {
    return m_text == nullptr ? std::wstring_view() : std::wstring_view(m_text, SysStringLen(m_text));
}

std::string ComText::Narrow() const {
    std::string text;
    AppendNarrow(Wide(), text);
    return text;
}

ComArgument::ComArgument(std::wstring_view text) {
    VariantInit(&m_value);
    m_value.vt = VT_BSTR;
    if (text.size() > INT_MAX) throw std::bad_alloc();
    m_value.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (m_value.bstrVal == nullptr) throw std::bad_alloc();
}

std::wstring_view ComValue::Text() {
    const bool isText = m_value.vt == VT_BSTR || VariantChangeType(&m_value, &m_value, 0, VT_BSTR) == S_OK;
    if (!isText || m_value.bstrVal == nullptr) return {};
    return {m_value.bstrVal, SysStringLen(m_value.bstrVal)};
}

// ---------------------------------------------------------------------------------------------------------
// Files

namespace {

/// MSXML passes over these before it looks for a scheme.
std::string_view WithoutLeadingBlanks(std::string_view name) {
    while (!name.empty() && name[0] >= 0 && name[0] <= ' ')
        name.remove_prefix(1);
    return name;
}

std::wstring FullPath(const std::wstring& path) {
    std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full;
}

}  // namespace

bool IsLocalFile(const char* path) {
    const std::string_view name = WithoutLeadingBlanks(path == nullptr ? "" : path);
    if (os::HasScheme(name)) return IsFileAddress(name);
    return os::FileReader().Open(path) || os::IsAbsent(path);
}

std::wstring PlainPath(std::wstring path) {
    constexpr std::wstring_view kRaw = LR"(\\?\)", kRawNetwork = LR"(\\?\UNC\)";
    std::wstring plain;
    if (path.starts_with(kRawNetwork))
        plain = L"\\\\" + path.substr(kRawNetwork.size());
    else if (path.starts_with(kRaw) && path.find(L':') == kRaw.size() + 1)
        plain = path.substr(kRaw.size());
    // Without the mark some names stand for others: dots at their end go.
    return !plain.empty() && FullPath(plain) == plain ? plain : path;
}

// A path from the drive on cannot be taken for an address, whatever is in the name. It is turned into one on
// the way, but without its percent signs being written as such.
std::wstring FileName(const char* path) {
    const std::string name = os::NativePath(path);
    if (os::HasScheme(WithoutLeadingBlanks(name))) return ToWide(name);
    std::wstring full = PlainPath(FullPath(ToWide(name)));
    if (full.find(L'%') == full.npos) return full;
    constexpr std::size_t kLongestEscape = 9;  // of a character in UTF-8
    std::wstring address(kFileScheme.size() + 3 + kLongestEscape * full.size() + 1, L'\0');
    auto size = static_cast<DWORD>(address.size());
    if (FAILED(UrlCreateFromPathW(full.c_str(), address.data(), &size, 0))) return full;
    address.resize(size);
    return address;
}

}  // namespace brenta
