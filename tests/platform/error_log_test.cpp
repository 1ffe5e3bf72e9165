#include "brenta/error_log.h"

#include <filesystem>
#include <fstream>

#include "test_support.h"

namespace brenta::test {
namespace {

const char* const kTop =
    "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.0 Transitional//EN\">\n<html>\n  <head>\n    "
    "<title>%s</title>\n"
    "    <STYLE>TABLE {PADDING: 0px; MARGIN: 0px; BORDER: none;}\n"
    "              TR {PADDING: 0px; MARGIN: 0px; BORDER: none;}\n"
    "              TD {PADDING: 0px; MARGIN: 0px; BORDER: none;}\n    </STYLE>\n  </head>\n  <body>\n"
    "  <TABLE id=\"Table1\" style=\"WIDTH: 100%; HEIGHT: 51px\" cellSpacing=\"1\" cellPadding=\"1\" "
    "width=\"553\" "
    "align=\"center\" border=\"1\">\n    <TR>\n      <TD style=\"HEIGHT: 24px\" bgColor=\"#ffffff\">\n"
    "        <H1 align=\"center\"><FONT color=\"#ff7f3f\">%s</FONT></H1>\n      </TD>\n    </TR>\n    <TR>\n"
    "      <TD>\n        <P style=\"PADDING: 0px;SPACING: 0px;MARGIN: 0px; BORDER: none\">\n"
    "        <TABLE id=\"Table2\" style=\"BORDER: none;SPACING: 0px;\" width=\"100%\" bgColor=\"#ffdcdc\" "
    "border=\"0\">\n          <TR>\n";
const char* const kBottom = "        </TABLE>\n        </P>\n      </TD>\n    </TR>\n  </TABLE>\n";

std::string Page(const std::string& title, const std::string& rows, const std::string& link) {
    std::string top = kTop;
    for (int i = 0; i < 2; ++i)
        top.replace(top.find("%s"), 2, title);
    return top + rows + kBottom + link + "  </body>\n</html>\n";
}

std::string Row(const char* background, const char* colour, const std::string& text) {
    return "\t\t<TD style=\"BORDER: none\" bgColor=\"" + std::string(background) +
           "\">\n              <FONT color= \"" + colour + "\">" + text +
           "</FONT>\n            </TD>\n          </TR>\n";
}

TEST(ErrorLog, ThePageToTheByte) {
    const Scratch scratch;
    const std::string report = scratch / "report.html", large(1000000, '%');
    const char *even = "#afafaf", *odd = "#efefef";
    struct {
        Texts lines;
        std::string rows;
    } const lists[] = {{{}, ""},
                       {{"plain"}, Row(even, "#000000", "plain")},
                       {{"a Warning", "ERRORs", "error in warninG handler", "", large, "<b>%s%n</b>"},
                        Row(even, "#0000ff", "a Warning") + Row(odd, "#ff0000", "ERRORs") +
                            Row(even, "#0000ff", "error in warninG handler") + Row(odd, "#000000", "") +
                            Row(even, "#000000", large) + Row(odd, "#000000", "<b>%s%n</b>")}};
    const std::tuple<const char*, const char*, const char*> links[] = {
        {nullptr, nullptr, ""},
        {"text", nullptr, ""},
        {nullptr, "url", ""},
        {"", "", "  <P>&nbsp;</P>\n  <H3 align=\"center\"><A href=\"\"></A></H3>\n  <P>&nbsp;</P>\n"},
        {"Help & more", "http://x/?a&b",
         "  <P>&nbsp;</P>\n  <H3 align=\"center\"><A href=\"http://x/?a&b\">Help & more</A></H3>\n"
         "  <P>&nbsp;</P>\n"}};
    for (const auto& list : lists) {
        for (const auto& [text, url, link] : links) {
            const RecordingHost desktop;
            TOrderedList<CoreString> lines;
            for (const std::string& line : list.lines)
                lines.Add(line.c_str());
            EmitLogFile(report.c_str(), "<i>T</i>", lines, text, url);
            EXPECT_EQ(ReadTextFile(report) == Page("<i>T</i>", list.rows, link), true) << link;
            EXPECT_EQ(desktop.opened, Texts{report});
        }
    }
    const RecordingHost desktop;
    TOrderedList<CoreString> none;
    for (const char* path : {static_cast<const char*>(nullptr), "", "/", "/none/report"})
        EmitLogFile(path, nullptr, none, nullptr, nullptr);
    EXPECT_TRUE(desktop.opened.empty());
    EmitLogFile(report.c_str(), nullptr, none, nullptr, nullptr);
    EXPECT_EQ(ReadTextFile(report), Page("", "", ""));
}

TEST(ErrorLog, PlacesAndCounts) {
    const RecordingHost desktop;
    const Scratch scratch;
    const std::string report = scratch / "report.html";
    CErrorLog log;
    EXPECT_STREQ(log.GetClassName(), "CErrorLog");
    EXPECT_STREQ(log.GetBaseClassName(), "none");
    log.ShowLog(report.c_str(), "T");
    EXPECT_FALSE(log.AnyWarningsOrErrors() || std::filesystem::exists(report));
    const std::tuple<const char*, int, const char*, const char*> rows[] = {
        {"a.scr", 12, "text", "a.scr(12) : warning: text"},
        {"a.scr", 0, "text", "text"},
        {"", 5, "%s", "%s"},
        {nullptr, 5, nullptr, ""},
        {"%d", -3, "x", "%d(-3) : warning: x"}};
    std::string expected;
    int row = 0;
    for (const auto& [file, line, text, message] : rows) {
        log.SetCurrentFileName(file);
        log.SetCurrentLineNumber(line);
        log.SetCurrentColumnNumber(7);
        log.Warning(text);
        expected +=
            Row(row++ % 2 == 0 ? "#afafaf" : "#efefef",
                std::string_view(message).find("warning") != std::string_view::npos ? "#0000ff" : "#000000",
                message);
    }
    CErrorLog copy(log);
    log.ResetLog();
    EXPECT_FALSE(log.AnyWarningsOrErrors());
    copy.Error("last");
    copy.ShowLog(report.c_str(), "T");
    EXPECT_EQ(ReadTextFile(report),
              Page("T", expected + Row("#efefef", "#ff0000", "%d(-3) : error: last"), ""));
    log.Error("alone");
    EXPECT_TRUE(log.AnyWarningsOrErrors());
    log.ShowLog(report.c_str(), "T");
    EXPECT_EQ(ReadTextFile(report), Page("T", Row("#afafaf", "#000000", "alone"), "")) << "no place is left";
}

}  // namespace
}  // namespace brenta::test
