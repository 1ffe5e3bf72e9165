#include "xml/sax_handler.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "brenta/xml_stream.h"
#include "foundation/characters.h"

namespace brenta {

namespace {

constexpr std::size_t kRecordDepth = 2;

bool EqualsIgnoringCase(std::string_view text, std::string_view lowerCase) {
    return std::equal(text.begin(), text.end(), lowerCase.begin(), lowerCase.end(),
                      [](char c, char lower) { return ToLower(c) == lower; });
}

}  // namespace

CXMLContentHandler::CXMLContentHandler(const CXMLReader& reader) : m_reader(reader) {}

void CXMLContentHandler::EndParse() {
    m_open.clear();
    m_pRoot.reset();
    m_pLocator = nullptr;
}

// ---------------------------------------------------------------------------------------------------------
// Progress

bool CXMLContentHandler::StartDocument() {
    m_progressWindow = m_reader.m_progressWindow;
    m_pTarget = m_reader.m_pTarget;
    m_fileSize = m_reader.m_fileSize;
    m_counts = {};
    m_consumed = 0;
    m_line = 0;
    m_lastPercent = 0;
    m_open.clear();
    m_pRoot.reset();
    SendProgress(0);
    return true;
}

bool CXMLContentHandler::EndDocument() {
    if (m_lastPercent < 100) SendProgress(100);
    return true;
}

void CXMLContentHandler::SendProgress(int percent) const {
    SendMessageA(m_progressWindow, kXmlProgressMessage, static_cast<std::uintptr_t>(percent), 0);
}

// How far the parse has come is guessed from the texts between tags alone: the column at which one begins and
// two for the line's end come close to the length of a line that ends in white space behind a tag. On other
// files the estimate is far off, and it can pass the file's size on any.
bool CXMLContentHandler::Characters() {
    if (m_progressWindow == nullptr) return true;
    if (m_pLocator != nullptr) {
        m_line = m_line == 0 ? m_pLocator->GetLineNumber() : m_line + 1;
        m_consumed += m_pLocator->GetColumnNumber() + 2;
    }
    if (m_fileSize == 0) return true;
    constexpr double kMost = std::numeric_limits<int>::max();
    const double share = static_cast<double>(m_consumed) / static_cast<double>(m_fileSize) * 100.0;
    const int percent = static_cast<int>(std::min(share, kMost));
    if (percent > m_lastPercent) {
        m_lastPercent = percent;
        SendProgress(percent);
    }
    return true;
}

// ---------------------------------------------------------------------------------------------------------
// Elements

void CXMLContentHandler::Count(std::string_view localName) {
    ++m_counts.all;
    if (EqualsIgnoringCase(localName, "component")) {
        ++m_counts.components;
    } else if (EqualsIgnoringCase(localName, "footprint")) {
        ++m_counts.footprints;
    } else if (EqualsIgnoringCase(localName, "symbol")) {
        ++m_counts.symbols;
    }
}

bool CXMLContentHandler::StartElement(std::string_view localName, std::span<const SaxAttribute> attributes) {
    if (m_counting) {
        Count(localName);
        return true;
    }
    const STRID tag = m_names.Name(localName);
    if (tag == kNoName) return false;
    CCoreXmlDomElement* element = nullptr;
    if (m_open.empty()) {
        m_pRoot.reset(element = new CCoreXmlDomElement(tag));
        if (element == nullptr) throw std::bad_alloc();
    } else {
        element = &m_builder.AddElement(*m_open.back(), tag);
    }
    m_open.push_back(element);
    // The parser has seen that the qualified names differ, and two prefixes may share a local name.
    for (const SaxAttribute& attribute : attributes)
        m_builder.AddAttribute(*element, m_names.Name(attribute.name), attribute.value);
    return true;
}

bool CXMLContentHandler::EndElement() {
    if (m_counting) return true;
    if (m_open.empty()) return false;
    if (m_open.size() == kRecordDepth) {
        DeliverRecord();
    } else {
        m_open.pop_back();
        if (m_open.empty()) m_pRoot.reset();
    }
    return true;
}

void CXMLContentHandler::DeliverRecord() {
    CCoreXmlDomElement* const record = m_open.back();
    if (m_pTarget != nullptr) m_pTarget->OnCmdMsg(kXmlRecordCommand, 0, record, nullptr);
    m_pRoot->DeleteChildElement(record);
    m_open.pop_back();
}

}  // namespace brenta
