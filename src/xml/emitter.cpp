// Writing XML as a stream: one table says what becomes of each byte, one buffer gathers what passes.
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <new>
#include <span>
#include <string_view>
#include <utility>

#include "brenta/xml_emitter.h"
#include "os/os.h"

namespace brenta {

namespace {

// Each call costs a file system much.
constexpr std::size_t kBufferSize = std::size_t{1} << 20;
constexpr int kNumberRadix = 26;

enum ByteFate : std::uint8_t { kDropped, kPasses, kQuote, kAmpersand, kApostrophe, kLess, kGreater };

constexpr std::string_view kEntities[] = {"", "", "&quot;", "&amp;", "&apos;", "&lt;", "&gt;"};

/// Read as signed, a byte passes from 32 up, and so does the line feed. The NUL is among the dropped bytes.
constexpr std::array<ByteFate, 256> MakeFates() {
    std::array<ByteFate, 256> fates{};
    for (std::size_t c = 32; c < 128; ++c)
        fates[c] = kPasses;
    fates['\n'] = kPasses;
    fates['"'] = kQuote;
    fates['&'] = kAmpersand;
    fates['\''] = kApostrophe;
    fates['<'] = kLess;
    fates['>'] = kGreater;
    return fates;
}

constexpr std::array<ByteFate, 256> kFates = MakeFates();

enum class Escaping { Off, On };

template <Escaping escaping>
bool Passes(char c) {
    const ByteFate fate = kFates[static_cast<unsigned char>(c)];
    return escaping == Escaping::On ? fate == kPasses : fate != kDropped;
}

}  // namespace

/// An open document. After a write that failed nothing more is written: what came behind the gap would not
/// belong there.
class EmitterFile {
 public:
    EmitterFile() = default;
    ~EmitterFile() { Flush(); }
    EmitterFile(const EmitterFile&) = delete;
    EmitterFile& operator=(const EmitterFile&) = delete;

    bool Open(const char* path) { return m_file.Open(path); }

    /// Bytes as they are.
    void Append(std::string_view bytes) {
        if (bytes.size() > kBufferSize - m_used) return AppendFar(bytes);
        std::memcpy(m_buffer + m_used, bytes.data(), bytes.size());
        m_used += bytes.size();
    }

    /// The bytes of a text that pass; null counts as "".
    void WriteValidData(const char* text) { Write<Escaping::Off>(text); }
    void WriteEscaped(const char* text) { Write<Escaping::On>(text); }

    template <class Attributes>
    void WriteStartTag(const char* name, const Attributes& attrs, std::string_view end) {
        Append("<");
        WriteValidData(name);
        for (const OneAttr& attr : attrs)
            EmitAttr(attr);
        Append(end);
    }

    void WriteEndTag(const char* name) {
        Append("</");
        WriteValidData(name);
        Append(">\n");
    }

 private:
    /// Bytes are copied as they are looked at: most texts are shorter than a call to copy them would take.
    template <Escaping escaping>
    void Write(const char* text) {
        if (text == nullptr) return;
        while (true) {
            char* out = m_buffer + m_used;
            for (char* const end = m_buffer + kBufferSize; out != end && Passes<escaping>(*text);
                 ++out, ++text)
                *out = *text;
            m_used = static_cast<std::size_t>(out - m_buffer);
            if (m_used == kBufferSize) {
                Flush();
                continue;
            }
            if (*text == '\0') return;
            if (escaping == Escaping::On) Append(kEntities[kFates[static_cast<unsigned char>(*text)]]);
            ++text;
        }
    }

    void EmitAttr(const OneAttr& attr) {
        Append(" ");
        WriteValidData(StrPtr(attr.name));
        Append("=\"");
        WriteEscaped(StrPtr(attr.value));
        Append("\"");
    }

    void AppendFar(std::string_view bytes) {
        Flush();
        if (bytes.size() < kBufferSize) return Append(bytes);
        WriteThrough(bytes);
    }
    void Flush() {
        WriteThrough({m_buffer, m_used});
        m_used = 0;
    }
    void WriteThrough(std::string_view bytes) {
        if (!m_failed && !bytes.empty()) m_failed = !m_file.Write(bytes);
    }

