#include "xml/tree_builder.h"

namespace brenta {

void AttributeSetter::Begin(CCoreXmlDomElement& element) {
    m_pElement = &element;
    m_tail = {};
    m_attributes.clear();
    m_slots.clear();
}

void AttributeSetter::Set(STRID name, STRID value) {
    if (CCoreXmlDomAttribute* present = FindAttribute(name)) return present->SetValue(value);
    auto attribute = Required(new CCoreXmlDomAttribute(name, value));
    m_attributes.push_back(attribute.get());
    m_pElement->AddAttribute(attribute.get());
    m_tail.Advance(m_pElement->GetFirstAttribute());
    attribute.release();
    if (m_attributes.size() <= kFew) return;
    if (m_attributes.size() * 2 > m_slots.size()) {
        Rehash();
    } else {
        m_slots[SlotOf(name)] = m_attributes.back();
    }
}

CCoreXmlDomAttribute* AttributeSetter::FindAttribute(STRID name) const {
    if (!m_slots.empty()) return m_slots[SlotOf(name)];
    for (CCoreXmlDomAttribute* attribute : m_attributes)
        if (attribute->GetNameId() == name) return attribute;
    return nullptr;
}

/// The place of a name, or the free one where it belongs.
std::size_t AttributeSetter::SlotOf(STRID name) const {
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = (static_cast<std::uint64_t>(name) * 0x9E3779B97F4A7C15ull >> 32) & mask;
    while (m_slots[slot] != nullptr && m_slots[slot]->GetNameId() != name)
        slot = (slot + 1) & mask;
    return slot;
}

// Never larger than this element asks for: the table is cleared for each element that needs one.
void AttributeSetter::Rehash() {
    std::size_t size = 4 * kFew;
    while (size < m_attributes.size() * 4)
        size *= 2;
    m_slots.assign(size, nullptr);
    for (CCoreXmlDomAttribute* attribute : m_attributes)
        m_slots[SlotOf(attribute->GetNameId())] = attribute;
}

}  // namespace brenta
