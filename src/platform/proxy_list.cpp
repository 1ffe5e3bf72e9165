#include "platform/proxy_list.h"

#include <unordered_map>

#include "foundation/characters.h"

namespace brenta {

namespace {

constexpr int kLargestPort = 65535;

/// The number at the start of a text, 0 if it is none or beyond the ports.
int LeadingPort(std::string_view text) {
    int port = 0;
    for (const char c : text) {
        if (!IsDigit(c)) break;
        port = port * 10 + (c - '0');
        if (port > kLargestPort) return 0;
    }
    return port;
}

/// How many bytes stand before the host in the value of an entry.
std::size_t HostStart(std::string_view value) {
    const std::size_t slashes = value.find("://");
    std::size_t start = slashes == std::string_view::npos ? 0 : slashes + 3;
    // A user name may hold anything but a slash, an "@" among it.
    const std::string_view authority = value.substr(0, value.find('/', start));
    const std::size_t at = authority.rfind('@');
    if (at != std::string_view::npos && at >= start) start = at + 1;
    return start;
}

std::size_t HostLength(std::string_view text) {
    const std::size_t bracket = text.find_first_of("]/");
    const bool isBracketed = text.starts_with('[') && bracket < text.size() && text[bracket] == ']';
    return isBracketed ? bracket + 1 : text.substr(0, text.find_first_of(":/")).size();
}

/// Entries that stand in the list, as its text is or with their hosts replaced.
class HostReplacer {
 public:
    explicit HostReplacer(const HostLookup& lookup) : m_lookup(lookup) {}

    void Append(std::string& list, const ProxyEntry& entry) {
        list += entry.before;
        if (entry.port > 0 && !entry.host.empty() && !entry.host.starts_with('['))
            list += AddressOf(entry.host);
        else
            list += entry.host;
        list += entry.after;
    }

 private:
    const std::string& AddressOf(std::string_view host) {
        const auto [position, isNew] = m_known.try_emplace(std::string(host));
        if (isNew && !m_lookup(position->first, position->second)) position->second = position->first;
        return position->second;
    }

    const HostLookup& m_lookup;
    std::unordered_map<std::string, std::string> m_known;
};

}  // namespace

std::string_view TakeProxyEntry(std::string_view& list, std::string_view separators) {
    const std::size_t start = list.find_first_not_of(separators);
    list.remove_prefix(start == std::string_view::npos ? list.size() : start);
    const std::string_view entry = list.substr(0, list.find_first_of(separators));
    list.remove_prefix(entry.size());
    return entry;
}

ProxyEntry SplitProxyEntry(std::string_view entry) {
    ProxyEntry pieces;
    const std::size_t equals = entry.find('=');
    std::size_t start = 0;
    if (equals != std::string_view::npos) {
        pieces.scheme = entry.substr(0, equals);
        start = equals + 1;
    }
    start += HostStart(entry.substr(start));
    pieces.before = entry.substr(0, start);
    pieces.host = entry.substr(start, HostLength(entry.substr(start)));
    pieces.after = entry.substr(start + pieces.host.size());
    if (pieces.after.starts_with(':')) pieces.port = LeadingPort(pieces.after.substr(1));
    return pieces;
}

ProxyServer FindHttpProxy(std::string_view list) {
    ProxyEntry found;
    bool isFirst = true;
    for (std::string_view entry = TakeProxyEntry(list); !entry.empty(); entry = TakeProxyEntry(list)) {
        const ProxyEntry pieces = SplitProxyEntry(entry);
        const bool hasScheme = entry.find('=') != std::string_view::npos;
        if (hasScheme && pieces.scheme == "http") {
            found = pieces;
            break;
        }
        if (isFirst && !hasScheme) found = pieces;
        isFirst = false;
    }
    if (found.host.empty() || found.port == 0) return {};
    return {std::string(found.host), found.port};
}

bool ReplaceProxyHosts(std::string& list, const HostLookup& lookup) {
    std::string_view rest = list;
    for (std::string_view entry = TakeProxyEntry(rest); !entry.empty(); entry = TakeProxyEntry(rest)) {
        if (entry.find(':', 1) == std::string_view::npos) return false;
    }
    HostReplacer replacer(lookup);
    std::string replaced;
    replaced.reserve(list.size());
    rest = list;
    for (std::string_view entry = TakeProxyEntry(rest); !entry.empty(); entry = TakeProxyEntry(rest)) {
        if (!replaced.empty()) replaced += ';';
        replacer.Append(replaced, SplitProxyEntry(entry));
    }
    list = replaced;
    return true;
}

}  // namespace brenta
