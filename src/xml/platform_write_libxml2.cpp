// Writing: parsed documents through libxml2, trees of the library directly. A tree is written without making
// nodes of it first: the text is all that a built document needs to be.
#include <libxml/xmlsave.h>

#include <algorithm>
#include <array>
#include <new>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "brenta/xml.h"
#include "xml/platform_libxml2.h"
#include "xml/qualified_name.h"
#include "xml/tree_access.h"

namespace brenta {

namespace {

// ---------------------------------------------------------------------------------------------------------
// Characters

enum ByteKind : std::uint8_t { kPass, kDrop, kEscape, kHigh };

constexpr std::array<ByteKind, 256> MakeByteKinds() {
    std::array<ByteKind, 256> kinds{};
    for (std::size_t c = 0; c < kinds.size(); ++c)
        kinds[c] = c >= 0x80 ? kHigh : c < ' ' ? kDrop : kPass;
    for (const char c : {'<', '>', '&', '"', '\n', '\r', '\t'})
        kinds[static_cast<unsigned char>(c)] = kEscape;
    return kinds;
}

constexpr std::array<ByteKind, 256> kByteKinds = MakeByteKinds();

const char* Escape(char c) {
    switch (c) {
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '&':
            return "&amp;";
        case '"':
            return "&quot;";
        case '\n':
            return "&#10;";
        case '\r':
            return "&#13;";
        default:
            return "&#9;";
    }
}

/// The character at the start of a text and its size in UTF-8; size 0 if the bytes are not UTF-8.
struct Character {
    unsigned int code;
    std::size_t size;
};

Character DecodeHigh(const char* p, const char* end) {
    constexpr unsigned int kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto lead = static_cast<unsigned char>(*p);
    const std::size_t size = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (size == 0 || static_cast<std::size_t>(end - p) < size) return {0, 0};
    unsigned int code = lead & (0x7Fu >> size);
    for (std::size_t i = 1; i < size; ++i) {
        const auto next = static_cast<unsigned char>(p[i]);
        if ((next & 0xC0) != 0x80) return {0, 0};
        code = code << 6 | (next & 0x3F);
    }
    const bool surrogate = code >= 0xD800 && code < 0xE000;
    return code < kLeast[size] || code > 0x10FFFF || surrogate ? Character{0, 0} : Character{code, size};
}

/// Takes one character from 0x80 up. A byte that is not UTF-8 is taken as Latin-1, so that nothing is lost;
/// what XML allows nowhere, U+FFFE and U+FFFF, is dropped. Returns whether it was written.
bool AppendHigh(std::string& out, const char*& p, const char* end) {
    const Character character = DecodeHigh(p, end);
    if (character.size != 0) {
        const bool allowed = character.code != 0xFFFE && character.code != 0xFFFF;
        if (allowed) out.append(p, character.size);
        p += character.size;
        return allowed;
    }
    const auto byte = static_cast<unsigned char>(*p++);
    out += static_cast<char>(0xC0 | (byte >> 6));
    out += static_cast<char>(0x80 | (byte & 0x3F));
    return true;
}

/// Appends a text as characters that a document may hold; false if others were dropped. With `escaped`, as
/// the value of an attribute.
bool AppendText(std::string& out, std::string_view text, bool escaped) {
    const char* p = text.data();
    const char* const end = p + text.size();
    bool whole = true;
    while (p != end) {
        const char* const run = p;
        while (p != end && kByteKinds[static_cast<unsigned char>(*p)] == kPass)
            ++p;
        out.append(run, static_cast<std::size_t>(p - run));
        if (p == end) break;
        const ByteKind kind = kByteKinds[static_cast<unsigned char>(*p)];
        if (kind == kHigh) {
            whole = AppendHigh(out, p, end) && whole;
            continue;
        }
        whole = whole && kind != kDrop;
        if (kind == kEscape && escaped) out += Escape(*p);
        if (kind == kEscape && !escaped) out += *p;
        ++p;
    }
    return whole;
}

/// The characters of a text; a byte that is not UTF-8 becomes one that no name has.
std::u32string CodePoints(std::string_view text) {
    std::u32string points;
    const char* const end = text.data() + text.size();
    for (const char* p = text.data(); p != end;) {
        const bool ascii = static_cast<unsigned char>(*p) < 0x80;
        const Character character = ascii ? Character{static_cast<unsigned char>(*p), 1} : DecodeHigh(p, end);
        points += static_cast<char32_t>(character.code);
        p += character.size == 0 ? 1 : character.size;
    }
    return points;
}

/// Puts a text back to its length if the work on it is not finished.
class Rollback {
 public:
    explicit Rollback(std::string& text) : m_text(text), m_size(text.size()) {}
    ~Rollback() {
        if (!m_done) m_text.resize(m_size);
    }
    Rollback(const Rollback&) = delete;
    Rollback& operator=(const Rollback&) = delete;
    void Done() { m_done = true; }

 private:
    std::string& m_text;
    std::size_t m_size;
    bool m_done = false;
};

// ---------------------------------------------------------------------------------------------------------
// Elements

/// Writes an element and what is below it. What has no name that XML knows is left out.
class ElementWriter {
 public:
    explicit ElementWriter(std::string& out) : m_out(out) {}

    bool Write(const CCoreXmlDomElement& top) {
        if (!Begin(top)) return false;
        while (!m_open.empty()) {
            Open& open = m_open.back();
            if (open.child.Get() == nullptr) {
                End();
                continue;
            }
            const CCoreXmlDomElement& child = **open.child.Get();
            open.child.Next();
            Begin(child);
        }
        return true;
    }

