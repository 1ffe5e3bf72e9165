// What the files of the libxml2 backend share: parsed trees, the parser over them, the values of attributes,
// and the two writers. Only *_libxml2.cpp may include this header.
#pragma once

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "xml/platform_document.h"
#include "xml/platform_memory_libxml2.h"

namespace brenta {

inline const char* AsChars(const xmlChar* text) {
    return reinterpret_cast<const char*>(text);
}
inline const xmlChar* AsXmlChars(const char* text) {
    return reinterpret_cast<const xmlChar*>(text);
}

/// While it lives, libxml2 writes nothing to standard error on this thread, which it does for what it cannot
/// convert and when memory runs out. The thread's own handler is put back. May throw std::bad_alloc.
class QuietErrors {
 public:
    QuietErrors() {
        ReadyXmlThread();
        m_previous = xmlStructuredError;
        m_pContext = xmlStructuredErrorContext;
        xmlSetStructuredErrorFunc(nullptr, [](void*, xmlError*) {});
    }
    ~QuietErrors() { xmlSetStructuredErrorFunc(m_pContext, m_previous); }
    QuietErrors(const QuietErrors&) = delete;
    QuietErrors& operator=(const QuietErrors&) = delete;

 private:
    xmlStructuredErrorFunc m_previous;
    void* m_pContext;
};

/// A parsed document. The platform document and the nodes handed out share it.
class XmlTree {
 public:
    XmlTree() = default;
    XmlTree(const XmlTree&) = delete;
    XmlTree& operator=(const XmlTree&) = delete;
    ~XmlTree() { xmlFreeDoc(m_pDoc); }

    xmlDoc* m_pDoc = nullptr;
    std::string m_encoding;  ///< the declared one; "" if there is none, or none that can be written
    /// libxml2 keeps namespace declarations apart from the other attributes. For an element that has both,
    /// their places among all: the number of declarations, then each one's place. `_private` of the node
    /// holds the index behind the number's; null stands for declarations first.
    std::vector<std::uint32_t> m_places;
};

/// platform_nodes_libxml2.cpp: steps through the attributes of an element in document order, namespace
/// declarations among them.
class AttributeWalk {
 public:
    AttributeWalk(const XmlTree& tree, const xmlNode& element);

    bool AtEnd() const { return m_pDeclaration == nullptr && m_pAttribute == nullptr; }
    void Next();

    /// The name's two parts; the first is null if there is no prefix.
    const xmlChar* Prefix() const;
    const xmlChar* LocalName() const;
    /// The value, entities expanded; valid until the next step or call.
    std::string_view Value();

 private:
    bool AtDeclaration() const {
        return m_pDeclaration != nullptr && (m_pAttribute == nullptr || m_place == NextDeclarationPlace());
    }
    std::uint32_t NextDeclarationPlace() const;

