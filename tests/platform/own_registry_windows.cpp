#include "platform/own_registry.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstdlib>
#include <iterator>
#include <utility>

namespace brenta::test {

namespace {

const std::pair<const char*, HKEY> kRoots[] = {{"user", HKEY_CURRENT_USER},
                                               {"machine", HKEY_LOCAL_MACHINE},
                                               {"machine\\Software\\Classes", HKEY_CLASSES_ROOT},
                                               {"users", HKEY_USERS}};

void LeadTo(HKEY root, HKEY key) {
    if (RegOverridePredefKey(root, key) != ERROR_SUCCESS) std::abort();
}

}  // namespace

OwnRegistry::OwnRegistry(const std::string& folder, bool isFirst) : m_key(folder), m_isFirst(isFirst) {
    for (char& c : m_key)
        if (c == '\\' || c == '/') c = '|';
    m_key = "Software\\Brenta Tests\\" + m_key;
    HKEY keys[std::size(kRoots)] = {};
    // All are made before the first root, below which they are, leads elsewhere.
    for (std::size_t i = 0; i < std::size(kRoots); ++i)
        RegCreateKeyExA(HKEY_CURRENT_USER, (m_key + "\\" + kRoots[i].first).c_str(), 0, nullptr, 0,
                        KEY_ALL_ACCESS, nullptr, &keys[i], nullptr);
    for (std::size_t i = 0; i < std::size(kRoots); ++i) {
        LeadTo(kRoots[i].second, keys[i]);
        RegCloseKey(keys[i]);
    }
}

OwnRegistry::~OwnRegistry() {
    for (const auto& [name, root] : kRoots)
        LeadTo(root, nullptr);
    if (m_isFirst) RegDeleteTreeA(HKEY_CURRENT_USER, m_key.c_str());
}

}  // namespace brenta::test
