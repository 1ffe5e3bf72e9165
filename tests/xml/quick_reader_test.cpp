
#include <fstream>
#include <memory>

#include "brenta/xml_readers.h"
#include "test_support.h"
#include "xml/tree_text.h"

namespace brenta::test {
namespace {

constexpr char kInner[] = "Inner text not valid in this reader.\n";
constexpr char kEnd[] = "Unexpected end-of-file.\n";
constexpr char kSyntax[] = "Syntax error.\n";

void DeleteAll(const TOrderedList<CCoreXmlDomElement*>& elements) {
    for (CCoreXmlDomElement* element : elements)
        delete element;
}

/// The messages, one per line.
std::string Shown(const RecordingHost& host) {
    std::string lines;
    for (const std::string& message : host.shown) {
        EXPECT_TRUE(message.ends_with("|0")) << message;
        lines += message.substr(0, message.size() - 2) + "\n";
    }
    return lines;
}

/// The tree, or the messages of a text that is not read.
std::string Read(const std::string& text) {
    // A block of exactly its size shows a sanitizer what is read behind it.
    const auto block = std::make_unique<char[]>(text.size() + 1);
    text.copy(block.get(), text.size());
    const RecordingHost host;
    CCoreXMLQuickReader reader;
    const bool read = reader.ParseStream(block.get());
    std::string tree = TreeText(reader.GetFirstElement());
    DeleteAll(reader.TakeElements());
    EXPECT_EQ(read ? Shown(host) : tree, "") << text;
    return read ? tree : Shown(host);
}

TEST(QuickReader, ReadsItsDialectOrShowsTheFault) {
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {" \t\r\n", ""},
        {"<?xml version=\"1.0\"?>\n<!-- note -->", ""},
        {"<? never ends", ""},
        {"\xEF\xBB\xBF<a/>", "a\n"},
        {"<a/> <b></b>", "a\nb\n"},
        {"<a><b><c/></b><!x><d/></a>", "a\n  b\n    c\n  d\n"},
        {"< a x = \"1\"y=\"<>\n\xE9'\" ></a>", "a x=\"1\" y=\"<>\n\xE9'\"\n"},
        {"<a x=\"1\" y=\"\" x=\"2\"/>", "a x=\"2\" y=\"\"\n"},
        {"<a /x=\"1\" /=\"2\"/>", "a /x=\"1\" /=\"2\"\n"},
        {"<a x=\"1 &lt; 2 &amp;amp; 3 &amp;lt; &quot;&apos;&gt;&nbsp;&#10;&lt\"/>",
         "a x=\"1 < 2 &amp; 3 &lt; \"'>&nbsp;&#10;&lt\"\n"},
        {"<a&amp;b &amp;=\"\"></a&b>", "a&b &amp;=\"\"\n"},
        {"<a><x= /></a><a x==\"v\" longer=\"1\"/>", "Missing quote for attribute value.\n"},
        {"<></><\xE9/>", "\n\n"},
        {"<a =\"1\" b=\"\"/><a =\"2\" b=\"\"/><a c=\"3\"/><a =\"4\"d='/>",
         "Missing quote for attribute value.\n"},
        {"<a =\"1\"/><a =\"2\"/><a c=\"3\"/>", "a =\"1\"\na =\"2\"\na c=\"3\"\n"},
        {"<r><a six_nm=\"1\" seven_n=\"2\" eight_na=\"3\" a_longer_name=\"4\"/>"
         "<a six_nm=\"5\" seven_n=\"6\" eight_na=\"7\" a_longer_name=\"8\"/>"
         "<a six_nm_=\"5\" seven_x=\"6\" eight_nb=\"7\" a_longer_nome=\"8\"        />"
         "<a six_nm =\"5\" seven_n= \"6\" eight_na =\"7\" a_longer_name= \"8\"        /></r>",
         "r\n  a six_nm=\"1\" seven_n=\"2\" eight_na=\"3\" a_longer_name=\"4\"\n"
         "  a six_nm=\"5\" seven_n=\"6\" eight_na=\"7\" a_longer_name=\"8\"\n"
         "  a six_nm_=\"5\" seven_x=\"6\" eight_nb=\"7\" a_longer_nome=\"8\"\n"
         "  a six_nm=\"5\" seven_n=\"6\" eight_na=\"7\" a_longer_name=\"8\"\n"},
        {"<a&gt;b></a&gt;b>", "a>b\n"},
        {"<a&gt;b></a>b>", "Mismatched end tag.\n"},
        {"<a&amp;lt;b></a&lt;b>", "Mismatched end tag.\n"},
        {"<a\x80/>", "a\n"},
        {"x", "Bad XML format.\n"},
        {"<!-- a > b -->", "Bad XML format.\n"},
        {"<!DOCTYPE a [<!ENTITY b \"\">]><a/>", "Bad XML format.\n"},
        {"</a>", "Expecting '>' after empty element '/'\n"},
        {"<a/ >", "Expecting '>' after empty element '/'\n"},
        {"<a b/>", kEnd},
        {"<a b >", "Not a valid attribute.\n"},
        {"<a b\x80\xFF", "Not a valid attribute.\n"},
        {"<a \xE9=\"1\"/>", "a =\"1\"\n"},
        {"<a b='1'/>", "Missing quote for attribute value.\n"},
        {"<a b=\"1", kEnd},
        {"<a></a >", "Mismatched end tag.\n"},
        {"<a></A>", "Mismatched end tag.\n"},
        {"<a></a", kEnd},
        {"<a>text</a>", kInner},
        {"<a>\xEF\xBB\xBF</a>", kInner},
        {"<a>", kSyntax},
        {"<a> ", kInner},
        {"<a><!x>", kSyntax},
        {"<a><", std::string(kEnd) + kInner},
        {"<a><<b x></a>", std::string(kEnd) + kInner},
        {"<a><b><c x='1'/></b></a>", "Missing quote for attribute value.\n" + Repeat(kInner, 2)},
        {"<z/>" + Repeat("<a>", 50) + Repeat("</a>", 49), kSyntax},
        {Repeat("<a>", 50) + "<a b ", "Not a valid attribute.\n" + Repeat(kInner, 50)},
    };
    for (const auto& [text, expected] : rows)
        EXPECT_EQ(Read(text), expected) << text;
}

TEST(QuickReader, KeepsElementsOfEarlierParsesUntilAFault) {
    const RecordingHost host;
    CCoreXMLQuickReader reader;
    EXPECT_TRUE(reader.ParseStream("<a/>") && reader.ParseStream("<b/><c/>") && reader.ParseStream(nullptr));
    EXPECT_EQ(TreeText(reader.GetFirstElement()), "a\nb\nc\n");
    EXPECT_FALSE(reader.LoadDocument(nullptr) || reader.LoadDocument("/") ||
                 reader.LoadDocument("/dev/null") || reader.LoadDocument("/proc/self/mem"));
    CCoreXMLQuickReader copy(reader);
    EXPECT_FALSE(reader.ParseStream("<d/><"));
    EXPECT_EQ(reader.GetFirstElement().Get(), nullptr);
    EXPECT_EQ(host.shown.size(), 1u);
    EXPECT_EQ(TreeText(copy.GetFirstElement()), "a\nb\nc\n");
    DeleteAll(copy.TakeElements());
    EXPECT_EQ(copy.GetFirstElement().Get(), nullptr);
}

TEST(QuickReader, ReadsFilesUpToTheirFirstNul) {
    const Scratch folder;
    const std::string path = folder / "a.xml";
    std::ofstream(path, std::ios::binary) << "<a>" << Repeat("<b/>", 5000) << "</a>" << '\0' << "<";
    CCoreXMLQuickReader reader;
    ASSERT_TRUE(reader.LoadDocument(path.c_str()));
    EXPECT_EQ((*reader.GetFirstElement().Get())->GetChildElementCount(), 5000);
    DeleteAll(reader.TakeElements());
}

TEST(QuickReader, NeedsLittleStackAndLinearTime) {
    OnStackOf(1, [] {
        const RecordingHost host;
        CCoreXMLQuickReader reader;
        ASSERT_TRUE(reader.ParseStream((Repeat("<a>", 1'000'000) + Repeat("</a>", 1'000'000)).c_str()));
        DeleteAll(reader.TakeElements());
        EXPECT_FALSE(reader.ParseStream((Repeat("<a>", 1'000'000) + "<").c_str()));
        EXPECT_EQ(host.shown.size(), 1'000'001u);
    });
}

// Every name is set twice: searching for each among all would take minutes.
TEST(QuickReader, TakesAMillionAttributes) {
    std::string text = "<a";
    for (int i = 0; i < 1'000'000; ++i)
        text += " n" + std::to_string(i % 500'000) + "=\"" + std::to_string(i) + "\"";
    CCoreXMLQuickReader reader;
    ASSERT_TRUE(reader.ParseStream((text + "><b n1=\"1\" n1=\"2\"/></a>").c_str()));
    int expected = 500'000;
    const CCoreXmlDomElement& element = **reader.GetFirstElement().Get();
    for (auto attribute = element.GetFirstAttribute(); attribute.Get(); attribute.Next())
        ASSERT_EQ((*attribute.Get())->GetValue(), std::to_string(expected++));
    EXPECT_EQ(expected, 1'000'000);
    EXPECT_EQ(TreeText(element.GetFirstChild()), "b n1=\"2\"\n");
    DeleteAll(reader.TakeElements());
}

}  // namespace
}  // namespace brenta::test
