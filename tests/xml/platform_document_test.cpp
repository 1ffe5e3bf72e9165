// Loading through the platform document: encodings, document types, namespaces, limits, and what a document
// with a tree of its own makes of it.
#include "xml/platform_document.h"

#include <algorithm>
#include <chrono>
#include <memory>

#include "brenta/xml.h"
#include "os/os.h"
#include "test_support.h"
#include "xml/entity_bomb.h"
#include "xml/tree_text.h"
#include "xml/xml_service.h"

namespace brenta::test {
namespace {

using namespace std::string_literals;

/// What a load makes of some bytes in a file: the tree, or "!" and the reason if it is our own.
std::string Loaded(const std::string& bytes) {
    const Scratch scratch;
    const std::string path = scratch / "a.xml";
    EXPECT_TRUE(os::WriteWholeFile(path.c_str(), bytes));
    CCoreXmlDom document;
    int offset = 0;
    if (document.LoadDocument(path.c_str(), false)) return TreeText(document.GetFirstElement());
    EXPECT_STRNE(document.GetParseError(offset), "");
    return kOwnXmlService ? "!"s + document.GetParseError(offset) : "!";
}

/// What Loaded gives, from what it gives with our own service, in UTF-8.
std::string Expected(const std::string& tree) {
    return !kOwnXmlService && tree.starts_with('!') ? "!" : Own(tree);
}

std::string LoadedText(const std::string& text) {
    CCoreXmlDom document;
    return document.LoadString(text.c_str()) ? TreeText(document.GetFirstElement()) : "!";
}

std::string Utf16(std::string_view text, bool bigEndian) {
    std::string wide;
    for (const char c : text)
        wide += bigEndian ? "\0"s + c : c + "\0"s;
    return wide;
}

TEST(PlatformDocument, ReadsEveryEncoding) {
    const std::string kAcute = "r n=\"\xC3\xA9\"\n";
    const auto declared = [](const std::string& encoding, const std::string& value) {
        return "<?xml version='1.0' encoding='" + encoding + "'?><r n='" + value + "'/>";
    };
    struct {
        std::string bytes, tree;
    } const kCases[] = {
        {"<r n='\xC3\xA9'/>", kAcute},
        {"\xEF\xBB\xBF<r n='\xC3\xA9'/>", kAcute},
        {declared("UTF-8", "\xC3\xA9"), kAcute},
        {declared("ISO-8859-1", "\xE9"), kAcute},
        {declared("windows-1252", "\xE9\x80"), "r n=\"\xC3\xA9\xE2\x82\xAC\"\n"},
        {"\xFF\xFE" + Utf16("<r n='1'/>", false), "r n=\"1\"\n"},
        {"\xFE\xFF" + Utf16("<r n='1'/>", true), "r n=\"1\"\n"},
        {Utf16(declared("UTF-16", "1"), false), "r n=\"1\"\n"},
        {Utf16(declared("UTF-16", "1"), true), "r n=\"1\"\n"},
        {"\xFF\xFE" + Utf16(declared("UTF-8", "1"), false), "r n=\"1\"\n"},
        {"<?xml version='1.1'?><r/>", "r\n"},
        {" \n<r/>", "r\n"},
        {"<r/>\0x"s, "r\n"},

        {declared("UTF-16", "1"), "!Document labelled UTF-16 but has UTF-8 content"},
        {declared("no-such", "1"), "!Unsupported encoding no-such"},
        {declared("Shift_JIS", "\x82\x20"), "!Input is not proper Shift_JIS"},
        {"<r n='\xE9'/>", "!Input is not proper UTF-8, indicate encoding !\nBytes: 0xE9 0x27 0x2F 0x3E"},
        {"<r>\0</r>"s, "!Premature end of data in tag r line 1"},
        {" <?xml version='1.0'?><r/>", "!XML declaration allowed only at the start of the document"},
        {"<?xml version='2.0'?><r/>", "!Unsupported version '2.0'"},
    };
    for (const auto& row : kCases)
        EXPECT_EQ(Loaded(row.bytes), Expected(row.tree)) << row.bytes;
    if (!kOwnXmlService) return;
    EXPECT_EQ(Loaded(declared("Shift_JIS", "\x82\xA0")), "r n=\"\xE3\x81\x82\"\n");
    EXPECT_EQ(Loaded("\xEF\xBB\xBF" + declared("ISO-8859-1", "\xC3\xA9")), kAcute) << "the mark counts";
}

TEST(PlatformDocument, IgnoresTheEncodingThatATextDeclares) {
    for (const char* encoding : {"ISO-8859-1", "UTF-16", "UTF-8"})
        EXPECT_EQ(LoadedText(Own("<?xml version='1.0' encoding='"s + encoding + "'?><r n='\xC3\xA9'/>")),
                  Own("r n=\"\xC3\xA9\"\n"));
    EXPECT_TRUE(!kOwnXmlService || LoadedText("<?xml version='1.0' encoding='no-such'?><r/>") == "r\n");
    for (const char* text :
         {"", " ", "text", "<a/><b/>", "<a>", "</a>", "\xFF\xFE<", "<a b='1' b='2'/>", "<a b/>"})
        EXPECT_EQ(LoadedText(text), "!") << text;
    CCoreXmlDom document;
    EXPECT_FALSE(document.LoadString(nullptr));
}

TEST(PlatformDocument, ReadsElementsAndAttributes) {
    struct Row {
        std::string text, tree;
    };
    const Row kCases[] = {
        {"<!--c--><?p i?><a>t<b/>u<![CDATA[<c/>]]><d><e/></d></a><!--c-->", "a\n  b\n  d\n    e\n"},
        {"<a x=' 1\n2\t3\r\n4&#10;5' y=\"&lt;&amp;'&#x41;\"/>", "a x=\" 1 2 3 4\n5\" y=\"<&'A\"\n"},
        {"<p:a x='1' p:y='2' xmlns:p='u'><p:b/></p:a>", "p:a x=\"1\" p:y=\"2\" xmlns:p=\"u\"\n  p:b\n"},
        {"<a xmlns:p='u' xmlns:q='u' p:b='1' q:b='2'/>", "!"},
        // References are not entered.
        {"<!DOCTYPE a [<!ENTITY e '<b/>'>]><a>&e;<c/></a>", "a\n  c\n"},
        {"<!DOCTYPE a [<!ENTITY e '&e;'>]><a/>", "a\n"},  // never referred to
        {"<!DOCTYPE a [<!ENTITY e '&f;'><!ENTITY f '&e;'>]><a x='&e;'/>", "!"},
        {"<!DOCTYPE a [<!ENTITY e '&f;'><!ENTITY f '&e;'>]><a>&e;</a>", "!"},
        {"<!DOCTYPE a [<!ENTITY e '<b>'>]><a>&e;</a>", "!"},
        {"<a>&none;</a>", "!"},
    };
    for (const Row& row : kCases)
        EXPECT_EQ(LoadedText(row.text), row.tree) << row.text;
    if (!kOwnXmlService) return;
    const Row kOwnCases[] = {
        // Namespaces: declarations stand among the attributes.
        {"<p:a x='1' xmlns:p='u' p:y='2' xmlns='v' z='3'><b p:c='4'/></p:a>",
         "p:a x=\"1\" xmlns:p=\"u\" p:y=\"2\" xmlns=\"v\" z=\"3\"\n  b p:c=\"4\"\n"},
        {"<a xmlns:p='u'><b xmlns:p='v' p:x='1'><p:c/></b><p:d/></a>",
         "a xmlns:p=\"u\"\n  b xmlns:p=\"v\" p:x=\"1\"\n    p:c\n  p:d\n"},
        {"<a xml:space='preserve' xmlns:xml='http://www.w3.org/XML/1998/namespace' b='1' xmlns='u' c='2'/>",
         "a xml:space=\"preserve\" b=\"1\" xmlns=\"u\" c=\"2\"\n"},
        {"<!DOCTYPE a [<!ENTITY e 'w'>]><a xmlns='&#38;v&e;&lt;'/>", "a xmlns=\"&vw<\"\n"},
        {"<a xmlns='no address'/>", "a xmlns=\"no address\"\n"},
        {"<p:a/>", "!"},
        {"<a xmlns:p=''/>", "!"},
        {"<a :b='1'/>", "!"},
        {"<a:b:c xmlns:a='u'/>", "!"},
        {"<a p:b='1'/>", "!"},
        // Document types: default attributes come last.
        {"<!DOCTYPE a [<!ATTLIST a x CDATA 'dx' y CDATA 'dy' z CDATA #IMPLIED>]><a y='1'/>",
         "a y=\"1\" x=\"dx\"\n"},
        {"<!DOCTYPE a [<!ENTITY e 'v&#38;#38;\n&f;'><!ENTITY f 'w'>]><a x='-&e;-&e;&lt;'/>",
         "a x=\"-v& w-v& w<\"\n"},
        {"<!DOCTYPE a [<!ENTITY % p '<!ATTLIST a x CDATA \"1\">'>%p;]><a/>", "a x=\"1\"\n"},
        {"<!DOCTYPE a SYSTEM 'absent.dtd'><a>&none;</a>", "!"},
    };
    for (const Row& row : kOwnCases)
        EXPECT_EQ(LoadedText(row.text), row.tree) << row.text;
}

TEST(PlatformDocument, OpensNoOtherFile) {
    const Scratch scratch;
    ASSERT_TRUE(os::WriteWholeFile((scratch / "secret").c_str(), "<s/>"));
    ASSERT_TRUE(os::WriteWholeFile((scratch / "d.dtd").c_str(), "<!ATTLIST a x CDATA 'betrayed'>"));
    struct {
        std::string subset, content, tree;
    } const kCases[] = {
        {" SYSTEM 'd.dtd'", "", "a\n"},
        {" SYSTEM 'file://" + (scratch / "d.dtd") + "'", "", "a\n"},
        {" [<!ENTITY % d SYSTEM 'd.dtd'> %d;]", "", "a\n"},
        {" [<!ENTITY e SYSTEM 'secret'>]", "&e;", "a\n"},
        {" [<!ENTITY e SYSTEM 'secret'>]", "<b x='&e;'/>", "!"},
        {" [<!ENTITY % d SYSTEM 'd.dtd'> %d;]", "&later;", "!"},
    };
    const std::string path = scratch / "a.xml";
    for (const auto& row : kCases) {
        const std::string text = "<!DOCTYPE a" + row.subset + "><a>" + row.content + "</a>";
        ASSERT_TRUE(os::WriteWholeFile(path.c_str(), text));
        CCoreXmlDom document;
        const bool loaded = document.LoadDocument(path.c_str(), false);
        EXPECT_EQ(loaded ? TreeText(document.GetFirstElement()) : "!", row.tree) << text;
        CoreString xml;
        document.GetString(xml);
        EXPECT_EQ(xml.Find("betrayed"), -1);
        EXPECT_EQ(xml.Find("<s/>"), -1);
    }
}

TEST(PlatformDocument, FindsFilesByPathAndAddress) {
    const Scratch scratch;
    const std::string file = scratch / "a b%41#.xml";
    ASSERT_TRUE(os::WriteWholeFile(file.c_str(), "<r/>"));
    ASSERT_TRUE(os::WriteWholeFile((scratch / "z.xml").c_str(), "\x1F\x8B\x08"));
    const std::string escaped = scratch / "a%20b%2541%23.xml";
    const std::string local = escaped.starts_with('/') ? escaped : "/" + escaped;
    std::string raw = "\\\\?\\" + file;  // a path of Windows that the system takes as it is
    std::replace(raw.begin(), raw.end(), '/', '\\');
    struct Row {
        std::string path;
        bool loads;
    };
    std::vector<Row> rows = {
        {file, true},
        {"file://" + local, true},
        {"file://localhost" + local, true},
        {raw, !kOwnXmlService},
        {escaped, false},
        {scratch / "z.xml", false},
        {scratch / "absent", false},
        {"http://localhost/a.xml", false},
        {" \tHTTP://localhost/a.xml", false},
        {"", false},
    };
    for (const std::string& path : NoFiles(scratch))
        rows.push_back({path, false});
    for (const Row& row : rows) {
        CCoreXmlDom document;
        int offset = 7;
        EXPECT_EQ(document.LoadDocument(row.path.c_str(), false), row.loads) << row.path;
        EXPECT_EQ(*document.GetParseError(offset) == '\0', row.loads);
    }
    EXPECT_FALSE(CCoreXmlDom().LoadDocument(nullptr, false));
    CCoreXmlDom saved;
    saved.CreateElement("saved");
    EXPECT_TRUE(saved.SaveDocument(kOwnXmlService ? file.c_str() : raw.c_str(), nullptr, nullptr));
    EXPECT_NE(ReadFile(file).find("<saved"), std::string::npos);
}

TEST(PlatformDocument, TellsWhereAFaultIs) {
    struct {
        std::string bytes;
        int offset;
    } const kCases[] = {
        {"<a></b>", 7},
        {"\xEF\xBB\xBF<a></b>", 10},
        {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9\xE9</b>", 52},
        {"\xFF\xFE" + Utf16("<a></b>", false), 16},
        {"", 0},
    };
    const Scratch scratch;
    const std::string path = scratch / "a.xml";
    for (const auto& row : kCases) {
        ASSERT_TRUE(os::WriteWholeFile(path.c_str(), row.bytes));
        ParseFault fault;
        EXPECT_FALSE(MakePlatformDocument()->Load(path.c_str(), fault));
        EXPECT_FALSE(fault.reason.IsEmpty());
        if (!kOwnXmlService) continue;
        EXPECT_EQ(fault.offset, row.offset) << fault.reason();
        EXPECT_EQ(fault.reason.Find("\n"), -1);
    }
}

TEST(PlatformDocument, RefusesBombsAtOnce) {
    std::string forward;
    for (int i = 9; i > 0; --i)
        forward += BombLevel(i);
    forward += BombLevel(0);
    const std::string entities = EntityBomb();
    const auto typed = [](const std::string& subset, const std::string& content) {
        return "<!DOCTYPE a [" + subset + "]><a>" + content + "</a>";
    };
    const std::string k100 = "<!ENTITY e '" + std::string(100'000, 'a') + "'>";
    std::string chain, levels = "<!ENTITY % e0 'aaaaaaaaaa'>";
    for (int i = 0; i < 3000; ++i)
        chain += "<!ENTITY c" + std::to_string(i) + " '&c" + std::to_string(i + 1) + ";'>";
    for (int i = 1; i < 10; ++i)
        levels += "<!ENTITY % d" + std::to_string(i) + " \"<!ENTITY &#37; e" + std::to_string(i) + " '" +
                  Repeat("&#37;e" + std::to_string(i - 1) + ";", 10) + "'>\">%d" + std::to_string(i) + ";";
    struct Row {
        const char* what;
        std::string text;
        bool loads;
    };
    std::vector<Row> rows = {
        {"content", typed(entities, "&e9;"), false},
        {"value", typed(entities, "<b x='&e9;'/>"), false},
        {"forward", typed(forward, "<b x='&e9;'/>"), false},
        {"default", typed(forward + "<!ATTLIST a x CDATA '&e9;'>", ""), false},
        {"unused", typed(entities, ""), true},
        {"within", typed(k100, Repeat("&e;", 40) + "<b x='" + Repeat("&e;", 40) + "'/>"), true},
        {"chain", typed(chain + "<!ENTITY c3000 'x'>", "&c0;"), false},
        {"parameters", typed(levels, ""), false},
        {"groups", typed("<!ELEMENT b " + Repeat("(", 100'000) + "c" + Repeat(")", 100'000) + ">", ""),
         false},
        {"sequence", typed("<!ELEMENT b (c" + Repeat(",c", 200'000) + ")>", ""), true},
    };
    const Row ownRows[] = {
        {"small", typed(entities, "&e3;<b x='&e3;'/>"), true},
        {"quadratic value", typed(k100, "<b x='" + Repeat("&e;", 200) + "'/>"), false},
        {"quadratic content", typed(k100, Repeat("&e;", 200)), false},
        {"defaults", typed("<!ATTLIST b" + Numbered(" x", " CDATA ''", 3000) + ">", Repeat("<b/>", 50'000)),
         false},
        {"attributes", "<a" + Numbered(" x", "=''", 200'000) + "/>", false},
        {"alternatives", typed("<!ATTLIST b x (" + Repeat("y|", 1'000'000) + "y) #IMPLIED>", ""), false},
        {"unclosed alternatives", typed("<!ATTLIST b x (" + Repeat("y|", 1'000'000), ""), false},
    };
    if (kOwnXmlService) rows.insert(rows.end(), std::begin(ownRows), std::end(ownRows));
    OnStackOf(1, [&] {
        for (const Row& row : rows) {
            const auto start = std::chrono::steady_clock::now();
            EXPECT_EQ(LoadedText(row.text) != "!", row.loads) << row.what;
            EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5)) << row.what;
        }
    });
}

TEST(PlatformDocument, DepthCostsMemoryOnly) {
    const int levels = kDeepestFile;
    const auto nested = [levels](const std::string& root, const std::string& tag) {
        return root + Repeat("<" + tag + ">", levels) + Repeat("</" + tag + ">", levels) + "</r>";
    };
    OnStackOf(1, [&] {
        CCoreXmlDom document;
        ASSERT_TRUE(document.LoadString(nested("<r>", "a").c_str()));
        ASSERT_TRUE(document.LoadString(nested("<r xmlns:p='u'>", "p:a").c_str()));
        int depth = 0;
        for (auto iter = document.GetFirstElement(); iter.Get(); iter = (*iter.Get())->GetFirstChild())
            ++depth;
        EXPECT_EQ(depth, levels + 1);
        CoreString xml;
        EXPECT_TRUE(document.GetString(xml));
        EXPECT_GT(xml.GetLength(), 8 * levels);
        EXPECT_FALSE(document.LoadString(("<r>" + Repeat("<a>", levels)).c_str()));
        CCoreXmlDom built;
        CCoreXmlDomElement* element = built.CreateElement("r");
        for (int i = 0; i < 20'000; ++i)
            element = element->CreateChildElement("a");
        EXPECT_TRUE(built.GetString(xml));
        const std::string_view text = xml();
        EXPECT_EQ(std::count(text.begin(), text.end(), '<'), 40'003);
    });
}

TEST(PlatformDocument, LoadsAppend) {
    CCoreXmlDom document;
    EXPECT_TRUE(document.LoadString("<a/>"));
    EXPECT_FALSE(document.LoadString("<a>"));
    int offset = 0;
    EXPECT_STRNE(document.GetParseError(offset), "");
    EXPECT_TRUE(document.LoadString("<b/>"));
    EXPECT_EQ(TreeText(document.GetFirstElement()), "a\nb\n");
    document.ResetCOMState();
    EXPECT_STREQ(document.GetParseError(offset), "");
    EXPECT_EQ(TreeText(document.GetFirstElement()), "a\nb\n");
}

TEST(PlatformDocument, MayBeMissing) {
    const PlatformDocumentMaker maker =
        std::exchange(g_platformDocumentMaker, [] { return std::unique_ptr<PlatformDocument>(); });
    CCoreXmlDom document;
    g_platformDocumentMaker = maker;
    CoreString text("old");
    EXPECT_NE(document.CreateElement("a"), nullptr);
    EXPECT_FALSE(document.LoadDocument("a.xml", false));
    EXPECT_FALSE(document.LoadDocument("a.xml", true));
    EXPECT_FALSE(document.LoadString("<b/>"));
    EXPECT_FALSE(document.SaveDocument("a.xml", nullptr, nullptr));
    EXPECT_FALSE(document.GetString(text));
    EXPECT_FALSE(document.TransformDocument("a.xsl", text));
    EXPECT_STREQ(text(), "old");
    EXPECT_EQ(TreeText(document.GetFirstElement()), "a\n");
    document.ResetCOMState();
    EXPECT_TRUE(document.LoadString("<b/>"));
}

}  // namespace
}  // namespace brenta::test
