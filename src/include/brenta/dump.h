/// @file
/// DumpFormatter, the indented text builder behind every diagnostic dump.
#pragma once

#include "brenta/export.h"
#include "brenta/names.h"
#include "brenta/string.h"

namespace brenta {

class BRENTA_API DumpFormatter {
   public:
    DumpFormatter();
    DumpFormatter(const DumpFormatter&) = default;
    DumpFormatter& operator=(const DumpFormatter&) = default;
    virtual ~DumpFormatter();

    DumpFormatter& operator+=(const char* text);
    DumpFormatter& operator+=(STRID text);
    void Add(const char* text);
    void NewLine();
    void Push();
    void Pop();
    /// Lowers the indent without writing anything (the closing brace of a block is then up to the caller).
    void Outdent();
    void Dump(bool clear);
    void GetString(CoreString& out) const;

   private:
    CoreString m_text;
    CoreString m_line;
    int m_indent;
};

}  // namespace brenta
