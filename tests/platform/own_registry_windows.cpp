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

OwnRegistry::OwnRegistry(const std::string& folder, bool isFirst) {
    std::string own = folder;
    for (char& c : own)
        if (c == '\\' || c == '/') c = '|';
    own = "Software\\Brenta Tests\\" + own;
    if (isFirst) m_toRemove = own;
    HKEY keys[std::size(kRoots)] = {};
    // All are made before the first root, below which they are, leads elsewhere.
    for (std::size_t i = 0; i < std::size(kRoots); ++i)
        RegCreateKeyExA(HKEY_CURRENT_USER, (own + "\\" + kRoots[i].first).c_str(), 0, nullptr, 0,
                        KEY_ALL_ACCESS, nullptr, &keys[i], nullptr);
    for (std::size_t i = 0; i < std::size(kRoots); ++i) {
        LeadTo(kRoots[i].second, keys[i]);
        RegCloseKey(keys[i]);
    }
}

OwnRegistry::~OwnRegistry() {
    for (const auto& [name, root] : kRoots)
        LeadTo(root, nullptr);
    if (!m_toRemove.empty()) RegDeleteTreeA(HKEY_CURRENT_USER, m_toRemove.c_str());
}

}  // namespace brenta::test
