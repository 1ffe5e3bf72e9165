// The SAX parser over libxml2, driven by its pull parser: it asks for bytes as it needs them, so that memory
// stays constant, and values of any length are scanned once.
//
// Eight rules keep hostile files harmless. When you edit this file:
//
// 1. Nothing outside the file is opened: no network, no external subset, no external entity. Replacing
//    entities (NOENT) would read files, so external general entities are declared as internal and empty, and
//    external parameter entities not at all.
// 2. The limits of the parser are off (HUGE), for deep files and long values, until a document type begins:
//    from there on its own checks stop entities that multiply.
// 3. The parser lets undefined entities pass if a subset was not read; here they end the parse.
// 4. Undeclared prefixes are no fault to the parser; the start of an element looks for them.
// 5. Entities with elements are parsed in a context of their own, which has _private in common with the
//    file's, and calls back with itself: default handlers must get that one, positions come from the file's.
// 6. No exception may pass through the parser's frames: it is kept, the parse stopped, and thrown after.
// 7. A stopped parser still calls back from contexts around the stopped one: events of a stopped parse end
//    at once.
// 8. What the parser takes quadratic time for is limited as in whole documents: the alternatives of a
//    declaration, the attributes of a tag, the defaults that declarations add. None of its callbacks comes
//    in time for the first two, so they are watched whenever it asks for more bytes.
#include <libxml/SAX2.h>
#include <libxml/parser.h>

#include <algorithm>
#include <exception>
#include <utility>
#include <vector>

#include "os/os.h"
#include "xml/platform_libxml2.h"
#include "xml/sax_source.h"

namespace brenta {

namespace {

constexpr std::size_t kBufferSize = 65536;
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

/// The bytes of a file in larger pieces than the parser asks for.
class Input {
 public:
    explicit Input(os::FileReader& file) : m_file(file), m_buffer(kBufferSize) { Fill(); }

    bool HasFailed() const { return m_failed; }
    bool StartsWithUtf8Mark() const { return m_rest.starts_with(kUtf8Mark); }

    /// As read() does.
    int Read(char* bytes, int size) {
        if (m_rest.empty()) Fill();
        if (m_failed) return -1;
        const std::size_t count = m_rest.copy(bytes, static_cast<std::size_t>(size));
        m_rest.remove_prefix(count);
        return static_cast<int>(count);
    }

 private:
    void Fill() {
        const std::ptrdiff_t count = m_file.Read(m_buffer.data(), m_buffer.size());
        m_failed = count < 0;
        m_rest = {m_buffer.data(), static_cast<std::size_t>(std::max<std::ptrdiff_t>(count, 0))};
    }

    os::FileReader& m_file;
    std::vector<char> m_buffer;
    std::string_view m_rest;
    bool m_failed = false;
};

struct FreeContext {
    void operator()(xmlParserCtxt* context) const {
        xmlFreeDoc(context->myDoc);
        xmlFreeParserCtxt(context);
    }
};

/// One parse of one file.
class SaxParse final : public ISAXLocator {
 public:
    SaxParse(os::FileReader& file, ISAXContentHandler& handler)
        : m_input(file), m_handler(handler), m_limits(file.Size()) {}

    bool Run();

    std::int64_t GetLineNumber() const override { return m_line; }
    std::int64_t GetColumnNumber() const override { return m_column; }

 private:
    static xmlSAXHandler MakeCallbacks();
    static void SetEvents(xmlSAXHandler& sax);
    static void SetDeclarations(xmlSAXHandler& sax);
    static SaxParse& Of(void* context) {
        return *static_cast<SaxParse*>(static_cast<xmlParserCtxt*>(context)->_private);
    }
    template <class Event>
    static void Tell(void* context, Event event);

    int Read(char* bytes, int size);
    void CountAlternatives(std::string_view text);
    xmlEntity* FindParameterEntity(void* context, const xmlChar* name);
    bool StartElement(const xmlParserCtxt& context, const xmlChar* name, int count, int defaulted,
                      const xmlChar** values);
    bool EndMarkup(int ahead = 0);
    bool FlushText();
    bool ConsumedAll() const;

