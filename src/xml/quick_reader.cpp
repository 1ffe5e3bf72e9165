// The quick reader: strict XML without character data.
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "brenta/framework.h"
#include "brenta/xml_readers.h"
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

/// One parse of one text. What the grammar nests stands on a stack here, never on the thread's.
///
///     document    := (blank | skipped | element)*
///     skipped     := "<" ("?" | "!") ... ">"
///     element     := "<" blank* tag ( "/>" | ">" content | low attribute* ("/>" | ">" content) )
///     attribute   := blank* name low* "=" blank* '"' value '"'
///     content     := (blank | skipped | element)* "</" tag ">"
///
/// An operation that meets a fault shows its message and answers false.
class QuickParse {
 public:
    QuickParse(const char* text, const char* end) : m_p(text), m_pEnd(end), m_names(Entities::Xml) {}
    ~QuickParse();
    QuickParse(const QuickParse&) = delete;
    QuickParse& operator=(const QuickParse&) = delete;

    bool ReadDocument();
    TOrderedList<CCoreXmlDomElement*> TakeElements() { return std::move(m_elements); }

 private:
    /// An element whose end has not been met; without one while its tag's name is being read.
    struct Open {
        GrowingElement element;
        std::string_view tag;  ///< as it stands in the text
    };

    static bool Fault(const char* message);
    bool ReadTree();
    bool SkipMark();
    bool ReadElement();
    bool ReadStartTag(bool& empty);
    bool ReadAttributes(bool& empty);
    bool ReadAttribute();
    bool ReadEndTag();
    void Close();
    void Unwind();

    const char* m_p;
    const char* const m_pEnd;
    PieceInterner m_names;
    AttributeSetter m_attributes;
    std::vector<Open> m_open;
    TOrderedList<CCoreXmlDomElement*> m_elements;
    ListTail<CCoreXmlDomElement*> m_tail;
};

QuickParse::~QuickParse() {
    for (const Open& open : m_open)
        delete open.element.Get();
    for (CCoreXmlDomElement* element : m_elements)
        delete element;
}

bool QuickParse::Fault(const char* message) {
    AfxMessageBox(message, MB_OK, 0);
    return false;
}

bool QuickParse::ReadDocument() {
    while (true) {
        m_p = SkipOver(m_p, kLow);
        if (m_p == m_pEnd) return true;
        if (*m_p != '<') return Fault(kBadFormat);
        ++m_p;
        if (*m_p == '?' || *m_p == '!') {
            if (!SkipMark()) return true;
        } else if (!ReadTree()) {
            Unwind();
            return false;
        }
    }
}

/// Passes a declaration, instruction or comment, which any ">" ends; false at the end of the text.
bool QuickParse::SkipMark() {
    m_p = Find(m_p, m_pEnd, '>');
    if (m_p == m_pEnd) return false;
    ++m_p;
    return true;
}

/// An element of the top level with all that is below it, from behind its "<".
bool QuickParse::ReadTree() {
    if (!ReadElement()) return false;
    while (!m_open.empty()) {
        if (m_p == m_pEnd) return Fault(kSyntaxError);
        m_p = SkipOver(m_p, kBlank);
        if (*m_p != '<') return Fault(kInnerText);
        ++m_p;
        if (*m_p == '/') {
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
    m_open.emplace_back();
    if (!ReadStartTag(empty)) return false;
    if (empty) Close();
    return true;
}

bool QuickParse::ReadStartTag(bool& empty) {
    const char* const start = m_p = SkipOver(m_p, kBlank);
    m_p = SkipTo(m_p, kTagEnd);
    if (m_p == m_pEnd) return Fault(kUnexpectedEnd);
    const std::string_view tag = Piece(start, m_p);
    const STRID id = m_names.DecodedName(tag);
    const char last = *m_p++;
    if (last == '/') {
        if (*m_p != '>') return Fault(kExpectingClose);
        ++m_p;
        empty = true;
    }
    m_open.back() = {GrowingElement(Required(new CCoreXmlDomElement(id)).release()), tag};
    return last == '/' || last == '>' || ReadAttributes(empty);
}

bool QuickParse::ReadAttributes(bool& empty) {
    m_attributes.Begin(*m_open.back().element.Get());
    while (true) {
        m_p = SkipOver(m_p, kBlank);
        if (*m_p == '>') {
            ++m_p;
            return true;
        }
        if (*m_p == '/' && m_p[1] == '>') {
            m_p += 2;
            empty = true;
            return true;
        }
        if (!ReadAttribute()) return false;
    }
}

bool QuickParse::ReadAttribute() {
    const char* start = m_p;
    m_p = SkipTo(m_p, kAttributeEnd);
    if (m_p == m_pEnd) return Fault(kUnexpectedEnd);
    const STRID name = m_names.Name(Piece(start, m_p));
    m_p = SkipOver(m_p, kLow);
    if (*m_p != '=') return Fault(kBadAttribute);
    m_p = SkipOver(m_p + 1, kBlank);
    if (*m_p != '"') return Fault(kMissingQuote);
    start = ++m_p;
    m_p = Find(m_p, m_pEnd, '"');
    if (m_p == m_pEnd) return Fault(kUnexpectedEnd);
    m_attributes.Set(name, m_names.Value(Piece(start, m_p)));
    ++m_p;
    return true;
}

// The name of the start tag, byte for byte, is the usual case and needs no identifier.
bool QuickParse::ReadEndTag() {
    const char* const start = ++m_p;
    m_p = Find(m_p, m_pEnd, '>');
    if (m_p == m_pEnd) return Fault(kUnexpectedEnd);
    const std::string_view tag = Piece(start, m_p);
    const Open& open = m_open.back();
    if (tag != open.tag && m_names.DecodedName(tag) != open.element.Get()->GetTagNameId()) {
        return Fault(kMismatchedEnd);
    }
    ++m_p;
    Close();
    return true;
}

/// Hands the innermost open element, which is complete, to the one around it.
void QuickParse::Close() {
    std::unique_ptr<CCoreXmlDomElement> element(m_open.back().element.Get());
    m_open.pop_back();
    if (!m_open.empty()) {
        m_open.back().element.AddChild(std::move(element));
        return;
    }
    m_elements.Add(element.get());
    m_tail.Advance(TIter(m_elements));
    element.release();
}

// Each element around a faulty one takes what is left of it for text: one message each.
void QuickParse::Unwind() {
    while (true) {
        delete m_open.back().element.Get();
        m_open.pop_back();
        if (m_open.empty()) return;
        Fault(kInnerText);
    }
}

/// Parses a text that ends at `end` with its NUL; on success its elements go behind those of `elements`,
/// otherwise that is emptied.
bool Parse(const char* text, const char* end, TOrderedList<CCoreXmlDomElement*>& elements) {
    QuickParse parse(text, end);
    if (parse.ReadDocument()) {
        elements.Splice(parse.TakeElements());
        return true;
    }
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

bool CCoreXMLQuickReader::LoadDocument(const char* path) {
    std::string text;
    return ReadText(path, text) && ParseStream(text.c_str());
}

bool CCoreXMLQuickReader::ParseStream(const char* text) try {
    if (text == nullptr) text = "";
    return Parse(text, text + std::strlen(text), m_elements);
} catch (const std::bad_alloc&) {
    m_elements.RemoveAll();
    return false;
}

TOrderedList<CCoreXmlDomElement*> CCoreXMLQuickReader::TakeElements() {
    return std::move(m_elements);
}

}  // namespace brenta
