// What a document may cost: what its references to entities expand to, and how long what libxml2 is slow or
// recursive in may be.
//
// libxml2 watches expansion itself, but not with the option that takes values of any length and nesting of
// any depth. So each reference is measured before the parser follows it: the size of an entity is that of its
// text with each reference in it counted at its own size. Every entity is measured once, and the measuring
// itself is charged to the document's budget, so that no order of declarations and references can make it
// costly.
#include <libxml/parserInternals.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "xml/platform_libxml2.h"

namespace brenta {

namespace {

constexpr std::size_t kDeepestEntity = 40;
constexpr std::size_t kSmallestBudget = 8u << 20;
constexpr std::size_t kBudgetPerByte = 100;

std::string_view TextOf(const xmlEntity& entity) {
    return entity.content == nullptr ? std::string_view() : AsChars(entity.content);
}

/// Takes the next reference off a text; false if there is none. `before` is what stands before it, `name`
/// what stands between "&" and ";".
bool TakeReference(std::string_view& text, std::string_view& before, std::string& name) {
    const std::size_t start = text.find('&');
    const std::size_t end = start == text.npos ? text.npos : text.find(';', start);
    if (end == text.npos) return false;
    before = text.substr(0, start);
    name.assign(text.substr(start + 1, end - start - 1));
    text.remove_prefix(end + 1);
    return true;
}

bool IsExpandable(const xmlEntity* entity) {
    return entity != nullptr && entity->etype != XML_INTERNAL_PREDEFINED_ENTITY && entity->content != nullptr;
}

/// Literal white space in a value counts as blanks.
void AppendNormalized(std::string_view text, std::string& out) {
    const std::size_t start = out.size();
    out += text;
    std::replace_if(
        out.begin() + static_cast<std::ptrdiff_t>(start), out.end(),
        [](char c) { return c == '\n' || c == '\t' || c == '\r'; }, ' ');
}

void AppendCharacter(const std::string& reference, std::string& out) {
    const bool hexadecimal = reference.size() > 1 && reference[1] == 'x';
    const long code = std::strtol(reference.c_str() + (hexadecimal ? 2 : 1), nullptr, hexadecimal ? 16 : 10);
    xmlChar bytes[8];
    const int count = code > 0 && code <= 0x10FFFF ? xmlCopyCharMultiByte(bytes, static_cast<int>(code)) : 0;
    out.append(AsChars(bytes), static_cast<std::size_t>(count));
}

// ---------------------------------------------------------------------------------------------------------
// Looking through a text

/// Looks for tags and declarations that are beyond the limits, at the speed of a search for "<". What is
/// malformed may be misread here, which the parser will refuse anyway.
class TextLimits {
 public:
    explicit TextLimits(std::string_view text) : m_text(text) {}

    bool Hold() {
        while ((m_at = m_text.find('<', m_at)) != m_text.npos) {
            ++m_at;
            if (Skips("!--", "-->") || Skips("![CDATA[", "]]>") || Skips("?", "?>")) continue;
            if (!MarkupHolds()) return false;
        }
        return true;
    }

 private:
    bool Skips(std::string_view start, std::string_view end) {
        if (m_text.compare(m_at, start.size(), start) != 0) return false;
        const std::size_t found = m_text.find(end, m_at + start.size());
        m_at = found == m_text.npos ? m_text.size() : found + end.size();
        return true;
    }

    /// A tag or a declaration up to its ">"; one of the document type up to its subset only.
    bool MarkupHolds() {
        std::size_t quoted = 0, alternatives = 0, parentheses = 0;
        const bool declaration = m_text.compare(m_at, 1, "!") == 0;
        for (; m_at < m_text.size(); ++m_at) {
            if (!kStops[static_cast<unsigned char>(m_text[m_at])]) continue;
            const char c = m_text[m_at];
            if (c == '>' || (c == '[' && declaration)) return true;
            if (c == '<') return true;
            if (c == '|' && ++alternatives > kMostAlternatives) return false;
            if (c == '(' && ++parentheses > kMostParentheses) return false;
            if (c != '"' && c != '\'') continue;
            if (++quoted > kMostAttributes) return false;
            m_at = std::min(m_text.find(c, m_at + 1), m_text.size() - 1);
        }
        return true;
    }

