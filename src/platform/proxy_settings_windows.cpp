// The internet settings that a person has made for all programs.
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <wininet.h>

#include <memory>

#include "platform/network_backend.h"
#include "platform/wide_text_windows.h"

namespace brenta {

namespace {

/// A text of the system's memory; null is "".
class SystemText {
 public:
    explicit SystemText(wchar_t* text) : m_pText(text) {}
    ~SystemText() {
        if (m_pText) GlobalFree(m_pText);
    }
    SystemText(const SystemText&) = delete;
    SystemText& operator=(const SystemText&) = delete;

    CoreString Get() const { return CoreString(std::string_view(m_pText ? Narrowed(m_pText) : "")); }

 private:
    wchar_t* m_pText;
};

}  // namespace

bool PlatformInternetSettings(InternetSettings& settings) {
    enum { Flags, Proxies, Bypass, Script, Count };
    INTERNET_PER_CONN_OPTIONW options[Count] = {};
    options[Flags].dwOption = INTERNET_PER_CONN_FLAGS;
    options[Proxies].dwOption = INTERNET_PER_CONN_PROXY_SERVER;
    options[Bypass].dwOption = INTERNET_PER_CONN_PROXY_BYPASS;
    options[Script].dwOption = INTERNET_PER_CONN_AUTOCONFIG_URL;
    INTERNET_PER_CONN_OPTION_LISTW list = {};
    list.dwSize = sizeof(list);
    list.dwOptionCount = Count;
    list.pOptions = options;
    DWORD size = sizeof(list);
    if (!InternetQueryOptionW(nullptr, INTERNET_OPTION_PER_CONNECTION_OPTION, &list, &size)) return false;
    const SystemText proxies(options[Proxies].Value.pszValue), bypass(options[Bypass].Value.pszValue),
        script(options[Script].Value.pszValue);
    InternetSettings found;
    found.flags = static_cast<int>(options[Flags].Value.dwValue);
    found.proxyList = proxies.Get();
    found.bypassList = bypass.Get();
    found.scriptUrl = script.Get();
    found.source = "system";
    settings = found;
    return true;
}

}  // namespace brenta
