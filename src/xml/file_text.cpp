#include "xml/file_text.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace brenta {

namespace {

constexpr std::size_t kWindow = std::size_t{256} << 10;
constexpr std::size_t kSmallestWindow = 4096;

}  // namespace

bool FileText::ReadOn(const char*& start, const char*& p, const char*& end) {
    if (m_ended) return false;
    const auto kept = static_cast<std::size_t>(end - start);
    const auto passed = static_cast<std::size_t>(p - start);
    MakeRoom(start, kept);
    char* const fresh = m_window.data() + kept;
    const std::ptrdiff_t count = m_file->Read(fresh, m_window.size() - kept - 1);
    if (count < 0) throw Unreadable();
    fresh[count] = '\0';
    const std::size_t length = std::strlen(fresh);
    m_ended = count == 0 || length < static_cast<std::size_t>(count);
    start = m_window.data();
    p = start + passed;
    end = fresh + length;
    return length != 0;
}

/// Moves what is kept to the start of a window of which it fills no more than half.
void FileText::MakeRoom(const char* start, std::size_t kept) {
    if (m_window.empty()) {
        // One byte is for the NUL, and one shows the end of a file that kept its size.
        const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(m_file->Size() + 2, kWindow));
        m_window.resize(std::max(size, kSmallestWindow));
    } else if (2 * kept >= m_window.size()) {
        std::vector<char> larger(2 * m_window.size());
        std::copy_n(start, kept, larger.data());
        m_window.swap(larger);
    } else {
        std::memmove(m_window.data(), start, kept);
    }
}

}  // namespace brenta
