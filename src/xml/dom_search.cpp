// Finding elements and attributes. The searches walk with a stack of their own, so depth costs memory only.
#include <cstring>
#include <vector>

#include "brenta/xml.h"
#include "foundation/numbers.h"
#include "foundation/text_compare.h"
#include "xml/tree_access.h"

namespace brenta {

namespace {

using ElementIter = TIter<CCoreXmlDomElement*>;

bool SameText(const char* text, const char* wanted) {
    return wanted != nullptr && std::strcmp(text, wanted) == 0;
}

bool SameTextInAnyCase(const char* text, const char* wanted) {
    return wanted != nullptr && CompareIgnoringCase(text, wanted) == 0;
}

/// Steps through everything below an element in document order.
class Descendants {
 public:
    explicit Descendants(const CCoreXmlDomElement& element) { Enter(element); }

    /// The element at which the walk stands; null at the end.
    CCoreXmlDomElement* Get() const { return m_open.empty() ? nullptr : *m_open.back().Get(); }

    /// To the first child, or else to what comes behind.
    void Next() {
        const CCoreXmlDomElement* element = Get();
        m_open.back().Next();
        Enter(*element);
    }

    /// To what comes behind the element and everything below it.
    void Skip() {
        m_open.back().Next();
        LeaveEnded();
    }

 private:
    void Enter(const CCoreXmlDomElement& element) {
        m_open.push_back(element.GetFirstChild());
        LeaveEnded();
    }
    void LeaveEnded() {
        while (!m_open.empty() && m_open.back().Get() == nullptr)
            m_open.pop_back();
    }

