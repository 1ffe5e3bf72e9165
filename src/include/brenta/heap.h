/// @file
/// CHeap, the page heap, and the free functions on the library's global heap.
///
/// A CHeap carves blocks from pages and keeps freed blocks for the next request of exactly the same size; it
/// never gives memory back to the system while it lives. It is fast for what design data is: very many small
/// blocks of few sizes that come and go together. Use it through `new` (classes with BRENTA_HEAP_OPERATORS)
/// or through the Core functions; make a heap of your own where a group of blocks should go away at once.
///
///     char* name = static_cast<char*>(CoreAllocate(24));
///     name = static_cast<char*>(CoreReAlloc(name, 48));     // first 24 bytes kept, the rest zero
///     CoreFree(name);
///     assert(CoreAllocate(48) == name);                     // exactly this size again: exactly this block
///
/// Two lanes. `Allocate` carves byte by byte: no rounding, no alignment - a block of 5 bytes is followed by
/// its successor 5 bytes further on. `AllocateAligned` and class-level `new` use a second lane of the same
/// heap, whose blocks start at multiples of 16 and are rounded up to multiples of 16. Every other operation
/// takes blocks of both lanes.
///
/// Bad pointers. Freeing a block twice, or a pointer that did not come from the heap, is ignored. A freed
/// block still belongs to the heap: IsValidHeapPtr stays true for it.
///
/// Cost. Allocation and release take constant time. The heap keeps half a byte (exact lane) or an eighth of a
/// byte (aligned lane) of notes per byte of page, touched only as far as pages are used, and nothing inside
/// the blocks.
///
/// Threads. All operations are safe from any thread. The contents of the blocks are the callers' affair. The
/// process may fork at any moment: the child finds the heap whole, and so strings and names. Everything works
/// before main and until the library is unloaded; after that, `new` and CoreAllocate give null and release
/// does nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include "brenta/export.h"

namespace brenta {

class HeapCore;

// ---------------------------------------------------------------------------------------------------------
// CHeap

/// A heap of its own pages. Two heaps share nothing; each takes back only its own blocks. The object itself
/// may stand anywhere; it cannot be copied.
class BRENTA_API CHeap {
 public:
    /// Not for use: raises "Forced crash! \"Use initializing constructor\"". If the handler resumes, the heap
    /// works, with the name "" and pages of 1000000 bytes.
    CHeap();

    /// `name` is copied, cut to 259 characters; null counts as "". `pageSize` is in bytes; 0 or less gives
    /// every block a page of its own. The first page is allocated at once.
    CHeap(const char* name, int pageSize);
    CHeap(const CHeap&) = delete;
    CHeap& operator=(const CHeap&) = delete;

    /// Releases all pages, and with them every block that is still in use.
    virtual ~CHeap();

    /// A block of exactly `size` bytes (0 counts as 1), not initialised and not aligned. Null if `size` is
    /// negative or the system has no memory; the heap is then unchanged. The block is the caller's until
    /// Free.
    void* Allocate(int size);

    /// A block for an object: starts at a multiple of 16, has room for `size` bytes (0 counts as 1) rounded
    /// up to a multiple of 16. Null above INT_MAX or without memory.
    void* AllocateAligned(std::size_t size);

    /// Gives a block back. A block that is not in use (freed before, foreign) is ignored. Null raises
    /// "Forced crash! \"Attempting to free a NULL ptr.\"" and, resumed, does nothing.
    void Free(void* p);

    /// Moves a block into a new one of `size` bytes of the same lane, which always has another address. The
    /// first min(old, new) bytes are kept, further ones are zero (the size of an aligned block counts as
    /// rounded up). A pointer that is not a block in use (also null) raises "Forced crash! \"Attempting to
    /// realloc an unknown pointer.\"" and, resumed, gives null. Null also for a negative size or without
    /// memory; `p` is then still in use. Size 0 counts as 1.
    void* ReAlloc(void* p, int size);

