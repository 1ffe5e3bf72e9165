// One run of libxml2's parser, shared by the two files that handle its events.
#pragma once

#include <memory>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

#include "xml/platform_libxml2.h"

namespace brenta {

/// One run of the parser. Parsers that libxml2 makes for the text of entities share its handlers, and find it
/// through `_private`, too.
class DocumentParse {
 public:
    DocumentParse(std::string_view text, ParseUse use, ParseFault& fault)
        : m_text(text),
          m_use(use),
          m_fault(fault),
          m_limits(text.size()),
          m_tree(std::make_shared<XmlTree>()) {}
    ~DocumentParse() { xmlFreeParserCtxt(m_pContext); }
    DocumentParse(const DocumentParse&) = delete;
    DocumentParse& operator=(const DocumentParse&) = delete;

    std::shared_ptr<XmlTree> Run(const char* base, xmlDict* dictionary);

 private:
    static xmlParserCtxt* Context(void* context) { return static_cast<xmlParserCtxt*>(context); }
    static DocumentParse& From(void* context) {
        return *static_cast<DocumentParse*>(Context(context)->_private);
    }

    void SetHandlers();
    int Options() const;
    void Refuse(const char* reason);
    void Report(const char* reason);
    /// Nothing may be thrown through the parser: a lack of memory ends the parse.
    template <class Work>
    void Guarded(Work work) {
        try {
            work();
        } catch (const std::bad_alloc&) {
            m_outOfMemory = true;
            Refuse("Out of memory");
        }
    }

    static int Read(void* context, char* buffer, int size);
    static void OnError(void* context, xmlError* error);
    static void OnStartElement(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                               int namespaceCount, const xmlChar** namespaces, int attributeCount,
                               int defaultedCount, const xmlChar** attributes);
    static void OnEndElement(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri);
    static void OnEntity(void* context, const xmlChar* name, int type, const xmlChar* publicId,
                         const xmlChar* systemId, xmlChar* content);
    static void OnAttributeDeclaration(void* context, const xmlChar* element, const xmlChar* name, int type,
                                       int defaultKind, const xmlChar* defaultValue, xmlEnumeration* values);
    static xmlEntity* FindEntity(void* context, const xmlChar* name);
    static xmlEntity* FindParameterEntity(void* context, const xmlChar* name);

    bool AdmitElement(xmlParserCtxt* context, int namespaceCount, int attributeCount, int defaultedCount,
                      const xmlChar** attributes);
    void StartElement(xmlParserCtxt* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                      int namespaceCount, const xmlChar** namespaces, int attributeCount,
                      const xmlChar** attributes);
    bool HidePrefixes();
    void BindAttributes(xmlNode& element, const xmlChar** attributes);
    xmlNs* FindNamespace(const xmlChar* prefix) const;
    void BindNamespaces(xmlNode& element);
    void EscapeAddress(xmlNs& declaration);
    void RecordPlaces(xmlNode& element);
    bool ValuesHold(const xmlNode& element);
    /// Whether a look-up is the one that follows a declaration, which is no reference.
    bool TakeDeclared(const xmlChar* name) { return std::exchange(m_pDeclared, nullptr) == name; }

    std::string_view m_text;
    ParseUse m_use;
    ParseFault& m_fault;
    EntityLimits m_limits;
    std::shared_ptr<XmlTree> m_tree;
    xmlParserCtxt* m_pContext = nullptr;
    std::size_t m_read = 0;
    std::size_t m_alternatives = 0, m_parentheses = 0;  ///< in the parameter entities that were referred to
    std::vector<xmlNs*> m_namespaces;                   ///< that are declared here, innermost last
    std::vector<const xmlChar*> m_plain;                ///< a tag's attributes without prefixes
    const xmlChar* m_pDeclared =
        nullptr;  ///< the entity declared last, until the parser has looked it up once
    bool m_namespacesGood = true;
    bool m_failed = false;
    bool m_outOfMemory = false;
};

}  // namespace brenta
