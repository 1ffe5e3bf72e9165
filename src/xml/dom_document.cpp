// The document: its tree, and what passes between the tree and the platform document.
#include <utility>

#include "brenta/xml.h"
#include "brenta/xml_readers.h"
#include "foundation/lack_of_memory.h"
#include "xml/platform_document.h"

namespace brenta {

PlatformDocumentMaker g_platformDocumentMaker = &MakePlatformDocument;

namespace {

PlatformDocument* NewPlatformDocument() {
    return OrWithoutMemory<PlatformDocument*>(nullptr, [] { return g_platformDocumentMaker().release(); });
}

bool IsGiven(const char* name) {
    return name != nullptr && *name != '\0';
}

/// False if there was no memory for the attribute: then nothing is to be put out without it.
bool SetAttribute(CCoreXmlDomElement& element, const char* name, const char* value) {
    const STRID id = StrId(name);
    if (id == kNoName) return false;
    element.AddAttribute(id, StrId(value));
    return element.GetAttributeValueId(id) != kNoName;
}

}  // namespace

CCoreXmlDom::CCoreXmlDom() : m_pDocument(NewPlatformDocument()), m_parseErrorOffset(0), m_loaded(false) {}

CCoreXmlDom::CCoreXmlDom(const CCoreXmlDom& other) : CCoreXmlDom() {
    CopyElements(other);
}

CCoreXmlDom& CCoreXmlDom::operator=(const CCoreXmlDom& other) {
    if (this == &other) return *this;
    CCoreXmlDom copy(other);
    std::swap(m_elements, copy.m_elements);
    return *this;
}

std::size_t CCoreXmlDom::SizeOf() const {
    return sizeof(*this);
}

const char* CCoreXmlDom::GetClassName() const {
    return "CCoreXmlDom";
}

const char* CCoreXmlDom::GetBaseClassName() const {
    return "CCoreScriptable";
}

CCoreXmlDom::~CCoreXmlDom() {
    delete m_pDocument;
    DeleteElements();
}

// ---------------------------------------------------------------------------------------------------------
// The tree

void CCoreXmlDom::AddElement(CCoreXmlDomElement* element) {
    if (Append(element)) AdoptScriptable(element);
}

/// False without memory, or without an element.
bool CCoreXmlDom::Append(CCoreXmlDomElement* element) {
    auto* const node = element == nullptr ? nullptr : new TNode<CCoreXmlDomElement*>(element);
    if (node == nullptr) return false;
    m_elements.AddNode(node);
    return true;
}

void CCoreXmlDom::RemoveDom() {
    m_elements.RemoveAll();
}

CCoreXmlDomElement* CCoreXmlDom::CreateElement(STRID tag) {
    auto* element = new CCoreXmlDomElement(tag);
    if (Append(element)) return element;
    delete element;
    return nullptr;
}

CCoreXmlDomElement* CCoreXmlDom::CreateElement(const char* tag) {
    return CreateElement(StrId(tag));
}

void CCoreXmlDom::CopyElements(const CCoreXmlDom& other) {
    for (const CCoreXmlDomElement* element : other.m_elements) {
        auto* copy = new CCoreXmlDomElement(*element);
        if (!Append(copy)) delete copy;
    }
}

void CCoreXmlDom::DeleteElements() {
    for (CCoreXmlDomElement* element : m_elements)
        delete element;
    m_elements.RemoveAll();
}

// ---------------------------------------------------------------------------------------------------------
// Loading

/// Loads a file or a text through the platform document, whichever is given.
bool CCoreXmlDom::LoadThroughPlatform(const char* path, const char* text) {
    if (m_pDocument == nullptr) return false;
    return OrWithoutMemory(false, [&] {
        ParseFault fault;
        if (!(text == nullptr ? m_pDocument->Load(path, fault) : m_pDocument->LoadXml(text, fault))) {
            m_parseError = fault.reason;
            m_parseErrorOffset = fault.offset;
            return false;
        }
        TOrderedList<CCoreXmlDomElement*> elements;
        if (!m_pDocument->ReadElements(elements)) return false;
        m_elements.Splice(std::move(elements));
        m_loaded = true;
        return true;
    });
}

bool CCoreXmlDom::LoadDocument(const char* path, bool quickLoad) {
    if (!quickLoad) return LoadThroughPlatform(path, nullptr);
    if (m_pDocument == nullptr) return false;
    CCoreXMLQuickReader reader;
    if (!reader.LoadDocument(path)) return false;
    m_elements.Splice(reader.TakeElements());
    return true;
}

bool CCoreXmlDom::LoadString(const char* text) {
    return LoadThroughPlatform(nullptr, text == nullptr ? "" : text);
}

const char* CCoreXmlDom::GetParseError(int& offset) const {
    offset = m_parseErrorOffset;
    return m_parseError();
}

// ---------------------------------------------------------------------------------------------------------
// Saving

/// Adds the tree to the platform document, behind what that holds already.
bool CCoreXmlDom::Build(const char* schemaName, const char* xslName) {
    if (m_pDocument == nullptr) return false;
    if (!m_loaded) {
        m_pDocument->AppendInstruction("xml", "version='1.0'");
        if (IsGiven(xslName)) {
            CoreString data("type=\"text/xsl\" href=\"");
            data += xslName;
            data += "\"";
            m_pDocument->AppendInstruction("xml-stylesheet", data());
        }
        m_pDocument->AppendComment("xml file created by Orvane Works.");
    }
    if (CCoreXmlDomElement* const* root = m_elements.GetHead()) {
        if (!SetAttribute(**root, "xmlns:xsi", "http://www.w3.org/2001/XMLSchema-instance") ||
            (IsGiven(schemaName) && !SetAttribute(**root, "xsi:noNamespaceSchemaLocation", schemaName)))
            return false;
    }
    for (const CCoreXmlDomElement* element : m_elements)
        m_pDocument->AppendElement(*element);
    return true;
}

bool CCoreXmlDom::SaveDocument(const char* path, const char* schemaName, const char* xslName) {
    return OrWithoutMemory(false, [&] {
        if (!Build(schemaName, xslName)) return false;
        m_pDocument->Save(path);
        return true;
    });
}

bool CCoreXmlDom::GetString(CoreString& out) {
    return OrWithoutMemory(false, [&] {
        if (!Build(nullptr, nullptr)) return false;
        out = m_pDocument->GetXml();
        return true;
    });
}

bool CCoreXmlDom::TransformDocument(const char* xslName, CoreString& out) {
    return OrWithoutMemory(false, [&] {
        if (!Build(nullptr, nullptr)) return false;
        const std::unique_ptr<PlatformDocument> stylesheet = g_platformDocumentMaker();
        ParseFault fault;
        if (stylesheet == nullptr || !stylesheet->Load(xslName, fault)) return false;
        out = m_pDocument->Transform(*stylesheet);
        return true;
    });
}

void CCoreXmlDom::ResetCOMState() {
    delete std::exchange(m_pDocument, nullptr);
    m_parseError.SetEmpty();
    m_parseErrorOffset = 0;
    m_pDocument = NewPlatformDocument();
}

CCoreScriptable* CreateCCoreXmlDomObject() {
    return new CCoreXmlDom;
}

CCoreScriptable* CreateCCoreXmlDomElementObject() {
    return new CCoreXmlDomElement;
}

CCoreScriptable* CreateCCoreXmlDomAttributeObject() {
    return new CCoreXmlDomAttribute;
}

}  // namespace brenta
