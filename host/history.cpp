#include "history.h"

#include <filesystem>
#include <fstream>
#include <system_error>

namespace brenta::host {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostEntries = 1000;

/// One line of the file for one entry: "\n" for a line end, "\\" for a backslash.
std::string Encode(const std::string& entry) {
    std::string line;
    for (const char c : entry) {
        if (c == '\\' || c == '\n') line += '\\';
        line += c == '\n' ? 'n' : c;
    }
    return line;
}

std::string Decode(const std::string& line) {
    std::string entry;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const bool isEscape = line[i] == '\\' && i + 1 < line.size();
        if (isEscape) ++i;
        entry += isEscape && line[i] == 'n' ? '\n' : line[i];
    }
    return entry;
}

/// Whether there is a file, or none yet. Whatever else has the name, a pipe or a folder, keeps no history:
/// opening it may wait for ever.
bool CanKeepEntries(const std::string& file) {
    std::error_code ignored;
    const fs::file_status status = fs::status(file, ignored);
    return fs::is_regular_file(status) || status.type() == fs::file_type::not_found;
}

/// An empty file that others cannot read, before anything is in it.
void CreatePrivate(const std::string& file) {
    std::error_code ignored;
    if (!fs::exists(file, ignored)) std::ofstream(file, std::ios::app).close();
    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write, ignored);
}

}  // namespace

History::History(const std::string& folder) {
    if (folder.empty()) return;
    std::error_code error;
    if (fs::create_directories(folder, error)) fs::permissions(folder, fs::perms::owner_all, error);
    m_file = (fs::path(folder) / "history").string();
    if (CanKeepEntries(m_file)) {
        Load();
    } else {
        m_file.clear();
    }
}

void History::Load() {
    std::ifstream file(m_file);
    for (std::string line; std::getline(file, line);)
        m_entries.push_back(Decode(line));
    file.close();
    if (m_entries.size() <= 2 * kMostEntries) return;

    m_entries.erase(m_entries.begin(), m_entries.end() - kMostEntries);
    const std::string shorter = m_file + ".new";
    if (!CanKeepEntries(shorter)) return;
    CreatePrivate(shorter);
    std::ofstream out(shorter, std::ios::trunc);
    for (const std::string& entry : m_entries)
        out << Encode(entry) << '\n';
    out.close();
    std::error_code ignored;
    if (out) fs::rename(shorter, m_file, ignored);
}

void History::Add(const std::string& entry) {
    if (m_file.empty() || entry.empty() || (!m_entries.empty() && m_entries.back() == entry)) return;
    m_entries.push_back(entry);
    CreatePrivate(m_file);
    std::ofstream(m_file, std::ios::app) << Encode(entry) + "\n" << std::flush;
}

}  // namespace brenta::host
