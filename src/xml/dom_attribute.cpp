#include <cstring>
#include <new>

#include "xml/pending_value.h"

namespace brenta {

CCoreXmlDomAttribute::CCoreXmlDomAttribute() : CCoreXmlDomAttribute(kNoName, kNoName) {}

CCoreXmlDomAttribute::CCoreXmlDomAttribute(const char* name, const char* value)
    : CCoreXmlDomAttribute(StrId(name), StrId(value)) {}

CCoreXmlDomAttribute::CCoreXmlDomAttribute(const CCoreXmlDomAttribute& other)
    : CCoreScriptable(other), m_name(other.m_name), m_value(other.GetValueId()) {}

CCoreXmlDomAttribute& CCoreXmlDomAttribute::operator=(const CCoreXmlDomAttribute& other) {
    m_name = other.m_name;
    SetValue(other.GetValueId());
    return *this;
}

std::size_t CCoreXmlDomAttribute::SizeOf() const {
    return sizeof(*this);
}

const char* CCoreXmlDomAttribute::GetClassName() const {
    return "CCoreXmlDomAttribute";
}

const char* CCoreXmlDomAttribute::GetBaseClassName() const {
    return "CCoreScriptable";
}

CCoreXmlDomAttribute::~CCoreXmlDomAttribute() {
    if (IsPending()) PendingValue::Drop(*this);
}

const char* CCoreXmlDomAttribute::PeekValue() const {
    return IsPending() ? PendingValue::Text(*this) : StrPtr(m_value);
}

void CCoreXmlDomAttribute::SetValue(STRID value) {
    PendingValue::Drop(*this);
    m_value = value;
}

/// When the string table is full, the value reads as "" and stays pending.
STRID CCoreXmlDomAttribute::InternValue() const {
    const STRID id = StrId(PendingValue::Text(*this));
    if (id != kNoName) {
        PendingValue::Drop(*this);
        m_value = id;
    }
    return id;
}

// ---------------------------------------------------------------------------------------------------------

void PendingValue::Set(CCoreXmlDomAttribute& attribute, std::string_view text) {
    const STRID value = text.size() <= kMostInside ? Inside(text) : Owned(text);
    Drop(attribute);
    attribute.m_value = value;
}

STRID PendingValue::Owned(std::string_view text) {
    auto* const copy = static_cast<char*>(HeapNew(text.size() + 1));
    if (copy == nullptr) throw std::bad_alloc();
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return At(copy, kOwned);
}

const char* PendingValue::Text(const CCoreXmlDomAttribute& attribute) {
    const auto bits = static_cast<std::uintptr_t>(attribute.m_value);
    if ((bits & kKind) == kInside) return reinterpret_cast<const char*>(&attribute.m_value) + 1;
    return reinterpret_cast<const char*>(bits >> kKindBits);
}

void PendingValue::Drop(const CCoreXmlDomAttribute& attribute) {
    if (IsOwned(attribute)) HeapDelete(const_cast<char*>(Text(attribute)));
    attribute.m_value = kNoName;
}

}  // namespace brenta
