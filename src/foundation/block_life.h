// Whether a block is in use, and who may end that.
//
// A block that is freed twice must be freed once, also when two threads free it at the same moment. An atomic
// exchange would decide which of them is first, and would cost as much as all the rest of allocating and
// freeing. But nearly every block is freed by the thread that allocated it. So a block in use carries the
// number of the thread store that it was taken from, its owner:
//
// - The owner's thread frees the block with a plain load and a plain store.
// - Any other thread only marks the block as astray, by compare-and-exchange and under the heap's lock. It is
//   free if it is still marked at a time when the owner is certainly not in the midst of a store
//   (os::OwnersLock). To wait for that takes microseconds. So as a rule the block goes to a list with the
//   owner, and whoever later collects the list, the owner itself or a visitor, frees those still marked.
//
// When both happen at once, the owner's store comes either before the exchange, which then fails, or after
// it; then it wipes the mark out, and the entry in the list counts for nothing. If the owner has taken the
// block again by then, the same holds. Either way the block is freed once.
//
// A block without an owner is freed by compare-and-exchange after all. That is the way of heaps without
// thread stores, and of threads whose blocks have turned out to be freed by others again and again.
//
// The exact lane promises that a thread gets next what it has freed last. For that the first few blocks that
// a thread frees on behalf of an owner are waited for; after them the owner owns no more, so that only what
// it had taken by then takes the long way through its list.
#pragma once

#include <atomic>
#include <cstdint>

namespace brenta {

/// One word for each block: its size in units of its lane, its owner, and its state.
class BlockLife {
 public:
    static constexpr std::uint32_t kLive = 0x80000000;
    /// Freed by another thread than the owner's, and not collected yet; with kLive.
    static constexpr std::uint32_t kAstray = 0x40000000;
    static constexpr std::uint32_t kSizeMask = 0x7FFF;
    /// Owners are numbered from 1 to less than this; 0 is nobody.
    static constexpr std::uint32_t kOwners = 0x8000;

    /// The word of a block in use, without its size.
    static constexpr std::uint32_t Mark(std::uint32_t owner) { return kLive | owner << kOwnerShift; }
    static constexpr std::uint32_t SizeOf(std::uint32_t word) { return word & kSizeMask; }
    static constexpr std::uint32_t MarkOf(std::uint32_t word) { return word & ~kSizeMask; }
    static constexpr std::uint32_t OwnerOf(std::uint32_t word) { return word >> kOwnerShift & (kOwners - 1); }
    static constexpr bool IsInUse(std::uint32_t word) { return (word & (kLive | kAstray)) == kLive; }

    std::uint32_t Load() const { return m_word.load(std::memory_order_acquire); }
    /// Anything before is seen by who loads this.
    void Store(std::uint32_t word) { m_word.store(word, std::memory_order_release); }
    /// For who has taken the block out of a free store.
    void Start(std::uint32_t mark) {
        m_word.store(SizeOf(m_word.load(std::memory_order_relaxed)) | mark, std::memory_order_relaxed);
    }
    /// Ends the life of a block whose word is `seen`. For its owner.
    void End(std::uint32_t seen) { m_word.store(SizeOf(seen), std::memory_order_relaxed); }
    /// Replaces the word; false if it is not `seen` any more. Of several threads one gets true.
    bool Change(std::uint32_t seen, std::uint32_t word) {
        return m_word.compare_exchange_strong(seen, word, std::memory_order_relaxed);
    }

 private:
    static constexpr unsigned kOwnerShift = 15;

    std::atomic<std::uint32_t> m_word{0};
};

}  // namespace brenta
