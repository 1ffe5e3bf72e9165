// The platform document over MSXML.
//
// What is loaded, appended, written and transformed is MSXML's own document, and what it makes of each of
// these is what comes out. Only what it must not do, it is not asked for: fetching what an address names, and
// writing over a file before the content is whole.
#include <new>

#include "os/os.h"
#include "xml/com_msxml.h"

namespace brenta {

namespace {

constexpr CLSID kDocumentClass = {
    0xF6D90F11, 0x9C73, 0x11D3, {0xB3, 0x2E, 0x00, 0xC0, 0x4F, 0x99, 0x0B, 0xB4}};
constexpr IID kDocument = {0x2933BF81, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
constexpr IID kDocumentWithProperties = {
    0x2933BF95, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

class MsxmlDocument final : public PlatformDocument {
 public:
    explicit MsxmlDocument(ComPointer<::IXMLDOMDocument> document) : m_document(std::move(document)) {}

    bool Load(const char* path, ParseFault& fault) override {
        fault = ParseFault();
        VARIANT_BOOL loaded = VARIANT_FALSE;
        if (!IsLocalFile(path)) {
            m_document->loadXML(ComArgument(L"").Text(), &loaded);  // leaves nothing of the old content
            fault.reason = "The file cannot be read";
            return false;
        }
        return Explain(m_document->load(ComArgument(FileName(path)).Value(), &loaded), fault);
    }

    bool LoadXml(const char* text, ParseFault& fault) override {
        fault = ParseFault();
        VARIANT_BOOL loaded = VARIANT_FALSE;
        const ComArgument wide(ToWide(text == nullptr ? "" : text));
        return Explain(m_document->loadXML(wide.Text(), &loaded), fault);
    }

    bool ReadElements(TOrderedList<CCoreXmlDomElement*>& out) override {
        try {
            ReadTree(*m_document, out);
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }

    IXMLDOMElement* DocumentElement() override {
        ComPointer<::IXMLDOMElement> element;
        m_document->get_documentElement(element.Out());
        return MakeElementNode(std::move(element));
    }

    void AppendInstruction(const char* target, const char* data) override {
        brenta::AppendInstruction(*m_document, target == nullptr ? "" : target, data == nullptr ? "" : data);
    }
    void AppendComment(const char* text) override {
        brenta::AppendComment(*m_document, text == nullptr ? "" : text);
    }
    void AppendElement(const CCoreXmlDomElement& element) override {
        brenta::AppendElement(*m_document, element);
    }

    bool Save(const char* path) override {
        os::Replacement file;
        if (path == nullptr || !file.Create(path)) return false;
        const ComArgument name(PlainPath(ToWide(file.NewPath())));
        RenewDeclaration();
        return m_document->save(name.Value()) == S_OK && file.Commit();
    }

    CoreString GetXml() override {
        ComText text;
        m_document->get_xml(text.Out());
        return CoreString(std::string_view(text.Narrow()));
    }

    CoreString Transform(PlatformDocument& stylesheet) override {
        ComText text;
        const auto& sheet = static_cast<const MsxmlDocument&>(stylesheet);
        if (m_document->transformNode(sheet.m_document.Get(), text.Out()) != S_OK) return CoreString();
        return CoreString(std::string_view(text.Narrow()));
    }

 private:
    /// Puts a declaration of the same text in place of the one that was loaded. Wine writes the encoding that
    /// a declaration names only where the document was built with it, and would write UTF-8 under another's
    /// name.
    void RenewDeclaration() {
        const ComPointer<::IXMLDOMNode> old = FirstChild(*m_document);
        ComText name;
        ComValue data;
        if (!old || TypeOf(*old) != ::NODE_PROCESSING_INSTRUCTION || old->get_nodeName(name.Out()) != S_OK ||
            name.Wide() != L"xml" || old->get_nodeValue(data.Out()) != S_OK)
            return;
        ComPointer<::IXMLDOMProcessingInstruction> fresh;
        ComPointer<::IXMLDOMNode> replaced;
        const ComArgument target(name.Wide()), text(data.Text());
        if (m_document->createProcessingInstruction(target.Text(), text.Text(), fresh.Out()) == S_OK)
            m_document->replaceChild(fresh.Get(), old.Get(), replaced.Out());
    }

    /// Whether a load has succeeded; if not, why.
    bool Explain(HRESULT result, ParseFault& fault) {
        if (result == S_OK) return true;
        fault.refused = FAILED(result);
        ComPointer<::IXMLDOMParseError> error;
        if (FAILED(m_document->get_parseError(error.Out())) || !error) return false;
        ComText reason;
        error->get_reason(reason.Out());
        fault.reason = CoreString(std::string_view(reason.Narrow()));
        LONG offset = 0;
        if (error->get_filepos(&offset) == S_OK) fault.offset = offset;
        return false;
    }

    ComPointer<::IXMLDOMDocument> m_document;
};

/// A stylesheet may not open further documents, or hold programs; a document may have a DTD of its own, and
/// be as deep as it likes. Services differ in what they do by themselves, and some know no such property.
void SetProperties(::IXMLDOMDocument& document) {
    void* found = nullptr;
    if (document.QueryInterface(kDocumentWithProperties, &found) != S_OK) return;
    ComPointer<::IXMLDOMDocument2> properties;
    *properties.Out() = static_cast<::IXMLDOMDocument2*>(found);
    const VARIANT no = ComFalse();
    for (const wchar_t* name : {L"AllowDocumentFunction", L"AllowXsltScript", L"ProhibitDTD"})
        properties->setProperty(ComArgument(name).Text(), no);
    // Transformations recurse for each level.
    constexpr int kDeepest = 3000;
    properties->setProperty(ComArgument(L"MaxElementDepth").Text(), ComNumber(kDeepest));
}

}  // namespace

std::unique_ptr<PlatformDocument> MakePlatformDocument() {
    auto document = MakeComObject<::IXMLDOMDocument>(kDocumentClass, kDocument);
    if (!document || document->put_async(VARIANT_FALSE) != S_OK ||
        document->put_validateOnParse(VARIANT_FALSE) != S_OK ||
        document->put_resolveExternals(VARIANT_FALSE) != S_OK)
        return nullptr;
    SetProperties(*document);
    return std::make_unique<MsxmlDocument>(std::move(document));
}

}  // namespace brenta
