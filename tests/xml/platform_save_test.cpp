// Saving and transforming: what is written, what is refused, and that the old file outlives a failure.
#include <sys/stat.h>

#include <cstring>
#include <filesystem>

#include "brenta/xml.h"
#include "os/os.h"
#include "test_support.h"
#include "xml/platform_document.h"
#include "xml/tree_text.h"

namespace brenta::test {
namespace {

using namespace std::string_literals;

constexpr char kComment[] = "<!--xml file created by Orvane Works.-->\n";
const std::string kHead = "<?xml version=\"1.0\"?>\n"s + kComment;
const std::string kXsi = " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"";

std::string Text(CCoreXmlDom& document) {
    CoreString text;
    EXPECT_TRUE(document.GetString(text));
    return text();
}

TEST(PlatformSave, WritesWhatWasBuilt) {
    const Scratch scratch;
    const std::string path = scratch / "a.xml";
    CCoreXmlDom document;
    document.CreateElement("a")->CreateChildElement("b")->AddAttribute("n", 7);
    EXPECT_TRUE(document.SaveDocument(path.c_str(), "s.xsd", "b.xsl"));
    EXPECT_EQ(ReadFile(path),
              "<?xml version=\"1.0\"?>\n<?xml-stylesheet type=\"text/xsl\" href=\"b.xsl\"?>\n"s + kComment +
                  "<a" + kXsi + " xsi:noNamespaceSchemaLocation=\"s.xsd\"><b n=\"7\"/></a>\n");
    document.ResetCOMState();
    document.SaveDocument(path.c_str(), "", "?>");
    EXPECT_EQ(ReadFile(path).find("stylesheet"), std::string::npos);
    EXPECT_EQ(Text(*std::make_unique<CCoreXmlDom>()), kHead);
}

TEST(PlatformSave, WritesOnlyWhatCanBeReadAgain) {
    struct {
        const char *name, *value, *written;
    } const kCases[] = {
        {"x", "<>&\"'\n\r\t", " x=\"&lt;&gt;&amp;&quot;'&#10;&#13;&#9;\""},
        {"x", "", " x=\"\""},
        {"x", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", " x=\"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\""},
        {"x", "a\x01\x1F\x7F", " x=\"a\x7F\""},
        {"x", "\xE9\x80\xFF", " x=\"\xC3\xA9\xC2\x80\xC3\xBF\""},
        {"x", "\xC0\x80\xED\xA0\x80", " x=\"\xC3\x80\xC2\x80\xC3\xAD\xC2\xA0\xC2\x80\""},
        {"x", "\xEF\xBF\xBE-\xEF\xBF\xBF", " x=\"-\""},
        {"x", "\xF4\x90\x80\x80", " x=\"\xC3\xB4\xC2\x90\xC2\x80\xC2\x80\""},
        {"\xE9", "1", " \xC3\xA9=\"1\""},
        {"\xF0\xA0\x80\x80.-\xC2\xB7", "1", " \xF0\xA0\x80\x80.-\xC2\xB7=\"1\""},
        {"\xC2\xB7", "1", ""},
        {"p:x", "1", " p:x=\"1\""},
        {"xmlns", "u", " xmlns=\"u\""},
        {"", "1", ""},
        {"1a", "1", ""},
        {"a\x01", "1", ""},
        {":a", "1", ""},
        {"a:b:c", "1", ""},
        {"a<b", "1", ""},
    };
    for (const auto& row : kCases) {
        CCoreXmlDom document;
        CCoreXmlDomElement* const root = document.CreateElement("r");
        root->CreateChildElement(row.name)->CreateChildElement("below");
        CCoreXmlDomElement* const child = root->CreateChildElement("c");
        child->AddAttribute(new CCoreXmlDomAttribute(row.name, row.value));
        child->AddAttribute("z", "1");
        const std::string name(row.written, std::strcspn(row.written, "="));
        const std::string first =
            name.empty() ? "" : "<" + name.substr(1) + "><below/></" + name.substr(1) + ">";
        EXPECT_EQ(Text(document), kHead + "<r" + kXsi + ">" + first + "<c" + row.written + " z=\"1\"/></r>\n")
            << row.name;
    }
}

TEST(PlatformSave, KeepsOneAttributeOfAName) {
    for (const int others : {0, 40}) {
        CCoreXmlDom document;
        CCoreXmlDomElement* const root = document.CreateElement("r");
        for (int i = 0; i < others; ++i)
            root->AddAttribute(("o" + std::to_string(i)).c_str(), "");
        for (const char* value : {"1", "2", "3"}) {
            root->AddAttribute(new CCoreXmlDomAttribute("x", value));
            root->AddAttribute(new CCoreXmlDomAttribute(*value == '3' ? "\xE9" : "\xC3\xA9", value));
        }
        EXPECT_NE(Text(document).find(" x=\"3\" \xC3\xA9=\"3\" xmlns:xsi="), std::string::npos) << others;
    }
}

TEST(PlatformSave, KeepsWhatItHolds) {
    CCoreXmlDom built;
    built.CreateElement("a");
    built.CreateElement("b");  // one document, one root
    EXPECT_EQ(Text(built), kHead + "<a" + kXsi + "/>\n");
    built = CCoreXmlDom();
    built.CreateElement("c");
    EXPECT_EQ(Text(built), kHead + "<a" + kXsi + "/>\n" + kComment);
    built.ResetCOMState();
    EXPECT_EQ(Text(built), kHead + "<c" + kXsi + "/>\n");

    CCoreXmlDom loaded;
    ASSERT_TRUE(loaded.LoadString("<a>t<!--c--></a>"));
    loaded.CreateElement("b");
    EXPECT_EQ(Text(loaded), "<a>t<!--c--></a>\n");
    EXPECT_FALSE(loaded.LoadString("<a>"));
    EXPECT_EQ(Text(loaded), "<a" + kXsi + "/>\n");
    loaded.ResetCOMState();
    ASSERT_TRUE(loaded.LoadString("<d/>"));
    EXPECT_EQ(Text(loaded), "<d/>\n");
}

TEST(PlatformSave, ChecksNodesOfTheDocument) {
    const auto document = MakePlatformDocument();
    document->AppendInstruction("p", "a?>b");
    document->AppendInstruction("a b", "c");
    document->AppendComment("a--b");
    document->AppendComment("a-");
    EXPECT_STREQ(document->GetXml()(), "");
    EXPECT_EQ(document->DocumentElement(), nullptr);
    document->AppendComment("a");
    document->AppendInstruction("xml", "version='1.0'");
    EXPECT_STREQ(document->GetXml()(), "<!--a-->\n");
}

TEST(PlatformSave, KeepsTheDeclaration) {
    struct {
        std::string bytes, saved, text;
    } const kCases[] = {
        {"<r/>", "<r/>\n", "<r/>\n"},
        {"\xEF\xBB\xBF<r/>", "<r/>\n", "<r/>\n"},
        {"<r xmlns='&#38;&lt;&#10;'/>", "<r xmlns=\"&#38;&#60;&#10;\"/>\n",
         "<r xmlns=\"&#38;&#60;&#10;\"/>\n"},
        {"<?xml version='1.0'?><r/>", "<?xml version=\"1.0\"?>\n<r/>\n", "<?xml version=\"1.0\"?>\n<r/>\n"},
        {"<?xml version='1.1' encoding='ISO-8859-1' standalone='yes'?><r n='\xE9&#x20AC;'>\xE9</r>",
         "<?xml version=\"1.1\" encoding=\"ISO-8859-1\" standalone=\"yes\"?>\n<r "
         "n=\"\xE9&#8364;\">\xE9</r>\n",
         "<?xml version=\"1.1\" standalone=\"yes\"?>\n<r n=\"\xC3\xA9\xE2\x82\xAC\">\xC3\xA9</r>\n"},
        {"<!DOCTYPE r [<!ENTITY e 'x'>]><r n='&e;'><![CDATA[<]]>&e; <b>  </b>&#13;</r><?p i?>",
         "<!DOCTYPE r [\n<!ENTITY e \"x\">\n]>\n<r n=\"&e;\"><![CDATA[<]]>&e; <b>  </b>&#13;</r>\n<?p i?>\n",
         "<!DOCTYPE r [\n<!ENTITY e \"x\">\n]>\n<r n=\"&e;\"><![CDATA[<]]>&e; <b>  </b>&#13;</r>\n<?p i?>\n"},
    };
    const Scratch scratch;
    const std::string path = scratch / "a.xml", saved = scratch / "b.xml";
    for (const auto& row : kCases) {
        ASSERT_TRUE(os::WriteWholeFile(path.c_str(), row.bytes));
        CCoreXmlDom document, again;
        ASSERT_TRUE(document.LoadDocument(path.c_str(), false));
        EXPECT_TRUE(document.SaveDocument(saved.c_str(), nullptr, nullptr));
        EXPECT_EQ(ReadFile(saved), row.saved);
        EXPECT_EQ(Text(document), row.text);
        EXPECT_TRUE(again.LoadDocument(saved.c_str(), false));
    }
    ASSERT_TRUE(os::WriteWholeFile(
        path.c_str(),
        "\xFF\xFE<\0?\0x\0m\0l\0 \0v\0e\0r\0s\0i\0o\0n\0=\0'\0\x31\0.\0\x30\0'\0 \0e\0n\0c\0o\0d\0i\0n\0g\0=\0'\0U\0T\0F\0-\0\x31\0\x36\0'\0?\0>\0<\0r\0/\0>\0"s));
    CCoreXmlDom wide, again;
    ASSERT_TRUE(wide.LoadDocument(path.c_str(), false));
    wide.SaveDocument(saved.c_str(), nullptr, nullptr);
    EXPECT_EQ(ReadFile(saved).substr(0, 4), "\xFF\xFE<\0"s);
    EXPECT_TRUE(again.LoadDocument(saved.c_str(), false));
}

TEST(PlatformSave, NeverDestroysTheOldFile) {
    const Scratch scratch;
    const std::string path = scratch / "a.xml", link = scratch / "link.xml", folder = scratch / "folder";
    ASSERT_TRUE(os::WriteWholeFile(path.c_str(), "old"));
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    std::filesystem::create_symlink("a.xml", link);
    std::filesystem::create_directory(folder);
    const std::string pipe = folder + "/pipe";  // that nobody reads
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    CCoreXmlDom document;
    document.CreateElement("r");
    for (const std::string& bad : {""s, folder, pipe, scratch / "absent/a.xml"})
        EXPECT_TRUE(document.SaveDocument(bad.c_str(), nullptr, nullptr));
    EXPECT_TRUE(document.SaveDocument(nullptr, nullptr, nullptr));
    EXPECT_EQ(ReadFile(path), "old");
    document.SaveDocument("/dev/null", nullptr, nullptr);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));

