// The text of an initialisation file: finding values, and changing one line without touching the others.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace brenta {

/// Sections of "key = value" lines.
///
///     file    = [ UTF-8 mark ] { line ( LF | CR LF ) } [ line ] ;
///     line    = blanks ( ";" anything | "[" name "]" rest | key "=" value | anything ) ;
///
/// A section's name reaches to the line's last "]". Blanks and tabs around names, keys and values do not
/// count, nor does one pair of equal quotes around a value; case does not matter in names and keys. Of
/// several sections of one name, and of several equal keys in it, the first counts. Keys before any section
/// belong to the section "". A ";" behind a value and a "#" anywhere are ordinary bytes.
///
/// Everything else in the file is kept as it is. Views that are handed out stay valid until the next change.
class IniText {
 public:
    explicit IniText(std::string content);
    IniText(const IniText&) = delete;
    IniText& operator=(const IniText&) = delete;

    const std::string& Content() const { return m_content; }

    /// False, and `value` as it was, if there is no such key.
    bool Find(std::string_view section, std::string_view key, std::string_view& value) const;

    /// Names of all sections but "", each once, and keys of one section, each once, as they first occur.
    std::vector<std::string_view> Sections() const;
    std::vector<std::string_view> Keys(std::string_view section) const;

    /// Replaces the value of a key (blanks around it do not count), or adds the key behind the section's last
    /// line that is not blank, or the section behind everything. Only for what CanSet accepts.
    void Set(std::string_view section, std::string_view key, std::string_view value);

    /// Removes all lines of a key from the section that counts.
    void Remove(std::string_view section, std::string_view key);

    /// Whether exactly this would be found again: no part holds a line break or a NUL, the names are not
    /// empty, and the key has no "=" and does not begin like a comment or a section.
    static bool CanSet(std::string_view section, std::string_view key, std::string_view value);

 private:
    struct Section {
        std::string_view name;
        std::size_t bodyStart;  // of the line behind the heading
        std::size_t bodyEnd;    // of the last line that is not blank
    };
    struct Entry {
        std::string_view key;
        std::string_view value;  // without blanks, with its quotes
        std::size_t section;
        std::size_t lineStart;
        std::size_t lineEnd;  // behind the line break
    };

    void Parse();
    void ParseLine(std::size_t start, std::size_t end);
    void AddSection(std::string_view name, std::size_t lineEnd);
    void AddEntry(std::string_view line, std::size_t equals, std::size_t start, std::size_t end);
    const Section* FindSection(std::string_view name) const;
    const Entry* FindEntry(std::string_view section, std::string_view key) const;
    std::string_view LineBreak() const;
    void Append(std::string_view section, std::string_view line);

    std::string m_content;
    std::vector<Section> m_sections;
    std::vector<Entry> m_entries;
    // The first of each name, by folded name; keys of the n-th section as its number, a NUL and the key.
    std::unordered_map<std::string, std::size_t> m_sectionsByName;
    std::unordered_map<std::string, std::size_t> m_entriesByName;
};

}  // namespace brenta