    Input m_input;
    ISAXContentHandler& m_handler;
    EntityLimits m_limits;
    std::size_t m_alternatives = 0;          // of the declaration that is being read
    std::size_t m_expandedAlternatives = 0;  // of all parameter entities that were referred to
    bool m_inDocumentType = false;
    bool m_refused = false;
    bool m_faulty = false;
    std::unique_ptr<xmlParserCtxt, FreeContext> m_context;
    std::vector<SaxAttribute> m_attributes;
    std::int64_t m_line = 0;
    std::int64_t m_column = 0;
    bool m_textPending = false;
    bool m_stopped = false;
    std::exception_ptr m_thrown;
};

// ---------------------------------------------------------------------------------------------------------
// Limits

/// Hands bytes to the parser; none any more after something was refused, which it takes for a fault.
int SaxParse::Read(char* bytes, int size) {
    // The parser doubles its room of five pointers for each attribute of a tag.
    if (m_context != nullptr && m_context->maxatts > 2 * 5 * static_cast<int>(kMostAttributes + 1))
        m_refused = true;
    // Behind a fault the parser would look for more of them, and copy a comment for each that is in it.
    if (m_faulty) return 0;
    const int count = m_refused ? -1 : m_input.Read(bytes, size);
    if (m_inDocumentType && count > 0) CountAlternatives({bytes, static_cast<std::size_t>(count)});
    return m_refused ? -1 : count;
}

void SaxParse::CountAlternatives(std::string_view text) {
    for (const char c : text) {
        if (c == '<' || c == '>') m_alternatives = 0;
        if (c == '|' && ++m_alternatives > kMostAlternatives) m_refused = true;
    }
}

/// The alternatives of one declaration may stand in many entities.
xmlEntity* SaxParse::FindParameterEntity(void* context, const xmlChar* name) {
    xmlEntity* const entity = xmlSAX2GetParameterEntity(context, name);
    if (entity == nullptr || entity->content == nullptr) return entity;
    const std::string_view text(AsChars(entity->content));
    m_expandedAlternatives += static_cast<std::size_t>(std::count(text.begin(), text.end(), '|'));
    if (m_expandedAlternatives > kMostAlternatives) m_refused = true;
    return m_refused ? nullptr : entity;
}

// ---------------------------------------------------------------------------------------------------------
// Events

template <class Event>
void SaxParse::Tell(void* context, Event event) {
    auto* const parser = static_cast<xmlParserCtxt*>(context);
    SaxParse& parse = Of(parser);
    if (!parse.m_stopped) {
        try {
            parse.m_stopped = !event(parse, *parser);
        } catch (...) {
            parse.m_thrown = std::current_exception();
            parse.m_stopped = true;
        }
    }
    if (parse.m_stopped) xmlStopParser(parser);
}

/// Text comes from the parser in pieces and is told as one, when the markup behind it is met: until then the
/// position is the one at which the text began.
bool SaxParse::FlushText() {
    return !std::exchange(m_textPending, false) || m_handler.Characters();
}

/// Remembers where the markup that was just told ends; `ahead` are bytes that the parser has yet to take.
/// Columns are counted as unsigned: a line may be longer than two gigabytes.
bool SaxParse::EndMarkup(int ahead) {
    const xmlParserInput* const input = m_context->input;
    if (input == nullptr) return true;
    m_line = input->line;
    m_column = static_cast<std::int64_t>(static_cast<unsigned int>(input->col)) + ahead;
    return true;
}

bool SaxParse::StartElement(const xmlParserCtxt& context, const xmlChar* name, int count, int defaulted,
                            const xmlChar** values) {
    m_inDocumentType = false;
    // The parser has compared each of these with all others.
    const std::size_t cost = static_cast<std::size_t>(defaulted) * static_cast<std::size_t>(count) / 8;
    if (!context.nsWellFormed || m_refused || !m_limits.Charge(cost) || !FlushText()) return false;
    m_attributes.clear();
    for (int i = 0; i < count; ++i, values += 5) {  // name, prefix, namespace, start and end of the value
        const auto length = static_cast<std::size_t>(values[4] - values[3]);
        m_attributes.push_back({AsChars(values[0]), {AsChars(values[3]), length}});
    }
    // The tag's ">" is yet to come. An empty element's "/>" is behind the parser when it tells the end.
    return m_handler.StartElement(AsChars(name), m_attributes) && EndMarkup(1);
}

xmlSAXHandler SaxParse::MakeCallbacks() {
    xmlSAXHandler sax{};
    xmlSAXVersion(&sax, 2);
    // What would only build a tree, or open something.
    sax.reference = nullptr;
    sax.externalSubset = nullptr;
    sax.resolveEntity = nullptr;
    sax.attributeDecl = nullptr;
    sax.elementDecl = nullptr;
    sax.notationDecl = nullptr;
    sax.setDocumentLocator = nullptr;
    sax.endDocument = nullptr;
    sax.warning = nullptr;
    sax.error = nullptr;
    sax.serror = [](void* context, xmlError* error) {
        // A parser that is still being made belongs to nobody.
        void* const parse = static_cast<xmlParserCtxt*>(context)->_private;
        if (parse != nullptr && error->level == XML_ERR_FATAL) static_cast<SaxParse*>(parse)->m_faulty = true;
    };

    SetEvents(sax);
    SetDeclarations(sax);
    return sax;
}

/// What the handler is told of.
void SaxParse::SetEvents(xmlSAXHandler& sax) {
    sax.startDocument = [](void* context) {
        xmlSAX2StartDocument(context);
        Tell(context, [](SaxParse& parse, auto&) { return parse.m_handler.StartDocument(); });
    };
    sax.startElementNs = [](void* context, const xmlChar* name, const xmlChar*, const xmlChar*, int,
                            const xmlChar**, int count, int defaulted, const xmlChar** values) {
        Tell(context, [&](SaxParse& parse, const xmlParserCtxt& parser) {
            return parse.StartElement(parser, name, count, defaulted, values);
        });
    };
    sax.endElementNs = [](void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
        Tell(context, [](SaxParse& parse, auto&) {
            return parse.FlushText() && parse.m_handler.EndElement() && parse.EndMarkup();
        });
    };
    sax.characters = [](void* context, const xmlChar*, int) { Of(context).m_textPending = true; };
    sax.ignorableWhitespace = sax.characters;
    sax.cdataBlock = sax.characters;
    sax.comment = [](void* context, const xmlChar*) {
        Tell(context, [](SaxParse& parse, auto&) { return parse.FlushText() && parse.EndMarkup(); });
    };
    sax.processingInstruction = [](void* context, const xmlChar*, const xmlChar*) {
        Tell(context, [](SaxParse& parse, auto&) { return parse.FlushText() && parse.EndMarkup(); });
    };
}

/// What the document type declares, and what refers to it.
void SaxParse::SetDeclarations(xmlSAXHandler& sax) {
    sax.internalSubset = [](void* context, const xmlChar* name, const xmlChar* publicId,
                            const xmlChar* systemId) {
        static_cast<xmlParserCtxt*>(context)->options &= ~XML_PARSE_HUGE;
        Of(context).m_inDocumentType = true;
        xmlSAX2InternalSubset(context, name, publicId, systemId);
    };
    sax.entityDecl = [](void* context, const xmlChar* name, int type, const xmlChar* publicId,
                        const xmlChar* systemId, xmlChar* content) {
        xmlChar empty[] = {0};
        if (content != nullptr && !TextHolds(AsChars(content))) Of(context).m_refused = true;
        if (type == XML_EXTERNAL_PARAMETER_ENTITY) return;
        if (type == XML_EXTERNAL_GENERAL_PARSED_ENTITY) {
            xmlSAX2EntityDecl(context, name, XML_INTERNAL_GENERAL_ENTITY, nullptr, nullptr, empty);
        } else {
            xmlSAX2EntityDecl(context, name, type, publicId, systemId, content);
        }
    };
    sax.getEntity = [](void* context, const xmlChar* name) {
        xmlEntity* const entity = xmlSAX2GetEntity(context, name);
        const bool undefined = entity == nullptr && static_cast<xmlParserCtxt*>(context)->inSubset == 0;
        if (undefined) Tell(context, [](SaxParse&, auto&) { return false; });
        return entity;
    };
    sax.getParameterEntity = [](void* context, const xmlChar* name) {
        return Of(context).FindParameterEntity(context, name);
    };
}

// ---------------------------------------------------------------------------------------------------------
// The parse

/// The parser takes a NUL behind the root for the end of the file.
bool SaxParse::ConsumedAll() const {
    const xmlParserInput* const input = m_context->input;
    return input != nullptr && input->cur >= input->end;
}

bool SaxParse::Run() {
    static const xmlSAXHandler kCallbacks = MakeCallbacks();
    xmlSAXHandler callbacks = kCallbacks;
    ReadyXmlThread();
    m_context.reset(xmlCreateIOParserCtxt(
        &callbacks, nullptr,
        [](void* self, char* bytes, int size) { return static_cast<SaxParse*>(self)->Read(bytes, size); },
        nullptr, this, XML_CHAR_ENCODING_NONE));
    if (m_context == nullptr) return false;
    m_context->_private = this;
    int options = XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_HUGE;
    // A mark says more than the declaration behind it.
    if (m_input.StartsWithUtf8Mark()) options |= XML_PARSE_IGNORE_ENC;
    xmlCtxtUseOptions(m_context.get(), options);

    m_handler.PutDocumentLocator(this);
    xmlParseDocument(m_context.get());
    if (m_thrown) std::rethrow_exception(m_thrown);
    const bool wellFormed = m_context->wellFormed && m_context->nsWellFormed;
    return wellFormed && !m_stopped && !m_refused && !m_input.HasFailed() && ConsumedAll() &&
           m_handler.EndDocument();
}

class LibXml2SaxReader final : public ISAXXMLReader {
 public:
    bool PutContentHandler(ISAXContentHandler* handler) override {
        m_pHandler = handler;
        return true;
    }

    bool ParseURL(const char* path) override {
        os::FileReader file;
        return m_pHandler != nullptr && file.Open(path) && SaxParse(file, *m_pHandler).Run();
    }

 private:
    ISAXContentHandler* m_pHandler = nullptr;
};

}  // namespace

std::unique_ptr<ISAXXMLReader> MakeSaxReader() {
    return std::make_unique<LibXml2SaxReader>();
}

}  // namespace brenta