    static constexpr auto kStops = [] {
        std::array<bool, 256> stops{};
        for (const char c : {'"', '\'', '<', '>', '|', '(', '['})
            stops[static_cast<unsigned char>(c)] = true;
        return stops;
    }();

    std::string_view m_text;
    std::size_t m_at = 0;
};

}  // namespace

bool TextHolds(std::string_view text) {
    return TextLimits(text).Hold();
}

struct EntityLimits::Open {
    const xmlEntity* entity;
    std::string_view rest;
    std::size_t size;
};

EntityLimits::EntityLimits(std::size_t documentSize)
    : m_budget(std::max(kSmallestBudget, documentSize * kBudgetPerByte)) {}

bool EntityLimits::Charge(std::size_t size) {
    if (size > m_budget) return false;
    m_budget -= size;
    return true;
}

/// Goes on with the innermost entity up to its next unmeasured reference or its end.
bool EntityLimits::Step(std::vector<Open>& open) {
    std::string_view before;
    std::string name;
    while (TakeReference(open.back().rest, before, name)) {
        Open& top = open.back();
        top.size += before.size() + (name.starts_with('#') ? 4 : 0);
        const xmlEntity* inner = xmlGetDocEntity(top.entity->doc, AsXmlChars(name.c_str()));
        if (!IsExpandable(inner)) continue;
        if (const auto known = m_sizes.find(inner); known != m_sizes.end()) {
            top.size += known->second;
            if (top.size > kLongestExpansion) return false;
            continue;
        }
        const auto isInner = [inner](const Open& outer) { return outer.entity == inner; };
        if (open.size() == kDeepestEntity || std::any_of(open.begin(), open.end(), isInner)) return false;
        open.push_back({inner, TextOf(*inner), 0});
        return Charge(TextOf(*inner).size());
    }
    const Open done = open.back();
    open.pop_back();
    const std::size_t size = done.size + done.rest.size();
    if (size > kLongestExpansion) return false;
    m_sizes.emplace(done.entity, size);
    if (!open.empty()) open.back().size += size;
    return true;
}

bool EntityLimits::Admit(const xmlEntity& entity, std::size_t& size) {
    size = 0;
    if (!IsExpandable(&entity)) return true;
    if (!m_sizes.contains(&entity)) {
        if (!Charge(TextOf(entity).size())) return false;
        std::vector<Open> open{{&entity, TextOf(entity), 0}};
        while (!open.empty())
            if (!Step(open)) return false;
    }
    size = m_sizes[&entity];
    return Charge(size);
}

std::size_t EntityLimits::SizeOf(const xmlEntity& entity) const {
    const auto known = m_sizes.find(&entity);
    return known == m_sizes.end() ? 0 : known->second;
}

void AppendExpanded(xmlDoc* document, std::string_view text, std::string& out) {
    std::vector<std::string_view> open{text};
    std::string name;
    while (!open.empty()) {
        std::string_view before;
        if (!TakeReference(open.back(), before, name)) {
            AppendNormalized(open.back(), out);
            open.pop_back();
            continue;
        }
        AppendNormalized(before, out);
        if (name.starts_with('#')) {
            AppendCharacter(name, out);
            continue;
        }
        const xmlEntity* inner = xmlGetDocEntity(document, AsXmlChars(name.c_str()));
        if (IsExpandable(inner)) {
            if (open.size() <= kDeepestEntity) open.push_back(TextOf(*inner));
        } else if (inner != nullptr) {
            out += TextOf(*inner);
        }
    }
}

}  // namespace brenta
