#include "platform/ini_text.h"

#include <algorithm>
#include <utility>

#include "foundation/characters.h"

namespace brenta {

namespace {

using std::string_view;

constexpr string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr string_view kBlanks = " \t\r\n";

string_view Trimmed(string_view text) {
    const std::size_t start = std::min(text.find_first_not_of(kBlanks), text.size());
    return text.substr(start, text.find_last_not_of(kBlanks) + 1 - start);
}

string_view WithoutQuotes(string_view text) {
    const bool quoted =
        text.size() > 1 && (text.front() == '"' || text.front() == '\'') && text.front() == text.back();
    return quoted ? text.substr(1, text.size() - 2) : text;
}

std::string Folded(string_view name) {
    std::string folded(name);
    std::transform(folded.begin(), folded.end(), folded.begin(), &ToLower);
    return folded;
}

std::string EntryName(std::size_t section, string_view key) {
    return std::to_string(section) + '\0' + Folded(key);
}

bool HasLineEnd(string_view text) {
    return text.find_first_of(string_view("\r\n\0", 3)) != string_view::npos;
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------
// Reading

IniText::IniText(std::string content) : m_content(std::move(content)) {
    Parse();
}

void IniText::Parse() {
    m_sections.clear();
    m_entries.clear();
    m_sectionsByName.clear();
    m_entriesByName.clear();
    const std::size_t start = m_content.starts_with(kUtf8Mark) ? kUtf8Mark.size() : 0;
    AddSection("", start);
    for (std::size_t at = start; at < m_content.size();) {
        const std::size_t end = std::min(m_content.find('\n', at), m_content.size() - 1) + 1;
        ParseLine(at, end);
        at = end;
    }
}

void IniText::ParseLine(std::size_t start, std::size_t end) {
    const string_view line = Trimmed(string_view(m_content).substr(start, end - start));
    if (line.empty()) return;
    if (line.front() == '[' && line.rfind(']') != string_view::npos)
        return AddSection(Trimmed(line.substr(1, line.rfind(']') - 1)), end);
    m_sections.back().bodyEnd = end;
    const std::size_t equals = line.find('=');
    if (line.front() != ';' && equals != string_view::npos) AddEntry(line, equals, start, end);
}

void IniText::AddSection(string_view name, std::size_t lineEnd) {
    m_sectionsByName.emplace(Folded(name), m_sections.size());
    m_sections.push_back({name, lineEnd, lineEnd});
}

void IniText::AddEntry(string_view line, std::size_t equals, std::size_t start, std::size_t end) {
    const std::size_t section = m_sections.size() - 1;
    const string_view key = Trimmed(line.substr(0, equals));
    m_entriesByName.emplace(EntryName(section, key), m_entries.size());
    m_entries.push_back({key, Trimmed(line.substr(equals + 1)), section, start, end});
}

const IniText::Section* IniText::FindSection(string_view name) const {
    const auto found = m_sectionsByName.find(Folded(Trimmed(name)));
    return found == m_sectionsByName.end() ? nullptr : &m_sections[found->second];
}

const IniText::Entry* IniText::FindEntry(string_view section, string_view key) const {
    const Section* const place = FindSection(section);
    if (!place) return nullptr;
    const auto number = static_cast<std::size_t>(place - m_sections.data());
    const auto found = m_entriesByName.find(EntryName(number, Trimmed(key)));
    return found == m_entriesByName.end() ? nullptr : &m_entries[found->second];
}

bool IniText::Find(string_view section, string_view key, string_view& value) const {
    const Entry* const entry = FindEntry(section, key);
    if (entry) value = WithoutQuotes(entry->value);
    return entry != nullptr;
}

std::vector<string_view> IniText::Sections() const {
    std::vector<string_view> names;
    for (const Section& section : m_sections)
        if (&section == FindSection(section.name) && !section.name.empty()) names.push_back(section.name);
    return names;
}

std::vector<string_view> IniText::Keys(string_view section) const {
    std::vector<string_view> keys;
    for (const Entry& entry : m_entries)
        if (&entry == FindEntry(section, entry.key)) keys.push_back(entry.key);
    return keys;
}

// ---------------------------------------------------------------------------------------------------------
// Changing

bool IniText::CanSet(string_view section, string_view key, string_view value) {
    if (HasLineEnd(section) || HasLineEnd(key) || HasLineEnd(value)) return false;
    const string_view name = Trimmed(key);
    return !Trimmed(section).empty() && !name.empty() && name.find('=') == string_view::npos &&
           name.front() != ';' && name.front() != '[';
}

/// The file's own kind of line break: that of its first line.
string_view IniText::LineBreak() const {
    const std::size_t end = m_content.find('\n');
    return end != std::string::npos && end > 0 && m_content[end - 1] == '\r' ? "\r\n" : "\n";
}

// Blanks around the value would not be read back; kept, they would become more with every writing.
void IniText::Set(string_view section, string_view key, string_view value) {
    value = Trimmed(value);
    if (const Entry* const entry = FindEntry(section, key)) {
        const auto start = static_cast<std::size_t>(entry->value.data() - m_content.data());
        m_content.replace(start, entry->value.size(), value);
    } else {
        std::string line(Trimmed(key));
        line += '=';
        line += value;
        Append(section, line);
    }
    Parse();
}

/// A last line that is not ended is ended first.
void IniText::Append(string_view section, string_view line) {
    const Section* const place = FindSection(section);
    const std::size_t at = place ? place->bodyEnd : m_content.size();
    const std::string lineBreak(LineBreak());
    std::string added;
    if (at > 0 && m_content[at - 1] != '\n' && m_content != kUtf8Mark) added = lineBreak;
    if (!place) added.append("[").append(Trimmed(section)).append("]").append(lineBreak);
    m_content.insert(at, added.append(line).append(lineBreak));
}

void IniText::Remove(string_view section, string_view key) {
    while (const Entry* const entry = FindEntry(section, key)) {
        m_content.erase(entry->lineStart, entry->lineEnd - entry->lineStart);
        Parse();
    }
}

}  // namespace brenta
