// The keys that a root is made of, for the backends of the store.
#pragma once

#include <string_view>
#include <vector>

#include "platform/registry_store.h"

namespace brenta::registry_store {

/// The names from the top of the place's hive downward: the root of the classes stands within the local
/// machine's.
std::vector<std::string_view> NamesFromHive(const Place& place);

/// Whether the key is a root, or one that leads to the classes.
bool IsProtected(const Place& place);

}  // namespace brenta::registry_store
