// What becomes of the parser's events: records, counts and progress.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "brenta/framework.h"
#include "brenta/xml.h"
#include "xml/sax_source.h"
#include "xml/scanner.h"
#include "xml/tree_builder.h"

namespace brenta {

class CXMLReader;

/// How many elements a file has, in all and of three names (in any case).
struct ElementCounts {
    int all = 0;
    int components = 0;
    int footprints = 0;
    int symbols = 0;
};

class CXMLContentHandler final : public ISAXContentHandler {
 public:
    /// Window, target and file size are asked from the reader at the start of each document.
    explicit CXMLContentHandler(const CXMLReader& reader);

    /// Whether elements are to be counted only; else records are built.
    void SetCounting(bool counting) { m_counting = counting; }
    const ElementCounts& GetCounts() const { return m_counts; }
    /// Deletes what a parse that failed has left behind, and forgets the locator.
    void EndParse();

    void PutDocumentLocator(const ISAXLocator* locator) override { m_pLocator = locator; }
    bool StartDocument() override;
    bool EndDocument() override;
    bool StartElement(std::string_view localName, std::span<const SaxAttribute> attributes) override;
    bool EndElement() override;
    bool Characters() override;

 private:
    void SendProgress(int percent) const;
    void Count(std::string_view localName);
    void DeliverRecord();

    const CXMLReader& m_reader;
    HWND m_progressWindow = nullptr;
    CCmdTarget* m_pTarget = nullptr;
    std::uint64_t m_fileSize = 0;
    const ISAXLocator* m_pLocator = nullptr;

    ElementCounts m_counts;
    std::int64_t m_consumed = 0;  ///< estimate of the bytes that were parsed
    std::int64_t m_line = 0;
    int m_lastPercent = 0;
    bool m_counting = false;

    PieceInterner m_names{Entities::Xml};
    std::unique_ptr<CCoreXmlDomElement> m_pRoot;
    TreeBuilder m_builder{
        TreeBuilder::kAll};                   ///< whoever keeps a part of a record keeps nothing else with it
    std::vector<CCoreXmlDomElement*> m_open;  ///< root, record, and what is open inside it
};

}  // namespace brenta
