#include <algorithm>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "brenta/xml_readers.h"
#include "xml/html_parse.h"
#include "xml/scanner.h"

namespace brenta {

CCoreHTMLReader::CCoreHTMLReader()
    : m_pRoot(nullptr), m_pPosition(nullptr), m_pMark(nullptr), m_line(1), m_column(1) {}

CCoreHTMLReader::CCoreHTMLReader(const CCoreHTMLReader& other) = default;

CCoreHTMLReader& CCoreHTMLReader::operator=(const CCoreHTMLReader& other) = default;

CCoreHTMLReader::~CCoreHTMLReader() = default;

const char* CCoreHTMLReader::GetClassName() const {
    return "CCoreHTMLReader";
}

bool CCoreHTMLReader::LoadDocument(const char* path) try {
    std::string text;
    if (!ReadText(path, text)) return false;
    m_pText = std::make_shared<const std::string>(std::move(text));
    return ParseLoop(m_pText->c_str());
} catch (const std::bad_alloc&) {
    return false;
}

bool CCoreHTMLReader::ParseLoop(const char* buffer) {
    StandAt(buffer, buffer);
    m_pRoot = new CCoreXmlDomElement("Root");
    if (m_pRoot == nullptr) return false;
    const char* position = buffer;
    bool success = false;
    try {
        success = ParseHtml(position, *m_pRoot);
    } catch (const std::bad_alloc&) {
        // What was read so far stays.
    }
    StandAt(buffer, position);
    return success;
}

/// Puts the position, line and column there as if Next had stepped to it from the start of the text: the
/// first byte ends no line and fills no column.
void CCoreHTMLReader::StandAt(const char* buffer, const char* position) {
    m_pPosition = position;
    m_pMark = nullptr;
    const std::string_view passed = position == buffer ? "" : Piece(buffer + 1, position + 1);
    const std::string_view inLine = passed.substr(passed.rfind('\n') + 1);
    m_line = static_cast<int>(1 + std::count(passed.begin(), passed.end(), '\n'));
    m_column =
        static_cast<int>(1 + std::count_if(inLine.begin(), inLine.end(), [](char c) { return c != '\r'; }));
}

}  // namespace brenta
