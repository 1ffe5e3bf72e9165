#include "platform/http_url.h"

#include <algorithm>

#include "foundation/characters.h"

namespace brenta {

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return ToLower(x) == ToLower(y); });
}

bool SplitHttpUrl(std::string_view url, HttpUrl& parts) {
    const std::size_t mark = url.find("://");
    if (mark == std::string_view::npos) return false;
    for (const std::string_view known : {"http", "https"}) {
        if (EqualIgnoringCase(url.substr(0, mark), known)) parts.scheme = known;
    }
    const bool isClean =
        std::none_of(url.begin(), url.end(), [](char c) { return c == ' ' || IsControl(c); });
    if (parts.scheme.empty() || !isClean) return false;

    std::string_view authority = url.substr(mark + 3);
    // A "\" is taken for a "/" by some readers of addresses; let it end the host for all.
    authority = authority.substr(0, authority.find_first_of("/?#\\"));
    const std::size_t at = authority.rfind('@');
    if (at != std::string_view::npos) authority.remove_prefix(at + 1);
    if (authority.starts_with('['))
        parts.host = authority.substr(1, authority.find(']') - 1);  // npos - 1 is the whole
    else
        parts.host = authority.substr(0, authority.find(':'));
    return !parts.host.empty();
}

}  // namespace brenta