    std::vector<ElementIter> m_open;
};

template <class Matches>
CCoreXmlDomElement* FirstChild(const CCoreXmlDomElement& parent, const Matches& matches) {
    for (ElementIter iter = parent.GetFirstChild(); iter.Get(); iter.Next())
        if (matches(**iter.Get())) return *iter.Get();
    return nullptr;
}

/// The search by tag: document order.
template <class Matches>
CCoreXmlDomElement* FindBelow(const CCoreXmlDomElement& parent, bool recurse, const Matches& matches) {
    if (!recurse) return FirstChild(parent, matches);
    for (Descendants walk(parent); walk.Get(); walk.Next())
        if (matches(*walk.Get())) return walk.Get();
    return nullptr;
}

/// The search by attribute: the element itself, its children, and only then what is below each child.
template <class Matches>
CCoreXmlDomElement* FindLevelFirst(CCoreXmlDomElement& top, bool recurse, const Matches& matches) {
    if (matches(top)) return &top;
    if (CCoreXmlDomElement* found = FirstChild(top, matches)) return found;
    if (!recurse) return nullptr;
    for (Descendants walk(top); walk.Get(); walk.Next())
        if (CCoreXmlDomElement* found = FirstChild(*walk.Get(), matches)) return found;
    return nullptr;
}

template <class NameMatches>
const CCoreXmlDomAttribute* FirstAttribute(const CCoreXmlDomElement& element, const NameMatches& matches) {
    for (TIter<CCoreXmlDomAttribute*> iter = TreeAccess::Attributes(element); iter.Get(); iter.Next())
        if (matches(**iter.Get())) return *iter.Get();
    return nullptr;
}

/// Tests the values of all attributes whose name matches.
template <class NameMatches>
bool HasAttribute(const CCoreXmlDomElement& element, const char* value, const NameMatches& matches) {
    const bool anyValue = value == nullptr || *value == '\0';
    return FirstAttribute(element, [&](const CCoreXmlDomAttribute& attribute) {
               return matches(attribute) && (anyValue || SameTextInAnyCase(attribute.PeekValue(), value));
           }) != nullptr;
}

const CCoreXmlDomAttribute* AttributeOf(const CCoreXmlDomElement& element, STRID name) {
    return FirstAttribute(element, [&](const CCoreXmlDomAttribute& a) { return a.GetNameId() == name; });
}

const CCoreXmlDomAttribute* AttributeOf(const CCoreXmlDomElement& element, const char* name,
                                        bool ignoreCase) {
    return FirstAttribute(element, [&](const CCoreXmlDomAttribute& a) {
        return ignoreCase ? SameTextInAnyCase(a.GetName(), name) : SameText(a.GetName(), name);
    });
}

const char* ValueOf(const CCoreXmlDomAttribute* attribute) {
    return attribute == nullptr ? "" : attribute->GetValue();
}

int NumberOf(const CCoreXmlDomAttribute* attribute) {
    return attribute == nullptr ? 0 : ParseInt(attribute->PeekValue());
}

bool IsTrue(const CCoreXmlDomAttribute* attribute) {
    const char* const value = attribute == nullptr ? "" : attribute->PeekValue();
    return SameText(value, "1") || SameText(value, "true") || SameText(value, "True");
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------
// Attribute values

const char* CCoreXmlDomElement::GetAttributeValue(STRID name) const {
    return ValueOf(AttributeOf(*this, name));
}

STRID CCoreXmlDomElement::GetAttributeValueId(STRID name) const {
    const CCoreXmlDomAttribute* attribute = AttributeOf(*this, name);
    return attribute == nullptr ? kNoName : attribute->GetValueId();
}

const char* CCoreXmlDomElement::GetAttributeValue(const char* name, bool ignoreCase) const {
    return ValueOf(AttributeOf(*this, name, ignoreCase));
}

int CCoreXmlDomElement::GetIntAttributeValue(STRID name) const {
    return NumberOf(AttributeOf(*this, name));
}

int CCoreXmlDomElement::GetIntAttributeValue(const char* name, bool ignoreCase) const {
    return NumberOf(AttributeOf(*this, name, ignoreCase));
}

bool CCoreXmlDomElement::GetBoolAttributeValue(STRID name) const {
    return IsTrue(AttributeOf(*this, name));
}

bool CCoreXmlDomElement::GetBoolAttributeValue(const char* name, bool ignoreCase) const {
    return IsTrue(AttributeOf(*this, name, ignoreCase));
}

// ---------------------------------------------------------------------------------------------------------
// Elements

CCoreXmlDomElement* CCoreXmlDomElement::FindElement(STRID tag, bool recurse) {
    return FindBelow(*this, recurse, [&](const CCoreXmlDomElement& e) { return e.GetTagNameId() == tag; });
}

CCoreXmlDomElement* CCoreXmlDomElement::FindElement(const char* tag, bool recurse) {
    return FindBelow(*this, recurse,
                     [&](const CCoreXmlDomElement& e) { return SameText(e.GetTagName(), tag); });
}

CCoreXmlDomElement* CCoreXmlDomElement::FindElement(STRID tag, STRID attrName, const char* attrValue,
                                                    bool recurse) {
    return FindLevelFirst(*this, recurse, [&](const CCoreXmlDomElement& e) {
        return e.GetTagNameId() == tag && HasAttribute(e, attrValue, [&](const CCoreXmlDomAttribute& a) {
                   return a.GetNameId() == attrName;
               });
    });
}

CCoreXmlDomElement* CCoreXmlDomElement::FindElement(const char* tag, const char* attrName,
                                                    const char* attrValue, bool recurse) {
    return FindLevelFirst(*this, recurse, [&](const CCoreXmlDomElement& e) {
        return SameText(e.GetTagName(), tag) &&
               HasAttribute(e, attrValue, [&](const CCoreXmlDomAttribute& a) {
                   return SameTextInAnyCase(a.GetName(), attrName);
               });
    });
}

void CCoreXmlDomElement::FindAllElements(STRID tag, TOrderedList<CCoreXmlDomElement*>& out, bool recurse) {
    for (Descendants walk(*this); walk.Get(); recurse ? walk.Next() : walk.Skip())
        if (walk.Get()->GetTagNameId() == tag) out.Add(walk.Get());
}

CCoreXmlDomElement* CCoreXmlDom::FindElement(const char* tag) {
    for (CCoreXmlDomElement* element : m_elements)
        if (SameText(element->GetTagName(), tag)) return element;
    return nullptr;
}

CCoreXmlDomElement* CCoreXmlDom::FindElement(const char* tag, const char* attrName, const char* attrValue,
                                             bool recurse) {
    for (CCoreXmlDomElement* element : m_elements)
        if (CCoreXmlDomElement* found = element->FindElement(tag, attrName, attrValue, recurse)) return found;
    return nullptr;
}

}  // namespace brenta
