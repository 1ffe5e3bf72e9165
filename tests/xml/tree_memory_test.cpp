#include <fstream>
#include <memory>

#include "brenta/xml_readers.h"
#include "test_support.h"
#include "xml/tree_builder.h"
#include "xml/tree_text.h"

namespace brenta::test {
namespace {

using ElementPtr = std::unique_ptr<CCoreXmlDomElement>;

/// The element of a text, which comes behind so many others that it is made in a slab.
ElementPtr Read(const std::string& text) {
    CCoreXMLQuickReader reader;
    EXPECT_TRUE(reader.ParseStream((Repeat("<i/>", TreeBuilder::kFew) + text).c_str()));
    ElementPtr last;
    for (CCoreXmlDomElement* element : reader.TakeElements())
        last.reset(element);
    return last;
}

const std::string kLong(5000, 'l');

TEST(TreeMemory, KeepsValuesOfAllLengths) {
    std::string text = "<a", expected = "a";
    for (const std::size_t size : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 511u, 512u, 5000u}) {
        const std::string pair = " n" + std::to_string(size) + "=\"" + kLong.substr(0, size) + "\"";
        text += pair + " same=\"" + kLong.substr(0, size) + "\"";
        expected += pair + (size == 0 ? " same=\"" + kLong + "\"" : "");
    }
    EXPECT_EQ(TreeText(*Read(text + "/>")), expected + "\n");
}

/// Writes its name down when it is destroyed.
template <class Base>
class Mortal : public Base {
 public:
    Mortal(const char* name, std::string& deaths) : Base(StrId(name)), m_name(name), m_deaths(deaths) {}
    ~Mortal() override { m_deaths += m_name; }

 private:
    const char* m_name;
    std::string& m_deaths;
};

class MortalAttribute : public CCoreXmlDomAttribute {
 public:
    explicit MortalAttribute(STRID name) : CCoreXmlDomAttribute(name, kNoName) {}
};

// What happens to objects that stand beside each other must not be seen by those who hold one.
TEST(TreeMemory, LetsObjectsLeaveTheirTreeAndOthersCome) {
    const std::string text =
        "<a><b x=\"longer than a word\" y=\"2\" z=\"" + kLong + "\"><c/><d/></b><e/><f/></a>";
    std::string deaths;
    int usedAfterFirst = 0;
    for (int turn = 0; turn < 200; ++turn) {
        deaths.clear();
        ElementPtr a = Read(text);
        const ElementPtr b(a->FindElement("b", false));
        a->RemoveChildElement(b.get());
        const std::unique_ptr<CCoreXmlDomAttribute> x(*b->GetFirstAttribute().Get());
        b->DeleteAttribute("x");
        CCoreXmlDomElement& e = *a->FindElement("e", false);
        e.AddChildElement(new Mortal<CCoreXmlDomElement>("1", deaths));
        e.AddChildElement(new Mortal<CCoreXmlDomElement>("2", deaths));
        a->FindElement("f", false)->AddAttribute(new Mortal<MortalAttribute>("3", deaths));
        b->FindElement("d", false)->AddChildElement(Read(text).release());
        // A pointer replaced in place: the old child is the test's then.
        CCoreXmlDomElement** const c = b->GetFirstChild().Get();
        const ElementPtr old(std::exchange(*c, new Mortal<CCoreXmlDomElement>("4", deaths)));
        b->AddAttribute("y", kLong.c_str());
        a.reset();
        EXPECT_TRUE(deaths == "213" || deaths == "321") << deaths;
        EXPECT_STREQ(x->GetValue(), "longer than a word");
        EXPECT_EQ(TreeText(*b).substr(0, 10), "b y=\"lllll");
        EXPECT_STREQ(b->FindElement("e", true)->GetTagName(), "e");
        b->DeleteAttributes();
        b->DeleteChildren();
        EXPECT_EQ(deaths.back(), '4');
        if (turn == 0) usedAfterFirst = CoreHeapUsed();
    }
    EXPECT_EQ(CoreHeapUsed(), usedAfterFirst) << "everything was given back";
}

TEST(TreeMemory, IsGivenBackByWhicheverThreadIsLast) {
    const std::string text = "<a>" + Repeat("<b x=\"1\" y=\"text of some length\"><c/></b>", 3000) + "</a>";
    int usedAfterFirst = 0;
    for (int turn = 0; turn < 5; ++turn) {
        std::vector<CCoreXmlDomElement*> parts[2];
        const ElementPtr a = Read(text);
        for (auto b = a->GetFirstChild(); b.Get(); b.Next())
            parts[parts[0].size() > parts[1].size() ? 1 : 0].push_back(*b.Get());
        while (CCoreXmlDomElement** b = a->GetFirstChild().Get())
            a->RemoveChildElement(*b);
        OnThreads(2, [&](int i) {
            for (CCoreXmlDomElement* b : parts[i])
                delete b;
        });
        if (turn == 0) usedAfterFirst = CoreHeapUsed();
    }
    EXPECT_EQ(CoreHeapUsed(), usedAfterFirst);
}

// A small document takes the room of its objects, no slab.
TEST(TreeMemory, SmallDocumentsTakeLittle) {
    std::vector<ElementPtr> kept;
    const auto read = [&] {
        CCoreXMLQuickReader reader;
        EXPECT_TRUE(reader.ParseStream("<a b=\"1\"/>"));
        kept.emplace_back(*reader.TakeElements().GetHead());
    };
    const int used = CoreHeapUsed();
    for (int i = 0; i < 20000; ++i)
        read();
    EXPECT_LT(CoreHeapUsed() - used, 20000 * 400);
}

// A file is read through a window of 256 KB: every construct comes to lie across its end.
TEST(FileText, CutsNothing) {
    const std::string tail =
        "<b&lt; x=\"1&amp;2\" yy = \"a value of some length\" /z=\"\"><!-- c --><d/></b&lt;></a>";
    const Scratch folder;
    const std::string path = folder / "a.xml";
    for (std::size_t cut = 0; cut <= tail.size(); ++cut) {
        for (const std::size_t size : {tail.size(), cut, cut + 1}) {
            const std::string text = "<a>" + std::string(256 * 1024 - 4 - cut, ' ') + tail.substr(0, size);
            std::ofstream(path, std::ios::binary) << text;
            const RecordingHost host;
            CCoreXMLQuickReader ofText, ofFile;
            const bool good = ofText.ParseStream(text.c_str());
            const Texts expected = host.shown;
            EXPECT_EQ(ofFile.LoadDocument(path.c_str()), good);
            EXPECT_EQ(
                Texts(host.shown.begin() + static_cast<std::ptrdiff_t>(expected.size()), host.shown.end()),
                expected);
            const ElementPtr first(good ? *ofText.GetFirstElement().Get() : nullptr);
            const ElementPtr second(good ? *ofFile.GetFirstElement().Get() : nullptr);
            EXPECT_TRUE(!good || TreeText(*second) == TreeText(*first)) << cut;
        }
    }
    std::ofstream(path, std::ios::binary) << "<a x=\"" << Repeat(kLong, 400) << "\"/>";
    CCoreXMLQuickReader reader;
    ASSERT_TRUE(reader.LoadDocument(path.c_str()));
    const ElementPtr a(*reader.GetFirstElement().Get());
    EXPECT_EQ((*a->GetFirstAttribute().Get())->PeekValue(), Repeat(kLong, 400));
}

}  // namespace
}  // namespace brenta::test
