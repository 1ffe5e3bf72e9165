#include <cstdio>
#include <utility>
#include <vector>

#include "xml/tree_memory.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Elements

CCoreXmlDomElement::CCoreXmlDomElement() : CCoreXmlDomElement(kNoName) {}

CCoreXmlDomElement::CCoreXmlDomElement(const char* tag) : CCoreXmlDomElement(StrId(tag)) {}

// Delegating, so that what was copied is deleted if memory runs out on the way.
CCoreXmlDomElement::CCoreXmlDomElement(const CCoreXmlDomElement& other) : CCoreXmlDomElement() {
    CopyContent(other);
}

// The copy comes first: the other element may be one of those that are deleted.
CCoreXmlDomElement& CCoreXmlDomElement::operator=(const CCoreXmlDomElement& other) {
    if (this == &other) return *this;
    CCoreXmlDomElement copy(other);
    DeleteAttributes();
    DeleteChildren();
    m_tag = copy.m_tag;
    m_innerText = copy.m_innerText;
    m_flag = copy.m_flag;
    m_attributes = std::move(copy.m_attributes);
    m_children = std::move(copy.m_children);
    for (CCoreXmlDomElement* child : m_children)
        child->m_pParent = this;
    return *this;
}

void CCoreXmlDomElement::CopyContent(const CCoreXmlDomElement& other) {
    struct Pair {
        const CCoreXmlDomElement* from;
        CCoreXmlDomElement* to;
    };
    std::vector<Pair> open{{&other, this}};
    while (!open.empty()) {
        const auto [from, to] = open.back();
        open.pop_back();
        to->m_tag = from->m_tag;
        to->m_innerText = from->m_innerText;
        to->m_flag = from->m_flag;
        for (const CCoreXmlDomAttribute* attribute : from->m_attributes)
            to->Append(new CCoreXmlDomAttribute(*attribute));
        for (const CCoreXmlDomElement* child : from->m_children)
            if (CCoreXmlDomElement* copy = to->CreateChildElement(kNoName)) open.push_back({child, copy});
    }
}

std::size_t CCoreXmlDomElement::SizeOf() const {
    return sizeof(*this);
}

const char* CCoreXmlDomElement::GetClassName() const {
    return "CCoreXmlDomElement";
}

const char* CCoreXmlDomElement::GetBaseClassName() const {
    return "CCoreScriptable";
}

CCoreXmlDomElement::~CCoreXmlDomElement() {
    TreeWrecker wrecker;
    wrecker.DeleteBelow(*this);
    wrecker.DeleteAttributes(*this);
}

// ---------------------------------------------------------------------------------------------------------
// Children

void CCoreXmlDomElement::AddChildElement(CCoreXmlDomElement* child) {
    if (child == nullptr || child == this) return;
    auto* const node = new TNode<CCoreXmlDomElement*>(child);
    if (node == nullptr) return;
    AdoptScriptable(child);
    m_children.AddNode(node);
    child->m_pParent = this;
}

CCoreXmlDomElement* CCoreXmlDomElement::CreateChildElement(STRID tag) {
    auto* child = new CCoreXmlDomElement(tag);
    AddChildElement(child);
    if (child == nullptr || child->m_pParent == this) return child;
    delete child;
    return nullptr;
}

CCoreXmlDomElement* CCoreXmlDomElement::CreateChildElement(const char* tag) {
    return CreateChildElement(StrId(tag));
}

void CCoreXmlDomElement::RemoveChildElement(CCoreXmlDomElement* child) {
    m_children.Delete(child);
}

void CCoreXmlDomElement::DeleteChildElement(CCoreXmlDomElement* child) {
    for (TIter<CCoreXmlDomElement*> iter(m_children); iter.Get(); iter.Next()) {
        if (*iter.Get() != child) continue;
        m_children.Remove(iter);
        delete child;
        return;
    }
}

void CCoreXmlDomElement::DeleteChildren() {
    TreeWrecker().DeleteBelow(*this);
}

// ---------------------------------------------------------------------------------------------------------
// Attributes

void CCoreXmlDomElement::AddAttribute(STRID name, STRID value) {
    for (CCoreXmlDomAttribute* attribute : m_attributes)
        if (attribute->GetNameId() == name) return attribute->SetValue(value);
    Append(new CCoreXmlDomAttribute(name, value));
}

/// Adds an attribute that was made for this; without memory it goes again.
void CCoreXmlDomElement::Append(CCoreXmlDomAttribute* attribute) {
    if (attribute == nullptr) return;
    auto* const node = new TNode<CCoreXmlDomAttribute*>(attribute);
    if (node == nullptr) {
        delete attribute;
        return;
    }
    m_unseenAttributes = kSeen;
    m_attributes.AddNode(node);
}

void CCoreXmlDomElement::AddAttribute(const char* name, const char* value) {
    AddAttribute(StrId(name), StrId(value));
}

void CCoreXmlDomElement::AddAttribute(const char* name, int value) {
    char digits[16];
    std::snprintf(digits, sizeof(digits), "%d", value);
    AddAttribute(name, digits);
}

void CCoreXmlDomElement::AddAttribute(CCoreXmlDomAttribute* attribute) {
    if (attribute == nullptr) return;
    auto* const node = new TNode<CCoreXmlDomAttribute*>(attribute);
    if (node == nullptr) return;
    AdoptScriptable(attribute);
    m_unseenAttributes = kSeen;
    m_attributes.AddNode(node);
}

void CCoreXmlDomElement::DeleteAttribute(CCoreXmlDomAttribute* attribute) {
    m_unseenAttributes = kSeen;
    m_attributes.Delete(attribute);
}

void CCoreXmlDomElement::DeleteAttribute(STRID name) {
    TIter<CCoreXmlDomAttribute*> iter(m_attributes);
    while (iter.Get() && (*iter.Get())->GetNameId() != name)
        iter.Next();
    m_unseenAttributes = kSeen;
    if (iter.Get()) m_attributes.Remove(iter);
}

void CCoreXmlDomElement::DeleteAttribute(const char* name) {
    DeleteAttribute(StrId(name));
}

void CCoreXmlDomElement::DeleteAttributes() {
    TreeWrecker().DeleteAttributes(*this);
}

}  // namespace brenta
