#include "platform/own_registry.h"

namespace brenta::test {

OwnRegistry::OwnRegistry(const std::string&, bool) {}
OwnRegistry::~OwnRegistry() = default;

}  // namespace brenta::test
