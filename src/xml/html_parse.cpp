#include "xml/html_parse.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

#include "brenta/framework.h"
#include "foundation/characters.h"
#include "xml/scanner.h"
#include "xml/tree_builder.h"

namespace brenta {

namespace {

/// One parse of one text. Whatever closes an element closes the innermost one, so unclosed ones nest without
/// end on ordinary pages. No stack is needed for them: each stands in the tree below the one around it.
///
///     document  := (low* "<" tag*)*
///     tag       := blank* skipped* (dropped | empty | start | end)
///     skipped   := ("?" | "!") ... ">" ... "<"
///     dropped   := one of four names ... ">" ... "<"
///     empty     := name attribute* blank* "/>" ... "<"
///     start     := name attribute* blank* ">" space* ("<" before a letter | data "<")
///     end       := "/" ... "<"
///     attribute := blank* name low* ("=" low* ('"' value '"' | value) | skipped word)
///     data      := up to a "<" before a letter or "/", but never none
///
/// Every tag is read from behind its "<" to behind the next one. An operation answers false where the text
/// ends too early.
class HtmlParse {
 public:
    HtmlParse(const char*& position, CCoreXmlDomElement& root);
    ~HtmlParse() { m_position = m_p; }
    HtmlParse(const HtmlParse&) = delete;
    HtmlParse& operator=(const HtmlParse&) = delete;

    bool ReadDocument();

 private:
    bool ReadTag();
    bool SkipTag();
    void SkipToTag();
    void Close();
    bool ReadAttributes(CCoreXmlDomElement& element);
    bool ReadAttribute();
    bool ReadData(CCoreXmlDomElement& element);
    bool AtEnd() const { return m_p == m_pEnd; }

    const char*& m_position;
    const char* m_p;
    const char* const m_pEnd;
    PieceInterner m_names;
    TreeBuilder m_builder;
    AttributeSetter m_attributes{m_builder};
    CCoreXmlDomElement& m_root;
    CCoreXmlDomElement* m_pCurrent;  ///< the innermost open element, at last the root
    bool m_rootClosed = false;
    const STRID m_dropped[4] = {m_names.Name("input"), m_names.Name("meta"), m_names.Name("LINK"),
                                m_names.Name("img")};
    const STRID m_textTag = m_names.Name("Text");
};

HtmlParse::HtmlParse(const char*& position, CCoreXmlDomElement& root)
    : m_position(position),
      m_p(position),
      m_pEnd(position + std::strlen(position)),
      m_names(Entities::Html),
      m_root(root),
      m_pCurrent(&root) {}

// An end tag for which nothing is open closes the root, and the text has to start again, with a "<" of its
// own behind the one that was passed already.
bool HtmlParse::ReadDocument() {
    while (true) {
        m_p = SkipOver(m_p, kLow);
        if (AtEnd()) return true;
        if (*m_p != '<') {
            AfxMessageBox("Bad XML format.", MB_OK, 0);
            return false;
        }
        ++m_p;
        m_rootClosed = false;
        while (!m_rootClosed && !AtEnd())
            if (!ReadTag()) return false;
    }
}

bool HtmlParse::ReadTag() {
    m_p = SkipOver(m_p, kBlank);
    while (*m_p == '?' || *m_p == '!')
        if (!SkipTag()) return false;
    if (AtEnd()) return true;
    const char* const start = m_p;
    m_p = SkipTo(m_p, kHtmlTagEnd);
    if (AtEnd()) return false;
    const STRID tag = m_names.DecodedName(Piece(start, m_p));
    if (std::find(std::begin(m_dropped), std::end(m_dropped), tag) != std::end(m_dropped)) return SkipTag();
    if (*start == '/') {
        Close();
        return true;
    }
    CCoreXmlDomElement& element = m_builder.AddElement(*m_pCurrent, tag);
    if (!ReadAttributes(element)) return false;
    if (*m_p == '>') return ReadData(element);
    if (m_p[1] != '>') return false;
    SkipToTag();
    return true;
}

/// Passes the rest of this tag and the text behind it.
bool HtmlParse::SkipTag() {
    m_p = Find(m_p, m_pEnd, '>');
    m_p = Find(m_p, m_pEnd, '<');
    if (AtEnd()) return false;
    ++m_p;
    return true;
}

/// Passes the text up to the next "<", or to the end.
void HtmlParse::SkipToTag() {
    m_p = Find(m_p, m_pEnd, '<');
    if (!AtEnd()) ++m_p;
}

void HtmlParse::Close() {
    SkipToTag();
    if (m_pCurrent != &m_root) {
        m_pCurrent = m_pCurrent->GetParent();
    } else {
        m_rootClosed = true;
    }
}

/// Up to the "/" or ">" behind the attributes.
bool HtmlParse::ReadAttributes(CCoreXmlDomElement& element) {
    m_attributes.Begin(element);
    while (true) {
        m_p = SkipOver(m_p, kBlank);
        if (*m_p == '/' || *m_p == '>') return true;
        if (!ReadAttribute()) return false;
    }
}

bool HtmlParse::ReadAttribute() {
    const char* start = m_p;
    m_p = SkipTo(m_p, kHtmlAttributeEnd);
    if (AtEnd()) return false;
    const STRID name = m_names.DecodedName(Piece(start, m_p));
    m_p = SkipOver(m_p, kLow);
    if (*m_p != '=') {
        m_attributes.Set(name, "1");
        m_p = SkipTo(m_p, kHtmlValueEnd);
        return true;
    }
    m_p = SkipOver(m_p + 1, kLow);
    const bool quoted = *m_p == '"';
    if (quoted) ++m_p;
    start = m_p;
    m_p = quoted ? Find(m_p, m_pEnd, '"') : SkipTo(m_p, kHtmlValueEnd);
    if (AtEnd()) return false;
    m_attributes.Set(name, m_names.Text(Piece(start, m_p)));
    if (quoted) ++m_p;
    return true;
}

// Text that begins with "<", as that of an element whose end tag follows at once does, goes on to the "<"
// after that.
bool HtmlParse::ReadData(CCoreXmlDomElement& element) {
    const char* const start = m_p = SkipOver(m_p + 1, kSpace);
    if (AtEnd()) return false;
    const auto isTag = [this](bool endTag) { return IsAlpha(m_p[1]) || (endTag && m_p[1] == '/'); };
    if (*m_p != '<' || !isTag(false)) {
        if (*m_p == '<') ++m_p;
        m_p = Find(m_p, m_pEnd, '<');
        while (!AtEnd() && !isTag(true))
            m_p = Find(m_p + 1, m_pEnd, '<');
        if (AtEnd()) return false;
        m_builder.AddElement(element, m_textTag, m_names.Text(Piece(start, m_p)));
    }
    ++m_p;
    m_pCurrent = &element;
    return true;
}

}  // namespace

bool ParseHtml(const char*& position, CCoreXmlDomElement& root) {
    return HtmlParse(position, root).ReadDocument();
}

}  // namespace brenta
