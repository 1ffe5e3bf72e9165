// Nodes of MSXML's document as others see them, and the way from such a document to the library's tree.
//
// The nodes below a node are reached one from the other, not by their numbers: MSXML counts those from the
// first on. Nothing recurses by depth; what is open stands in a list.
#include <vector>

#include "foundation/intern.h"
#include "xml/tree_builder.h"

#include "xml/com_msxml.h"

namespace brenta {

::DOMNodeType TypeOf(::IXMLDOMNode& node) {
    ::DOMNodeType type = ::NODE_INVALID;
    return node.get_nodeType(&type) == S_OK ? type : ::NODE_INVALID;
}

ComPointer<::IXMLDOMNode> FirstChild(::IXMLDOMNode& node) {
    ComPointer<::IXMLDOMNode> child;
    node.get_firstChild(child.Out());
    return child;
}

ComPointer<::IXMLDOMNode> NextSibling(::IXMLDOMNode& node) {
    ComPointer<::IXMLDOMNode> sibling;
    node.get_nextSibling(sibling.Out());
    return sibling;
}

namespace {

bool IsElement(::IXMLDOMNode& node) {
    return TypeOf(node) == ::NODE_ELEMENT;
}

// ---------------------------------------------------------------------------------------------------------
// Nodes that are handed out

/// A node with its users counted.
class Node final : public IXMLDOMElement {
 public:
    explicit Node(ComPointer<::IXMLDOMNode> node) : m_node(std::move(node)) {}

    unsigned long AddRef() override { return ++m_users; }
    unsigned long Release() override {
        const unsigned long left = --m_users;
        if (left == 0) delete this;
        return left;
    }

    DOMNodeType GetNodeType() const override { return static_cast<DOMNodeType>(TypeOf(*m_node)); }

    /// The DOM calls what has no name "#text" and the like.
    void GetNodeName(CString& name) const override {
        ComText found;
        m_node->get_nodeName(found.Out());
        const std::string text = found.Narrow();
        name = text.starts_with('#') ? "" : text.c_str();
    }

    IXMLDOMNode* GetFirstChild() const override {
        return IsElement(*m_node) ? MakeElementNode(FirstChild(*m_node)) : nullptr;
    }
    IXMLDOMNode* GetNextSibling() const override { return MakeElementNode(NextSibling(*m_node)); }

    bool GetNamedItem(const char* name, CString& value) const override {
        ComPointer<::IXMLDOMNamedNodeMap> attributes;
        if (name == nullptr || m_node->get_attributes(attributes.Out()) != S_OK || !attributes) return false;
        ComPointer<::IXMLDOMNode> item;
        ComValue found;
        const ComArgument wanted(ToWide(name));
        if (attributes->getNamedItem(wanted.Text(), item.Out()) != S_OK || !item) return false;
        if (item->get_nodeValue(found.Out()) != S_OK) return false;
        std::string text;
        AppendNarrow(found.Text(), text);
        value = text.c_str();
        return true;
    }

    bool CountElements(unsigned int& count) const override {
        count = IsElement(*m_node);
        try {
            std::vector<ComPointer<::IXMLDOMNode>> open;
            open.push_back(FirstChild(*m_node));
            while (!open.empty()) {
                const ComPointer<::IXMLDOMNode> node = std::move(open.back());
                open.pop_back();
                if (!node) continue;
                open.push_back(NextSibling(*node));
                if (!IsElement(*node)) continue;
                ++count;
                open.push_back(FirstChild(*node));
            }
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }

 private:
    ~Node() override = default;

    ComPointer<::IXMLDOMNode> m_node;
    unsigned long m_users = 1;
};

// ---------------------------------------------------------------------------------------------------------
// Making the library's tree

/// Makes elements with all that is below them.
class TreeReader {
 public:
    explicit TreeReader(TOrderedList<CCoreXmlDomElement*>& elements) : m_elements(elements) {}

    void Read(ComPointer<::IXMLDOMNode> top) {
        const STRID tag = NameOf(*top);
        if (tag == kNoName) return;
        Enter(m_builder.AddElement(m_elements, tag), *top);
        while (!m_open.empty()) {
            const ComPointer<::IXMLDOMNode> node = std::move(m_open.back().next);
            if (!node) {
                m_open.pop_back();
                continue;
            }
            Open& open = m_open.back();
            open.next = NextSibling(*node);
            const STRID name = IsElement(*node) ? NameOf(*node) : kNoName;
            if (name != kNoName) Enter(m_builder.AddElement(*open.element, name), *node);
        }
    }

 private:
    struct Open {
        CCoreXmlDomElement* element;
        ComPointer<::IXMLDOMNode> next;  ///< the first node below that has not been seen
    };

    void Enter(CCoreXmlDomElement& element, ::IXMLDOMNode& node) {
        ReadAttributes(element, node);
        m_open.push_back({&element, FirstChild(node)});
    }

    void ReadAttributes(CCoreXmlDomElement& element, ::IXMLDOMNode& node) {
        ComPointer<::IXMLDOMNamedNodeMap> attributes;
        if (node.get_attributes(attributes.Out()) != S_OK || !attributes) return;
        LONG count = 0;
        attributes->get_length(&count);
        for (LONG i = 0; i < count; ++i) {
            // An attribute that cannot be had leaves the others.
            ComPointer<::IXMLDOMNode> attribute;
            if (attributes->get_item(i, attribute.Out()) != S_OK || !attribute) continue;
            if (TypeOf(*attribute) != ::NODE_ATTRIBUTE) continue;
            const STRID name = NameOf(*attribute);
            ComValue value;
            attribute->get_nodeValue(value.Out());
            m_text.clear();
            AppendNarrow(value.Text(), m_text);
            m_builder.AddAttribute(element, name, m_text);
        }
    }

    /// kNoName if there is none. A text that does not become a name although it is not empty found no room.
    STRID NameOf(::IXMLDOMNode& node) {
        ComText name;
        const HRESULT result = node.get_nodeName(name.Out());
        m_text.clear();
        AppendNarrow(name.Wide(), m_text);
        const STRID id = InternName(m_text);
        if (result == E_OUTOFMEMORY || (id == kNoName && !m_text.empty())) throw std::bad_alloc();
        return id;
    }

    TOrderedList<CCoreXmlDomElement*>& m_elements;
    TreeBuilder m_builder;
    std::vector<Open> m_open;
    std::string m_text;
};

}  // namespace

IXMLDOMElement* MakeElementNode(ComPointer<::IXMLDOMNode> element) {
    return element ? new (std::nothrow) Node(std::move(element)) : nullptr;
}

void ReadTree(::IXMLDOMDocument& document, TOrderedList<CCoreXmlDomElement*>& out) {
    TOrderedList<CCoreXmlDomElement*> elements;
    try {
        ComPointer<::IXMLDOMElement> root;
        if (document.get_documentElement(root.Out()) == S_OK && root)
            TreeReader(elements).Read(std::move(root));
    } catch (...) {
        for (CCoreXmlDomElement* element : elements)
            delete element;
        throw;
    }
    out.Splice(std::move(elements));
}

}  // namespace brenta
