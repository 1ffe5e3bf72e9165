// The text of a file that is read piece by piece, so that neither its length counts in memory nor its bytes
// leave the processor's cache before they are parsed.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "os/os.h"

namespace brenta {

/// A window that moves over the text. It ends with a NUL; one in the file ends the text.
class FileText {
 public:
    /// What ReadOn throws when the file cannot be read any further.
    struct Unreadable {};

    /// False if there is no such file; null is no file.
    bool Open(const char* path) { return path != nullptr && m_file.emplace().Open(path); }
    /// Ends the text where it has been read to.
    void Close() {
        m_ended = true;
        m_file.reset();
    }

    /// Reads on. What lies before `start` is forgotten, and the window grows if that is too little; the three
    /// pointers into it, of which `end` is its end, follow. At first all three are the same. False at the end
    /// of the text. Throws Unreadable or std::bad_alloc.
    bool ReadOn(const char*& start, const char*& p, const char*& end);

 private:
    void MakeRoom(const char* start, std::size_t kept);

    std::optional<os::FileReader> m_file;
    std::vector<char> m_window;
    bool m_ended = false;
};

}  // namespace brenta
