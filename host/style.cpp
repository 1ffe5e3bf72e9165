#include "style.h"

#include <algorithm>
#include <cstdlib>

#include "console.h"
#include "terminal.h"

namespace brenta::host {
namespace {

bool AreColoursWanted() {
    const char* const noColor = std::getenv("NO_COLOR");
    return (noColor == nullptr || *noColor == 0) && TerminalKnowsColours();
}

std::string Styled(Style style, const std::string& text) {
    constexpr const char* kCodes[] = {"\033[1m", "\033[31m", "\033[33m", "\033[2m"};
    return kCodes[static_cast<std::size_t>(style)] + text + "\033[0m";
}

/// As many columns as a terminal needs for a text: bytes that go on with a character need none.
std::size_t Width(const std::string& text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

}  // namespace

std::string StyledOutput(Style style, const std::string& text) {
    static const bool isOn = AreColoursWanted() && OutputGoesToTerminal();
    return isOn ? Styled(style, text) : text;
}

std::string StyledError(Style style, const std::string& text) {
    static const bool isOn = AreColoursWanted() && ErrorsGoToTerminal();
    return isOn ? Styled(style, text) : text;
}

Table::Table(std::vector<Column> columns)
    : m_columns(std::move(columns)), m_isForPerson(OutputGoesToTerminal()) {}

std::string Table::Line(const std::vector<std::string>& cells) const {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (i > 0) line += m_isForPerson ? "  " : "\t";
        const std::size_t width = m_isForPerson && i < m_columns.size() ? m_columns[i].width : 0;
        const std::string padding(width - std::min(width, Width(cells[i])), ' ');
        const bool isRight = i < m_columns.size() && m_columns[i].isNumber;
        line += isRight ? padding + cells[i] : cells[i] + (i + 1 < cells.size() ? padding : "");
    }
    return line;
}

void Table::Row(const std::vector<std::string>& cells) {
    if (m_isForPerson && !m_hasHeadings) {
        std::vector<std::string> headings;
        for (const Column& column : m_columns)
            headings.emplace_back(column.heading);
        PrintLine(StyledOutput(Style::kHeading, Line(headings)));
        m_hasHeadings = true;
    }
    PrintLine(Line(cells));
}

}  // namespace brenta::host
