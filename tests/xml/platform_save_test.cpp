// Saving and transforming: what is written, what is refused, and that the old file outlives a failure.
#include <algorithm>
#include <cstring>
#include <filesystem>

#include "brenta/xml.h"
#include "os/os.h"
#include "test_support.h"
#include "xml/platform_document.h"
#include "xml/xml_service.h"

namespace brenta::test {
namespace {

using namespace std::string_literals;

constexpr char kComment[] = "<!--xml file created by Orvane Works.-->\n";
const std::string kHead = "<?xml version=\"1.0\"?>\n"s + kComment;
const std::string kXsi = " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"";

std::string Text(CCoreXmlDom& document) {
    CoreString text;
    EXPECT_TRUE(document.GetString(text));
    return Content(text());
}

/// The same of a file, which is in UTF-8.
std::string FileText(const std::string& path) {
    return Content(ReadFile(path));
}

TEST(PlatformSave, WritesWhatWasBuilt) {
    const Scratch scratch;
    const std::string path = scratch / "a.xml";
    CCoreXmlDom document;
    document.CreateElement("a")->CreateChildElement("b")->AddAttribute("n", 7);
    EXPECT_TRUE(document.SaveDocument(path.c_str(), "s.xsd", "b.xsl"));
    EXPECT_EQ(
        FileText(path),
        Content("<?xml version=\"1.0\"?>\n<?xml-stylesheet type=\"text/xsl\" href=\"b.xsl\"?>\n"s + kComment +
                "<a" + kXsi + " xsi:noNamespaceSchemaLocation=\"s.xsd\"><b n=\"7\"/></a>\n"));
    document.ResetCOMState();
    document.SaveDocument(path.c_str(), "", "?>");
    EXPECT_EQ(ReadFile(path).find("stylesheet"), std::string::npos);
    EXPECT_EQ(Text(*std::make_unique<CCoreXmlDom>()), Content(kHead));
}

TEST(PlatformSave, WritesOnlyWhatCanBeReadAgain) {
    struct Row {
        const char *name, *value, *written;
    };
    const Row kCases[] = {
        {"x", "<>&\"'\n\r\t", " x=\"&lt;&gt;&amp;&quot;'&#10;&#13;&#9;\""},
        {"x", "", " x=\"\""},
        {"x", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", " x=\"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\""},
        {"x", "a\x01\x1F\x7F", " x=\"a\x7F\""},
        {"\xC3\xA9.-", "1", " \xC3\xA9.-=\"1\""},
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
    const Row kOwnCases[] = {
        // What is not UTF-8, and what no code page has.
        {"x", "\xE9\x80\xFF", " x=\"\xC3\xA9\xC2\x80\xC3\xBF\""},
        {"x", "\xC0\x80\xED\xA0\x80", " x=\"\xC3\x80\xC2\x80\xC3\xAD\xC2\xA0\xC2\x80\""},
        {"x", "\xEF\xBF\xBE-\xEF\xBF\xBF", " x=\"-\""},
        {"x", "\xF4\x90\x80\x80", " x=\"\xC3\xB4\xC2\x90\xC2\x80\xC2\x80\""},
        {"\xE9", "1", " \xC3\xA9=\"1\""},
        {"\xF0\xA0\x80\x80.-\xC2\xB7", "1", " \xF0\xA0\x80\x80.-\xC2\xB7=\"1\""},
    };
    const auto check = [](const Row& row) {
        CCoreXmlDom document;
        CCoreXmlDomElement* const root = document.CreateElement("r");
        root->CreateChildElement(Own(row.name).c_str())->CreateChildElement("below");
        CCoreXmlDomElement* const child = root->CreateChildElement("c");
        child->AddAttribute(new CCoreXmlDomAttribute(Own(row.name).c_str(), Own(row.value).c_str()));
        child->AddAttribute("z", "1");
        const std::string name(row.written, std::strcspn(row.written, "="));
        const std::string first =
            name.empty() ? "" : "<" + name.substr(1) + "><below/></" + name.substr(1) + ">";
        EXPECT_EQ(Text(document),
                  Content(kHead + "<r" + kXsi + ">" + Own(first + "<c" + row.written) + " z=\"1\"/></r>\n"))
            << row.name;
    };
    for (const Row& row : kCases)
        check(row);
    for (const Row& row : kOwnCases)
        if (kOwnXmlService) check(row);
}

TEST(PlatformSave, KeepsOneAttributeOfAName) {
    for (const int others : {0, 40}) {
        CCoreXmlDom document;
        CCoreXmlDomElement* const root = document.CreateElement("r");
        for (int i = 0; i < others; ++i)
            root->AddAttribute(("o" + std::to_string(i)).c_str(), "");
        for (const char* value : {"1", "2", "3"}) {
            root->AddAttribute(new CCoreXmlDomAttribute("x", value));
            const bool latin = kOwnXmlService && *value == '3';
            root->AddAttribute(new CCoreXmlDomAttribute(latin ? "\xE9" : Own("\xC3\xA9").c_str(), value));
        }
        EXPECT_NE(Text(document).find(Own(" x=\"3\" \xC3\xA9=\"3\" xmlns:xsi=")), std::string::npos)
            << others;
    }
}

TEST(PlatformSave, KeepsWhatItHolds) {
    CCoreXmlDom built;
    built.CreateElement("a");
    built.CreateElement("b");  // one document, one root
    EXPECT_EQ(Text(built), Content(kHead + "<a" + kXsi + "/>\n"));
    built = CCoreXmlDom();
    built.CreateElement("c");
    EXPECT_EQ(Text(built), Content(kHead + "<a" + kXsi + "/>\n" + kComment));
    built.ResetCOMState();
    EXPECT_EQ(Text(built), Content(kHead + "<c" + kXsi + "/>\n"));

    CCoreXmlDom loaded;
    ASSERT_TRUE(loaded.LoadString("<a>t<!--c--></a>"));
    loaded.CreateElement("b");
    EXPECT_EQ(Text(loaded), Content("<a>t<!--c--></a>\n"));
    EXPECT_FALSE(loaded.LoadString("<a>"));
    EXPECT_EQ(Text(loaded), Content("<a" + kXsi + "/>\n"));
    loaded.ResetCOMState();
    ASSERT_TRUE(loaded.LoadString("<d/>"));
    EXPECT_EQ(Text(loaded), Content("<d/>\n"));
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
    EXPECT_EQ(Content(document->GetXml()()), Content("<!--a-->\n"));
}

TEST(PlatformSave, KeepsTheDeclaration) {
    struct Row {
        std::string bytes, saved, text;
    };
    std::vector<Row> rows = {
        {"<r/>", "<r/>\n", "<r/>\n"},
        {"\xEF\xBB\xBF<r/>", "<r/>\n", "<r/>\n"},
        {"<?xml version='1.0'?><r/>", "<?xml version=\"1.0\"?>\n<r/>\n", "<?xml version=\"1.0\"?>\n<r/>\n"},
    };
    const Row kOwnRows[] = {
        {"<r xmlns='&#38;&lt;&#10;'/>", "<r xmlns=\"&#38;&#60;&#10;\"/>\n",
         "<r xmlns=\"&#38;&#60;&#10;\"/>\n"},
        {"<?xml version='1.1' encoding='ISO-8859-1' standalone='yes'?><r n='\xE9&#x20AC;'>\xE9</r>",
         "<?xml version=\"1.1\" encoding=\"ISO-8859-1\" standalone=\"yes\"?>\n<r "
         "n=\"\xE9&#8364;\">\xE9</r>\n",
         "<?xml version=\"1.1\" standalone=\"yes\"?>\n<r n=\"\xC3\xA9\xE2\x82\xAC\">\xC3\xA9</r>\n"},
        {"<!DOCTYPE r [<!ENTITY e 'x'>]><r n='&e;'><![CDATA[<]]>&e; <b>  </b>&#13;</r><?p i?>",
         "<!DOCTYPE r [\n<!ENTITY e \"x\">\n]>\n<r n=\"&e;\"><![CDATA[<]]>&e; <b>  </b>&#13;</r>\n<?p i?>\n",
         "<!DOCTYPE r [\n<!ENTITY e \"x\">\n]>\n<r n=\"&e;\"><![CDATA[<]]>&e; <b>  </b>&#13;</r>\n<?p i?>\n"},
    };
    if (kOwnXmlService) rows.insert(rows.end(), std::begin(kOwnRows), std::end(kOwnRows));
    const Scratch scratch;
    const std::string path = scratch / "a.xml", saved = scratch / "b.xml";
    for (const Row& row : rows) {
        ASSERT_TRUE(os::WriteWholeFile(path.c_str(), row.bytes));
        CCoreXmlDom document, again;
        ASSERT_TRUE(document.LoadDocument(path.c_str(), false));
        EXPECT_TRUE(document.SaveDocument(saved.c_str(), nullptr, nullptr));
        EXPECT_EQ(FileText(saved), Content(row.saved));
        EXPECT_EQ(Text(document), Content(row.text));
        EXPECT_TRUE(again.LoadDocument(saved.c_str(), false));
    }
    if (!kOwnXmlService) return;
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
    const std::string path = scratch / "a.xml";
    ASSERT_TRUE(os::WriteWholeFile(path.c_str(), "old"));
    CCoreXmlDom document;
    document.CreateElement("r");
    Texts bad = NoFiles(scratch);
    bad.insert(bad.end(), {"", scratch / "absent/a.xml", scratch / "a.xml/b.xml"});
    for (const std::string& other : bad)
        EXPECT_TRUE(document.SaveDocument(other.c_str(), nullptr, nullptr));
    EXPECT_TRUE(document.SaveDocument(nullptr, nullptr, nullptr));
    EXPECT_EQ(ReadFile(path), "old");
    document.SaveDocument(path.c_str(), nullptr, nullptr);
    EXPECT_EQ(ReadFile(path).substr(0, 5), "<?xml");
    for (const auto& entry : std::filesystem::directory_iterator(scratch / ""))
        EXPECT_TRUE(entry.path().filename() == "a.xml" || entry.path().filename() == "pipe") << entry;
}

TEST(PlatformSave, KeepsLinksRightsAndDevices) {
    namespace fs = std::filesystem;
    const Scratch scratch;
    // Wine makes no links.
    const std::string path = scratch / "a.xml", link = kIsWindows ? path : scratch / "link.xml";
    ASSERT_TRUE(os::WriteWholeFile(path.c_str(), "old") && SetRights(path));
    if (link != path) fs::create_symlink("a.xml", link);
    const char* const device = kIsWindows ? "NUL" : "/dev/null";
    CCoreXmlDom document;
    document.SaveDocument(device, nullptr, nullptr);
    EXPECT_FALSE(fs::is_regular_file(device));

    document.SaveDocument(link.c_str(), nullptr, nullptr);
    EXPECT_TRUE(link == path || fs::is_symlink(link));
    EXPECT_EQ(ReadFile(path).substr(0, 5), "<?xml");
    EXPECT_TRUE(HasRights(path));
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
    struct Row {
        std::string source, sheet, prolog, result;
    };
    const Row kCases[] = {
        {"<a b='\xC3\xA9'/>", Rule("<x:value-of select='a/@b'/>"), "", "\xC3\xA9"},
        {"<a> <b/> <c xml:space='preserve'> </c></a>", Rule("<x:value-of select='count(//text())'/>"), "",
         "1"},
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
    const Row kOwnCases[] = {
        {"<a b='\xC3\xA9'/>",
         "<x:output encoding='UTF-16'/><x:template match='/'><r><x:value-of select='a/@b'/></r></x:template>",
         "", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r>\xC3\xA9</r>\n"},
        {"<!DOCTYPE a [<!ENTITY e 'x'><!ATTLIST a d CDATA '1'>]><a>&e;</a>",
         Rule("<x:value-of select='concat(a, a/@d)'/>"), "", "x1"},
        {"<a/>", Rule("&e;"), "<!DOCTYPE x [<!ENTITY e 'ent'>]>", "ent"},
    };
    testing::internal::CaptureStderr();
    const auto check = [this](const Row& row) {
        EXPECT_EQ(Transformed(Own(row.source), row.sheet, row.prolog), Own(row.result)) << row.sheet;
    };
    for (const Row& row : kCases)
        check(row);
    for (const Row& row : kOwnCases)
        if (kOwnXmlService) check(row);
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
        const int deepest = std::min(3000, kDeepestFile);
        EXPECT_GT(Transformed(nested(deepest), kCopy).size(), 2 * static_cast<std::size_t>(deepest));
        if (!kOwnXmlService) return;
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
    EXPECT_EQ(Text(document), Content(kHead + "<a" + kXsi + "/>\n" + kComment + kComment));
    EXPECT_EQ(Transformed("<a/>", Rule("x")), "x");
    const std::string path = m_scratch / "a b.xsl";
    EXPECT_TRUE(document.TransformDocument(path.c_str(), out));
    EXPECT_STREQ(out(), "x");
}

}  // namespace
}  // namespace brenta::test
