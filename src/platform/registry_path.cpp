#include "platform/registry_path.h"

#include <algorithm>

#include "foundation/characters.h"

namespace brenta {

RegistryPath::RegistryPath(const char* text) : m_error(Split(text ? text : "")) {
    if (m_error != RegistryError::None) m_names.clear();
}

RegistryError RegistryPath::Split(std::string_view text) {
    if (text.starts_with('\\')) return RegistryError::BadPath;
    while (!text.empty()) {
        const std::string_view name = text.substr(0, text.find('\\'));
        if (name.size() > kLongestKeyName || m_names.size() == kDeepestKey) return RegistryError::BadArgument;
        m_names.push_back(name);
        text.remove_prefix(std::min(text.find_first_not_of('\\', name.size()), text.size()));
    }
    return RegistryError::None;
}

std::string FoldedName(std::string_view name) {
    std::string folded(name);
    std::transform(folded.begin(), folded.end(), folded.begin(), &ToLower);
    return folded;
}

}  // namespace brenta
