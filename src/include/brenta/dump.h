/// @file
/// DumpFormatter, the indented text builder behind every diagnostic dump: of values (Var::Dump), of symbols
/// (CCoreSymbol::Dump), of statements (Statement::Dump).
///
///     DumpFormatter out;
///     out += "board";
///     out.Push();
///     out += "layers = 4";
///     out.Pop();
///     CoreString text;
///     out.GetString(text);          // "board {\n    layers = 4\n}\n"
///
/// The text grows at its end: finished lines, and one current line to which texts are added. Appending takes
/// time in proportion to what is appended. A formatter is used by one thread at a time.
#pragma once

#include "brenta/export.h"
#include "brenta/names.h"
#include "brenta/string.h"

namespace brenta {

class BRENTA_API DumpFormatter {
 public:
    /// Empty, at indent level 0.
    DumpFormatter();
    DumpFormatter(const DumpFormatter&) = default;
    DumpFormatter& operator=(const DumpFormatter&) = default;
    virtual ~DumpFormatter();

    /// Append through Add; kNoName adds "".
    DumpFormatter& operator+=(const char* text);
    DumpFormatter& operator+=(STRID text);

    /// Appends to the current line. Each line end in the text ends the line as NewLine does; what stands
    /// behind the last one begins the new line, without its leading blanks. Null adds nothing.
    void Add(const char* text);

    /// Finishes the current line; the next one begins with four blanks per indent level.
    void NewLine();

    /// Opens a block: " {" at the end of the current line, then a new line one level deeper.
    void Push();

    /// Closes a block: one level less, then a new line with "}" and another one.
    void Pop();

    /// One level less and nothing else: for a caller who writes the closing brace.
    void Outdent();

    /// With `clear` empties the formatter and goes back to level 0; without it does nothing. Writes nothing
    /// anywhere.
    void Dump(bool clear);

    /// Replaces `out` by the finished lines and the current one.
    void GetString(CoreString& out) const;

 private:
    CoreString m_text;  // finished lines
    CoreString m_line;  // the current one
    int m_indent;       // below 0 counts as 0 for the blanks
};

}  // namespace brenta
