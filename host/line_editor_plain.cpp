// Lines without editing, for platforms where the console itself edits.
#include <cstdio>
#include <iostream>

#include "line_editor.h"

namespace brenta::host {

struct LineEditor::Parts {};

LineEditor::LineEditor(Completer) : m_interactive(false) {}

LineEditor::~LineEditor() = default;

bool LineEditor::ReadLine(const char*, std::string& line) {
    return static_cast<bool>(std::getline(std::cin, line));
}

void LineEditor::Remember(const std::string&) {}

}  // namespace brenta::host
