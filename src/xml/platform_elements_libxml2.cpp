// What happens when the parser meets an element: the limits of elements, and the node made of it.
#include <libxml/SAX2.h>

#include <string>

#include "xml/platform_parse_libxml2.h"

namespace brenta {

namespace {

/// Namespaces that are declared at one place: looking one up walks them.
constexpr std::size_t kMostNamespaces = 4096;

/// The parser hands each attribute over as five pointers, the name first.
constexpr std::ptrdiff_t kFields = 5, kPrefix = 1, kUri = 2, kValue = 3, kValueEnd = 4;

}  // namespace

void DocumentParse::OnStartElement(void* context, const xmlChar* name, const xmlChar* prefix,
                                   const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                                   int attributeCount, int defaultedCount, const xmlChar** attributes) {
    DocumentParse& parse = From(context);
    parse.Guarded([&] {
        if (parse.AdmitElement(Context(context), namespaceCount, attributeCount, defaultedCount,
                               attributes)) {
            parse.StartElement(Context(context), name, prefix, uri, namespaceCount, namespaces,
                               attributeCount, attributes);
        }
    });
    // Here, unlike elsewhere, the parser may lose its input at once.
    if (parse.m_failed) xmlStopParser(Context(context));
}

/// Attributes that a declaration adds to every element are charged as expansions are, and so is the parser's
/// comparing of each with all others.
bool DocumentParse::AdmitElement(xmlParserCtxt* context, int namespaceCount, int attributeCount,
                                 int defaultedCount, const xmlChar** attributes) {
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
void DocumentParse::StartElement(xmlParserCtxt* context, const xmlChar* name, const xmlChar* prefix,
                                 const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                                 int attributeCount, const xmlChar** attributes) {
    if (context != m_pContext) {
        xmlSAX2StartElementNs(context, name, prefix, uri, namespaceCount, namespaces, attributeCount, 0,
                              attributes);
        return;
    }
    const bool plain = uri == nullptr;  // then a prefix is an undeclared one, which belongs to the name
    m_plain.assign(attributes, attributes + attributeCount * kFields);
    const bool prefixed = HidePrefixes();
    xmlSAX2StartElementNs(context, name, plain ? prefix : nullptr, nullptr, namespaceCount, namespaces,
                          attributeCount, 0, m_plain.data());
    xmlNode* const element = context->node;
    if (element == nullptr || element->type != XML_ELEMENT_NODE) return;
    BindNamespaces(*element);
    if (!plain) element->ns = FindNamespace(prefix);
    if (prefixed) BindAttributes(*element, attributes);
    if (element->nsDef != nullptr && element->properties != nullptr) RecordPlaces(*element);
    if (!ValuesHold(*element)) Refuse("Value too long");
}

/// Takes the prefixes that are declared off the attributes in m_plain; whether there are any. That of "xml"
/// is declared nowhere and costs no walk.
bool DocumentParse::HidePrefixes() {
    bool any = false;
    const xmlChar** const end = m_plain.data() + m_plain.size();
    for (const xmlChar** attribute = m_plain.data(); attribute != end; attribute += kFields) {
        const bool declared = attribute[kPrefix] != nullptr && attribute[kUri] != nullptr &&
                              xmlStrEqual(attribute[kPrefix], AsXmlChars("xml")) == 0;
        if (!declared) continue;
        attribute[kPrefix] = attribute[kUri] = nullptr;
        any = true;
    }
    return any;
}

/// Gives the element's attributes the namespaces of the prefixes that were hidden.
void DocumentParse::BindAttributes(xmlNode& element, const xmlChar** attributes) {
    const xmlChar** plain = m_plain.data();
    for (xmlAttr* attribute = element.properties; attribute != nullptr; attribute = attribute->next) {
        if (plain == m_plain.data() + m_plain.size()) return;
        if (plain[kPrefix] == nullptr && attributes[kPrefix] != nullptr)
            attribute->ns = FindNamespace(attributes[kPrefix]);
        plain += kFields;
        attributes += kFields;
    }
}

void DocumentParse::BindNamespaces(xmlNode& element) {
    for (xmlNs* declaration = element.nsDef; declaration != nullptr; declaration = declaration->next) {
        m_namespaces.push_back(declaration);
        EscapeAddress(*declaration);
    }
}

/// The address of a namespace comes with its references to entities as they were written, and it is put out
/// as it stands: the other characters that need it are escaped here.
void DocumentParse::EscapeAddress(xmlNs& declaration) {
    const std::string_view address = declaration.href == nullptr ? "" : AsChars(declaration.href);
    if (m_use == ParseUse::Transform || address.find_first_of("<\n\r\t") == address.npos) return;
    std::string escaped;
    for (const char c : address) {
        if (c == '<' || c == '\n' || c == '\r' || c == '\t') {
            ((escaped += "&#") += std::to_string(static_cast<int>(c))) += ';';
        } else {
            escaped += c;
        }
    }
    xmlChar* const copy = xmlStrdup(AsXmlChars(escaped.c_str()));
    if (copy == nullptr) throw std::bad_alloc();
    xmlFree(const_cast<xmlChar*>(std::exchange(declaration.href, copy)));
}

xmlNs* DocumentParse::FindNamespace(const xmlChar* prefix) const {
    for (auto i = m_namespaces.rbegin(); i != m_namespaces.rend(); ++i)
        if (xmlStrEqual((*i)->prefix, prefix)) return *i;
    // The only prefix that needs no declaration.
    return xmlSearchNs(m_pContext->myDoc, m_pContext->node, prefix);
}

void DocumentParse::OnEndElement(void* context, const xmlChar* name, const xmlChar* prefix,
                                 const xmlChar* uri) {
    DocumentParse& parse = From(context);
    if (context == parse.m_pContext && parse.m_pContext->node != nullptr) {
        const xmlNs* declaration = parse.m_pContext->node->nsDef;
        for (; declaration != nullptr && !parse.m_namespaces.empty(); declaration = declaration->next)
            parse.m_namespaces.pop_back();
    }
    xmlSAX2EndElementNs(context, name, prefix, uri);
}

/// Where among the attributes the namespace declarations stand is only to be seen in the source: the parser
/// is just behind the tag's last attribute. No value can hold a "<".
void DocumentParse::RecordPlaces(xmlNode& element) {
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
bool DocumentParse::ValuesHold(const xmlNode& element) {
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

}  // namespace brenta
