// A registry that a test or a fuzz target may fill and empty as it likes.
#pragma once

#include <string>

namespace brenta::test {

/// While it lives, the registry is another one, which belongs to the folder; where the registry is a file in
/// that folder there is nothing to do.
class OwnRegistry {
 public:
    /// The first object for a folder removes what is in its registry in the end.
    OwnRegistry(const std::string& folder, bool isFirst);
    ~OwnRegistry();
    OwnRegistry(const OwnRegistry&) = delete;
    OwnRegistry& operator=(const OwnRegistry&) = delete;

 private:
    std::string m_toRemove;  // a key, or none
};

}  // namespace brenta::test
