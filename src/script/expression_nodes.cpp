#include "script/expression_nodes.h"

#include <algorithm>
#include <memory>
#include <new>

#include "brenta/heap.h"

namespace brenta {
namespace {

// A block's count of nodes fits 32 bits; a longer expression takes several blocks.
constexpr std::size_t kLargestBlock = std::size_t{1} << 24;

}  // namespace

ExpressionNodes* ExpressionNodes::Create(std::size_t capacity) {
    static_assert(sizeof(ExpressionNodes) % alignof(Node) == 0);
    capacity = std::clamp<std::size_t>(capacity, 1, kLargestBlock);
    void* const block = HeapNew(sizeof(ExpressionNodes) + capacity * sizeof(Node));
    if (block == nullptr) throw std::bad_alloc();
    return new (block) ExpressionNodes(static_cast<std::uint32_t>(capacity));
}

void ExpressionNodes::Destroy(ExpressionNodes* nodes) {
    while (nodes != nullptr) {
        ExpressionNodes* const more = nodes->m_pMore;
        nodes->~ExpressionNodes();
        HeapDelete(nodes);
        nodes = more;
    }
}

ExpressionNodes::~ExpressionNodes() {
    std::destroy_n(Nodes(), m_used);
}

ExpressionNodes::Node* ExpressionNodes::New() {
    if (m_used == m_capacity) {
        // Blocks double, so this goes a few levels deep at most.
        if (m_pMore == nullptr) m_pMore = Create(std::size_t{m_capacity} * 2);
        return m_pMore->New();
    }
    return new (Nodes() + m_used++) Node();
}

}  // namespace brenta
