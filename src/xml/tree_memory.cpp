#include "xml/tree_memory.h"

#include <algorithm>
#include <cstring>

#include "xml/tree_access.h"

namespace brenta {

namespace {

/// Of a slab. Each is as large as all before it, so that a small document takes little room and a large one
/// few slabs. The smallest holds two chunks wherever it begins.
constexpr std::size_t kSmallestSlab = 3 * kTreeChunk;
constexpr std::size_t kLargestSlab = std::size_t{4} << 20;

/// How far behind an element those lie that are looked at soon.
constexpr std::size_t kAhead = 1280;

/// Elements lie in the order in which they were made, but each is only found through the one before: without
/// a hint the processor would wait for nearly every one.
void AskAhead(const void* node) {
    for (const std::size_t line : {0u, 64u})
        __builtin_prefetch(static_cast<const char*>(node) + kAhead + line);
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------
// Making

STRID TreeMemory::FarTextWord(std::string_view text) {
    if (text.size() >= kLongText) return LateTextWord::Owned(text);
    char* const place = m_attributes.pHigh -= text.size() + 1;
    std::memcpy(place, text.data(), text.size());
    place[text.size()] = '\0';
    return LateTextWord::Elsewhere(place);
}

void TreeMemory::NextChunk(Room& room) {
    static_assert(kTreeChunk >= sizeof(TreeChunk) + sizeof(AttributeRecord) + kLongText);
    if (room.pNext == room.pEnd) NextRun(room);
    char* const start = std::exchange(room.pNext, room.pNext + kTreeChunk);
    ::new (static_cast<void*>(start)) TreeChunk{m_pSlab};
    room.pLow = start + sizeof(TreeChunk);
    room.pHigh = room.pNext;
}

void TreeMemory::NextRun(Room& room) {
    if (m_pNext == m_pEnd) NextSlab();
    room.pNext = m_pNext;
    room.pEnd = m_pNext += std::min(m_run, m_pEnd - m_pNext);
}

void TreeMemory::NextSlab() {
    const std::size_t size = std::clamp(m_total, kSmallestSlab, kLargestSlab);
    auto* const block = static_cast<char*>(HeapNew(size));
    if (block == nullptr) throw std::bad_alloc();
    Leave();
    m_pSlab = ::new (static_cast<void*>(block)) TreeSlab{TreeSlab::kBuilding};
    m_pEnd = block + size;
    m_total += size;
    StartSlab();
}

/// At the first chunk of the slab. Runs are long enough for the processor to see a pattern, and short enough
/// not to leave much of the slab unused when one kind needs a new one.
void TreeMemory::StartSlab() {
    constexpr std::ptrdiff_t kChunk = kTreeChunk, kRuns = 16, kLongestRun = 16 * kChunk;
    m_pNext = reinterpret_cast<char*>(TreeChunk::Of(reinterpret_cast<char*>(m_pSlab + 1) + kTreeChunk - 1));
    m_pEnd -= (m_pEnd - m_pNext) % kChunk;
    m_run = std::clamp((m_pEnd - m_pNext) / kRuns / kChunk * kChunk, kChunk, kLongestRun);
    m_elements = m_attributes = {};
}

void TreeMemory::Leave() {
    if (m_pSlab != nullptr)
        std::exchange(m_pSlab, nullptr)->Release(TreeSlab::kBuilding - std::exchange(m_made, 0));
}

// ---------------------------------------------------------------------------------------------------------
// Deleting

// Bottom up, without recursion and without memory: the way back up stands in the parents, which are set anew
// on the way down.
void TreeWrecker::DeleteBelow(CCoreXmlDomElement& top) {
    DropLeaves(top);
    CCoreXmlDomElement* current = &top;
    while (true) {
        if (CCoreXmlDomElement* const child = TakeChild(*current)) {
            child->m_pParent = current;
            DropLeaves(*child);
            current = child;
        } else if (current == &top) {
            return;
        } else {
            Delete(std::exchange(current, current->m_pParent));
        }
    }
}

// Nobody sees when an element of a reader goes, so those without children, which are nearly all, go at once
// and in the order in which they lie in memory. The others are turned round, so that the last child is taken
// first at no cost.
void TreeWrecker::DropLeaves(CCoreXmlDomElement& parent) {
    TOrderedList<CCoreXmlDomElement*> others;
    while (TNode<CCoreXmlDomElement*>* const node = parent.m_children.TakeHead()) {
        CCoreXmlDomElement* const child = node->m_value;
        AskAhead(node);
        if (!ElementRecord::Node::Is(*node) || child != ElementRecord::Of(*node) ||
            !child->m_children.IsEmpty()) {
            others.AddNode(node);
        } else {
            Drop(*child, 1);
        }
    }
    parent.m_children = std::move(others);
    parent.m_children.Reverse();
}

/// The first child, out of its list; null if there is none.
CCoreXmlDomElement* TreeWrecker::TakeChild(CCoreXmlDomElement& parent) {
    TNode<CCoreXmlDomElement*>* const node = parent.m_children.TakeHead();
    if (node == nullptr) return nullptr;
    CCoreXmlDomElement* const child = node->m_value;
    if (ElementRecord::Node::Is(*node)) {
        m_release.Count(node, 1);
    } else {
        delete node;
    }
    return child;
}

/// An element without children.
void TreeWrecker::Delete(CCoreXmlDomElement* element) {
    if (!TInSlab<CCoreXmlDomElement>::Is(*element)) {
        delete element;
        return;
    }
    Drop(*element, 0);
}

void TreeWrecker::Drop(CCoreXmlDomElement& element, std::size_t others) {
    if (element.m_unseenAttributes == CCoreXmlDomElement::kSeen) {
        DeleteAttributes(element);
    } else {
        others += 2 * std::size_t{element.m_unseenAttributes};
    }
    if (LateTextWord::IsOwned(element.m_innerText)) element.m_innerText.Set(kNoName);
    m_release.Count(&element, 1 + others);
}

void TreeWrecker::DeleteAttributes(CCoreXmlDomElement& element) {
    element.m_unseenAttributes = CCoreXmlDomElement::kSeen;
    while (TNode<CCoreXmlDomAttribute*>* const node = element.m_attributes.TakeHead()) {
        CCoreXmlDomAttribute* const attribute = node->m_value;
        if (AttributeRecord::Node::Is(*node) && attribute == AttributeRecord::Of(*node) &&
            !LateTextWord::IsOwned(TreeAccess::Value(*attribute))) {
            m_release.Count(attribute, 2);
        } else {
            delete attribute;
            delete node;
        }
    }
}

}  // namespace brenta