    document.SaveDocument(link.c_str(), nullptr, nullptr);
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(ReadFile(path).substr(0, 5), "<?xml");
    struct stat info;
    ASSERT_EQ(stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
    const auto entries = std::filesystem::directory_iterator(scratch / "");
    EXPECT_EQ(std::distance(begin(entries), end(entries)), 3) << "a temporary file is left";
}

// ---------------------------------------------------------------------------------------------------------
// Transforming

class PlatformTransform : public testing::Test {
 protected:
    /// The result of a sheet, of which only the content is given; "!" if it does not load.
    std::string Transformed(const std::string& source, const std::string& content,
                            const std::string& prolog = "") {
        const std::string path = m_scratch / "a b.xsl";
        EXPECT_TRUE(os::WriteWholeFile(
            path.c_str(), prolog +
                              "<x:stylesheet version='1.0' xmlns:x='http://www.w3.org/1999/XSL/Transform'>" +
                              content + "</x:stylesheet>"));
        CCoreXmlDom document;
        EXPECT_TRUE(document.LoadString(source.c_str()));
        CoreString out("old");
        return document.TransformDocument(path.c_str(), out) ? out() : "!"s;
    }

    const Scratch m_scratch;
};

const std::string kText = "<x:output method='text'/>";

std::string Rule(const std::string& body) {
    return kText + "<x:template match='/'>" + body + "</x:template>";
}

TEST_F(PlatformTransform, GivesTheResult) {
    ASSERT_TRUE(
        os::WriteWholeFile((m_scratch / "inc.xsl").c_str(),
                           "<x:stylesheet version='1.0' xmlns:x='http://www.w3.org/1999/XSL/Transform'>"
                           "<x:template name='t'>included</x:template></x:stylesheet>"));
    struct {
        std::string source, sheet, prolog, result;
    } const kCases[] = {
        {"<a b='\xC3\xA9'/>", Rule("<x:value-of select='a/@b'/>"), "", "\xC3\xA9"},
        {"<a b='\xC3\xA9'/>",
         "<x:output encoding='UTF-16'/><x:template match='/'><r><x:value-of select='a/@b'/></r></x:template>",
         "", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r>\xC3\xA9</r>\n"},
        {"<a> <b/> <c xml:space='preserve'> </c></a>", Rule("<x:value-of select='count(//text())'/>"), "",
         "1"},
        {"<!DOCTYPE a [<!ENTITY e 'x'><!ATTLIST a d CDATA '1'>]><a>&e;</a>",
         Rule("<x:value-of select='concat(a, a/@d)'/>"), "", "x1"},
        {"<a/>", Rule("&e;"), "<!DOCTYPE x [<!ENTITY e 'ent'>]>", "ent"},
        {"<a/>", "<x:include href='inc.xsl'/>" + Rule("<x:call-template name='t'/>"), "", "included"},
        {"<a/>", "<x:import href='inc.xsl'/>" + Rule("<x:call-template name='t'/>"), "", "included"},
        {"<a/>", Rule("<x:message>m</x:message>x"), "", "x"},
        {"<a/>", kText, "", ""},
        // Whatever goes wrong inside gives nothing.
        {"<a/>", Rule("<x:value-of select='('/>"), "", ""},
        {"<a/>", Rule("x<x:value-of select='none()'/>"), "", ""},
        {"<a/>", Rule("x<x:message terminate='yes'/>"), "", ""},
        {"<a/>", "<x:include href='absent.xsl'/>" + Rule("x"), "", ""},
        {"<a/>", "<x:template match='/' name='t'><x:call-template name='t'/></x:template>", "", ""},
    };
    testing::internal::CaptureStderr();
    for (const auto& row : kCases)
        EXPECT_EQ(Transformed(row.source, row.sheet, row.prolog), row.result) << row.sheet;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(PlatformTransform, ReadsAndWritesNothingElse) {
    ASSERT_TRUE(os::WriteWholeFile((m_scratch / "secret.xml").c_str(), "<s>secret</s>"));
    const std::string secret = "file://" + (m_scratch / "secret.xml"), target = m_scratch / "written";
    const std::string kExtensions = "<?xml version='1.0'?><!DOCTYPE x [<!ENTITY e SYSTEM '" + secret + "'>]>";
    EXPECT_EQ(Transformed("<a/>", Rule("<x:value-of select=\"document('" + secret + "')\"/>")), "");
    EXPECT_EQ(Transformed("<a/>", Rule("&e;"), kExtensions), "");
    for (const char* element : {"<e:document xmlns:e='http://exslt.org/common' "
                                "x:extension-element-prefixes='e' href='F'>w</e:document>",
                                "<x:document href='F'>w</x:document>",
                                "<s:output xmlns:s='http://icl.com/saxon' x:extension-element-prefixes='s' "
                                "file='F' href='F'>w</s:output>"}) {
        std::string body = element;
        for (std::size_t at; (at = body.find("'F'")) != body.npos;)
            body.replace(at, 3, "'" + target + "'");
        Transformed("<a/>", Rule(body));
        EXPECT_EQ(os::KindOfPath(target.c_str()), os::PathKind::Absent) << element;
    }
}

TEST_F(PlatformTransform, BoundsDepth) {
    const auto nested = [](int levels) { return Repeat("<a>", levels) + Repeat("</a>", levels); };
    const std::string kCopy =
        "<x:output omit-xml-declaration='yes'/><x:template match='/'><x:copy-of select='.'/></x:template>";
    OnStackOf(1, [&] {
        EXPECT_GT(Transformed(nested(3000), kCopy).size(), 6000u);
        EXPECT_EQ(Transformed(nested(3001), kCopy), "");
        EXPECT_EQ(Transformed(nested(100'000), kCopy), "");
        EXPECT_EQ(Transformed("<a/>", Rule(nested(100'000))), "");
        EXPECT_EQ(Transformed("<a/>", Rule("<x:value-of select='" + std::string(50'000, '(') + "'/>")), "");
    });
}

TEST_F(PlatformTransform, FailsWithoutASheet) {
    CCoreXmlDom document;
    document.CreateElement("a");
    CoreString out("old");
    EXPECT_FALSE(document.TransformDocument((m_scratch / "absent").c_str(), out));
    EXPECT_FALSE(document.TransformDocument(nullptr, out));
    EXPECT_STREQ(out(), "old");
    // The tree was added all the same, and now once more: one root, and a comment each time.
    EXPECT_EQ(Text(document), kHead + "<a" + kXsi + "/>\n" + kComment + kComment);
    EXPECT_EQ(Transformed("<a/>", Rule("x")), "x");
    const std::string path = m_scratch / "a b.xsl";
    EXPECT_TRUE(document.TransformDocument(path.c_str(), out));
    EXPECT_STREQ(out(), "x");
}

}  // namespace
}  // namespace brenta::test
