// The memory of trees that readers build.
//
// A board has millions of elements and attributes, made one after the other and, nearly always, deleted
// together. As heap blocks of their own they would cost two blocks each, one for the object and one for its
// node in the parent's list, and a third for each value. So readers place them side by side in *slabs*, large
// blocks of the library's heap:
//
//     slab      | users | ... | run of elements | run of attributes | ...
//     run       | chunk | chunk | ...
//     chunk     | slab | record | record | record ->   ...   <- text | text |
//     record    | element or attribute | its node |
//
// A chunk starts at a multiple of its size, so an object's address leads to its slab. Attributes grow upward
// and texts downward until they meet, so that a text is in the slab of its owner. Elements have runs of their
// own: searching and deleting go along them, a third of the memory, and mostly leave attributes alone. A run
// is many chunks long, since the processor fetches ahead only what lies side by side: with a chunk of each
// kind in turn the same walk takes four times as long.
//
// Objects in slabs are like any others for whoever holds them: they can be taken out of their tree, put into
// another, kept while the rest goes, and deleted. They are of classes of their own whose `operator delete`
// counts them off their slab, and the slab is given back with its last object. When a whole tree is deleted
// its objects are counted off in runs (TreeRelease), since the counter is shared by threads: what was taken
// out of one tree may go on another thread.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string_view>
#include <typeinfo>
#include <utility>

#include "brenta/xml.h"
#include "xml/late_text.h"

namespace brenta {

inline constexpr std::size_t kTreeChunk = 4096;

/// The head of a slab, at its start.
struct TreeSlab {
    std::atomic<std::size_t> users;  ///< objects in it, and kBuilding while a builder works in it

    static constexpr std::size_t kBuilding = ~(~std::size_t{0} >> 1);

    /// Counts objects off; the slab goes with the last one.
    void Release(std::size_t count) {
        if (users.fetch_sub(count, std::memory_order_acq_rel) == count) HeapDelete(this);
    }
};

/// What stands at the start of each chunk.
struct TreeChunk {
    TreeSlab* pSlab;

    static TreeChunk* Of(const void* object) {
        return reinterpret_cast<TreeChunk*>(reinterpret_cast<std::uintptr_t>(object) & ~(kTreeChunk - 1));
    }
};

// ---------------------------------------------------------------------------------------------------------
// Objects in slabs

/// A class whose objects stand in slabs, and nothing else about it.
template <class Base>
class TInSlab final : public Base {
 public:
    using Base::Base;

    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* object) noexcept { TreeChunk::Of(object)->pSlab->Release(1); }
    static void operator delete(void*, void*) noexcept {}

    /// Whether an object is of this class. Its dynamic type says it, without a call.
    static bool Is(const Base& object) { return typeid(object) == typeid(TInSlab); }
};

/// An element or attribute with its node.
template <class Object>
struct TreeRecord {
    using Node = TInSlab<TNode<Object*>>;

    template <class... Arguments>
    explicit TreeRecord(Arguments... arguments) : object(arguments...), node(&object) {}

    /// The object that was placed with such a node.
    static Object* Of(TNode<Object*>& node) {
        static_assert(sizeof(TreeRecord) == sizeof(TInSlab<Object>) + sizeof(Node));
        return reinterpret_cast<TInSlab<Object>*>(reinterpret_cast<char*>(&node) - sizeof(TInSlab<Object>));
    }

    TInSlab<Object> object;
    Node node;
};

using ElementRecord = TreeRecord<CCoreXmlDomElement>;
using AttributeRecord = TreeRecord<CCoreXmlDomAttribute>;

// ---------------------------------------------------------------------------------------------------------
// Making

/// Makes records, for one reader. Every operation throws std::bad_alloc when memory runs out; nothing was
/// made then.
class TreeMemory {
 public:
    TreeMemory() = default;
    ~TreeMemory() { Leave(); }
    TreeMemory(const TreeMemory&) = delete;
    TreeMemory& operator=(const TreeMemory&) = delete;

    /// The slab of what was made last.
    const TreeSlab* Slab() const { return m_pSlab; }

    ElementRecord& MakeElement(STRID tag) {
        Reserve(m_elements, sizeof(ElementRecord));
        return Make<ElementRecord>(m_elements, tag);
    }