    /// Bytes carved from all pages so far, freed blocks included; at most INT_MAX. Never falls.
    int GetBytesUsed() const;

    /// Whether `p` points into the carved part of a page of this heap, freed or not. The last carved byte of
    /// a page does not count, nor does a block that was made from the unused rest of a page that was left.
    bool IsValidHeapPtr(const void* p) const;

    /// The name given to the constructor, as far as it was kept; good as long as the heap.
    const char* GetName() const;

    /// How many requests of valid size Allocate has had, and how many of them freed blocks have served;
    /// modulo 2^32. For statistics: while other threads allocate, the two may not belong together.
    std::uint32_t GetAllocationCount() const;
    std::uint32_t GetReuseCount() const;

 private:
    friend struct GlobalHeapParts;
    explicit CHeap(HeapCore* core) : m_pCore(core) {}

    HeapCore* m_pCore;
};

// ---------------------------------------------------------------------------------------------------------
// The global heap: the heap "global_heap" with pages of 1000000 bytes

/// CHeap::Allocate on the global heap: `size` bytes, not initialised and not aligned. Give the block back
/// with CoreFree. Null for a negative size or without memory. Any thread, and so for all functions below.
BRENTA_API void* CoreAllocate(int size);
/// CHeap::Free on the global heap. Takes blocks of `new` and HeapNew too, without running a destructor. Null
/// is a forced crash.
BRENTA_API void CoreFree(void* p);
/// CHeap::ReAlloc on the global heap: always another block, which replaces `p`; null leaves `p` in use.
BRENTA_API void* CoreReAlloc(void* p, int size);
/// CHeap::GetBytesUsed on the global heap, in bytes: what was carved for both lanes, freed blocks included.
BRENTA_API int CoreHeapUsed();
/// CHeap::IsValidHeapPtr on the global heap. False for null, and for everything that is not the heap's.
BRENTA_API bool IsValidHeapPtr(const void* p);

// ---------------------------------------------------------------------------------------------------------
// Objects on the global heap

/// A block of the aligned lane of the global heap for `size` bytes (see CHeap::AllocateAligned), or null. The
/// thread's own store of freed blocks serves it without a lock where it can. Any thread may give it back.
BRENTA_API void* HeapNew(std::size_t size) noexcept;

/// Gives back a block of the global heap. Null and pointers that are not in use are ignored.
BRENTA_API void HeapDelete(void* p) noexcept;

}  // namespace brenta

/// Makes a class heap-aware: its objects and arrays come from the global heap. `new` yields null without
/// memory instead of throwing. Put it into the public part of the class; derived classes inherit it. Classes
/// that ask for an alignment above 16 cannot be heap-aware; `new` of such a class does not compile. Placement
/// and nothrow forms are there too, since the class's operators hide the global ones.
#define BRENTA_HEAP_OPERATORS                                                     \
    static void* operator new(std::size_t size) noexcept {                        \
        return ::brenta::HeapNew(size);                                           \
    }                                                                             \
    static void* operator new[](std::size_t size) noexcept {                      \
        return ::brenta::HeapNew(size);                                           \
    }                                                                             \
    static void* operator new(std::size_t size, const std::nothrow_t&) noexcept { \
        return ::brenta::HeapNew(size);                                           \
    }                                                                             \
    static void* operator new(std::size_t, void* place) noexcept {                \
        return place;                                                             \
    }                                                                             \
    static void* operator new(std::size_t, std::align_val_t) = delete;            \
    static void* operator new[](std::size_t, std::align_val_t) = delete;          \
    static void operator delete(void* p) noexcept {                               \
        ::brenta::HeapDelete(p);                                                  \
    }                                                                             \
    static void operator delete[](void* p) noexcept {                             \
        ::brenta::HeapDelete(p);                                                  \
    }                                                                             \
    static void operator delete(void* p, const std::nothrow_t&) noexcept {        \
        ::brenta::HeapDelete(p);                                                  \
    }                                                                             \
    static void operator delete(void*, void*) noexcept {}
