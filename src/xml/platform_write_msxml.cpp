// Appending to MSXML's document, from the library's tree.
//
// What would make a document that cannot be loaded again is kept away from MSXML, whose versions differ in
// what they take: names that are none, characters that XML forbids, a second root, nodes that their own text
// ends.
#include <algorithm>
#include <optional>
#include <unordered_map>
#include <vector>

#include "xml/qualified_name.h"
#include "xml/tree_access.h"

#include "xml/com_msxml.h"

namespace brenta {

namespace {

bool IsForbidden(wchar_t c) {
    return (c < L' ' && c != L'\t' && c != L'\n' && c != L'\r') || c >= 0xFFFE;
}

/// A text without the characters that XML forbids.
std::wstring Allowed(std::string_view text) {
    std::wstring wide = ToWide(text);
    std::erase_if(wide, &IsForbidden);
    return wide;
}

/// Code points of a text; a surrogate alone, which is in no name, stands for itself.
std::u32string CodePoints(std::wstring_view text) {
    std::u32string points;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool pair = IS_HIGH_SURROGATE(text[i]) && i + 1 < text.size() && IS_LOW_SURROGATE(text[i + 1]);
        points += pair ? 0x10000 + ((text[i] - 0xD800u) << 10) + (text[i + 1] - 0xDC00u) : text[i];
        i += pair;
    }
    return points;
}

/// The name in COM's form; nothing if XML has no such name.
std::optional<std::wstring> NameFrom(std::string_view text) {
    std::wstring wide = ToWide(text);
    if (!IsQualifiedName(CodePoints(wide))) return std::nullopt;
    return wide;
}

bool Append(::IXMLDOMNode& parent, ::IXMLDOMNode& child) {
    ComPointer<::IXMLDOMNode> appended;
    return parent.appendChild(&child, appended.Out()) == S_OK;
}

// ---------------------------------------------------------------------------------------------------------
// Elements

class ElementWriter {
 public:
    explicit ElementWriter(::IXMLDOMDocument& document) : m_document(document) {}

    void Write(const CCoreXmlDomElement& top) {
        Begin(m_document, top);
        while (!m_open.empty()) {
            Open& open = m_open.back();
            if (open.child.Get() == nullptr) {
                m_open.pop_back();
                continue;
            }
            const CCoreXmlDomElement& child = **open.child.Get();
            open.child.Next();
            Begin(*open.element, child);
        }
    }

 private:
    struct Open {
        ComPointer<::IXMLDOMElement> element;
        TIter<CCoreXmlDomElement*> child;  ///< the next one to be written
    };

    /// An element without what is below it. One that cannot be made is left out with that.
    void Begin(::IXMLDOMNode& parent, const CCoreXmlDomElement& element) {
        const std::optional<std::wstring>& name = Name(element.GetTagNameId());
        ComPointer<::IXMLDOMElement> made;
        if (!name || m_document.createElement(ComArgument(*name).Text(), made.Out()) != S_OK) return;
        for (auto iter = TreeAccess::Attributes(element); iter.Get(); iter.Next())
            SetAttribute(*made, **iter.Get());
        if (Append(parent, *made)) m_open.push_back({std::move(made), element.GetFirstChild()});
    }

    void SetAttribute(::IXMLDOMElement& element, const CCoreXmlDomAttribute& attribute) {
        const std::optional<std::wstring>& known = Name(attribute.GetNameId());
        if (!known) return;
        const ComArgument name(*known), value(Allowed(attribute.PeekValue()));
        ComPointer<::IXMLDOMAttribute> made, replaced;
        if (m_document.createAttribute(name.Text(), made.Out()) == S_OK &&
            made->put_value(value.Value()) == S_OK &&
            element.setAttributeNode(made.Get(), replaced.Out()) == S_OK)
            return;
        // A declaration of the default namespace may be refused as a node of its own.
        element.setAttribute(name.Text(), value.Value());
    }

    const std::optional<std::wstring>& Name(STRID id) {
        const auto [found, isNew] = m_names.try_emplace(id);
        if (isNew) found->second = NameFrom(StrPtr(id));
        return found->second;
    }

    ::IXMLDOMDocument& m_document;
    std::vector<Open> m_open;
    std::unordered_map<STRID, std::optional<std::wstring>> m_names;
};

}  // namespace

void AppendInstruction(::IXMLDOMDocument& document, std::string_view target, std::string_view data) {
    const std::wstring name = ToWide(target), text = Allowed(data);
    if (!IsPlainName(CodePoints(name)) || text.find(L"?>") != text.npos) return;
    if (target == "xml" && FirstChild(document)) return;
    ComPointer<::IXMLDOMProcessingInstruction> made;
    const ComArgument nameArgument(name), textArgument(text);
    if (document.createProcessingInstruction(nameArgument.Text(), textArgument.Text(), made.Out()) == S_OK)
        Append(document, *made);
}

void AppendComment(::IXMLDOMDocument& document, std::string_view text) {
    const std::wstring plain = Allowed(text);
    if (plain.find(L"--") != plain.npos || plain.ends_with(L'-')) return;
    ComPointer<::IXMLDOMComment> made;
    if (document.createComment(ComArgument(plain).Text(), made.Out()) == S_OK) Append(document, *made);
}

void AppendElement(::IXMLDOMDocument& document, const CCoreXmlDomElement& element) {
    ComPointer<::IXMLDOMElement> root;
    if (document.get_documentElement(root.Out()) == S_OK && root) return;
    ElementWriter(document).Write(element);
}

}  // namespace brenta
