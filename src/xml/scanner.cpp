#include "xml/scanner.h"

#include <algorithm>
#include <new>

#include "foundation/intern.h"
#include "os/os.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Entities

namespace {

struct Entity {
    std::string_view name;  ///< without the "&"
    std::string_view text;
};

constexpr Entity kXmlEntities[] = {
    {"lt;", "<"}, {"gt;", ">"}, {"quot;", "\""}, {"apos;", "'"}, {"amp;", "&"}};
constexpr Entity kHtmlEntities[] = {{"nbsp;", " "}, {"reg;", "(R)"}, {"trade;", "(TM)"}, {"copy;", "(C)"}};

template <std::size_t count>
const Entity* FindEntity(const Entity (&entities)[count], std::string_view text) {
    for (const Entity& entity : entities)
        if (text.starts_with(entity.name)) return &entity;
    return nullptr;
}

/// The entity with whose name, without the "&", a text starts.
const Entity* FindEntity(Entities entities, std::string_view text) {
    const Entity* found = FindEntity(kXmlEntities, text);
    if (found == nullptr && entities == Entities::Html) found = FindEntity(kHtmlEntities, text);
    return found;
}

}  // namespace

// One pass does what replacing one entity after the other in the order of the tables does: no replacement
// holds a part of an entity's name but the "&" of "&amp;", and after that only HTML's four are left to do.
void DecodeEntities(std::string_view text, Entities entities, std::string& out) {
    out.clear();
    while (!text.empty()) {
        const std::size_t plain = std::min(text.find('&'), text.size());
        out.append(text.substr(0, plain));
        text.remove_prefix(plain);
        if (text.empty()) return;
        text.remove_prefix(1);
        const Entity* entity = FindEntity(entities, text);
        if (entity != nullptr) text.remove_prefix(entity->name.size());
        if (entity != nullptr && entity->text == "&" && entities == Entities::Html) {
            if (const Entity* hidden = FindEntity(kHtmlEntities, text)) {
                text.remove_prefix(hidden->name.size());
                entity = hidden;
            }
        }
        out.append(entity != nullptr ? entity->text : "&");
    }
}

// ---------------------------------------------------------------------------------------------------------
// Identifiers

namespace {

STRID Intern(std::string_view text) {
    const STRID id = InternName(text);
    if (id == kNoName && !text.empty()) throw std::bad_alloc();
    return id;
}

}  // namespace

STRID PieceInterner::Name(std::string_view text) {
    const std::uint64_t start = LoadBytes(text.data(), text.size());
    Entry& entry = m_cache[((start ^ text.size()) * 0x9E3779B97F4A7C15ull) >> (64 - kCacheBits)];
    const bool known =
        entry.start == start && entry.length == text.size() &&
        (text.size() <= sizeof start || std::memcmp(StrPtr(entry.id), text.data(), text.size()) == 0);
    if (!known) entry = MakeEntry(start, text);
    m_pLast->pNext = &entry;
    m_pLast = &entry;
    return entry.id;
}

PieceInterner::Entry PieceInterner::MakeEntry(std::uint64_t start, std::string_view text) {
    Entry entry{start, text.size(), Intern(text), start, ~std::uint64_t{0}, nullptr};
    if (text.find('=') != text.npos) {
        // The name of an element, and of no attribute: it is never due.
        entry.due = 1;
        entry.dueMask = 0;
    } else if (text.size() <= 6) {
        const std::size_t bits = 8 * text.size();
        entry.due |= kBehindName << bits;
        entry.dueMask = (std::uint64_t{0x10000} << bits) - 1;
    } else if (text.size() == 7) {
        entry.dueMask >>= 8;
    }
    return entry;
}

STRID PieceInterner::DecodedName(std::string_view text) {
    return Name(Text(text));
}

std::string_view PieceInterner::Text(std::string_view text) {
    if (text.find('&') == text.npos) return text;
    DecodeEntities(text, m_entities, m_decoded);
    return m_decoded;
}

// ---------------------------------------------------------------------------------------------------------
// Files

bool ReadText(const char* path, std::string& text) {
    return path != nullptr && os::ReadWholeFile(path, text) == os::FileStatus::Ok;
}

}  // namespace brenta
