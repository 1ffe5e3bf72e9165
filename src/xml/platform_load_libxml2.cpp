// Parsing with libxml2: which options, which limits, and what happens at each event.
//
// Options. NONET and the handlers below keep the parser from opening anything: without NOENT, DTDLOAD,
// DTDATTR and DTDVALID it follows no reference to a file, and where NOENT is wanted (for XSLT), external
// entities are declared as empty internal ones. HUGE takes away the limits on nesting and on the length of
// values, which the library's own files exceed, but also the guard against entities that expand without
// bound; that one is EntityLimits.
//
// Where libxml2 itself recurses or is quadratic in something that a file can make large, the text is looked
// through beforehand (TextLimits) or the event is refused.
#include <libxml/SAX2.h>
#include <libxml/parserInternals.h>
#include <libxml/uri.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <utility>

#include "foundation/characters.h"
#include "os/os.h"
#include "xml/platform_libxml2.h"

namespace brenta {

namespace {

/// Attributes of one tag: libxml2 compares each with all others.
constexpr std::size_t kMostAttributes = 100'000;
/// Alternatives and levels of one declaration, which libxml2 frees and reads by recursion.
constexpr std::size_t kMostAlternatives = 5000;
constexpr std::size_t kMostParentheses = 250;
/// Open inputs and nested replacements, for which libxml2 recurses.
constexpr int kDeepestInput = 40;
/// Namespaces that are declared at one place: looking one up walks them.
constexpr std::size_t kMostNamespaces = 4096;

// ---------------------------------------------------------------------------------------------------------
// Looking through a text before it is parsed

/// Looks for tags and declarations that are beyond the limits, at the speed of a search for "<". What is
/// malformed may be misread here, which the parser will refuse anyway.
class TextLimits {
 public:
    explicit TextLimits(std::string_view text) : m_text(text) {}

    bool Hold() {
        while ((m_at = m_text.find('<', m_at)) != m_text.npos) {
            ++m_at;
            if (Skips("!--", "-->") || Skips("![CDATA[", "]]>") || Skips("?", "?>")) continue;
            if (!MarkupHolds()) return false;
        }
        return true;
    }

 private:
    bool Skips(std::string_view start, std::string_view end) {
        if (m_text.compare(m_at, start.size(), start) != 0) return false;
        const std::size_t found = m_text.find(end, m_at + start.size());
        m_at = found == m_text.npos ? m_text.size() : found + end.size();
        return true;
    }

    /// A tag or a declaration up to its ">"; one of the document type up to its subset only.
    bool MarkupHolds() {
        std::size_t quoted = 0, alternatives = 0, parentheses = 0;
        const bool declaration = m_text.compare(m_at, 1, "!") == 0;
        for (; m_at < m_text.size(); ++m_at) {
            if (!kStops[static_cast<unsigned char>(m_text[m_at])]) continue;
            const char c = m_text[m_at];
            if (c == '>' || (c == '[' && declaration)) return true;
            if (c == '<') return true;
            if (c == '|' && ++alternatives > kMostAlternatives) return false;
            if (c == '(' && ++parentheses > kMostParentheses) return false;
            if (c != '"' && c != '\'') continue;
            if (++quoted > kMostAttributes) return false;
            m_at = std::min(m_text.find(c, m_at + 1), m_text.size() - 1);
        }
        return true;
    }

    static constexpr auto kStops = [] {
        std::array<bool, 256> stops{};
        for (const char c : {'"', '\'', '<', '>', '|', '(', '['})
            stops[static_cast<unsigned char>(c)] = true;
        return stops;
    }();

    std::string_view m_text;
    std::size_t m_at = 0;
};

// ---------------------------------------------------------------------------------------------------------
// The parse

/// One run of the parser. Parsers that libxml2 makes for the text of entities share its handlers, and find it
/// through `_private`, too.
class Parse {
 public:
    Parse(std::string_view text, ParseUse use, ParseFault& fault)
        : m_text(text),
          m_use(use),
          m_fault(fault),
          m_limits(text.size()),
          m_tree(std::make_shared<XmlTree>()) {}
    ~Parse() { xmlFreeParserCtxt(m_pContext); }
    Parse(const Parse&) = delete;
    Parse& operator=(const Parse&) = delete;

