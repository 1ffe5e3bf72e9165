// The stream reader: what it delivers, counts and reports, and what it leaves behind, which is nothing.
#include <algorithm>
#include <chrono>
#include <fstream>
#include <memory>
#include <new>
#include <stdexcept>

#include "brenta/heap.h"
#include "brenta/xml_stream.h"
#include "test_support.h"
#include "xml/entity_bomb.h"
#include "xml/sax_source.h"
#include "xml/tree_text.h"
#include "xml/xml_service.h"

namespace brenta::test {
namespace {

using namespace std::string_literals;

using Percents = std::vector<int>;

class ProgressWindow : public CMessageWindow {
 public:
    std::intptr_t OnMessage(unsigned int message, std::uintptr_t wParam, std::intptr_t lParam) override {
        EXPECT_EQ(message, 0x741Cu);
        EXPECT_EQ(lParam, 0);
        percents.push_back(static_cast<int>(wParam));
        return 1;
    }
    Percents percents;
};

/// Keeps each record as text, below the text of its root.
class RecordTarget : public CCmdTarget {
 public:
    bool OnCmdMsg(unsigned int id, int code, void* extra, AFX_CMDHANDLERINFO* handlerInfo) override {
        EXPECT_EQ(id, 0xEA61u);
        EXPECT_EQ(code, 0);
        EXPECT_EQ(handlerInfo, nullptr);
        auto* record = static_cast<CCoreXmlDomElement*>(extra);
        if (onRecord) onRecord(*record);
        records += TreeText(*record);
        return false;
    }
    std::string records;
    std::function<void(CCoreXmlDomElement&)> onRecord;
};

class SaxReader : public testing::Test {
 protected:
    CString Write(const std::string& content) {
        std::ofstream(scratch / "file", std::ios::binary) << content;
        return (scratch / "file").c_str();
    }
    bool Parse(const std::string& content) {
        CString path = Write(content);
        window.percents.clear();
        target.records.clear();
        return CXMLReader(&window, &target).ParseDocument(path, error);
    }

