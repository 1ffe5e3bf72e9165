#include "brenta/error_log.h"

#include <exception>
#include <string>
#include <string_view>

#include "os/os.h"
#include "platform/host_services.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// The log

CErrorLog::CErrorLog() = default;
CErrorLog::~CErrorLog() = default;

std::size_t CErrorLog::SizeOf() const {
    return sizeof(*this);
}

const char* CErrorLog::GetClassName() const {
    return "CErrorLog";
}

const char* CErrorLog::GetBaseClassName() const {
    return "none";
}

void CErrorLog::SetCurrentFileName(const char* fileName) {
    m_fileName = fileName;
}

void CErrorLog::SetCurrentLineNumber(int line) {
    m_line = line;
}

void CErrorLog::SetCurrentColumnNumber(int column) {
    m_column = column;
}

void CErrorLog::Warning(const char* text) {
    Report(") : warning: ", text);
    ++m_warnings;
}

void CErrorLog::Error(const char* text) {
    Report(") : error: ", text);
    ++m_errors;
}

void CErrorLog::Report(const char* kind, const char* text) {
    CoreString message;
    // Put together rather than formatted: a formatted text would be cut.
    if (!m_fileName.IsEmpty() && m_line != 0) message << m_fileName << '(' << m_line << kind;
    m_messages.Add(message << text);
}

bool CErrorLog::AnyWarningsOrErrors() const {
    return m_warnings > 0 || m_errors > 0;
}

void CErrorLog::ResetLog() {
    m_messages.RemoveAll();
    m_fileName = "";
    m_line = m_column = m_warnings = m_errors = 0;
}

void CErrorLog::ShowLog(const char* reportFile, const char* title) {
    if (AnyWarningsOrErrors()) EmitLogFile(reportFile, title, m_messages, nullptr, nullptr);
}

// ---------------------------------------------------------------------------------------------------------
// The report

namespace {

using std::string_view;

constexpr string_view kHead = R"(<!DOCTYPE HTML PUBLIC "-//W3C//DTD HTML 4.0 Transitional//EN">
<html>
  <head>
    <title>)";
constexpr string_view kBanner = R"(</title>
    <STYLE>TABLE {PADDING: 0px; MARGIN: 0px; BORDER: none;}
              TR {PADDING: 0px; MARGIN: 0px; BORDER: none;}
              TD {PADDING: 0px; MARGIN: 0px; BORDER: none;}
    </STYLE>
  </head>
  <body>
  <TABLE id="Table1" style="WIDTH: 100%; HEIGHT: 51px" cellSpacing="1" cellPadding="1" width="553" align="center" border="1">
    <TR>
      <TD style="HEIGHT: 24px" bgColor="#ffffff">
        <H1 align="center"><FONT color="#ff7f3f">)";
constexpr string_view kTable = R"(</FONT></H1>
      </TD>
    </TR>
    <TR>
      <TD>
        <P style="PADDING: 0px;SPACING: 0px;MARGIN: 0px; BORDER: none">
        <TABLE id="Table2" style="BORDER: none;SPACING: 0px;" width="100%" bgColor="#ffdcdc" border="0">
          <TR>
)";
// Only the first row is opened, by the table; browsers open the others themselves.
constexpr string_view kRow = "\t\t<TD style=\"BORDER: none\" bgColor=\"";
constexpr string_view kRowColour = "\">\n              <FONT color= \"";
constexpr string_view kRowEnd = R"(</FONT>
            </TD>
          </TR>
)";
constexpr string_view kTableEnd = R"(        </TABLE>
        </P>
      </TD>
    </TR>
  </TABLE>
)";
constexpr string_view kLink = "  <P>&nbsp;</P>\n  <H3 align=\"center\"><A href=\"";
constexpr string_view kLinkEnd = "</A></H3>\n  <P>&nbsp;</P>\n";
constexpr string_view kEnd = "  </body>\n</html>\n";

string_view OrEmpty(const char* text) {
    return text ? string_view(text) : string_view();
}

string_view ColourOf(const CoreString& line) {
    if (line.Find("warning", true) >= 0) return "#0000ff";
    return line.Find("error", true) >= 0 ? "#ff0000" : "#000000";
}

void AppendRows(std::string& page, const TOrderedList<CoreString>& lines) {
    bool even = true;
    for (const CoreString& line : lines) {
        page.append(kRow).append(even ? "#afafaf" : "#efefef").append(kRowColour).append(ColourOf(line));
        page.append("\">").append(line.View()).append(kRowEnd);
        even = !even;
    }
}

}  // namespace

void EmitLogFile(const char* reportFile, const char* title, TOrderedList<CoreString>& lines,
                 const char* linkText, const char* linkUrl) try {
    // The whole page first: without memory for it the old file stays.
    std::string page;
    page.append(kHead).append(OrEmpty(title)).append(kBanner).append(OrEmpty(title)).append(kTable);
    AppendRows(page, lines);
    page.append(kTableEnd);
    if (linkText && linkUrl)
        page.append(kLink).append(linkUrl).append("\">").append(linkText).append(kLinkEnd);
    page.append(kEnd);

    os::TextFileWriter file;
    if (!file.Open(reportFile)) return;
    file.Write(page);
    file.Close();
    HostShellOpen(reportFile);
} catch (const std::exception&) {
    // No memory for the page, and nobody to tell.
}

}  // namespace brenta