    std::shared_ptr<XmlTree> Run(const char* base, xmlDict* dictionary);

 private:
    static xmlParserCtxt* Context(void* context) { return static_cast<xmlParserCtxt*>(context); }
    static Parse& From(void* context) { return *static_cast<Parse*>(Context(context)->_private); }

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
    xmlNs* FindNamespace(const xmlChar* prefix) const;
    void BindNamespaces(xmlNode& element);
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
    bool m_failed = false;
    bool m_outOfMemory = false;
};

int Parse::Options() const {
    const int options =
        XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE | XML_PARSE_IGNORE_ENC;
    return options | (m_use == ParseUse::Transform ? XML_PARSE_NOENT | XML_PARSE_NOCDATA : XML_PARSE_COMPACT);
}

void Parse::SetHandlers() {
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
void Parse::Refuse(const char* reason) {
    Report(reason);
    m_failed = true;
    m_pContext->wellFormed = 0;
    m_pContext->disableSAX = 1;
}

/// Keeps the first message. The position is that in the document, not in the text of an entity.
void Parse::Report(const char* reason) {
    if (!m_fault.reason.IsEmpty()) return;
    m_fault.reason = reason;
    if (m_pContext->inputNr == 0) return;
    const xmlParserInput& input = *m_pContext->inputTab[0];
    const auto offset = input.consumed + static_cast<unsigned long>(input.cur - input.base);
    m_fault.offset = static_cast<int>(std::min(offset, 0x7FFFFFFFul));
}

int Parse::Read(void* context, char* buffer, int size) {
    Parse& parse = *static_cast<Parse*>(context);
    if (parse.m_failed) return 0;
    const std::size_t count = std::min(static_cast<std::size_t>(size), parse.m_text.size() - parse.m_read);
    std::memcpy(buffer, parse.m_text.data() + parse.m_read, count);
    parse.m_read += count;
    return static_cast<int>(count);
}

std::shared_ptr<XmlTree> Parse::Run(const char* base, xmlDict* dictionary) {
    if (!TextLimits(m_text).Hold()) {
        m_fault.reason = "Too many attributes or alternatives";
        return nullptr;
    }
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
    if (m_outOfMemory || m_pContext->errNo == XML_ERR_NO_MEMORY) throw std::bad_alloc();
    // A document that was built may have prefixes without declarations; what was loaded has none.
    const bool good =
        !m_failed && m_pContext->wellFormed != 0 &&
        (m_use == ParseUse::Built || m_use == ParseUse::Transform || m_pContext->nsWellFormed != 0);
    return good && document != nullptr && xmlDocGetRootElement(document) != nullptr ? m_tree : nullptr;
}

void Parse::OnError(void* context, xmlError* error) {
    if (error->level < XML_ERR_ERROR || error->message == nullptr) return;
    Parse& parse = From(context);
    // Errors of namespaces do not stop the parser; whether they count is asked at the end.
    parse.Guarded([&] {
        std::string reason(error->message);
        while (!reason.empty() && IsSpace(reason.back()))
            reason.pop_back();
        parse.Report(reason.c_str());
    });
    parse.m_failed = parse.m_failed || error->level == XML_ERR_FATAL;
}

// ---------------------------------------------------------------------------------------------------------
// Elements

void Parse::OnStartElement(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                           int namespaceCount, const xmlChar** namespaces, int attributeCount,
                           int defaultedCount, const xmlChar** attributes) {
    Parse& parse = From(context);
    parse.Guarded([&] {
        if (parse.AdmitElement(Context(context), namespaceCount, attributeCount, defaultedCount,
                               attributes)) {
            parse.StartElement(Context(context), name, prefix, uri, namespaceCount, namespaces,
                               attributeCount, attributes);
        }
    });
}

/// Attributes that a declaration adds to every element are charged as expansions are, and so is the parser's
/// comparing of each with all others.
bool Parse::AdmitElement(xmlParserCtxt* context, int namespaceCount, int attributeCount, int defaultedCount,
                         const xmlChar** attributes) {
    constexpr int kFields = 5, kValue = 3, kValueEnd = 4;
    const bool bounded = m_use == ParseUse::Transform || context != m_pContext;
    if (bounded && context->nameNr > kDeepestTransform) {
        Refuse("Nested too deeply");
        return false;
    }
    std::size_t cost = 0;
    for (int i = attributeCount - defaultedCount; i < attributeCount; ++i) {
        const xmlChar** const attribute = attributes + i * kFields;
        cost += static_cast<std::size_t>(attribute[kValueEnd] - attribute[kValue]) + 16;
    }
    cost += static_cast<std::size_t>(defaultedCount) * static_cast<std::size_t>(attributeCount) / 8;
    const std::size_t open = m_namespaces.size() + static_cast<std::size_t>(namespaceCount);
    if (m_limits.Charge(cost) && open <= kMostNamespaces) return true;
    Refuse("Too many default attributes or namespaces");
    return false;
}

/// The default handler looks each namespace up by walking the ancestors, which takes quadratic time where
/// elements nest deeply. So it is handed no prefixes, and the namespaces are set here. Default attributes
/// are handed to it as if they had been written, since it leaves them out otherwise.
void Parse::StartElement(xmlParserCtxt* context, const xmlChar* name, const xmlChar* prefix,
                         const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                         int attributeCount, const xmlChar** attributes) {
    constexpr int kFields = 5;
    if (context != m_pContext) {
        xmlSAX2StartElementNs(context, name, prefix, uri, namespaceCount, namespaces, attributeCount, 0,
                              attributes);
        return;
    }
    const bool plain = uri == nullptr;  // then a prefix is an undeclared one, which belongs to the name
    bool prefixed = false;
    m_plain.assign(attributes, attributes + attributeCount * kFields);
    for (int i = 0; i < attributeCount; ++i) {
        const xmlChar** const attribute = m_plain.data() + i * kFields;
        if (attribute[1] == nullptr || attribute[2] == nullptr ||
            xmlStrEqual(attribute[1], AsXmlChars("xml")))
            continue;
        attribute[1] = attribute[2] = nullptr;
        prefixed = true;
    }
    xmlSAX2StartElementNs(context, name, plain ? prefix : nullptr, nullptr, namespaceCount, namespaces,
                          attributeCount, 0, m_plain.data());
    xmlNode* const element = context->node;
    if (element == nullptr || element->type != XML_ELEMENT_NODE) return;
    BindNamespaces(*element);
    if (!plain) element->ns = FindNamespace(prefix);
    if (prefixed) {
        xmlAttr* attribute = element->properties;
        for (int i = 0; i < attributeCount && attribute != nullptr; ++i, attribute = attribute->next)
            if (m_plain[static_cast<std::size_t>(i * kFields) + 1] == nullptr &&
                attributes[i * kFields + 1] != nullptr)
                attribute->ns = FindNamespace(attributes[i * kFields + 1]);
    }
    if (element->nsDef != nullptr && element->properties != nullptr) RecordPlaces(*element);
    if (!ValuesHold(*element)) Refuse("Value too long");
}

void Parse::BindNamespaces(xmlNode& element) {
    for (xmlNs* declaration = element.nsDef; declaration != nullptr; declaration = declaration->next)
        m_namespaces.push_back(declaration);
}

xmlNs* Parse::FindNamespace(const xmlChar* prefix) const {
    for (auto i = m_namespaces.rbegin(); i != m_namespaces.rend(); ++i)
        if (xmlStrEqual((*i)->prefix, prefix)) return *i;
    // The only prefix that needs no declaration.
    return xmlSearchNs(m_pContext->myDoc, m_pContext->node, prefix);
}

void Parse::OnEndElement(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri) {
    Parse& parse = From(context);
    if (context == parse.m_pContext && parse.m_pContext->node != nullptr) {
        const xmlNs* declaration = parse.m_pContext->node->nsDef;
        for (; declaration != nullptr && !parse.m_namespaces.empty(); declaration = declaration->next)
            parse.m_namespaces.pop_back();
    }
    xmlSAX2EndElementNs(context, name, prefix, uri);
}

/// Where among the attributes the namespace declarations stand is only to be seen in the source: the parser
/// is just behind the tag's last attribute. No value can hold a "<".
void Parse::RecordPlaces(xmlNode& element) {
    const xmlParserInput& input = *m_pContext->input;
    const xmlChar* start = input.cur;
    while (start > input.base && *start != '<')
        --start;
    std::string_view tag(AsChars(start), static_cast<std::size_t>(input.cur - start));
    std::vector<std::uint32_t> places{0};
    std::size_t at = tag.find_first_of(" \t\r\n");
    for (std::uint32_t place = 0;;) {
        at = tag.find_first_not_of(" \t\r\n", at);
        const std::size_t quote = at == tag.npos ? at : tag.find_first_of("\"'", at);
        if (quote == tag.npos) break;
        const std::string_view name = tag.substr(at, tag.find_first_of("= \t\r\n", at) - at);
        // The parser drops the declaration of the prefix that everyone knows.
        if (name == "xmlns" || (name.starts_with("xmlns:") && name != "xmlns:xml")) places.push_back(place);
        if (name != "xmlns:xml") ++place;
        at = tag.find(tag[quote], quote + 1);
        if (at == tag.npos) break;
        ++at;
    }
    places[0] = static_cast<std::uint32_t>(places.size() - 1);
    std::vector<std::uint32_t>& all = m_tree->m_places;
    element._private = reinterpret_cast<void*>(all.size() + 1);
    all.insert(all.end(), places.begin(), places.end());
}

/// Each reference is admitted already; a value may have many.
bool Parse::ValuesHold(const xmlNode& element) {
    if (m_use == ParseUse::Transform || element.doc->intSubset == nullptr) return true;
    for (const xmlAttr* attribute = element.properties; attribute != nullptr; attribute = attribute->next) {
        std::size_t total = 0;
        for (const xmlNode* part = attribute->children; part != nullptr; part = part->next) {
            if (part->type != XML_ENTITY_REF_NODE) continue;
            const xmlEntity* entity = xmlGetDocEntity(element.doc, part->name);
            if (entity != nullptr) total += m_limits.SizeOf(*entity);
            if (total > kLongestExpansion) return false;
        }
    }
    return true;
}

// ---------------------------------------------------------------------------------------------------------
// Declarations and references

void Parse::OnEntity(void* context, const xmlChar* name, int type, const xmlChar* publicId,
                     const xmlChar* systemId, xmlChar* content) {
    Parse& parse = From(context);
    parse.m_limits.Forget();
    parse.m_pDeclared = content == nullptr ? nullptr : name;
    if (content != nullptr && !TextLimits(AsChars(content)).Hold()) return parse.Refuse("Entity too complex");
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
void Parse::OnAttributeDeclaration(void* context, const xmlChar* element, const xmlChar* name, int type,
                                   int defaultKind, const xmlChar* defaultValue, xmlEnumeration* values) {
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
xmlEntity* Parse::FindEntity(void* context, const xmlChar* name) {
    Parse& parse = From(context);
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

xmlEntity* Parse::FindParameterEntity(void* context, const xmlChar* name) {
    Parse& parse = From(context);
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

}  // namespace

std::shared_ptr<XmlTree> ParseXml(std::string_view bytes, ParseUse use, const char* base, ParseFault& fault,
                                  xmlDict* dictionary) {
    fault = ParseFault();
    std::string storage;
    DecodedText decoded{bytes, "", 0};
    if (use == ParseUse::File && !Decode(bytes, storage, decoded, fault)) return nullptr;
    std::shared_ptr<XmlTree> tree = Parse(decoded.text, use, fault).Run(base, dictionary);
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