    AttributeRecord& MakeAttribute(STRID name, std::string_view value) {
        Reserve(m_attributes, sizeof(AttributeRecord) + TextRoom(value));
        return Make<AttributeRecord>(m_attributes, name, TextWord(value));
    }

    /// For an element that is made next: its text.
    STRID MakeText(std::string_view text) {
        do {
            Reserve(m_elements, sizeof(ElementRecord));
            Reserve(m_attributes, TextRoom(text));
        } while (m_elements.pLow == nullptr);  // both in one slab
        return TextWord(text);
    }

 private:
    /// Texts of this many bytes or more are blocks of their own.
    static constexpr std::size_t kLongText = kTreeChunk / 8;

    /// Where records of a kind are made: the free room of a chunk, and the chunks behind it.
    struct Room {
        char* pLow = nullptr;
        char* pHigh = nullptr;
        char* pNext = nullptr;
        char* pEnd = nullptr;
    };

    template <class Record, class... Arguments>
    Record& Make(Room& room, Arguments... arguments) {
        char* const place = std::exchange(room.pLow, room.pLow + sizeof(Record));
        m_made += 2;
        return *::new (static_cast<void*>(place)) Record(arguments...);
    }
    /// The bytes that TextWord takes of the room.
    static std::size_t TextRoom(std::string_view text) {
        return text.size() > LateTextWord::kMostInside && text.size() < kLongText ? text.size() + 1 : 0;
    }
    STRID TextWord(std::string_view text) {
        return text.size() > LateTextWord::kMostInside ? FarTextWord(text) : LateTextWord::Inside(text);
    }
    STRID FarTextWord(std::string_view text);
    void Reserve(Room& room, std::size_t size) {
        if (static_cast<std::size_t>(room.pHigh - room.pLow) < size) [[unlikely]]
            NextChunk(room);
    }
    void NextChunk(Room& room);
    void NextRun(Room& room);
    void NextSlab();
    void StartSlab();
    void Leave();

    Room m_elements;
    Room m_attributes;        // and texts
    char* m_pNext = nullptr;  // the room of the slab that is left
    char* m_pEnd = nullptr;
    std::ptrdiff_t m_run = 0;  // bytes of a run in this slab
    TreeSlab* m_pSlab = nullptr;
    std::size_t m_made = 0;   // objects in the slab, which its counter does not count yet
    std::size_t m_total = 0;  // bytes of all slabs so far
};

// ---------------------------------------------------------------------------------------------------------
// Deleting

/// Counts objects off their slabs in runs; the last run with its own end.
class TreeRelease {
 public:
    TreeRelease() = default;
    ~TreeRelease() { Flush(); }
    TreeRelease(const TreeRelease&) = delete;
    TreeRelease& operator=(const TreeRelease&) = delete;

    void Count(const void* object, std::size_t count) {
        TreeChunk* const chunk = TreeChunk::Of(object);
        if (chunk != m_pChunk) Enter(chunk);
        m_count += count;
    }

 private:
    void Enter(TreeChunk* chunk) {
        if (chunk->pSlab != m_pSlab) {
            Flush();
            m_pSlab = chunk->pSlab;
        }
        m_pChunk = chunk;
    }
    void Flush() {
        if (m_count != 0) m_pSlab->Release(std::exchange(m_count, 0));
    }

    TreeChunk* m_pChunk = nullptr;
    TreeSlab* m_pSlab = nullptr;
    std::size_t m_count = 0;
};

/// Deletes what trees hold. Objects in slabs that are as their reader made them are only counted off: their
/// destructors would do nothing else. Attributes that nobody has got hold of are not even looked at, as each
/// look would be a wait for memory.
class TreeWrecker {
 public:
    /// Deletes everything below an element, from the last child to the first, each after what is below it.
    void DeleteBelow(CCoreXmlDomElement& top);
    void DeleteAttributes(CCoreXmlDomElement& element);

 private:
    /// Counts off an element of a slab, with its attributes, and `others` beside it.
    void Drop(CCoreXmlDomElement& element, std::size_t others);
    void DropLeaves(CCoreXmlDomElement& parent);
    CCoreXmlDomElement* TakeChild(CCoreXmlDomElement& parent);
    void Delete(CCoreXmlDomElement* element);

    TreeRelease m_release;
};

}  // namespace brenta
