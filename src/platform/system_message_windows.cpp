#include "platform/system_message_windows.h"

#include <algorithm>

#include "platform/wide_text_windows.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace brenta {

std::string SystemMessage(unsigned long error, const wchar_t* library) {
    DWORD flags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    const HMODULE module = library ? GetModuleHandleW(library) : nullptr;
    if (module) flags |= FORMAT_MESSAGE_FROM_HMODULE;
    wchar_t text[1024];
    const DWORD length = FormatMessageW(flags, module, error, 0, text, std::size(text), nullptr);
    std::string line = Narrowed({text, length});
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
    return line.substr(0, line.find_last_not_of(" ") + 1);  // npos + 1 is 0
}

}  // namespace brenta
