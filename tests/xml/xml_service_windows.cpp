#include "xml/xml_service.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace brenta::test {

const bool kOwnXmlService = false;
const int kDeepestFile = 250;

std::string Own(std::string_view utf8) {
    std::wstring wide(utf8.size(), L'\0');
    const auto size = static_cast<int>(utf8.size());
    const int count = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), size);
    std::string own(4 * static_cast<std::size_t>(count), '\0');
    const int bytes = WideCharToMultiByte(CP_ACP, 0, wide.data(), count, own.data(),
                                          static_cast<int>(own.size()), nullptr, nullptr);
    own.resize(static_cast<std::size_t>(bytes));
    return own;
}

std::string Content(std::string text) {
    constexpr std::string_view kDeclaration = "<?xml version='1.0'?>";
    if (text.starts_with(kDeclaration)) text.replace(0, kDeclaration.size(), "<?xml version=\"1.0\"?>");
    std::erase_if(text, [](char c) { return c == '\r' || c == '\n' || c == '\t'; });
    return text;
}

Texts NoFiles(const Scratch& scratch) {
    return {scratch / "", "NUL", "\\\\.\\pipe\\brenta"};
}

bool SetRights(const std::string& path) {
    return SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_HIDDEN);
}

bool HasRights(const std::string& path) {
    return (GetFileAttributesA(path.c_str()) & FILE_ATTRIBUTE_HIDDEN) != 0;
}

std::size_t AllocatedBytes() {
    return 0;
}

}  // namespace brenta::test
