// Memory for the tokens of a token list and their texts.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace brenta {

/// Hands out memory from large blocks and takes it back only as a whole, or back to a mark.
///
/// Scans nest strictly: a token list is emptied before the list of the scan around it is used again. So one
/// arena serves all of them. A nested scan calls Enter, which protects what there is, and Leave drops
/// everything since.
class TokenArena {
 public:
    /// A place to which the arena can be cut back.
    struct Mark {
        std::size_t block = 0;
        std::size_t used = 0;
    };

    TokenArena() = default;
    TokenArena(const TokenArena&) = delete;
    TokenArena& operator=(const TokenArena&) = delete;

    /// Memory aligned for any token. Throws std::bad_alloc like `new`.
    void* Allocate(std::size_t size);
    /// A terminated copy of a text.
    const char* CopyText(const char* text, std::size_t length);

    /// Drops everything since Enter, or all. Memory of ordinary size is kept for the next use.
    void Reset() { CutTo(m_base); }
    /// Begins a nested use; what it returns has to be given to the Leave that ends it.
    Mark Enter();
    void Leave(Mark outer);

 private:
    struct Block {
        std::unique_ptr<std::byte[]> memory;
        std::size_t size;
    };

    void CutTo(Mark mark);
    void* AllocateFromNext(std::size_t size);

    std::vector<Block> m_blocks;
    Mark m_top;   // the block in use, and the bytes used of it
    Mark m_base;  // what Reset leaves alone
};

}  // namespace brenta
