// Nodes of a parsed document as others see them, and the way from such a document to the library's tree.
#include <array>
#include <cstring>
#include <utility>

#include "brenta/xml_document.h"
#include "foundation/intern.h"
#include "xml/platform_libxml2.h"
#include "xml/tree_builder.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Attributes in document order

AttributeWalk::AttributeWalk(const XmlTree& tree, const xmlNode& element)
    : m_pDocument(tree.m_pDoc), m_pDeclaration(element.nsDef), m_pAttribute(element.properties) {
    const auto index = reinterpret_cast<std::uintptr_t>(element._private);
    if (index == 0) return;
    m_pPlaces = tree.m_places.data() + index;
    m_placesLeft = m_pPlaces[-1];
}

std::uint32_t AttributeWalk::NextDeclarationPlace() const {
    if (m_pPlaces == nullptr) return m_place;
    return m_placesLeft == 0 ? UINT32_MAX : *m_pPlaces;
}

void AttributeWalk::Next() {
    if (!AtDeclaration()) {
        m_pAttribute = m_pAttribute->next;
    } else {
        m_pDeclaration = m_pDeclaration->next;
        if (m_placesLeft > 0) {
            ++m_pPlaces;
            --m_placesLeft;
        }
    }
    ++m_place;
}

const xmlChar* AttributeWalk::Prefix() const {
    if (!AtDeclaration()) return m_pAttribute->ns == nullptr ? nullptr : m_pAttribute->ns->prefix;
    return m_pDeclaration->prefix == nullptr ? nullptr : AsXmlChars("xmlns");
}

const xmlChar* AttributeWalk::LocalName() const {
    if (!AtDeclaration()) return m_pAttribute->name;
    return m_pDeclaration->prefix == nullptr ? AsXmlChars("xmlns") : m_pDeclaration->prefix;
}

std::string_view AttributeWalk::Value() {
    const auto view = [](const xmlChar* text) {
        return text == nullptr ? std::string_view() : AsChars(text);
    };
    m_value.clear();
    if (AtDeclaration()) {
        const std::string_view address = view(m_pDeclaration->href);
        if (address.find('&') == address.npos) return address;
        AppendExpanded(m_pDocument, address, m_value);
        return m_value;
    }
    const xmlNode* part = m_pAttribute->children;
    if (part == nullptr) return {};
    if (part->next == nullptr && part->type == XML_TEXT_NODE) return view(part->content);
    for (; part != nullptr; part = part->next) {
        if (part->type == XML_TEXT_NODE) {
            m_value += view(part->content);
        } else {
            AppendExpanded(m_pDocument, "&" + std::string(view(part->name)) + ";", m_value);
        }
    }
    return m_value;
}

namespace {

std::string FullName(const xmlChar* prefix, const xmlChar* name) {
    std::string full;
    if (prefix != nullptr) (full = AsChars(prefix)) += ':';
    return full += AsChars(name);
}

bool IsElement(const xmlNode* node) {
    return node->type == XML_ELEMENT_NODE;
}

/// The next node of a walk in document order over elements, which enters nothing else; null at the end.
const xmlNode* NextBelow(const xmlNode* top, const xmlNode* node) {
    if (IsElement(node) && node->children != nullptr) return node->children;
    while (node != top && node->next == nullptr)
        node = node->parent;
    return node == top ? nullptr : node->next;
}

// ---------------------------------------------------------------------------------------------------------
// Nodes that are handed out

/// A node with its users counted; it keeps the document.
class Node final : public IXMLDOMElement {
 public:
    Node(std::shared_ptr<XmlTree> tree, const xmlNode* node) : m_tree(std::move(tree)), m_pNode(node) {}

    unsigned long AddRef() override { return ++m_users; }
    unsigned long Release() override {
        const unsigned long left = --m_users;
        if (left == 0) delete this;
        return left;
    }

    DOMNodeType GetNodeType() const override {
        return m_pNode->type == XML_DTD_NODE ? NODE_DOCUMENT_TYPE : static_cast<DOMNodeType>(m_pNode->type);
    }

    void GetNodeName(CString& name) const override {
        const xmlNs* const space = IsElement(m_pNode) ? m_pNode->ns : nullptr;
        name = m_pNode->name == nullptr
                   ? ""
                   : FullName(space != nullptr ? space->prefix : nullptr, m_pNode->name).c_str();
    }

    IXMLDOMNode* GetFirstChild() const override {
        return IsElement(m_pNode) ? Make(m_pNode->children) : nullptr;
    }
    IXMLDOMNode* GetNextSibling() const override { return Make(m_pNode->next); }

