#include "console.h"

#include <cstdio>
#include <string_view>

#include "brenta/files.h"
#include "brenta/symbols.h"
#include "style.h"

namespace brenta::host {
namespace {

constexpr int kMaxShownDepth = 64;  // a value nested deeper than this is nothing to read

void AppendText(const Var& value, int depth, std::string& out);

void AppendList(const Var& list, int depth, std::string& out) {
    if (depth == kMaxShownDepth) {
        out += "{...}";
        return;
    }
    out += '{';
    bool first = true;
    for (TIter<Var> item = list.GetListIter(); item.Get() != nullptr; item.Next()) {
        if (!first) out += ", ";
        first = false;
        if (HasName(*item.Get())) {
            out += StrPtr(item.Get()->GetName());
            out += " = ";
        }
        AppendText(*item.Get(), depth + 1, out);
    }
    out += '}';
}

void AppendText(const Var& value, int depth, std::string& out) {
    switch (value.GetKind()) {
        case VarKind::Null:
            out += "null";
            break;
        case VarKind::List:
            AppendList(value, depth, out);
            break;
        default:
            if (IsFunction(value)) {
                out += "function ";
                out += StrPtr(static_cast<const FuncSymbol*>(value.GetRef())->GetName());
            } else {
                out += StrPtr(value.GetString());
            }
    }
}

/// A text between quotes, on one line.
void AppendQuoted(std::string& line, std::string_view text) {
    line += '"';
    for (const char c : text) {
        if (c == '"') {
            line += "&quot;";
        } else if (c == '\n') {
            line += "&#10;";
        } else {
            line += c;
        }
    }
    line += '"';
}

void WriteLine(std::FILE* file, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), file);
    if (text.empty() || text.back() != '\n') std::fputc('\n', file);
}

}  // namespace

void ConsoleStream::OutputPrintStream(const char* text) {
    WriteLine(stdout, text);
}

void ConsoleStream::OutputErrStream(const char* text) {
    m_hasComplained = true;
    std::fflush(stdout);  // so that messages stand behind the output that came before them
    WriteLine(stderr, StyledError(Style::kError, text));
}

void ConsoleStream::ComplainUnlessDone(const std::string& text) const {
    if (!m_hasComplained) Complain(text);
}

void Complain(const std::string& text) {
    std::fflush(stdout);
    WriteLine(stderr, StyledError(Style::kError, "brenta:") + " " + text);
}

void ComplainOfFault(const std::string& file, const CCoreXmlDom& document) {
    int offset = 0;
    const std::string reason = document.GetParseError(offset);
    Complain("'" + file + "' cannot be read: " + (reason.empty() ? "no reason known" : reason) +
             (offset > 0 ? " (at byte " + std::to_string(offset) + ")" : ""));
}

bool CheckFile(const std::string& file) {
    if (FileExists(file.c_str())) return true;
    Complain("'" + file + "' " + (DirectoryExists(file.c_str()) ? "is a folder" : "does not exist"));
    return false;
}

void PrintLine(const std::string& text) {
    WriteLine(stdout, text);
}

bool IsFunction(const Var& value) {
    return value.GetKind() == VarKind::Reference && value.GetName() == kFunctionName &&
           value.GetRef() != nullptr;
}

bool HasName(const Var& value) {
    return value.GetName() != kNoName && value.GetName() != kFunctionName;
}

std::string TextOf(const Var& value) {
    std::string text;
    AppendText(value, 0, text);
    return text;
}

std::string ElementText(const CCoreXmlDomElement& element) {
    std::string text = element.GetTagName();
    for (auto attribute = element.GetFirstAttribute(); attribute.Get() != nullptr; attribute.Next()) {
        text += ' ';
        text += (*attribute.Get())->GetName();
        text += '=';
        AppendQuoted(text, (*attribute.Get())->PeekValue());
    }
    if (element.GetInnerTextId() != kNoName) {
        text += ' ';
        AppendQuoted(text, element.GetInnerText());
    }
    return text;
}

std::string JoinMessages(const char* messages) {
    constexpr std::string_view kCommandPrefix = "cmd:(1): ";
    std::string_view rest = messages;
    std::string joined;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        std::string_view line = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (line.starts_with(kCommandPrefix)) line.remove_prefix(kCommandPrefix.size());
        if (line.empty()) continue;
        if (!joined.empty()) joined += ' ';
        joined += line;
    }
    return joined;
}

}  // namespace brenta::host
