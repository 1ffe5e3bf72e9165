// Colours and columns: on a terminal only, so that what a program reads is never changed for the eye.
#pragma once

#include <string>
#include <vector>

namespace brenta::host {

enum class Style { kHeading, kError, kWarning, kMuted };

/// The text in a style; as it is where it does not go to a terminal, or the environment says so (NO_COLOR,
/// TERM=dumb).
std::string StyledOutput(Style style, const std::string& text);
std::string StyledError(Style style, const std::string& text);

/// One column of a table: its heading, and how wide it is at least.
struct Column {
    const char* heading;
    std::size_t width;
    bool isNumber = false;
};

/// Rows of cells on standard output: in columns with headings on a terminal, else separated by tabs. Each row
/// is printed at once.
class Table {
 public:
    explicit Table(std::vector<Column> columns);
    void Row(const std::vector<std::string>& cells);

 private:
    std::string Line(const std::vector<std::string>& cells) const;

    const std::vector<Column> m_columns;
    const bool m_isForPerson;
    bool m_hasHeadings = false;
};

}  // namespace brenta::host
