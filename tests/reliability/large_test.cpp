// Documents of more than 2 GB, values of 1 GB and a full table of names. They take a minute and gigabytes of
// memory, so they run only where BRENTA_LARGE is set.
#include <filesystem>
#include <fstream>

#include "brenta/xml_readers.h"
#include "brenta/xml_stream.h"
#include "child_process.h"
#include "foundation/library_statics.h"
#include "script/run_script.h"
#include "script/value_limits.h"

namespace brenta::test {
namespace {

class Large : public testing::Test {
 protected:
    void SetUp() override {
        if (std::getenv("BRENTA_LARGE") == nullptr) GTEST_SKIP() << "BRENTA_LARGE is not set";
    }
};

struct Receiver : CCmdTarget {
    bool OnCmdMsg(unsigned int, int, void*, AFX_CMDHANDLERINFO*) override {
        ++records;
        return true;
    }
    int records = 0;
};

/// The parser of documents may refuse.
void ReadWithAll(const std::string& path, bool html, bool stream) {
    const RecordingHost host;
    CCoreXMLQuickReader quick;
    EXPECT_TRUE(quick.LoadDocument(path.c_str()));
    for (CCoreXmlDomElement* element : quick.TakeElements())
        delete element;
    CCoreHTMLReader reader;
    EXPECT_EQ(reader.LoadDocument(path.c_str()), html);
    delete reader.GetRootElement();
    CCoreXmlDom document;
    document.LoadDocument(path.c_str(), false);
    EXPECT_TRUE(document.LoadString("<after/>"));
    Receiver receiver;
    CString error, file(path.c_str());
    EXPECT_EQ(CXMLReader(nullptr, &receiver).ParseDocument(file, error), stream);
    EXPECT_EQ(receiver.records, stream ? 1 : 0);
}

TEST_F(Large, Documents) {
    const Scratch folder;
    const std::string path = folder / "large.xml", value(1 << 20, 'v');
    const auto readMany = [&](const char* start, const std::string& piece, int count, const char* end,
                              bool html, bool stream) {
        std::ofstream file(path, std::ios::binary);
        file << start;
        while (--count >= 0)
            file << piece;
        file << end;
        file.close();
        ReadWithAll(path, html, stream);
    };
    // To the HTML reader the comments are a text, and longer than any; the parser's values end at 10^9 bytes.
    readMany("<r><e/>", "<!--" + value + "-->", 2200, "</r>", false, true);
    readMany("<r><e a=\"", value, 1024, "\"/></r>", true, false);
}

const ChildWork kFillTable("Large.FillTable", [](const Texts&) {
    ScriptRun run("function f() { return \"a text\"; }");
    for (int i = 0; GlobalStrings().GetPageCount() < kMaxNamePages; ++i)
        StrId((std::to_string(i) + std::string(500'001, '.')).c_str());
    const std::string told = "!RunScript:String space exhausted. failed";
    EXPECT_EQ(run.Execute("1 + 1"), told);
    EXPECT_EQ(run.Load("var neverSeen;"), told);
    EXPECT_EQ(run.RunScript("f", {}), told);
    return !testing::Test::HasFailure();
});

TEST_F(Large, TableOfNames) {
    EXPECT_TRUE(kFillTable.Start({}).Succeeds());
}

}  // namespace
}  // namespace brenta::test
