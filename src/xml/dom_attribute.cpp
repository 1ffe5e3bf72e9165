#include <cstring>
#include <new>

#include "xml/late_text.h"

namespace brenta {

CCoreXmlDomAttribute::CCoreXmlDomAttribute() : CCoreXmlDomAttribute(kNoName, kNoName) {}

CCoreXmlDomAttribute::CCoreXmlDomAttribute(const char* name, const char* value)
    : CCoreXmlDomAttribute(StrId(name), StrId(value)) {}

CCoreXmlDomAttribute::CCoreXmlDomAttribute(const CCoreXmlDomAttribute& other) = default;

CCoreXmlDomAttribute& CCoreXmlDomAttribute::operator=(const CCoreXmlDomAttribute& other) = default;

std::size_t CCoreXmlDomAttribute::SizeOf() const {
    return sizeof(*this);
}

const char* CCoreXmlDomAttribute::GetClassName() const {
    return "CCoreXmlDomAttribute";
}

const char* CCoreXmlDomAttribute::GetBaseClassName() const {
    return "CCoreScriptable";
}

CCoreXmlDomAttribute::~CCoreXmlDomAttribute() = default;

// ---------------------------------------------------------------------------------------------------------
// Texts that are interned late

const char* CLateText::Peek() const {
    return IsPending() ? LateTextWord::Text(*this) : StrPtr(m_word);
}

STRID CLateText::Intern() const {
    const STRID id = StrId(LateTextWord::Text(*this));
    if (id != kNoName) {
        Drop();
        m_word = id;
    }
    return id;
}

void CLateText::Drop() const {
    if (LateTextWord::IsOwned(*this)) HeapDelete(const_cast<char*>(LateTextWord::Text(*this)));
    m_word = kNoName;
}

STRID LateTextWord::Owned(std::string_view text) {
    auto* const copy = static_cast<char*>(HeapNew(text.size() + 1));
    if (copy == nullptr) throw std::bad_alloc();
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return At(copy, kOwned);
}

const char* LateTextWord::Text(const CLateText& text) {
    const auto bits = static_cast<std::uintptr_t>(text.m_word);
    if ((bits & kKind) == kInside) return reinterpret_cast<const char*>(&text.m_word) + 1;
    return reinterpret_cast<const char*>(bits >> kKindBits);
}

void LateTextWord::Put(CLateText& text, STRID word) {
    text.Set(kNoName);
    text.m_word = word;
}

}  // namespace brenta
