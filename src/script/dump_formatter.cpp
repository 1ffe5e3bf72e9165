#include <cstring>
#include <string_view>

#include "brenta/dump.h"

namespace brenta {

namespace {

constexpr std::string_view kIndentText = "    ";

}  // namespace

DumpFormatter::DumpFormatter() : m_indent(0) {}

DumpFormatter::~DumpFormatter() = default;

DumpFormatter& DumpFormatter::operator+=(const char* text) {
    Add(text);
    return *this;
}

DumpFormatter& DumpFormatter::operator+=(STRID text) {
    Add(StrPtr(text));
    return *this;
}

void DumpFormatter::Add(const char* text) {
    if (text == nullptr) return;
    const char* lineEnd = std::strchr(text, '\n');
    if (lineEnd == nullptr) {
        m_line += text;
        return;
    }
    for (; lineEnd != nullptr; lineEnd = std::strchr(text, '\n')) {
        m_line += std::string_view(text, static_cast<std::size_t>(lineEnd - text));
        NewLine();
        text = lineEnd + 1;
    }
    // The formatter indents the new line itself, so blanks that the text brings along are dropped.
    m_line += text + std::strspn(text, " ");
}

void DumpFormatter::NewLine() {
    m_text += m_line;
    m_text += '\n';
    m_line.SetEmpty();
    for (int i = 0; i < m_indent; ++i)
        m_line += kIndentText;
}

void DumpFormatter::Push() {
    m_line += " {";
    ++m_indent;
    NewLine();
}

// The line that is finished first is empty, or blank, when the block's last text ended its line itself.
void DumpFormatter::Pop() {
    --m_indent;
    NewLine();
    m_line += '}';
    NewLine();
}

void DumpFormatter::Outdent() {
    --m_indent;
}

void DumpFormatter::Dump(bool clear) {
    if (!clear) return;
    m_text.SetEmpty();
    m_line.SetEmpty();
    m_indent = 0;
}

void DumpFormatter::GetString(CoreString& out) const {
    // Built aside, so that `out` may be any string.
    CoreString text(m_text);
    text += m_line;
    out = static_cast<CoreString&&>(text);
}

}  // namespace brenta
