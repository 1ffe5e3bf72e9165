// The platform document over libxml2: a parsed document, or the text of one that was built, or both.
#include <new>
#include <utility>

#include "brenta/xml_document.h"
#include "os/os.h"
#include "xml/platform_libxml2.h"

namespace brenta {

namespace {

/// What was appended stands as text behind what was loaded. Saving needs no nodes of it, and transforming
/// parses the whole text anew.
class Libxml2Document final : public PlatformDocument {
 public:
    bool Load(const char* path, ParseFault& fault) override {
        Clear();
        std::string bytes;
        if (!ReadXmlFile(path, bytes)) {
            fault.reason = "The file cannot be read";
            fault.offset = 0;
            return false;
        }
        m_path = os::NativePath(path);
        return Take(ParseXml(bytes, ParseUse::File, path, fault));
    }

    bool LoadXml(const char* text, ParseFault& fault) override {
        Clear();
        return Take(ParseXml(text == nullptr ? "" : text, ParseUse::Text, nullptr, fault));
    }

    bool ReadElements(TOrderedList<CCoreXmlDomElement*>& out) override {
        try {
            if (m_pLoaded != nullptr) ReadTree(*m_pLoaded, out);
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }

    IXMLDOMElement* DocumentElement() override {
        if (m_pLoaded == nullptr) return nullptr;
        return MakeElementNode(m_pLoaded, xmlDocGetRootElement(m_pLoaded->m_pDoc));
    }

    void AppendInstruction(const char* target, const char* data) override {
        const std::string_view name = target == nullptr ? "" : target;
        std::string text = data == nullptr ? "" : data;
        if (name == "xml") {
            if (m_pLoaded != nullptr || !m_text.empty()) return;
            for (char& c : text)
                if (c == '\'') c = '"';
        }
        WriteInstruction(m_text, name, text.c_str());
    }

    void AppendComment(const char* text) override { WriteComment(m_text, text == nullptr ? "" : text); }

    void AppendElement(const CCoreXmlDomElement& element) override {
        m_hasRoot = m_hasRoot || WriteElement(m_text, element);
    }

    bool Save(const char* path) override {
        if (path == nullptr || *path == '\0') return false;
        if (m_pLoaded == nullptr) return os::ReplaceWholeFile(path, m_text);
        const std::string& encoding = m_pLoaded->m_encoding;
        const std::string text = WriteDeclaration(*m_pLoaded, encoding) + WriteTree(*m_pLoaded) + m_text;
        std::string encoded;
        if (encoding.empty()) return os::ReplaceWholeFile(path, text);
        return Encode(text, encoding, encoded) && os::ReplaceWholeFile(path, encoded);
    }

    CoreString GetXml() override { return CoreString(std::string_view(Text())); }

    CoreString Transform(PlatformDocument& stylesheet) override {
        const auto& sheet = static_cast<const Libxml2Document&>(stylesheet);
        return CoreString(std::string_view(TransformXml(Text(), sheet.Text(), sheet.m_path)));
    }

 private:
    void Clear() {
        m_pLoaded.reset();
        m_text.clear();
        m_path.clear();
        m_hasRoot = false;
    }

    bool Take(std::shared_ptr<XmlTree> tree) {
        m_pLoaded = std::move(tree);
        m_hasRoot = m_pLoaded != nullptr;
        return m_hasRoot;
    }

    /// The whole content in UTF-8. No encoding is named: it is no encoded text any more.
    std::string Text() const {
        return m_pLoaded == nullptr ? m_text
                                    : WriteDeclaration(*m_pLoaded, "") + WriteTree(*m_pLoaded) + m_text;
    }

    std::shared_ptr<XmlTree> m_pLoaded;
    std::string m_text;  ///< what was appended
    std::string m_path;
    bool m_hasRoot = false;
};

}  // namespace

// Threads may make their first documents at once.
std::unique_ptr<PlatformDocument> MakePlatformDocument() {
    static const bool ready = (xmlInitParser(), true);
    return ready ? std::make_unique<Libxml2Document>() : nullptr;
}

}  // namespace brenta
