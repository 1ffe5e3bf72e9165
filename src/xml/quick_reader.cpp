// The quick reader: strict XML without character data.
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "brenta/framework.h"
#include "brenta/xml_readers.h"
#include "xml/file_text.h"
#include "xml/scanner.h"
#include "xml/tree_builder.h"

namespace brenta {

namespace {

constexpr char kBadFormat[] = "Bad XML format.";
constexpr char kUnexpectedEnd[] = "Unexpected end-of-file.";
constexpr char kExpectingClose[] = "Expecting '>' after empty element '/'";
constexpr char kBadAttribute[] = "Not a valid attribute.";
constexpr char kMissingQuote[] = "Missing quote for attribute value.";
constexpr char kMismatchedEnd[] = "Mismatched end tag.";
constexpr char kInnerText[] = "Inner text not valid in this reader.";
constexpr char kSyntaxError[] = "Syntax error.";

/// One parse of one text. It needs no stack: an element is in its place in the tree from its start on, and
/// its parent is known there.
///
///     document    := (blank | skipped | element)*
///     skipped     := "<" ("?" | "!") ... ">"
///     element     := "<" blank* tag ( "/>" | ">" content | low attribute* ("/>" | ">" content) )
///     attribute   := blank* name low* "=" blank* '"' value '"'
///     content     := (blank | skipped | element)* "</" tag ">"
///
/// An operation that meets a fault shows its message and answers false.
///
/// What of the text is in memory ends at m_pEnd with a NUL; when the position comes there, more is read if
/// there is more (file_text.h), and the pieces that are looked at, from m_pStart on, move.
class QuickParse {
 public:
    /// Of a text in memory.
    explicit QuickParse(const char* text) : m_pStart(text), m_pEnd(text + std::strlen(text)) {}
    /// Of a file.
    explicit QuickParse(FileText& file) : m_pFile(&file) {}
    ~QuickParse();
    QuickParse(const QuickParse&) = delete;
    QuickParse& operator=(const QuickParse&) = delete;

    bool ReadDocument();
    TOrderedList<CCoreXmlDomElement*> TakeElements() { return std::move(m_elements); }

 private:
    // The text
    bool ReadOn() { return m_pFile != nullptr && m_pFile->ReadOn(m_pStart, m_p, m_pEnd); }
    bool AtEnd() { return m_p == m_pEnd && !ReadOn(); }
    char Look();
    char LookAhead();
    void Skip(ByteClass skipped);
    template <class Find>
    bool Pass(Find find);
    template <class Find>
    bool PassPiece(Find find);
    std::string_view Passed() const { return Piece(m_pStart, m_p); }

    // The grammar
    bool Fault(const char* message);
    bool ReadTree();
    bool SkipMark();
    bool ReadElement();
    bool ReadStartTag(bool& empty);
    bool ReadAttributes(bool& empty);
    bool ReadAttribute();
    bool ReadAttributeName(STRID& name);
    bool ReadValue(std::string_view& value);
    bool ReadEndTag();
    bool PassTagOf(const CCoreXmlDomElement& element);
    void Close();

