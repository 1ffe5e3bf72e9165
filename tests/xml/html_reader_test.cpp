
#include <fstream>
#include <memory>

#include "brenta/xml_readers.h"
#include "test_support.h"
#include "xml/html_parse.h"
#include "xml/tree_text.h"

namespace brenta::test {
namespace {

/// The tree without its first line, behind "false\n" for a failure, which is "bad\n" with its message.
std::string Read(const std::string& text) {
    const auto block = std::make_unique<char[]>(text.size() + 1);
    text.copy(block.get(), text.size());
    const RecordingHost host;
    CCoreXmlDomElement root("Root");
    const char* position = block.get();
    const bool read = ParseHtml(position, root);
    EXPECT_TRUE(host.shown.empty() || (!read && host.shown == Texts{"Bad XML format.|0"})) << text;
    EXPECT_TRUE(!read || *position == '\0') << text;
    return (read ? "" : host.shown.empty() ? "false\n" : "bad\n") + TreeText(root).substr(5);
}

TEST(HtmlReader, ReadsWhatItUnderstands) {
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {" \xEF\xBB\xBF\n", ""},
        {"<", ""},
        {"<p>one <i>two</i> three</p>", "  p\n    Text #one \n    i\n      Text #two\n"},
        {"<p> \n<i>two</i></p>", "  p\n    i\n      Text #two\n"},
        {"<a><img src=\"x\">t<b /></a>", "  a\n    b\n"},
        {"<a><input>t<meta x>t<link /></a>", "  a\n    link\n"},
        {"<a>t<LINK x>t</a><link >t</link>", "  a\n    Text #t\n  link\n    Text #t\n"},
        {"<IMG >t</a>", "  IMG\n    Text #t\n"},
        {"<td nowrap width=5>t</td>", "  td nowrap=\"1\"\n    Text #t\n"},
        {"<td width=5 nowrap>t</td>", "  td width=\"5\" nowrap=\"1\"\n    Text #t\n"},
        {"<td a=\"1\" b = 'x' a=2 c>t</td>", "  td a=\"2\" b=\"'x'\" c=\"1\"\n    Text #t\n"},
        {"<p>&copy;&nbsp;&reg;&trade;&amp;nbsp;&amp;amp;copy;&lt;&amp;lt;</p>",
         "  p\n    Text #(C) (R)(TM) &amp;copy;<&lt;\n"},
        {"<p>1 < 2 <3</p>", "  p\n    Text #1 < 2 <3\n"},
        {"<b></b><i>t</i></b>", "  b\n    Text #</b>\n    i\n      Text #t\n"},
        {"<br />t<br/ >t</br>", "  br\n  br/\n    Text #t\n"},
        {"<br/><i>t</i></b>", "  br/\n    i\n      Text #t\n"},
        {"<ul><li>1<li>2</ul>", "  ul\n    li\n      Text #1\n      li\n        Text #2\n"},
        {"<!doctype a> t <?x?> <a>t</b>", "  a\n    Text #t\n"},
        {"<a>t</b> <", "  a\n    Text #t\n"},
        {"</a>", ""},
        {"x", "bad\n"},
        {"</a><b>t</b>", "bad\n"},
        {"<a>t</a></a><b>t</b>", "bad\n  a\n    Text #t\n"},
        {"<a ", "false\n  a\n"},
        {"<a b", "false\n  a\n"},
        {"<a b ", "false\n  a b=\"1\"\n"},
        {"<a b=", "false\n  a\n"},
        {"<a b=\"1\"", "false\n  a b=\"1\"\n"},
        {"<b></b>", "false\n  b\n"},
        {"<a>t</a><!-- end -->", "false\n  a\n    Text #t\n"},
        {"<a href=http://x>t</a>", "false\n  a href=\"http:\"\n"},
    };
    for (const auto& [text, expected] : rows)
        EXPECT_EQ(Read(text), expected) << text;
}

TEST(HtmlReader, LeavesRootsToTheCallerAndStandsWhereTheParseEnded) {
    const Scratch folder;
    const std::string path = folder / "a.html";
    CCoreHTMLReader reader;
    reader.Next();
    EXPECT_FALSE(reader.LoadDocument(path.c_str()) || reader.LoadDocument(nullptr) ||
                 reader.LoadDocument("/"));
    EXPECT_TRUE(reader.GetRootElement() == nullptr && reader.Cur() == 0 && reader.LookAhead() == 0);
    std::ofstream(path) << "<a>t</a>\n<a x=1/2";
    EXPECT_FALSE(reader.LoadDocument(path.c_str()));
    const std::unique_ptr<CCoreXmlDomElement> first(reader.GetRootElement());
    EXPECT_EQ(TreeText(*first), "Root\n  a\n    Text #t\n  a x=\"1\"\n");
    EXPECT_TRUE(reader.Cur() == '/' && reader.LookAhead() == '2');
    CCoreHTMLReader copy;
    copy = reader;
    std::ofstream(path) << "";
    EXPECT_TRUE(reader.LoadDocument(path.c_str()));
    const std::unique_ptr<CCoreXmlDomElement> second(reader.GetRootElement());
    EXPECT_EQ(TreeText(*second), "Root\n");
    EXPECT_TRUE(copy.GetRootElement() == first.get() && reader.Cur() == 0);
    for (const char c : {'/', '2', '\0', '\0'}) {
        EXPECT_EQ(copy.Cur(), c);
        copy.Next();
    }
}

TEST(HtmlReader, NeedsLittleStackAndLinearTime) {
    const auto load = [](int count, const char* piece, bool expected) {
        const std::string text = "<a>" + Repeat(piece, count);
        CCoreXmlDomElement root("Root");
        const char* position = text.c_str();
        EXPECT_EQ(ParseHtml(position, root), expected) << piece;
        EXPECT_EQ(position, text.c_str() + text.size()) << piece;
    };
    OnStackOf(1, [&] {
        load(10'000, "<br>", false);
        load(1'000'000, "<p>t", false);
        load(10'000, "<p>t</p>", true);
        for (const char* flood : {"<", "&", "<!", "<a b ", "\"", "<a b=\""})
            load(300'000, flood, false);
    });
}

}  // namespace
}  // namespace brenta::test
