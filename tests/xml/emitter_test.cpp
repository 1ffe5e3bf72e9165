// The emitter: the bytes of its files.
#include "brenta/xml_emitter.h"

#include <climits>
#include <filesystem>
#include <fstream>

#include "test_support.h"

namespace brenta::test {
namespace {

const std::string kHeader = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

class Emitter : public testing::Test {
 protected:
    const Scratch scratch;
    const std::string path = scratch / "file.xml";
};

TEST_F(Emitter, WritesElementsAndData) {
    TOrderedList<OneAttr> attrs, none;
    attrs.Add(OneAttr("x", 1000));
    attrs.Add(OneAttr("e", kNoName));
    attrs.Add(OneAttr("y", "2"));
    const std::pair<std::function<void(CXmlEmitter&)>, const char*> rows[] = {
        {[](CXmlEmitter&) {}, ""},
        {[](CXmlEmitter& e) { e.BeginElement("a"), e.CData("x"), e.EndElement(); }, "<a>\nx</a>\n"},
        {[](CXmlEmitter& e) { e.Element("a", nullptr); }, "<a/>\n"},
        {[](CXmlEmitter& e) { e.Element("a", ""); }, "<a>\n</a>\n"},
        {[](CXmlEmitter& e) { e.Element("a", OneAttr("n", "v"), nullptr); }, "<a n=\"v\"/>\n"},
        {[](CXmlEmitter& e) { e.Element("a", OneAttr("n", 255), "t"); }, "<a n=\"9l\">\nt</a>\n"},
        {[&](CXmlEmitter& e) { e.Element("a", attrs, nullptr); }, "<a x=\"1cc\" e=\"\" y=\"2\"/>\n"},
        {[&](CXmlEmitter& e) { e.Element("a", none, "t"); }, "<a>\nt</a>\n"},
        {[&](CXmlEmitter& e) { e.BeginElement("a", attrs), e.BeginElement("b", OneAttr("n", "v")); },
         "<a x=\"1cc\" e=\"\" y=\"2\">\n<b n=\"v\">\n</b>\n</a>\n"},
        {[](CXmlEmitter& e) { e.CData(0), e.CData(INT_MIN), e.CData(1234567); }, "0-21474836481234567"},
        {[](CXmlEmitter& e) { e.CData("a\"b&c'd<e>f"); }, "a&quot;b&amp;c&apos;d&lt;e&gt;f"},
        {[](CXmlEmitter& e) { e.CData("\x01\t\r\n\x1f \x7f\x80\xc3\xa9\xff!"); }, "\n \x7f!"},
        {[](CXmlEmitter& e) { e.Element("a\t<&\xe9", OneAttr("n\r'", "\t\"\n\xff"), nullptr); },
         "<a<& n'=\"&quot;\n\"/>\n"},
        {[](CXmlEmitter& e) { e.BeginElement(nullptr), e.CData(nullptr), e.EndElement(); }, "<>\n</>\n"},
    };
    for (const auto& [write, text] : rows) {
        {
            CXmlEmitter emitter;
            ASSERT_TRUE(emitter.CreateDocument(path.c_str(), ""));
            write(emitter);
        }
        EXPECT_EQ(ReadTextFile(path), kHeader + text);
    }
}

TEST_F(Emitter, WritesNumbersInBase26) {
    const std::pair<int, const char*> rows[] = {
        {0, "0"},        {9, "9"},      {10, "a"},
        {25, "p"},       {26, "10"},    {100, "3m"},
        {255, "9l"},     {1000, "1cc"}, {INT_MAX, "6oj8ion"},
        {-1, "dnchbnl"},
    };
    for (const auto& [number, text] : rows) {
        const OneAttr attr("n", number);
        EXPECT_EQ(attr, OneAttr("n", text));
        EXPECT_EQ(attr, OneAttr("n", StrId(text)));
    }
    EXPECT_FALSE(OneAttr("a", "b") == OneAttr("a", "c"));
    EXPECT_FALSE(OneAttr("a", "b") == OneAttr("c", "b"));
}

TEST_F(Emitter, OpensAndClosesDocuments) {
    CXmlEmitter emitter;
    EXPECT_FALSE(emitter.CreateDocument((scratch / "none/file").c_str(), ""));
    EXPECT_FALSE(emitter.CreateDocument(nullptr, ""));
    EXPECT_EQ(emitter.GetDocumentName(), nullptr);
    EXPECT_TRUE(emitter.BeginElement("early")) << "goes nowhere, but is open";

    std::ofstream(path) << "what was there before, which is longer than what comes";
    const std::string second = scratch / "second.xml";
    ASSERT_TRUE(emitter.CreateDocument(path.c_str(), "<?s \"a\"?>\n\t\xe9"));
    EXPECT_EQ(emitter.GetDocumentName(), path.c_str());
    emitter.CData("1");
    EXPECT_FALSE(emitter.CreateDocument(second.c_str(), "")) << "one at a time";
    EXPECT_FALSE(std::filesystem::exists(second));
    emitter.CData("2");
    emitter.CloseDocument();
    EXPECT_EQ(emitter.GetDocumentName(), nullptr);
    EXPECT_EQ(ReadTextFile(path), kHeader + "<?s \"a\"?>\n12");
    emitter.CloseDocument();
    EXPECT_TRUE(emitter.CData("lost"));

    ASSERT_TRUE(emitter.CreateDocument(second.c_str(), nullptr));
    EXPECT_TRUE(emitter.EndElement());
    CrashRecorder crashes;
    EXPECT_TRUE(emitter.EndElement());
    EXPECT_EQ(crashes.Messages(), Texts{"Assertion failed! m_pHead"});
    EXPECT_STREQ(crashes.Last().File(), "Templ");
    emitter.CloseDocument();
    EXPECT_EQ(ReadTextFile(second), kHeader + "</early>\n");
}

TEST_F(Emitter, BuffersTextsOfAnyLength) {
    std::string expected = kHeader;
    {
        CXmlEmitter emitter;
        ASSERT_TRUE(emitter.CreateDocument(path.c_str(), ""));
        for (const std::size_t length : {1u, 65000u, 535u, 65536u, 1u, 300000u, 2u, 65535u, 65537u}) {
            const std::string text(length, static_cast<char>('a' + length % 26));
            emitter.CData((text + '<').c_str());
            expected += text + "&lt;";
        }
        for (int i = 0; i < 100000; ++i) {
            emitter.CData(i);
            expected += std::to_string(i);
        }
    }
    EXPECT_TRUE(ReadTextFile(path) == expected);
}

}  // namespace
}  // namespace brenta::test
