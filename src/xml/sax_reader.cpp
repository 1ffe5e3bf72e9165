#include <new>

#include "brenta/xml_stream.h"
#include "foundation/lack_of_memory.h"
#include "os/os.h"
#include "xml/sax_handler.h"
#include "xml/sax_source.h"

namespace brenta {

SaxReaderMaker g_saxReaderMaker = &MakeSaxReader;

namespace {

/// In bytes; 0 if there is no such file.
std::uint64_t SizeOfFile(const char* path) {
    os::FileReader file;
    return file.Open(path) ? file.Size() : 0;
}

/// Always false. Without memory not even the text can be told.
bool HasNoParser(CString& error) {
    return OrWithoutMemory(false, [&] {
        error = "Failed to initialize XML reader.";
        return false;
    });
}

}  // namespace

CXMLReader::CXMLReader(HWND progressWindow, CCmdTarget* target)
    : m_progressWindow(progressWindow), m_pTarget(target), m_fileSize(0), m_parsing(false) {
    try {
        m_pHandler = std::make_unique<CXMLContentHandler>(*this);
        m_pParser = g_saxReaderMaker();
        if (m_pParser != nullptr && !m_pParser->PutContentHandler(m_pHandler.get())) m_pParser.reset();
    } catch (const std::bad_alloc&) {
        m_pParser.reset();
    }
}

CXMLReader::~CXMLReader() = default;

bool CXMLReader::Parse(const char* path, bool counting) {
    /// Whatever ends the parse, nothing of it is left.
    struct Parse {
        CXMLReader& reader;
        ~Parse() {
            reader.m_pHandler->SetCounting(false);
            reader.m_pHandler->EndParse();
            reader.m_parsing = false;
        }
    };
    if (m_parsing) return false;
    m_parsing = true;
    const Parse parse{*this};
    try {
        m_fileSize = SizeOfFile(path);
        m_pHandler->SetCounting(counting);
        return m_pParser->ParseURL(path);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool CXMLReader::ParseDocument(CString& path, CString& error) {
    if (m_pParser == nullptr) return HasNoParser(error);
    return Parse(path, false);
}

bool CXMLReader::CountElements(CString& path, CString& error, int& total, int& components, int& footprints,
                               int& symbols) {
    total = 0;
    components = 0;
    if (m_pParser == nullptr) return HasNoParser(error);
    if (!Parse(path, true)) return false;
    const ElementCounts& counts = m_pHandler->GetCounts();
    total = counts.all;
    components = counts.components;
    footprints = counts.footprints;
    symbols = counts.symbols;
    return true;
}

}  // namespace brenta