    bool GetNamedItem(const char* name, CString& value) const override {
        if (name == nullptr || !IsElement(m_pNode)) return false;
        for (AttributeWalk walk(*m_tree, *m_pNode); !walk.AtEnd(); walk.Next()) {
            if (xmlStrQEqual(walk.Prefix(), walk.LocalName(), AsXmlChars(name)) == 0) continue;
            value = std::string(walk.Value()).c_str();
            return true;
        }
        return false;
    }

    bool CountElements(unsigned int& count) const override {
        count = 0;
        for (const xmlNode* node = m_pNode; node != nullptr; node = NextBelow(m_pNode, node))
            count += IsElement(node);
        return true;
    }

 private:
    ~Node() override = default;
    Node* Make(const xmlNode* node) const {
        return node == nullptr ? nullptr : new (std::nothrow) Node(m_tree, node);
    }

    std::shared_ptr<XmlTree> m_tree;
    const xmlNode* m_pNode;
    unsigned long m_users = 1;
};

// ---------------------------------------------------------------------------------------------------------
// Making the library's tree

/// Interned names by the addresses of their parts, which a document holds once each.
class NameCache {
 public:
    STRID Name(const xmlChar* prefix, const xmlChar* name) {
        const auto hash =
            reinterpret_cast<std::uintptr_t>(name) * 31 + reinterpret_cast<std::uintptr_t>(prefix);
        Entry& entry = m_entries[(hash >> 4) % m_entries.size()];
        if (entry.name != name || entry.prefix != prefix) {
            entry = {prefix, name, InternedOrThrow(FullName(prefix, name))};
        }
        return entry.id;
    }

    /// A text that does not become a name although it is not empty found no room.
    static STRID InternedOrThrow(std::string_view text) {
        const STRID id = InternName(text);
        if (id == kNoName && !text.empty()) throw std::bad_alloc();
        return id;
    }

 private:
    struct Entry {
        const xmlChar* prefix = nullptr;
        const xmlChar* name = nullptr;
        STRID id = kNoName;
    };
    std::array<Entry, 1024> m_entries;
};

/// Makes elements with all that is below them.
class TreeReader {
 public:
    TreeReader(const XmlTree& tree, TOrderedList<CCoreXmlDomElement*>& elements)
        : m_tree(tree), m_elements(elements) {}

    void Read(const xmlNode& top) {
        CCoreXmlDomElement* parent = &Fill(m_builder.AddElement(m_elements, TagOf(top)), top);
        const xmlNode* node = &top;
        while ((node = NextInside(top, node, parent)) != nullptr) {
            if (!IsElement(node)) continue;
            CCoreXmlDomElement& child = Fill(m_builder.AddElement(*parent, TagOf(*node)), *node);
            if (node->children != nullptr) parent = &child;
        }
    }

 private:
    /// As NextBelow; `parent` follows where elements end.
    static const xmlNode* NextInside(const xmlNode& top, const xmlNode* node, CCoreXmlDomElement*& parent) {
        if (IsElement(node) && node->children != nullptr) return node->children;
        while (node != &top && node->next == nullptr) {
            node = node->parent;
            parent = parent->GetParent();
        }
        return node == &top ? nullptr : node->next;
    }

    STRID TagOf(const xmlNode& node) {
        return m_names.Name(node.ns == nullptr ? nullptr : node.ns->prefix, node.name);
    }

    CCoreXmlDomElement& Fill(CCoreXmlDomElement& element, const xmlNode& node) {
        for (AttributeWalk walk(m_tree, node); !walk.AtEnd(); walk.Next())
            m_builder.AddAttribute(element, m_names.Name(walk.Prefix(), walk.LocalName()), walk.Value());
        return element;
    }

    const XmlTree& m_tree;
    TOrderedList<CCoreXmlDomElement*>& m_elements;
    NameCache m_names;
    TreeBuilder m_builder;
};

}  // namespace

IXMLDOMElement* MakeElementNode(const std::shared_ptr<XmlTree>& tree, const xmlNode* element) {
    return element == nullptr ? nullptr : new Node(tree, element);
}

void ReadTree(const XmlTree& tree, TOrderedList<CCoreXmlDomElement*>& out) {
    TOrderedList<CCoreXmlDomElement*> elements;
    try {
        TreeReader reader(tree, elements);
        for (const xmlNode* node = tree.m_pDoc->children; node != nullptr; node = node->next)
            if (IsElement(node)) reader.Read(*node);
    } catch (...) {
        for (CCoreXmlDomElement* element : elements)
            delete element;
        throw;
    }
    out.Splice(std::move(elements));
}

}  // namespace brenta
