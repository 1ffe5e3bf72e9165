// The walkers over a whole document.
#include "brenta/xml_document.h"

#include <new>
#include <string>
#include <utility>

#include "foundation/lack_of_memory.h"
#include "foundation/numbers.h"
#include "foundation/text_compare.h"
#include "xml/platform_document.h"

namespace brenta {

namespace {

IXMLDOMNode* Hold(IXMLDOMNode* node) {
    if (node != nullptr) node->AddRef();
    return node;
}

void LetGo(IXMLDOMNode* node) {
    if (node != nullptr) node->Release();
}

}  // namespace

IXMLDOMNode::~IXMLDOMNode() = default;
IXMLDOMElement::~IXMLDOMElement() = default;

// ---------------------------------------------------------------------------------------------------------
// The document

CXMLDocument::CXMLDocument()
    : m_pDocument(
          OrWithoutMemory(std::unique_ptr<PlatformDocument>(), [] { return g_platformDocumentMaker(); })) {}

CXMLDocument::~CXMLDocument() = default;

bool CXMLDocument::LoadDocument(CString& path, CString& error) {
    if (m_pDocument == nullptr) {
        error = "Failed to initialize XML document.";
        return false;
    }
    try {
        ParseFault fault;
        if (m_pDocument->Load(path, fault)) return true;
        CoreString message("Could not load xml file");
        if (!fault.refused)
            message.Format("Failed to load xml file.\n\n%s\nLoad failed at offset %1d in file.",
                           fault.reason(), fault.offset);
        error = message();
    } catch (const std::bad_alloc&) {
        error = "Could not load xml file";
    }
    return false;
}

IXMLDOMElement* CXMLDocument::GetRootElement() {
    if (m_pDocument == nullptr) return nullptr;
    return OrWithoutMemory<IXMLDOMElement*>(nullptr, [&] { return m_pDocument->DocumentElement(); });
}

void CXMLDocument::FreeRootElement(IXMLDOMElement* element) {
    LetGo(element);
}

bool CXMLDocument::GetElementCount(unsigned int& count) {
    count = 0;
    IXMLDOMElement* const root = GetRootElement();
    if (root == nullptr) return false;
    const bool counted = root->CountElements(count);
    root->Release();
    return counted;
}

// ---------------------------------------------------------------------------------------------------------
// Elements

CXMLElementIterator::CXMLElementIterator(IXMLDOMNode* parent)
    : m_pParent(Hold(parent)), m_pCurrent(nullptr), m_started(false) {}

CXMLElementIterator::~CXMLElementIterator() {
    LetGo(m_pCurrent);
    LetGo(m_pParent);
}

IXMLDOMNode* CXMLElementIterator::GetFirstElement() {
    if (m_pParent == nullptr) return nullptr;
    m_started = true;
    return ElementFrom(m_pParent->GetFirstChild());
}

IXMLDOMNode* CXMLElementIterator::GetNextElement() {
    if (!m_started) return GetFirstElement();
    return m_pCurrent == nullptr ? nullptr : ElementFrom(m_pCurrent->GetNextSibling());
}

/// Makes the first element from a node on the current one, and hands it out.
IXMLDOMNode* CXMLElementIterator::ElementFrom(IXMLDOMNode* node) {
    while (node != nullptr && node->GetNodeType() != NODE_ELEMENT) {
        IXMLDOMNode* const next = node->GetNextSibling();
        node->Release();
        node = next;
    }
    LetGo(std::exchange(m_pCurrent, node));
    return Hold(node);
}

void CXMLElementIterator::FreeElement(IXMLDOMNode* element) {
    LetGo(element);
}

// ---------------------------------------------------------------------------------------------------------
// Attributes

CXMLAttributeIterator::CXMLAttributeIterator(IXMLDOMNode* node) : m_pNode(Hold(node)) {}

CXMLAttributeIterator::~CXMLAttributeIterator() {
    LetGo(m_pNode);
}

CString& CXMLAttributeIterator::GetValue(char* name, CString& out) {
    out.Empty();
    if (m_pNode != nullptr) m_pNode->GetNamedItem(name, out);
    return out;
}

long CXMLAttributeIterator::GetLongValue(char* name) {
    CString value;
    return ParseInt(GetValue(name, value));
}

bool CXMLAttributeIterator::GetBoolValue(char* name) {
    CString value;
    GetValue(name, value);
    return CompareIgnoringCase(value, "true") == 0 || CompareIgnoringCase(value, "1") == 0;
}

STRID CXMLAttributeIterator::GetValueId(char* name) {
    CString value;
    return StrId(GetValue(name, value));
}

}  // namespace brenta
