// The system's texts for its error numbers.
#pragma once

#include <string>

namespace brenta {

/// The text for an error, as one line without its end; "" if there is none. `library` is the one that the
/// error comes from; null for the system itself.
std::string SystemMessage(unsigned long error, const wchar_t* library = nullptr);

}  // namespace brenta