    os::TextFileWriter m_file;
    std::size_t m_used = 0;
    bool m_failed = false;
    char m_buffer[kBufferSize];
};

OneAttr::OneAttr(const char* attrName, int attrValue) : name(StrId(attrName)) {
    char digits[8];
    const auto end =
        std::to_chars(digits, std::end(digits), static_cast<std::uint32_t>(attrValue), kNumberRadix).ptr;
    value = StrId(digits, static_cast<unsigned int>(end - digits));
}

// ---------------------------------------------------------------------------------------------------------
// Documents

CXmlEmitter::CXmlEmitter() : m_pDocumentName(nullptr) {}

CXmlEmitter::~CXmlEmitter() {
    while (!m_openElements.IsEmpty())
        EndElement();
}

bool CXmlEmitter::CreateDocument(const char* path, const char* prolog) {
    if (m_pFile != nullptr) return false;
    std::unique_ptr<EmitterFile> file(new (std::nothrow) EmitterFile);
    if (file == nullptr || !file->Open(path)) return false;
    m_pFile = std::move(file);
    m_pDocumentName = path;
    m_pFile->Append("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    m_pFile->WriteValidData(prolog);
    return true;
}

void CXmlEmitter::CloseDocument() {
    m_pFile.reset();
    m_pDocumentName = nullptr;
}

// ---------------------------------------------------------------------------------------------------------
// Elements

namespace {

using NoAttributes = std::span<const OneAttr>;
using OneAttribute = std::span<const OneAttr, 1>;

}  // namespace

template <class Attributes>
bool CXmlEmitter::Begin(const char* name, const Attributes& attrs) {
    if (m_pFile != nullptr) m_pFile->WriteStartTag(name, attrs, ">\n");
    m_openElements.Push(name);
    return true;
}

bool CXmlEmitter::BeginElement(const char* name) {
    return Begin(name, NoAttributes());
}

bool CXmlEmitter::BeginElement(const char* name, const OneAttr& attr) {
    return Begin(name, OneAttribute(&attr, 1));
}

bool CXmlEmitter::BeginElement(const char* name, TOrderedList<OneAttr>& attrs) {
    return Begin(name, attrs);
}

bool CXmlEmitter::EndElement() {
    if (m_pFile != nullptr && !m_openElements.IsEmpty()) m_pFile->WriteEndTag(m_openElements.Top());
    m_openElements.Pop();  // raises the assertion if there is nothing to end
    return true;
}

template <class Attributes>
bool CXmlEmitter::Whole(const char* name, const Attributes& attrs, const char* text) {
    if (m_pFile == nullptr) return true;
    m_pFile->WriteStartTag(name, attrs, text != nullptr ? ">\n" : "/>\n");
    if (text == nullptr) return true;
    m_pFile->WriteEscaped(text);
    m_pFile->WriteEndTag(name);
    return true;
}

bool CXmlEmitter::Element(const char* name, const char* text) {
    return Whole(name, NoAttributes(), text);
}

bool CXmlEmitter::Element(const char* name, const OneAttr& attr, const char* text) {
    return Whole(name, OneAttribute(&attr, 1), text);
}

bool CXmlEmitter::Element(const char* name, TOrderedList<OneAttr>& attrs, const char* text) {
    return Whole(name, attrs, text);
}

// ---------------------------------------------------------------------------------------------------------
// Data

bool CXmlEmitter::CData(const char* text) {
    if (m_pFile != nullptr) m_pFile->WriteEscaped(text);
    return true;
}

bool CXmlEmitter::CData(int value) {
    char digits[12];
    const auto end = std::to_chars(digits, std::end(digits), value).ptr;
    if (m_pFile != nullptr) m_pFile->Append({digits, static_cast<std::size_t>(end - digits)});
    return true;
}

}  // namespace brenta
