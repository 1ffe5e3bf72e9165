// From the bytes of a file to UTF-8 and back. The parser is only ever given UTF-8, so that what is looked for
// in a text before it is parsed cannot hide in another encoding.
#include <libxml/encoding.h>
#include <libxml/xmlIO.h>

#include <algorithm>
#include <new>
#include <utility>

#include "foundation/characters.h"
#include "foundation/text_compare.h"
#include "xml/platform_libxml2.h"

namespace brenta {

namespace {

struct Signature {
    std::string_view bytes;
    const char* encoding;
    std::size_t markSize;
};

using namespace std::string_view_literals;

constexpr Signature kSignatures[] = {
    {"\xEF\xBB\xBF"sv, "UTF-8", 3}, {"\xFF\xFE\0\0"sv, "UTF-32LE", 4}, {"\0\0\xFE\xFF"sv, "UTF-32BE", 4},
    {"\xFF\xFE"sv, "UTF-16LE", 2},  {"\xFE\xFF"sv, "UTF-16BE", 2},     {"<\0?\0"sv, "UTF-16LE", 0},
    {"\0<\0?"sv, "UTF-16BE", 0},
};

bool IsUtf8(const std::string& encoding) {
    return CompareIgnoringCase(encoding.c_str(), "UTF-8") == 0;
}

/// An encoding whose texts cannot begin with a declaration in ASCII.
bool IsWide(const std::string& encoding) {
    constexpr std::string_view kWide[] = {"utf-16", "utf16", "utf-32", "utf32",         "ucs-2",
                                          "ucs-4",  "ucs2",  "ucs4",   "iso-10646-ucs", "unicode"};
    std::string lower(encoding);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) { return ToLower(c); });
    return std::any_of(std::begin(kWide), std::end(kWide),
                       [&](std::string_view name) { return lower.starts_with(name); });
}

class Handler {
 public:
    explicit Handler(const char* encoding) : m_pHandler(xmlFindCharEncodingHandler(encoding)) {}
    ~Handler() { xmlCharEncCloseFunc(m_pHandler); }
    Handler(const Handler&) = delete;
    Handler& operator=(const Handler&) = delete;

    xmlCharEncodingHandler* Get() const { return m_pHandler; }
    xmlCharEncodingHandler* Release() { return std::exchange(m_pHandler, nullptr); }

 private:
    xmlCharEncodingHandler* m_pHandler;
};

class Buffer {
 public:
    Buffer() : m_pBuffer(xmlBufferCreate()) {
        if (m_pBuffer == nullptr) throw std::bad_alloc();
    }
    ~Buffer() { xmlBufferFree(m_pBuffer); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    xmlBuffer* Get() const { return m_pBuffer; }

 private:
    xmlBuffer* m_pBuffer;
};

/// Piece by piece, since a buffer of libxml2 holds no more than 2 GB. The last bytes of a piece may be the
/// start of a character: they stay in `in`.
bool Convert(xmlCharEncodingHandler* handler, std::string_view bytes, std::string& text) {
    constexpr std::size_t kPiece = 1 << 20;
    const QuietErrors quiet;
    const Buffer in, out;
    while (!bytes.empty()) {
        const std::size_t size = std::min(kPiece, bytes.size());
        if (xmlBufferAdd(in.Get(), AsXmlChars(bytes.data()), static_cast<int>(size)) != 0)
            throw std::bad_alloc();
        bytes.remove_prefix(size);
        int left;
        do {
            left = xmlBufferLength(in.Get());
            if (xmlCharEncInFunc(handler, out.Get(), in.Get()) == -2) return false;
            text.append(AsChars(xmlBufferContent(out.Get())),
                        static_cast<std::size_t>(xmlBufferLength(out.Get())));
            xmlBufferEmpty(out.Get());
        } while (xmlBufferLength(in.Get()) > 0 && xmlBufferLength(in.Get()) < left);
    }
    return xmlBufferLength(in.Get()) == 0;
}

bool DecodeFrom(const std::string& encoding, std::string_view bytes, std::string& storage,
                ParseFault& fault) {
    const Handler handler(encoding.c_str());
    if (handler.Get() == nullptr) {
        fault.reason = ("Unsupported encoding " + encoding).c_str();
        return false;
    }
    if (Convert(handler.Get(), bytes, storage)) return true;
    fault.reason = ("Input is not proper " + encoding).c_str();
    return false;
}

}  // namespace

bool Decode(std::string_view bytes, std::string& storage, DecodedText& decoded, ParseFault& fault) {
    decoded = {bytes, "", 0};
    for (const Signature& signature : kSignatures) {
        if (!bytes.starts_with(signature.bytes)) continue;
        decoded.encoding = signature.encoding;
        decoded.markSize = signature.markSize;
        break;
    }
    if (decoded.encoding.empty()) {
        decoded.encoding = DeclaredEncoding(bytes);
        if (IsWide(decoded.encoding)) {
            fault.reason = "Document labelled UTF-16 but has UTF-8 content";
            return false;
        }
    }
    decoded.text.remove_prefix(decoded.markSize);
    if (IsUtf8(decoded.encoding)) decoded.encoding.clear();
    if (decoded.encoding.empty()) return true;
    if (!DecodeFrom(decoded.encoding, decoded.text, storage, fault)) return false;
    decoded.text = storage;
    return true;
}

int OffsetInSource(const DecodedText& decoded, int offset) {
    std::size_t size = std::min(static_cast<std::size_t>(offset), decoded.text.size());
    std::string before;
    if (!decoded.encoding.empty() && Encode(decoded.text.substr(0, size), decoded.encoding, before)) {
        size = before.size();
    }
    return static_cast<int>(std::min<std::size_t>(decoded.markSize + size, 0x7FFFFFFF));
}

std::string DeclaredEncoding(std::string_view text) {
    constexpr std::string_view kWord = "encoding";
    constexpr std::string_view kStart = "<?xml";
    // What goes on behind these is another instruction's name.
    if (!text.starts_with(kStart) || text.size() == kStart.size() || !IsSpace(text[kStart.size()])) return "";
    text = text.substr(0, text.find("?>"));
    std::size_t at = text.find(kWord);
    if (at == text.npos || !IsSpace(text[at - 1])) return "";
    const auto next = [&](std::size_t from) { return text.find_first_not_of(" \t\r\n", from); };
    at = next(at + kWord.size());
    if (at == text.npos || text[at] != '=') return "";
    at = next(at + 1);
    if (at == text.npos || (text[at] != '"' && text[at] != '\'')) return "";
    const std::size_t end = text.find(text[at], at + 1);
    return end == text.npos ? "" : std::string(text.substr(at + 1, end - at - 1));
}

bool IsKnownEncoding(const std::string& encoding) {
    return Handler(encoding.c_str()).Get() != nullptr;
}

bool Encode(std::string_view text, const std::string& encoding, std::string& out) {
    constexpr std::size_t kPiece = 1 << 20;
    const QuietErrors quiet;
    Handler handler(encoding.c_str());
    if (handler.Get() == nullptr) return false;
    xmlOutputBuffer* const buffer =
        xmlOutputBufferCreateIO(&AppendToString, nullptr, &out, handler.Release());
    if (buffer == nullptr) throw std::bad_alloc();
    bool good = true;
    while (good && !text.empty()) {
        std::size_t size = std::min(kPiece, text.size());
        while (size < text.size() && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80)
            --size;
        good = xmlOutputBufferWrite(buffer, static_cast<int>(size), text.data()) >= 0;
        text.remove_prefix(size);
    }
    return xmlOutputBufferClose(buffer) >= 0 && good;
}

}  // namespace brenta
