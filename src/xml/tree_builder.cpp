#include "xml/tree_builder.h"

#include <memory>
#include <new>
#include <utility>

namespace brenta {

CCoreXmlDomElement& TreeBuilder::AddAlone(TOrderedList<CCoreXmlDomElement*>& list, STRID tag) {
    std::unique_ptr<CCoreXmlDomElement> element(new CCoreXmlDomElement(tag));
    if (!element) throw std::bad_alloc();
    auto* const node = new TNode<CCoreXmlDomElement*>(element.get());
    if (!node) throw std::bad_alloc();
    list.AddNode(node);
    CountAlone();
    return *element.release();
}

CCoreXmlDomAttribute& TreeBuilder::AddAlone(CCoreXmlDomElement& element, STRID name, std::string_view value) {
    std::unique_ptr<CCoreXmlDomAttribute> attribute(new CCoreXmlDomAttribute(name, kNoName));
    if (!attribute) throw std::bad_alloc();
    LateTextWord::PutCopy(TreeAccess::Value(*attribute), value);
    auto* const node = new TNode<CCoreXmlDomAttribute*>(attribute.get());
    if (!node) throw std::bad_alloc();
    LookAt(element);
    element.m_attributes.AddNode(node);
    CountAlone();
    return *attribute.release();
}

void AttributeSetter::SetAmongMany(STRID name, std::string_view value) {
    if (2 * (m_count + 1) > m_slots.size()) Grow();
    Entry& slot = SlotOf(name);
    if (slot.pAttribute != nullptr) return m_builder.SetValue(*m_pElement, *slot.pAttribute, value);
    slot = {name, &m_builder.AddAttribute(*m_pElement, name, value)};
    ++m_count;
}

/// The place of a name, or the free one where it belongs.
AttributeSetter::Entry& AttributeSetter::SlotOf(STRID name) {
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = (static_cast<std::uint64_t>(name) * 0x9E3779B97F4A7C15ull >> 32) & mask;
    while (m_slots[slot].pAttribute != nullptr && m_slots[slot].name != name)
        slot = (slot + 1) & mask;
    return m_slots[slot];
}

// Never larger than this element asks for: the table is cleared for each element that needs one.
void AttributeSetter::Grow() {
    const std::vector<Entry> old =
        m_slots.empty() ? std::vector<Entry>(m_few, m_few + kFew) : std::exchange(m_slots, {});
    std::size_t size = 4 * kFew;
    while (size < m_count * 4)
        size *= 2;
    m_slots.assign(size, {});
    for (const Entry& entry : old)
        if (entry.pAttribute != nullptr) SlotOf(entry.name) = entry;
}

}  // namespace brenta