 private:
    struct Open {
        TIter<CCoreXmlDomElement*> child;
        const std::string* name;
    };

    /// The name as it is written, one object for each; "" for one that is not to be. Two names may become
    /// one: a letter of Latin-1 in the first is the same in UTF-8 in the second.
    const std::string& Name(STRID id) {
        const auto [found, isNew] = m_names.try_emplace(id, nullptr);
        if (isNew) {
            std::string name;
            const bool whole = AppendText(name, StrPtr(id), false);
            if (!whole || !IsQualifiedName(CodePoints(name))) name.clear();
            found->second = &*m_written.insert(std::move(name)).first;
        }
        return *found->second;
    }

    bool Begin(const CCoreXmlDomElement& element) {
        const std::string& name = Name(element.GetTagNameId());
        if (name.empty()) return false;
        (m_out += '<') += name;
        WriteAttributes(element);
        TIter<CCoreXmlDomElement*> child = element.GetFirstChild();
        while (child.Get() && Name((*child.Get())->GetTagNameId()).empty())
            child.Next();
        if (child.Get() == nullptr) {
            m_out += "/>";
        } else {
            m_out += '>';
            m_open.push_back({child, &name});
        }
        return true;
    }

    void End() {
        ((m_out += "</") += *m_open.back().name) += '>';
        m_open.pop_back();
    }

    /// Where in m_attributes the attribute of this name stands, or is to stand.
    std::size_t PlaceOf(const std::string* name) {
        constexpr std::size_t kFew = 16;
        if (m_attributes.size() >= kFew) {
            for (std::size_t i = m_places.size(); i < m_attributes.size(); ++i)
                m_places.emplace(m_attributes[i].name, i);
            return m_places.try_emplace(name, m_attributes.size()).first->second;
        }
        std::size_t place = 0;
        while (place < m_attributes.size() && m_attributes[place].name != name)
            ++place;
        return place;
    }

    /// Of several attributes with one name the last one's value stands at the place of the first.
    void WriteAttributes(const CCoreXmlDomElement& element) {
        m_attributes.clear();
        m_places.clear();
        for (auto iter = TreeAccess::Attributes(element); iter.Get(); iter.Next()) {
            const std::string& name = Name((*iter.Get())->GetNameId());
            if (name.empty()) continue;
            const std::size_t place = PlaceOf(&name);
            if (place == m_attributes.size()) m_attributes.emplace_back();
            m_attributes[place] = {&name, *iter.Get()};
        }
        for (const auto& [name, attribute] : m_attributes) {
            ((m_out += ' ') += *name) += "=\"";
            AppendText(m_out, attribute->PeekValue(), true);
            m_out += '"';
        }
    }

    struct Attribute {
        const std::string* name = nullptr;
        const CCoreXmlDomAttribute* attribute = nullptr;
    };

    std::string& m_out;
    std::vector<Open> m_open;
    std::unordered_map<STRID, const std::string*> m_names;
    std::unordered_set<std::string> m_written;
    std::vector<Attribute> m_attributes;
    std::unordered_map<const std::string*, std::size_t> m_places;
};

}  // namespace

bool WriteElement(std::string& out, const CCoreXmlDomElement& element) {
    Rollback rollback(out);
    if (!ElementWriter(out).Write(element)) return false;
    out += '\n';
    rollback.Done();
    return true;
}

bool WriteInstruction(std::string& out, std::string_view target, const char* data) {
    Rollback rollback(out);
    if (!IsPlainName(CodePoints(target))) return false;
    std::string text;
    AppendText(text, data, false);
    if (text.find("?>") != text.npos) return false;
    ((out += "<?") += target) += ' ';
    (out += text) += "?>\n";
    rollback.Done();
    return true;
}

bool WriteComment(std::string& out, const char* text) {
    Rollback rollback(out);
    std::string plain;
    AppendText(plain, text, false);
    if (plain.find("--") != plain.npos || plain.ends_with('-')) return false;
    ((out += "<!--") += plain) += "-->\n";
    rollback.Done();
    return true;
}

// ---------------------------------------------------------------------------------------------------------
// Parsed documents

int AppendToString(void* text, const char* bytes, int size) {
    try {
        static_cast<std::string*>(text)->append(bytes, static_cast<std::size_t>(size));
        return size;
    } catch (const std::bad_alloc&) {
        return -1;
    }
}

std::string WriteTree(const XmlTree& tree) {
    const QuietErrors quiet;
    std::string text;
    xmlSaveCtxt* const save = xmlSaveToIO(&AppendToString, nullptr, &text, "UTF-8",
                                          XML_SAVE_NO_DECL | XML_SAVE_AS_XML | XML_SAVE_NO_XHTML);
    if (save == nullptr) throw std::bad_alloc();
    const long result = xmlSaveDoc(save, tree.m_pDoc);
    if (xmlSaveClose(save) < 0 || result < 0) throw std::bad_alloc();
    return text;
}

std::string WriteDeclaration(const XmlTree& tree, const std::string& encoding) {
    constexpr int kNoDeclaration = -1;
    const xmlDoc& document = *tree.m_pDoc;
    if (document.standalone == kNoDeclaration) return "";
    std::string text = "<?xml version=\"";
    text += document.version == nullptr ? "1.0" : AsChars(document.version);
    if (!encoding.empty()) (text += "\" encoding=\"") += encoding;
    if (document.standalone >= 0)
        text += document.standalone == 1 ? "\" standalone=\"yes" : "\" standalone=\"no";
    return text += "\"?>\n";
}

}  // namespace brenta
