// Building a tree element by element, for readers: additions that run out of memory throw, and neither long
// lists nor elements with very many attributes cost more than linear time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <vector>

#include "brenta/xml.h"

namespace brenta {

/// The object that `new` of a heap-aware class gave; std::bad_alloc for null.
template <class T>
std::unique_ptr<T> Required(T* object) {
    if (object == nullptr) throw std::bad_alloc();
    return std::unique_ptr<T>(object);
}

/// The last node of a list that only grows at its end. A list adds nothing when memory runs out and does not
/// say so; whoever knows the last node sees it.
template <class T>
class ListTail {
 public:
    /// After an addition to `list`; std::bad_alloc if nothing was added.
    void Advance(const TIter<T>& first) {
        TNode<T>* const added = m_pLast != nullptr ? m_pLast->m_pNext : first.m_pPos;
        if (added == nullptr) throw std::bad_alloc();
        m_pLast = added;
    }

 private:
    TNode<T>* m_pLast = nullptr;
};

/// An element that is being built, which gets its children here.
class GrowingElement {
 public:
    explicit GrowingElement(CCoreXmlDomElement* element = nullptr) : m_pElement(element) {}

    CCoreXmlDomElement* Get() const { return m_pElement; }

    CCoreXmlDomElement* AddChild(std::unique_ptr<CCoreXmlDomElement> child) {
        m_pElement->AddChildElement(child.get());
        m_tail.Advance(m_pElement->GetFirstChild());
        return child.release();
    }

 private:
    CCoreXmlDomElement* m_pElement;
    ListTail<CCoreXmlDomElement*> m_tail;
};

/// Gives attributes to one element after the other: a name that was there already gets the new value. Up to
/// sixteen names are compared one by one, more stand in a hash table.
class AttributeSetter {
 public:
    /// The element that the following attributes are for; it has none yet.
    void Begin(CCoreXmlDomElement& element);
    void Set(STRID name, STRID value);

 private:
    static constexpr std::size_t kFew = 16;

    CCoreXmlDomAttribute* FindAttribute(STRID name) const;
    std::size_t SlotOf(STRID name) const;
    void Rehash();

    CCoreXmlDomElement* m_pElement = nullptr;
    ListTail<CCoreXmlDomAttribute*> m_tail;
    std::vector<CCoreXmlDomAttribute*> m_attributes;
    /// A power of two of places, at most half of them used; empty while the attributes are few.
    std::vector<CCoreXmlDomAttribute*> m_slots;
};

}  // namespace brenta