    const Scratch scratch;
    ProgressWindow window;
    RecordTarget target;
    CString error{"as it was"};
};

TEST_F(SaxReader, DeliversRecordsInOrder) {
    using Row = std::pair<std::string, const char*>;
    std::vector<Row> rows = {
        {"<r><a x='1' y='2'/><b>text</b><c/></r>", "a x=\"1\" y=\"2\"\nb\nc\n"},
        {"<r/>", ""},
        {" <r x='1'>no records</r> ", ""},
        {"<r><a><b x='1'><c/></b><d/></a><e><a/></e></r>", "a\n  b x=\"1\"\n    c\n  d\ne\n  a\n"},
        {"<?xml version='1.0'?><!DOCTYPE r><?p?><r><!--c--><a><![CDATA[<x/>]]><?p?></a></r><!--c-->", "a\n"},
        {"<p:r xmlns:p='u' xmlns='v'><p:a xmlns:q='w' p:x='1' q:x='2'/></p:r>", "a x=\"1\" x=\"2\"\n"},
        {"<r><a x='&lt;&amp;&#65;&#xe9;' y='' z=' \t1\n'/></r>", "a x=\"<&A\u00e9\" y=\"\" z=\"  1 \"\n"},
        {"<!DOCTYPE r [<!ATTLIST a y CDATA 'd' x CDATA 'n'>]><r><a x='1'/><a/></r>",
         "a x=\"1\" y=\"d\"\na y=\"d\" x=\"n\"\n"},
        {"<?xml version='1.0' encoding='ISO-8859-1'?><r><a x='\xe9'/></r>", "a x=\"\u00e9\"\n"},
        {"\xff\xfe<\0r\0>\0<\0\xe9\0/\0>\0<\0/\0r\0>\0"s, "\u00e9\n"},
    };
    const Row ownRows[] = {
        {"<!DOCTYPE r [<!ENTITY e 'v'><!ENTITY f '<a x=\"&e;\"/>'>]><r>&f;<b>&f;&e;</b>&f;</r>",
         "a x=\"v\"\nb\n  a x=\"v\"\na x=\"v\"\n"},
        {"\xef\xbb\xbf<?xml version='1.0' encoding='ISO-8859-1'?><r><a x='\u00e9'/></r>", "a x=\"\u00e9\"\n"},
    };
    if (kOwnXmlService) rows.insert(rows.end(), std::begin(ownRows), std::end(ownRows));
    for (const auto& [file, records] : rows) {
        EXPECT_TRUE(Parse(file)) << file;
        EXPECT_EQ(target.records, Own(records)) << file;
        EXPECT_EQ(window.percents.back(), 100) << file;
    }
}

TEST_F(SaxReader, DeliversWhatIsCompleteBeforeAFaultAndLeavesNothing) {
    for (const std::string fault :
         {"", "<b>", "<b></c>", "<b></r>", "<b x='1' x='2'/>", "<b><p:c/></b>", "&nope;", "<b x=1/>",
          "<b x='<'/>", "<b>\x01</b>", "<b>\xff</b>", "</r><r>", "</r>text", "<b><c><d/>", "<![CDATA[x",
          "<!--x", "]]>", "<b p:x=''/>"}) {
        Parse("<r><a x='1'/>" + fault + "</r>"s);  // interns its names
        const int used = CoreHeapUsed();
        EXPECT_EQ(Parse("<r><a x='1'/>" + fault + (fault.empty() ? "" : "</r>")), false) << fault;
        EXPECT_EQ(target.records, "a x=\"1\"\n") << fault;
        EXPECT_EQ(window.percents.front(), 0);
        EXPECT_NE(window.percents.back(), 100) << fault;
        EXPECT_EQ(CoreHeapUsed(), used) << fault;
    }
    const std::string whole = "<?xml version='1.0'?><!DOCTYPE r [<!ENTITY e 'v'>]><r><a x='&e;'/></r>";
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_FALSE(Parse(whole.substr(0, length))) << length;
    for (const std::string& file : {""s, " \n"s, "\xef\xbb\xbf"s, "\x1f\x8b\x08 gzip"s, "<r>\0</r>"s,
                                    "<?xml version='1.0' encoding='none'?><r/>"s}) {
        EXPECT_FALSE(Parse(file)) << file;
        EXPECT_EQ(target.records, "");
    }
    for (const char* flood : {"<", "&", "<!", "<!--", "<r><!--", "<!DOCTYPE r [<!--"})
        EXPECT_FALSE(Parse(flood + Repeat("<!--", 200'000))) << flood;
    EXPECT_FALSE(kOwnXmlService && (Parse("<r/>\0"s) || Parse("<r/>\0<"s)));
    EXPECT_EQ(error, "as it was");
}

TEST_F(SaxReader, ReadsRegularFilesOnly) {
    CXMLReader reader(&window, &target);
    Write("<r><a/></r>");
    Texts names = NoFiles(scratch);
    names.insert(names.end(), {scratch / "none", "", "http://127.0.0.1/file", "file://" + scratch / "file"});
    for (const std::string& name : names) {
        CString path(name.c_str());
        EXPECT_FALSE(reader.ParseDocument(path, error)) << name;
    }
    EXPECT_TRUE(window.percents.empty());
    CString path((scratch / "file").c_str());
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(reader.ParseDocument(path, error));
    EXPECT_EQ(target.records, "a\na\n");
    EXPECT_TRUE(CXMLReader(nullptr, nullptr).ParseDocument(path, error));
}

TEST_F(SaxReader, CountsElements) {
    CXMLReader reader(&window, &target);
    int total = 7, components = 7, footprints = 7, symbols = 7;
    const auto count = [&](const std::string& content) {
        CString path = Write(content);
        return reader.CountElements(path, error, total, components, footprints, symbols);
    };
    EXPECT_FALSE(count("<r><component/>"));
    EXPECT_EQ(std::tie(total, components, footprints, symbols), std::make_tuple(0, 0, 7, 7));
    EXPECT_TRUE(
        count("<r><component/><Symbol uncounted='1'/><x:COMPONENT xmlns:x='u'><y/></x:COMPONENT>"
              "<footprints/><uncounted/></r>"));
    EXPECT_EQ(std::tie(total, components, footprints, symbols), std::make_tuple(7, 2, 0, 1));
    EXPECT_TRUE(count("<fooTprint/>"));
    EXPECT_EQ(std::tie(total, components, footprints, symbols), std::make_tuple(1, 0, 1, 0));
    EXPECT_EQ(target.records, "");
    EXPECT_FALSE(StrPresent("uncounted"));
    EXPECT_EQ(window.percents.back(), 100);
    CString path = Write("<r><a/></r>");
    EXPECT_TRUE(reader.ParseDocument(path, error));
    EXPECT_EQ(target.records, "a\n") << "counting is over";
}

TEST_F(SaxReader, ReportsProgressFromTheColumnsAtWhichTextsBegin) {
    const std::pair<std::string, Percents> rows[] = {
        {"<r/>", {0, 100}},
        {"<r>\n<a/>\n</r>", {0, 46, 100}},         // 4 + 2 of 13, 5 + 2 of 13
        {"<r> <a/> <a/> </r>", {0, 33, 94, 183}},  // 4 + 2, 9 + 2, 14 + 2 of 18
        {"<r>1<!-- -->2<?p?>\n</r>", {0, 26, 91, 182}},
    };
    for (const auto& [file, percents] : rows) {
        EXPECT_TRUE(Parse(file));
        EXPECT_EQ(window.percents, percents) << file;
    }
    if (kOwnXmlService) {
        EXPECT_TRUE(Parse("<r><![CDATA[1]]>2&#51;<a/></r>"));
        EXPECT_EQ(window.percents, (Percents{0, 20, 100})) << "one text";
    }
    ASSERT_TRUE(Parse("<r>\n" + Repeat("<part name='R1' value='10k'/>\n", 1000) + "</r>"));
    EXPECT_GE(window.percents.size(), 95u);
    EXPECT_EQ(std::adjacent_find(window.percents.begin(), window.percents.end(), std::greater_equal<int>()),
              window.percents.end());
    EXPECT_LE(window.percents.back(), 106);
}

TEST_F(SaxReader, NeedsAParser) {
    const SaxReaderMaker original = g_saxReaderMaker;
    const SaxReaderMaker makers[] = {
        [] { return std::unique_ptr<ISAXXMLReader>(); },
        []() -> std::unique_ptr<ISAXXMLReader> { throw std::bad_alloc(); },
    };
    CString path((scratch / "none").c_str());
    for (const SaxReaderMaker maker : makers) {
        g_saxReaderMaker = maker;
        CXMLReader reader(&window, &target);
        error.Empty();
        EXPECT_FALSE(reader.ParseDocument(path, error));
        EXPECT_EQ(error, "Failed to initialize XML reader.");
        int counts[] = {7, 7, 7, 7};
        EXPECT_FALSE(reader.CountElements(path, error, counts[0], counts[1], counts[2], counts[3]));
        EXPECT_EQ((std::vector<int>(counts, counts + 4)), (std::vector<int>{0, 0, 7, 7}));
    }
    g_saxReaderMaker = original;
}

TEST_F(SaxReader, IsSafeFromItsReceivers) {
    CString path = Write("<r><a x='1'><b/></a><a/></r>");
    CXMLReader reader(&window, &target);
    CCoreXmlDomElement copy;
    target.onRecord = [&](CCoreXmlDomElement& record) {
        EXPECT_FALSE(reader.ParseDocument(path, error)) << "one parse at a time";
        if (copy.GetTagNameId() == kNoName) copy = record;
        record.DeleteChildren();
        record.GetParent()->CreateChildElement("added");
    };
    EXPECT_TRUE(reader.ParseDocument(path, error));
    EXPECT_EQ(target.records, "a x=\"1\"\na\n");
    EXPECT_EQ(TreeText(copy), "a x=\"1\"\n  b\n");

    const int used = CoreHeapUsed();
    target.onRecord = [](CCoreXmlDomElement&) { throw std::runtime_error("enough"); };
    EXPECT_THROW(reader.ParseDocument(path, error), std::runtime_error);
    target.onRecord = [](CCoreXmlDomElement&) { throw std::bad_alloc(); };
    EXPECT_FALSE(reader.ParseDocument(path, error));
    EXPECT_EQ(CoreHeapUsed(), used);
    target.onRecord = nullptr;
    EXPECT_TRUE(reader.ParseDocument(path, error));
}

TEST_F(SaxReader, OpensNoOtherFileAndStopsEntitiesThatMultiply) {
    std::ofstream(scratch / "leak") << "<leak/>";
    std::ofstream(scratch / "declarations") << "<!ENTITY e 'leak'>";
    const auto declare = [&](const char* kind, const char* name) {
        return "<!DOCTYPE r ["s + kind + " SYSTEM '" + scratch / name + "'>";
    };
    const bool parsed = Parse(declare("<!ENTITY e", "leak") + "]><r><a x='&e;'/>&e;</r>");
    EXPECT_TRUE(parsed || !kOwnXmlService);
    EXPECT_EQ(target.records, parsed ? "a x=\"\"\n" : "");
    EXPECT_FALSE(Parse(declare("<!ENTITY % p", "declarations") + "%p;]><r><a/><b x='&e;'/></r>"));
    EXPECT_FALSE(Parse("<!DOCTYPE r SYSTEM '" + scratch / "declarations" + "'><r><b x='&e;'/></r>"));
    EXPECT_TRUE(Parse("<!DOCTYPE r SYSTEM '" + scratch / "declarations" + "'><r><b/></r>"));

    const std::string bomb = "<!DOCTYPE r [" + EntityBomb();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(Parse(bomb + "]><r>&e9;</r>"));
    EXPECT_FALSE(Parse(bomb + "]><r><a x='&e9;'/></r>"));
    EXPECT_FALSE(Parse("<!DOCTYPE r [<!ENTITY e '&e;'>]><r>&e;</r>"));

    if (!kOwnXmlService) return;
    EXPECT_FALSE(Parse("<!DOCTYPE r [<!ATTLIST a b (a" + Numbered("|a", "", 6000) + ") 'a'>]><r/>"));
    EXPECT_FALSE(Parse("<!DOCTYPE r [<!ENTITY % q '" + Numbered("&#124;a", "", 6000) +
                       "'><!ENTITY % p '<!ATTLIST a b (a &#37;q;) \"a\">'>%p;]><r/>"));
    EXPECT_FALSE(Parse("<!DOCTYPE r [<!ATTLIST a" + Numbered(" a", " CDATA ''", 6000) + ">]><r>" +
                       Repeat("<a/>", 500) + "</r>"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST_F(SaxReader, StreamsInConstantMemory) {
    const int kRecords = kOwnXmlService ? 200000 : 10000;  // of 320 bytes
    std::string record = "<part name='R1' value='10k'><pin number='1' net='GND'/><pin number='2' net='VCC'/>";
    record.append(320 - record.size() - 8, ' ').append("</part>\n");
    ASSERT_TRUE(Parse("<r>" + record + "</r>"));
    {
        std::ofstream file(scratch / "file", std::ios::binary);
        file << "<r>\n";
        for (int i = 0; i < kRecords; ++i)
            file << record;
        file << "</r>";
    }
    const int usedBefore = CoreHeapUsed();
    const std::size_t allocatedBefore = AllocatedBytes();
    std::size_t allocatedMost = 0;
    int count = 0;
    target.onRecord = [&](CCoreXmlDomElement&) {
        target.records.clear();
        if (++count % 1024 == 0) allocatedMost = std::max(allocatedMost, AllocatedBytes());
    };
    CString path((scratch / "file").c_str());
    EXPECT_TRUE(CXMLReader(&window, &target).ParseDocument(path, error));
    EXPECT_EQ(count, kRecords);
    EXPECT_EQ(CoreHeapUsed(), usedBefore);
    EXPECT_LT(allocatedMost, allocatedBefore + 300 * 1024) << "for a file of 64 MB";
}

TEST_F(SaxReader, GoesAsDeepAsTheFile) {
    const int kLevels = kDeepestFile;
    const std::string open = "<r>" + Repeat("<e>", kLevels);
    CString path = Write(open);
    int depth = 0;
    target.onRecord = [&](CCoreXmlDomElement& record) {
        for (CCoreXmlDomElement* e = &record; e;
             e = e->GetFirstChild().Get() ? *e->GetFirstChild().Get() : nullptr)
            ++depth;
        record.DeleteChildren();
    };
    OnStackOf(1, [&] { EXPECT_FALSE(CXMLReader(&window, &target).ParseDocument(path, error)); });
    Write(open + Repeat("</e>", kLevels) + "</r>");
    OnStackOf(1, [&] { EXPECT_TRUE(CXMLReader(&window, &target).ParseDocument(path, error)); });
    EXPECT_EQ(depth, kLevels);
    EXPECT_EQ(target.records, "e\n");
}

}  // namespace
}  // namespace brenta::test
