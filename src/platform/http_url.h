// The parts of a web address that decide how and whether it is reached.
#pragma once

#include <string_view>

namespace brenta {

/// Views into the address.
struct HttpUrl {
    std::string_view scheme;  ///< "http" or "https"
    std::string_view host;    ///< without user, port and the brackets of a numeric address
};

/// Whether two texts differ at most in the case of their 7-bit letters.
bool EqualIgnoringCase(std::string_view a, std::string_view b);

/// Splits an address; false unless it is http(s) with a host, without blanks and control characters.
bool SplitHttpUrl(std::string_view url, HttpUrl& parts);

}  // namespace brenta