    xmlDoc* m_pDocument;
    const xmlNs* m_pDeclaration;
    const xmlAttr* m_pAttribute;
    const std::uint32_t* m_pPlaces = nullptr;
    std::uint32_t m_placesLeft = 0;
    std::uint32_t m_place = 0;
    std::string m_value;
};

/// A node for others to hold, with one user; null for null.
IXMLDOMElement* MakeElementNode(const std::shared_ptr<XmlTree>& tree, const xmlNode* element);

/// Makes the library's elements and appends them. May throw std::bad_alloc; then nothing is appended.
void ReadTree(const XmlTree& tree, TOrderedList<CCoreXmlDomElement*>& out);

// ---------------------------------------------------------------------------------------------------------
// Reading (platform_load_libxml2.cpp)

enum class ParseUse {
    File,       ///< a file: its mark and its declaration give the encoding
    Text,       ///< a text in UTF-8, whatever it declares
    Transform,  ///< the same for XSLT: entities replaced, CDATA as text, at most kDeepestTransform levels
};

/// XSLT recurses by depth; deeper documents are not transformed.
inline constexpr int kDeepestTransform = 3000;

/// Parses a document without opening any file. Null if it is malformed or beyond the limits; `fault` then
/// says why. May throw std::bad_alloc. `base` is the address that relative ones refer to.
/// The names go into `dictionary` if there is one.
std::shared_ptr<XmlTree> ParseXml(std::string_view bytes, ParseUse use, const char* base, ParseFault& fault,
                                  xmlDict* dictionary = nullptr);

/// Reads a regular file, whose name may come as a "file://" address.
bool ReadXmlFile(const char* path, std::string& bytes);

// ---------------------------------------------------------------------------------------------------------
// Encodings (platform_encoding_libxml2.cpp)

/// A document in UTF-8, without mark.
struct DecodedText {
    std::string_view text;
    std::string encoding;  ///< that it came in; "" for UTF-8
    std::size_t markSize;
};

/// Brings a document into UTF-8, by its mark, its first bytes or its declaration. `storage` keeps the text if
/// that is not a part of `bytes`. False, and a reason, if that is not possible.
bool Decode(std::string_view bytes, std::string& storage, DecodedText& decoded, ParseFault& fault);

/// Where in the bytes as they came a position of the decoded text lies.
int OffsetInSource(const DecodedText& decoded, int offset);

/// The encoding that the declaration of a document in UTF-8 names; "" if it names none.
std::string DeclaredEncoding(std::string_view text);

/// Whether a text can be brought into this encoding.
bool IsKnownEncoding(const std::string& encoding);

/// UTF-8 brought into an encoding, what it lacks as character references; false if that is not possible.
bool Encode(std::string_view text, const std::string& encoding, std::string& out);

// ---------------------------------------------------------------------------------------------------------
// Limits (platform_limits_libxml2.cpp)

/// Limits what the references of one document expand to: a short chain of entities can stand for gigabytes.
class EntityLimits {
 public:
    explicit EntityLimits(std::size_t documentSize);

    /// Whether `size` more bytes are within the document's budget.
    bool Charge(std::size_t size);
    /// Whether a reference may be expanded: no loop, no depth, no more than the limits. `size` becomes what
    /// it expands to.
    bool Admit(const xmlEntity& entity, std::size_t& size);
    /// The size of an entity that was admitted; 0 for any other.
    std::size_t SizeOf(const xmlEntity& entity) const;
    /// A declaration came: what is known of others that refer to it does not hold any more.
    void Forget() { m_sizes.clear(); }

 private:
    struct Open;
    bool Step(std::vector<Open>& open);

    std::size_t m_budget;
    std::unordered_map<const xmlEntity*, std::size_t> m_sizes;
};

/// No value may be longer than this after the expansion of its references.
inline constexpr std::size_t kLongestExpansion = 10'000'000;

/// Appends the text of a value with each reference replaced by what it stands for.
void AppendExpanded(xmlDoc* document, std::string_view text, std::string& out);

/// Attributes of one tag: libxml2 compares each with all others.
inline constexpr std::size_t kMostAttributes = 100'000;

/// Alternatives and parentheses of one declaration, which libxml2 frees and reads by recursion.
inline constexpr std::size_t kMostAlternatives = 5000;
inline constexpr std::size_t kMostParentheses = 250;

/// Whether a text has no tag or declaration that libxml2 would take too long for, or too deep a stack.
bool TextHolds(std::string_view text);

// ---------------------------------------------------------------------------------------------------------
// Writing (platform_write_libxml2.cpp)

/// The text of a parsed document in UTF-8, without declaration.
std::string WriteTree(const XmlTree& tree);

/// A declaration and a line end, or "" for a document that has none. `encoding` may be "".
std::string WriteDeclaration(const XmlTree& tree, const std::string& encoding);

/// The output function for libxml2 whose context is a std::string.
int AppendToString(void* text, const char* bytes, int size);

/// Appends nodes of a document that is being built, as text; false if the node is refused.
bool WriteInstruction(std::string& out, std::string_view target, const char* data);
bool WriteComment(std::string& out, const char* text);
bool WriteElement(std::string& out, const CCoreXmlDomElement& element);

// ---------------------------------------------------------------------------------------------------------
// Transforming (platform_transform_libxml2.cpp)

/// What a stylesheet makes of a document, both given as text; "" if it fails. `sheetPath` is what the sheet's
/// includes are relative to.
std::string TransformXml(const std::string& document, const std::string& sheet, const std::string& sheetPath);

}  // namespace brenta
