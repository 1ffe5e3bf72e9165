// Walking a whole document: loading with a message, counting, elements, attributes.
#include "brenta/xml_document.h"

#include "os/os.h"
#include "test_support.h"
#include "xml/platform_document.h"
#include "xml/xml_service.h"

namespace brenta::test {
namespace {

using namespace std::string_literals;

class XmlDocument : public testing::Test {
 protected:
    bool Load(CXMLDocument& document, const std::string& text) {
        CString path((m_scratch / "a.xml").c_str());
        EXPECT_TRUE(os::WriteWholeFile(path, text));
        return document.LoadDocument(path, m_error);
    }

    /// A system's service has its own reasons, and counts offsets or not.
    void ExpectError(const std::string& reason, int offset) const {
        const std::string error = static_cast<const char*>(m_error), start = "Failed to load xml file.\n\n";
        const std::string middle = "\nLoad failed at offset ", end = " in file.";
        if (kOwnXmlService) {
            EXPECT_EQ(error, start + reason + middle + std::to_string(offset) + end);
        } else {
            EXPECT_TRUE(error.starts_with(start) && error.ends_with(end)) << error;
            EXPECT_GT(error.find(middle), start.size()) << "there is a reason";
        }
    }

    const Scratch m_scratch;
    CString m_error = "old";
};

std::string Children(IXMLDOMNode* parent) {
    std::string names;
    CXMLElementIterator iterator(parent);
    CString name;
    while (IXMLDOMNode* node = iterator.GetNextElement()) {
        node->GetNodeName(name);
        (names += name) += ' ';
        iterator.FreeElement(node);
    }
    EXPECT_EQ(iterator.GetNextElement(), nullptr);
    return names;
}

TEST_F(XmlDocument, TellsWhyALoadFails) {
    CXMLDocument document;
    EXPECT_TRUE(Load(document, "<a/>"));
    EXPECT_STREQ(m_error, "old");
    EXPECT_FALSE(Load(document, "<a></b>"));
    ExpectError("Opening and ending tag mismatch: a line 1 and b", 7);
    EXPECT_EQ(document.GetRootElement(), nullptr);
    CString absent((m_scratch / "absent").c_str());
    EXPECT_FALSE(document.LoadDocument(absent, m_error));
    ExpectError("The file cannot be read", 0);

    const PlatformDocumentMaker maker =
        std::exchange(g_platformDocumentMaker, [] { return std::unique_ptr<PlatformDocument>(); });
    CXMLDocument none;
    g_platformDocumentMaker = maker;
    EXPECT_FALSE(Load(none, "<a/>"));
    EXPECT_STREQ(m_error, "Failed to initialize XML document.");
    EXPECT_EQ(none.GetRootElement(), nullptr);
}

TEST_F(XmlDocument, CountsElements) {
    struct {
        std::string text;
        unsigned int count;
    } const kCases[] = {
        {"<a/>", 1},
        {"<a><b/><c><d/></c></a>", 4},
        {"<!--c--><a>t<b/><!--c--><?p?><![CDATA[<x/>]]></a>", 2},
        {"<!DOCTYPE a [<!ENTITY e '<b/>'>]><a>&e;<c/></a>", 2},
        {"<a>", 0},
    };
    CXMLDocument document;
    for (const auto& row : kCases) {
        EXPECT_EQ(Load(document, row.text), row.count != 0);
        unsigned int count = 7;
        EXPECT_EQ(document.GetElementCount(count), row.count != 0) << row.text;
        EXPECT_EQ(count, row.count) << row.text;
    }
    OnStackOf(1, [&] {
        unsigned int count = 0;
        CXMLDocument large;
        EXPECT_TRUE(Load(large, Repeat("<a>", kDeepestFile) + Repeat("</a>", kDeepestFile)));
        EXPECT_TRUE(large.GetElementCount(count));
        EXPECT_EQ(count, static_cast<unsigned int>(kDeepestFile));
    });
}

TEST_F(XmlDocument, StepsThroughElements) {
    CXMLDocument document;
    ASSERT_TRUE(Load(document, "<p:a xmlns:p='u'>t<b><x/></b><!--c--><p:c/>u<d/></p:a>"));
    IXMLDOMElement* const root = document.GetRootElement();
    EXPECT_EQ(Children(root), "b p:c d ");
    EXPECT_EQ(Children(nullptr), "");
    CXMLElementIterator iterator(root);
    IXMLDOMNode* const first = iterator.GetFirstElement();
    IXMLDOMNode* const again = iterator.GetFirstElement();
    EXPECT_EQ(Children(first), "x ");
    EXPECT_EQ(Children(again), "x ");
    iterator.FreeElement(again);
    iterator.FreeElement(nullptr);
    document.FreeRootElement(root);
    document.FreeRootElement(nullptr);
    EXPECT_TRUE(Load(document, "<other/>"));
    EXPECT_EQ(Children(first), "x ") << "a node that is held outlives its document";
    iterator.FreeElement(first);
}

TEST_F(XmlDocument, ReadsAttributes) {
    CXMLDocument document;
    ASSERT_TRUE(
        Load(document,
             "<!DOCTYPE a [<!ENTITY e '4'><!ATTLIST a def CDATA '-7x'>]>"
             "<a s='\xC3\xA9' n=' 12abc' big='99999999999' e='&e;2' t='TRUE' one='1' yes='yes' p:q='5' "
             "xmlns:p='u' xmlns='v' empty=''/>"));
    struct Row {
        std::string name, value;
        long number;
        bool truth;
    };
    std::vector<Row> rows = {
        {"s", "\xC3\xA9", 0, false}, {"n", " 12abc", 12, false}, {"big", "99999999999", 2147483647, false},
        {"e", "42", 42, false},      {"t", "TRUE", 0, true},     {"one", "1", 1, true},
        {"yes", "yes", 0, false},    {"p:q", "5", 5, false},     {"q", "", 0, false},
        {"empty", "", 0, false},     {"S", "", 0, false},        {"", "", 0, false},
    };
    const Row ownRows[] = {{"xmlns:p", "u", 0, false}, {"xmlns", "v", 0, false}, {"def", "-7x", -7, false}};
    if (kOwnXmlService) rows.insert(rows.end(), std::begin(ownRows), std::end(ownRows));
    IXMLDOMElement* const root = document.GetRootElement();
    CXMLAttributeIterator iterator(root), nowhere(nullptr);
    document.FreeRootElement(root);
    for (const Row& row : rows) {
        std::string name = row.name;
        CString value("old");
        EXPECT_STREQ(iterator.GetValue(name.data(), value), Own(row.value).c_str()) << name;
        EXPECT_EQ(iterator.GetLongValue(name.data()), row.number) << name;
        EXPECT_EQ(iterator.GetBoolValue(name.data()), row.truth) << name;
        EXPECT_EQ(iterator.GetValueId(name.data()), StrId(Own(row.value).c_str())) << name;
        EXPECT_STREQ(nowhere.GetValue(name.data(), value), "");
    }
    CString value("old");
    EXPECT_STREQ(iterator.GetValue(nullptr, value), "");
    EXPECT_EQ(iterator.GetLongValue(nullptr), 0);
    EXPECT_FALSE(iterator.GetBoolValue(nullptr));
    EXPECT_EQ(iterator.GetValueId(nullptr), kNoName);
}

}  // namespace
}  // namespace brenta::test
