// Where the nodes of one expression live.
#pragma once

#include <cstddef>
#include <cstdint>

#include "script/sub_expression.h"

namespace brenta {

/// The nodes of one expression, in one block that is sized beforehand from the number of tokens and freed as
/// a whole. Nodes that the tree has dropped (a group whose place another took) stay in the block, so nothing
/// is lost, and nobody has to walk a tree to free it. Should the estimate fall short, further blocks follow.
class ExpressionNodes {
 public:
    using Node = ExpressionStatement::SubExpr;

    /// Room for `capacity` nodes (at least one).
    static ExpressionNodes* Create(std::size_t capacity);
    /// Destroys all nodes and frees all blocks. Null is ignored.
    static void Destroy(ExpressionNodes* nodes);

    ExpressionNodes(const ExpressionNodes&) = delete;
    ExpressionNodes& operator=(const ExpressionNodes&) = delete;

    /// A fresh node.
    Node* New();

 private:
    explicit ExpressionNodes(std::uint32_t capacity) : m_capacity(capacity) {}
    ~ExpressionNodes();
    Node* Nodes() { return reinterpret_cast<Node*>(this + 1); }

    ExpressionNodes* m_pMore = nullptr;
    std::uint32_t m_used = 0;
    std::uint32_t m_capacity;
    // The nodes follow.
};

}  // namespace brenta
