// The entries of earlier prompts, in a file that the user alone can read.
#pragma once

#include <string>
#include <vector>

namespace brenta::host {

class History {
 public:
    /// `folder` is created where it is missing; "" keeps nothing.
    explicit History(const std::string& folder);

    /// The last entries, oldest first. An entry may span lines.
    const std::vector<std::string>& Entries() const { return m_entries; }
    /// Adds an entry to the file at once, so that it outlives whatever ends the program, and other prompts
    /// that are open keep theirs.
    void Add(const std::string& entry);

 private:
    void Load();

    std::string m_file;
    std::vector<std::string> m_entries;
};

}  // namespace brenta::host
