// Parsing with libxml2: which options, which limits, and what happens at each event.
//
// Options. NONET and the handlers below keep the parser from opening anything: without NOENT, DTDLOAD,
// DTDATTR and DTDVALID it follows no reference to a file, and where NOENT is wanted (for XSLT), external
// entities are declared as empty internal ones. HUGE takes away the limits on nesting and on the length of
// values, which the library's own files exceed, but also the guard against entities that expand without
// bound; that one is EntityLimits.
//
// Where libxml2 itself recurses or is quadratic in something that a file can make large, the text is looked
// through beforehand (TextHolds) or the event is refused.
#include <libxml/SAX2.h>
#include <libxml/parserInternals.h>
#include <libxml/uri.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "foundation/characters.h"
#include "os/os.h"
#include "xml/platform_memory_libxml2.h"
#include "xml/platform_parse_libxml2.h"

namespace brenta {

namespace {

/// Open inputs and nested replacements, for which libxml2 recurses.
constexpr int kDeepestInput = 40;

}  // namespace

int DocumentParse::Options() const {
    const int options =
        XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE | XML_PARSE_IGNORE_ENC;
    return options | (m_use == ParseUse::Transform ? XML_PARSE_NOENT | XML_PARSE_NOCDATA : XML_PARSE_COMPACT);
}

void DocumentParse::SetHandlers() {
    xmlSAXHandler& sax = *m_pContext->sax;
    sax.serror = [](void* context, xmlError* error) { OnError(context, error); };
    sax.startElementNs = &OnStartElement;
    sax.endElementNs = &OnEndElement;
    sax.entityDecl = &OnEntity;
    sax.attributeDecl = &OnAttributeDeclaration;
    sax.getEntity = &FindEntity;
    sax.getParameterEntity = &FindParameterEntity;
    sax.externalSubset = nullptr;
    sax.resolveEntity = nullptr;
}

/// Ends the parse, without pulling its input away from under the parser: events and references stop at once,
/// and the input stops with what was read ahead.
void DocumentParse::Refuse(const char* reason) {
    Report(reason);
    m_failed = true;
    m_pContext->wellFormed = 0;
    m_pContext->disableSAX = 1;
}

/// Keeps the first message. The position is that in the document, not in the text of an entity.
void DocumentParse::Report(const char* reason) {
    if (!m_fault.reason.IsEmpty()) return;
    m_fault.reason = reason;
    if (m_pContext->inputNr == 0) return;
    const xmlParserInput& input = *m_pContext->inputTab[0];
    const auto offset = input.consumed + static_cast<unsigned long>(input.cur - input.base);
    m_fault.offset = static_cast<int>(std::min(offset, 0x7FFFFFFFul));
}

int DocumentParse::Read(void* context, char* buffer, int size) {
    DocumentParse& parse = *static_cast<DocumentParse*>(context);
    if (parse.m_failed) return 0;
    const std::size_t count = std::min(static_cast<std::size_t>(size), parse.m_text.size() - parse.m_read);
    std::memcpy(buffer, parse.m_text.data() + parse.m_read, count);
    parse.m_read += count;
    return static_cast<int>(count);
}

std::shared_ptr<XmlTree> DocumentParse::Run(const char* base, xmlDict* dictionary) {
    if (!TextHolds(m_text)) {
        m_fault.reason = "Too many attributes or alternatives";
        return nullptr;
    }
    const XmlMemoryWatch watch;
    const QuietErrors quiet;
    m_pContext = xmlNewParserCtxt();
    if (m_pContext == nullptr) throw std::bad_alloc();
    if (dictionary != nullptr) {
        xmlDictFree(m_pContext->dict);
        m_pContext->dict = dictionary;
        xmlDictReference(dictionary);
    }
    m_pContext->_private = this;
    SetHandlers();
    xmlDoc* const document = xmlCtxtReadIO(m_pContext, &Read, nullptr, this, base, "UTF-8", Options());
    m_tree->m_pDoc = document != nullptr ? document : m_pContext->myDoc;
    m_pContext->myDoc = nullptr;
    if (m_outOfMemory || watch.HasLacked()) throw std::bad_alloc();
    // A document that was built may have prefixes without declarations; what was loaded has none.
    const bool good =
        !m_failed && m_pContext->wellFormed != 0 && (m_use == ParseUse::Transform || m_namespacesGood);
    return good && document != nullptr && xmlDocGetRootElement(document) != nullptr ? m_tree : nullptr;
}

void DocumentParse::OnError(void* context, xmlError* error) {
    // A namespace may have any text for its address; the parser would have it look like one of the web.
    const bool matters = error->level >= XML_ERR_ERROR && error->code != XML_WAR_NS_URI;
    if (!matters || error->message == nullptr) return;
    DocumentParse& parse = From(context);
    parse.Guarded([&] {
        std::string reason(error->message);
        while (!reason.empty() && IsSpace(reason.back()))
            reason.pop_back();
        parse.Report(reason.c_str());
    });
    if (error->level == XML_ERR_FATAL) parse.m_failed = true;
    if (error->domain == XML_FROM_NAMESPACE) parse.m_namespacesGood = false;
}

// ---------------------------------------------------------------------------------------------------------
// Declarations and references

void DocumentParse::OnEntity(void* context, const xmlChar* name, int type, const xmlChar* publicId,
                             const xmlChar* systemId, xmlChar* content) {
    DocumentParse& parse = From(context);
    parse.m_limits.Forget();
    parse.m_pDeclared = content == nullptr ? nullptr : name;
    if (content != nullptr && !TextHolds(AsChars(content))) return parse.Refuse("Entity too complex");
    xmlChar nothing[] = "";
    const bool external = type == XML_EXTERNAL_GENERAL_PARSED_ENTITY || type == XML_EXTERNAL_PARAMETER_ENTITY;
    if (external && parse.m_use == ParseUse::Transform) {
        type = type == XML_EXTERNAL_PARAMETER_ENTITY ? XML_INTERNAL_PARAMETER_ENTITY
                                                     : XML_INTERNAL_GENERAL_ENTITY;
        xmlSAX2EntityDecl(context, name, type, nullptr, nullptr, nothing);
    } else {
        xmlSAX2EntityDecl(context, name, type, publicId, systemId, content);
    }
}

/// libxml2 frees the values by recursion, so too many are freed here.
void DocumentParse::OnAttributeDeclaration(void* context, const xmlChar* element, const xmlChar* name,
                                           int type, int defaultKind, const xmlChar* defaultValue,
                                           xmlEnumeration* values) {
    std::size_t count = 0;
    for (const xmlEnumeration* value = values; value != nullptr; value = value->next)
        ++count;
    if (count <= kMostAlternatives + 1) {
        xmlSAX2AttributeDecl(context, element, name, type, defaultKind, defaultValue, values);
        return;
    }
    while (values != nullptr) {
        xmlEnumeration* const first = std::exchange(values, values->next);
        first->next = nullptr;
        xmlFreeEnumeration(first);
    }
    From(context).Refuse("Too many alternatives");
}

/// An entity that nothing declares is an error even where the parser would excuse it, because an external
/// part might declare it: that part is never read.
xmlEntity* DocumentParse::FindEntity(void* context, const xmlChar* name) {
    DocumentParse& parse = From(context);
    if (parse.TakeDeclared(name)) return xmlSAX2GetEntity(context, name);
    xmlEntity* found = nullptr;
    if (!parse.m_failed)
        parse.Guarded([&] {
            xmlEntity* const entity = xmlSAX2GetEntity(context, name);
            std::size_t size = 0;
            if (entity == nullptr) {
                parse.Refuse((std::string("Entity '") + AsChars(name) + "' not defined").c_str());
            } else if (Context(context)->depth > kDeepestInput || !parse.m_limits.Admit(*entity, size)) {
                parse.Refuse("Detected an entity reference loop");
            } else {
                found = entity;
            }
        });
    // Otherwise the parser looks for itself.
    if (found == nullptr) Context(context)->wellFormed = 0;
    return found;
}

xmlEntity* DocumentParse::FindParameterEntity(void* context, const xmlChar* name) {
    DocumentParse& parse = From(context);
    if (parse.m_failed) return nullptr;
    xmlEntity* const entity = xmlSAX2GetParameterEntity(context, name);
    if (parse.TakeDeclared(name)) return entity;
    if (entity == nullptr || entity->content == nullptr) return entity;
    const std::string_view text(AsChars(entity->content));
    const auto count = [text](char c) {
        return static_cast<std::size_t>(std::count(text.begin(), text.end(), c));
    };
    parse.m_alternatives += count('|');
    parse.m_parentheses += count('(');
    if (Context(context)->depth <= kDeepestInput && Context(context)->inputNr <= kDeepestInput &&
        parse.m_alternatives <= kMostAlternatives && parse.m_parentheses <= kMostParentheses &&
        parse.m_limits.Charge(text.size()))
        return entity;
    parse.Refuse("Detected an entity reference loop");
    return nullptr;
}

std::shared_ptr<XmlTree> ParseXml(std::string_view bytes, ParseUse use, const char* base, ParseFault& fault,
                                  xmlDict* dictionary) {
    const QuietErrors quiet;
    fault = ParseFault();
    std::string storage;
    DecodedText decoded{bytes, "", 0};
    if (use == ParseUse::File && !Decode(bytes, storage, decoded, fault)) return nullptr;
    std::shared_ptr<XmlTree> tree = DocumentParse(decoded.text, use, fault).Run(base, dictionary);
    if (tree == nullptr) {
        if (fault.reason.IsEmpty()) fault.reason = "Malformed document";
        fault.offset = OffsetInSource(decoded, fault.offset);
        return nullptr;
    }
    fault = ParseFault();
    tree->m_encoding = DeclaredEncoding(decoded.text);
    if (!IsKnownEncoding(tree->m_encoding)) tree->m_encoding.clear();
    return tree;
}

bool ReadXmlFile(const char* path, std::string& bytes) {
    constexpr std::string_view kScheme = "file://", kHost = "localhost/";
    std::string_view name = path == nullptr ? "" : path;
    std::string address;
    if (name.starts_with(kScheme)) {
        name.remove_prefix(kScheme.size());
        if (name.starts_with(kHost)) name.remove_prefix(kHost.size() - 1);
        const std::string escaped(name);
        char* const plain = xmlURIUnescapeString(escaped.c_str(), 0, nullptr);
        if (plain == nullptr) return false;
        address = plain;
        xmlFree(plain);
        path = address.c_str();
    }
    return os::ReadWholeFile(path, bytes) == os::FileStatus::Ok;
}

}  // namespace brenta
