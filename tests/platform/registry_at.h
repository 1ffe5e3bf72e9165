// A wrapper for tests of the registry.
#pragma once

#include "brenta/registry.h"
#include "test_support.h"

namespace brenta::test {

/// A wrapper at a key of the current user, which is created.
struct At : CCoreRegistry {
    explicit At(const char* path, HKEY root = HKEY_CURRENT_USER) : CCoreRegistry(root) {
        EXPECT_TRUE(SetKey(path, true)) << path;
    }
};

inline Texts SubKeys(CCoreRegistry& registry) {
    TOrderedList<CoreString> names;
    registry.GetSubKeyNames(names);
    return Texts(names.begin(), names.end());
}

}  // namespace brenta::test
