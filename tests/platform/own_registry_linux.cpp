#include "platform/own_registry.h"

namespace brenta::test {

OwnRegistry::OwnRegistry(const std::string&, bool isFirst) : m_isFirst(isFirst) {}
OwnRegistry::~OwnRegistry() = default;

}  // namespace brenta::test
