// Building trees element by element, for readers: neither long lists nor elements with very many attributes
// cost more than linear time, and objects stand in slabs (xml/tree_memory.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "brenta/xml.h"
#include "xml/tree_access.h"
#include "xml/tree_memory.h"

namespace brenta {

/// Makes elements and attributes in their places. Every operation throws std::bad_alloc when memory runs out,
/// and the tree is then as it was.
///
/// The first few are blocks of their own, as a host would make them, and take no more room than that.
class TreeBuilder {
 public:
    static constexpr std::size_t kFew = 48;
    static constexpr std::size_t kAll = ~std::size_t{0};

    /// So many objects are blocks of their own.
    explicit TreeBuilder(std::size_t alone = kFew) : m_alone(alone) {}

    /// A new element at the top level, or a new last child.
    CCoreXmlDomElement& AddElement(TOrderedList<CCoreXmlDomElement*>& list, STRID tag) {
        if (m_alone != 0) return AddAlone(list, tag);
        ElementRecord& record = m_memory.MakeElement(tag);
        list.AddNode(&record.node);
        m_pLast = &record.object;
        m_pLastSlab = m_memory.Slab();
        return record.object;
    }
    CCoreXmlDomElement& AddElement(CCoreXmlDomElement& parent, STRID tag) {
        CCoreXmlDomElement& child = AddElement(parent.m_children, tag);
        child.m_pParent = &parent;
        return child;
    }

    /// The same with an inner text that holds no NUL.
    CCoreXmlDomElement& AddElement(CCoreXmlDomElement& parent, STRID tag, std::string_view text) {
        if (m_alone != 0) {
            CCoreXmlDomElement& child = AddElement(parent, tag);
            LateTextWord::PutCopy(child.m_innerText, text);
            return child;
        }
        const STRID word = m_memory.MakeText(text);
        CCoreXmlDomElement& child = AddElement(parent, tag);
        LateTextWord::Put(child.m_innerText, word);
        return child;
    }

    /// Appends an attribute, whatever names there are already. The value must hold no NUL.
    CCoreXmlDomAttribute& AddAttribute(CCoreXmlDomElement& element, STRID name, std::string_view value) {
        if (m_alone != 0) return AddAlone(element, name, value);
        AttributeRecord& record = m_memory.MakeAttribute(name, value);
        element.m_attributes.AddNode(&record.node);
        if (&element == m_pLast && m_memory.Slab() == m_pLastSlab &&
            !LateTextWord::IsOwned(TreeAccess::Value(record.object))) {
            ++element.m_unseenAttributes;
        } else {
            LookAt(element);
        }
        return record.object;
    }

    /// Replaces the value of an attribute.
    void SetValue(CCoreXmlDomElement& element, CCoreXmlDomAttribute& attribute, std::string_view value) {
        LookAt(element);
        LateTextWord::PutCopy(TreeAccess::Value(attribute), value);
    }

 private:
    CCoreXmlDomElement& AddAlone(TOrderedList<CCoreXmlDomElement*>& list, STRID tag);
    CCoreXmlDomAttribute& AddAlone(CCoreXmlDomElement& element, STRID name, std::string_view value);
    void CountAlone() {
        if (m_alone != kAll) --m_alone;
    }

    /// When the element goes, each of its attributes is to be looked at.
    void LookAt(CCoreXmlDomElement& element) {
        element.m_unseenAttributes = CCoreXmlDomElement::kSeen;
        m_pLast = nullptr;
    }

    std::size_t m_alone;  // objects still to be made as blocks of their own
    TreeMemory m_memory;
    CCoreXmlDomElement* m_pLast = nullptr;  // the element made last, if its attributes need no look so far
    const TreeSlab* m_pLastSlab = nullptr;
};

/// Gives attributes to one element after the other: a name that was there already gets the new value. Up to
/// sixteen names are compared one by one, more stand in a hash table.
class AttributeSetter {
 public:
    explicit AttributeSetter(TreeBuilder& builder) : m_builder(builder) {}

    /// The element that the following attributes are for; it has none yet.
    void Begin(CCoreXmlDomElement& element) {
        m_pElement = &element;
        m_count = 0;
        if (!m_slots.empty()) m_slots.clear();
    }

    void Set(STRID name, std::string_view value) {
        if (m_count >= kFew) return SetAmongMany(name, value);
        for (std::size_t i = 0; i < m_count; ++i)
            if (m_few[i].name == name) return m_builder.SetValue(*m_pElement, *m_few[i].pAttribute, value);
        m_few[m_count] = {name, &m_builder.AddAttribute(*m_pElement, name, value)};
        ++m_count;
    }

 private:
    struct Entry {
        STRID name;
        CCoreXmlDomAttribute* pAttribute;
    };
    static constexpr std::size_t kFew = 16;

    void SetAmongMany(STRID name, std::string_view value);
    Entry& SlotOf(STRID name);
    void Grow();

    TreeBuilder& m_builder;
    CCoreXmlDomElement* m_pElement = nullptr;
    std::size_t m_count = 0;
    Entry m_few[kFew];
    /// A power of two of places, at most half of them used; empty while the attributes are few.
    std::vector<Entry> m_slots;
};

}  // namespace brenta