    FileText* const m_pFile = nullptr;
    const char* m_pStart = "";
    const char* m_p = m_pStart;
    const char* m_pEnd = m_pStart;
    PieceInterner m_names{Entities::Xml};
    TreeBuilder m_builder;
    AttributeSetter m_attributes{m_builder};
    CCoreXmlDomElement* m_pCurrent = nullptr;  // the innermost element that was made and has not ended
    std::size_t m_depth = 0;                   // elements that have begun and not ended, made or not
    TOrderedList<CCoreXmlDomElement*> m_elements;
};

QuickParse::~QuickParse() {
    for (CCoreXmlDomElement* element : m_elements)
        delete element;
}

// ---------------------------------------------------------------------------------------------------------
// The text

/// The byte at the position; the NUL at the end of the text.
inline char QuickParse::Look() {
    return AtEnd() ? '\0' : *m_p;
}

/// The byte behind it.
inline char QuickParse::LookAhead() {
    m_pStart = m_p;
    if (m_p + 1 == m_pEnd) ReadOn();
    return m_p[1];
}

/// Passes all bytes of a class, which belong to no piece and may be forgotten.
inline void QuickParse::Skip(ByteClass skipped) {
    while ((m_p = SkipOver(m_p, skipped)) == m_pEnd) {
        m_pStart = m_p;
        if (!ReadOn()) return;
    }
}

/// Passes what is not found by `find(from, end)`; false if the text ends first.
template <class Find>
bool QuickParse::Pass(Find find) {
    do
        m_p = find(m_p, m_pEnd);
    while (m_p == m_pEnd && ReadOn());
    return m_p != m_pEnd;
}

/// The same for a piece, which Passed gives.
template <class Find>
bool QuickParse::PassPiece(Find find) {
    m_pStart = m_p;
    return Pass(find);
}

// ---------------------------------------------------------------------------------------------------------
// The grammar

/// The file is not kept from anybody while the message waits to be read.
bool QuickParse::Fault(const char* message) {
    if (m_pFile != nullptr) m_pFile->Close();
    AfxMessageBox(message, MB_OK, 0);
    return false;
}

bool QuickParse::ReadDocument() {
    while (true) {
        Skip(kLow);
        if (AtEnd()) return true;
        if (*m_p != '<') return Fault(kBadFormat);
        ++m_p;
        if (Look() == '?' || *m_p == '!') {
            if (!SkipMark()) return true;
        } else if (!ReadTree()) {
            // Each element around a faulty one takes what is left of it for text: one message each.
            for (std::size_t around = m_depth - 1; around > 0; --around)
                Fault(kInnerText);
            return false;
        }
    }
}

/// Passes a declaration, instruction or comment, which any ">" ends; false at the end of the text.
bool QuickParse::SkipMark() {
    const auto find = [this](const char* p, const char* end) { return Find(m_pStart = p, end, '>'); };
    if (!Pass(find)) return false;
    ++m_p;
    return true;
}

/// An element of the top level with all that is below it, from behind its "<".
bool QuickParse::ReadTree() {
    if (!ReadElement()) return false;
    while (m_depth > 0) {
        if (AtEnd()) return Fault(kSyntaxError);
        Skip(kBlank);
        if (*m_p != '<') return Fault(kInnerText);
        ++m_p;
        if (Look() == '/') {
            if (!ReadEndTag()) return false;
        } else if (*m_p == '?' || *m_p == '!') {
            if (!SkipMark()) return Fault(kSyntaxError);
        } else if (!ReadElement()) {
            return false;
        }
    }
    return true;
}

/// The start of an element, and its end if it is empty.
bool QuickParse::ReadElement() {
    bool empty = false;
    ++m_depth;
    if (!ReadStartTag(empty)) return false;
    if (empty) Close();
    return true;
}

bool QuickParse::ReadStartTag(bool& empty) {
    Skip(kBlank);
    if (!PassPiece(SkipTagName)) return Fault(kUnexpectedEnd);
    const STRID tag = m_names.DecodedName(Passed());
    const char last = *m_p++;
    if (last == '/') {
        if (Look() != '>') return Fault(kExpectingClose);
        ++m_p;
        empty = true;
    }
    m_pCurrent = m_pCurrent == nullptr ? &m_builder.AddElement(m_elements, tag)
                                       : &m_builder.AddElement(*m_pCurrent, tag);
    return last == '/' || last == '>' || ReadAttributes(empty);
}

bool QuickParse::ReadAttributes(bool& empty) {
    m_attributes.Begin(*m_pCurrent);
    while (true) {
        m_pStart = m_p;
        Skip(kBlank);
        if (*m_p == '>') {
            ++m_p;
            return true;
        }
        if (*m_p == '/' && LookAhead() == '>') {
            m_p += 2;
            empty = true;
            return true;
        }
        if (!ReadAttribute()) return false;
    }
}

bool QuickParse::ReadAttribute() {
    STRID name = kNoName;
    const std::size_t passed = m_names.PassDue(m_p, m_pEnd, name);
    m_p += passed;
    if (passed == 0 && !ReadAttributeName(name)) return false;
    std::string_view value;
    if (!ReadValue(value)) return Fault(kUnexpectedEnd);
    m_attributes.Set(name, value);
    return true;
}

/// Up to the value, past its quote.
bool QuickParse::ReadAttributeName(STRID& name) {
    if (!PassPiece(SkipAttributeName)) return Fault(kUnexpectedEnd);
    name = m_names.Name(Passed());
    Skip(kLow);
    if (*m_p != '=') return Fault(kBadAttribute);
    ++m_p;
    Skip(kBlank);
    if (*m_p != '"') return Fault(kMissingQuote);
    ++m_p;
    return true;
}

/// Up to the quote, and past it; false if there is none.
bool QuickParse::ReadValue(std::string_view& value) {
    const auto findQuote = [](const char* p, const char* end) { return Find(p, end, '"'); };
    const auto findSpecial = [](const char* p, const char* end) { return FindEither(p, end, '"', '&'); };
    if (!PassPiece(findSpecial)) return false;
    const bool coded = *m_p == '&';
    if (coded && !Pass(findQuote)) return false;
    value = coded ? m_names.Text(Passed()) : Passed();
    ++m_p;
    return true;
}

bool QuickParse::ReadEndTag() {
    ++m_p;
    if (!PassTagOf(*m_pCurrent)) {
        if (!PassPiece([](const char* p, const char* end) { return Find(p, end, '>'); }))
            return Fault(kUnexpectedEnd);
        if (m_names.DecodedName(Passed()) != m_pCurrent->GetTagNameId()) return Fault(kMismatchedEnd);
    }
    ++m_p;
    Close();
    return true;
}

/// Passes the name of an element if it stands here as it is, without entities, and ends here: the usual case,
/// for which no identifier is needed.
bool QuickParse::PassTagOf(const CCoreXmlDomElement& element) {
    const char* tag = element.GetTagName();
    const char* p = m_p;
    for (; *tag != '\0' && *tag == *p && *tag != '&' && *tag != '>'; ++tag)
        ++p;
    if (*tag != '\0' || *p != '>') return false;
    m_p = p;
    return true;
}

void QuickParse::Close() {
    --m_depth;
    m_pCurrent = m_pCurrent->GetParent();
}

/// Parses a text in memory or in a file; on success its elements go behind those of `elements`, otherwise
/// that is emptied.
template <class Text>
bool Parse(Text&& text, TOrderedList<CCoreXmlDomElement*>& elements) try {
    QuickParse parse(text);
    if (parse.ReadDocument()) {
        elements.Splice(parse.TakeElements());
        return true;
    }
    elements.RemoveAll();
    return false;
} catch (const std::bad_alloc&) {
    elements.RemoveAll();
    return false;
}

}  // namespace

CCoreXMLQuickReader::CCoreXMLQuickReader() = default;

CCoreXMLQuickReader::CCoreXMLQuickReader(const CCoreXMLQuickReader& other) = default;

CCoreXMLQuickReader& CCoreXMLQuickReader::operator=(const CCoreXMLQuickReader& other) = default;

CCoreXMLQuickReader::~CCoreXMLQuickReader() = default;

std::size_t CCoreXMLQuickReader::SizeOf() const {
    return sizeof(*this);
}

const char* CCoreXMLQuickReader::GetClassName() const {
    return "CCoreXMLQuickReader";
}

const char* CCoreXMLQuickReader::GetBaseClassName() const {
    return "none";
}

bool CCoreXMLQuickReader::LoadDocument(const char* path) try {
    FileText file;
    return file.Open(path) && Parse(file, m_elements);
} catch (const FileText::Unreadable&) {
    return false;
} catch (const std::bad_alloc&) {
    return false;
}

bool CCoreXMLQuickReader::ParseStream(const char* text) {
    return Parse(text == nullptr ? "" : text, m_elements);
}

TOrderedList<CCoreXmlDomElement*> CCoreXMLQuickReader::TakeElements() {
    return std::move(m_elements);
}

}  // namespace brenta
