
#include <climits>
#include <cstdlib>

#include "brenta/xml.h"
#include "test_support.h"
#include "xml/late_text.h"
#include "xml/tree_access.h"

namespace brenta::test {
namespace {

CCoreXmlDomElement Tree() {
    CCoreXmlDom document;
    EXPECT_TRUE(
        document.LoadString("<a id='1'><b id='2' k='X'><c id='3'><d id='4' k='y'/></c></b>"
                            "<b id='5'><d id='6'/></b><d id='7' K='Z'/></a>"));
    return **document.GetFirstElement().Get();
}

/// The attribute "id"; 0 for null.
int Id(const CCoreXmlDomElement* element) {
    return element == nullptr ? 0 : element->GetIntAttributeValue("id", false);
}

std::string Ids(const TOrderedList<CCoreXmlDomElement*>& elements) {
    std::string ids;
    for (const CCoreXmlDomElement* element : elements)
        ids += std::to_string(Id(element));
    return ids;
}

TEST(DomElement, FindsByTag) {
    const std::tuple<const char*, bool, int, const char*> rows[] = {
        // tag, recurse, id of the first, ids of all
        {"b", false, 2, "25"}, {"d", false, 7, "7"}, {"d", true, 4, "467"}, {"c", false, 0, ""},
        {"c", true, 3, "3"},   {"a", true, 0, ""},   {"B", true, 0, ""},    {"none", true, 0, ""},
    };
    CCoreXmlDomElement top = Tree();
    for (const auto& [tag, recurse, id, ids] : rows) {
        EXPECT_EQ(Id(top.FindElement(tag, recurse)), id) << tag;
        EXPECT_EQ(Id(top.FindElement(StrId(tag), recurse)), id) << tag;
        TOrderedList<CCoreXmlDomElement*> all;
        top.FindAllElements(StrId(tag), all, recurse);
        EXPECT_EQ(Ids(all), ids) << tag;
    }
    EXPECT_EQ(top.FindElement(static_cast<const char*>(nullptr), true), nullptr);
}

TEST(DomElement, FindsByAttributeItselfThenItsChildrenThenWhatIsBelowEach) {
    const std::tuple<const char*, const char*, const char*, bool, int, int> rows[] = {
        // tag, attribute, value, recurse, id by text (names in any case), id by identifiers
        {"a", "id", nullptr, false, 1, 1}, {"a", "ID", "1", false, 1, 0},       {"b", "k", "x", false, 2, 2},
        {"b", "id", "5", false, 5, 5},     {"d", "k", "", false, 7, 0},         {"d", "k", "", true, 7, 4},
        {"d", "k", "Y", true, 4, 4},       {"d", "K", "z", true, 7, 7},         {"d", "id", "6", false, 0, 0},
        {"d", "id", "6", true, 6, 6},      {"d", "id", "66", true, 0, 0},       {"D", "id", "6", true, 0, 0},
        {"d", "none", "", true, 0, 0},     {"d", nullptr, nullptr, true, 0, 0},
    };
    CCoreXmlDomElement top = Tree();
    CCoreXmlDom document;
    document.CreateElement("first");
    document.AddElement(new CCoreXmlDomElement(top));
    for (const auto& [tag, name, value, recurse, byText, byId] : rows) {
        EXPECT_EQ(Id(top.FindElement(tag, name, value, recurse)), byText) << tag;
        EXPECT_EQ(Id(document.FindElement(tag, name, value, recurse)), byText) << tag;
        EXPECT_EQ(Id(top.FindElement(StrId(tag), StrId(name), value, recurse)), byId) << tag;
    }
    EXPECT_EQ(Id(document.FindElement("a")), 1);
    EXPECT_EQ(document.FindElement("b"), nullptr);
}

TEST(DomElement, ConvertsAttributeValues) {
    const std::tuple<const char*, int, bool> rows[] = {
        {"1", 1, true},        {"true", 0, true}, {"True", 0, true},
        {"TRUE", 0, false},    {"yes", 0, false}, {"-1", -1, false},
        {" 12abc", 12, false}, {"", 0, false},    {"99999999999", INT_MAX, false}};
    for (const auto& [value, number, flag] : rows) {
        CCoreXmlDomElement element("e");
        element.AddAttribute("Key", value);
        EXPECT_EQ(element.GetIntAttributeValue(StrId("Key")), number) << value;
        EXPECT_EQ(element.GetIntAttributeValue("kEY", true), number) << value;
        EXPECT_EQ(element.GetIntAttributeValue("kEY", false), 0) << value;
        EXPECT_EQ(element.GetBoolAttributeValue(StrId("Key")), flag) << value;
        EXPECT_EQ(element.GetBoolAttributeValue("KEY", true), flag) << value;
        EXPECT_STREQ(element.GetAttributeValue("Key", false), value);
        EXPECT_EQ(element.GetAttributeValueId(StrId("Key")), StrId(value));
        EXPECT_STREQ(element.GetAttributeValue(StrId("other")), "");
    }
}

TEST(DomElement, ReplacesValuesAndKeepsGivenAttributes) {
    CCoreXmlDomElement element("e");
    element.AddAttribute("a", "1");
    element.AddAttribute(StrId("a"), StrId("2"));
    EXPECT_STREQ(element.GetAttributeValue("a", false), "2");
    auto* second = new CCoreXmlDomAttribute("a", "3");
    element.AddAttribute(second);
    element.AddAttribute(static_cast<CCoreXmlDomAttribute*>(nullptr));
    EXPECT_STREQ(element.GetAttributeValue("a", false), "2");

    const CCoreXmlDomAttribute* first = *element.GetFirstAttribute().Get();
    element.DeleteAttribute("a");
    EXPECT_STREQ(first->GetValue(), "2") << "taken out, still alive";
    EXPECT_STREQ(element.GetAttributeValue("a", false), "3");
    element.DeleteAttribute("none");
    element.DeleteAttribute(second);
    element.DeleteAttribute(second);
    EXPECT_EQ(element.GetFirstAttribute().Get(), nullptr);
    delete first;
    delete second;
}

TEST(DomElement, ValuesAreInternedWhenTheyAreAskedFor) {
    const std::string text = "a value that stands nowhere else, " + std::to_string(std::rand());
    CCoreXmlDomElement element("e");
    auto* attribute = new CCoreXmlDomAttribute("k", "old");
    element.AddAttribute(attribute);
    LateTextWord::PutCopy(TreeAccess::Value(*attribute), text);
    EXPECT_EQ(attribute->PeekValue(), text);
    EXPECT_EQ(element.FindElement("e", "k", text.c_str(), false), &element);
    EXPECT_EQ(element.GetIntAttributeValue("k", false), 0);
    EXPECT_FALSE(StrPresent(text.c_str()));
    const CCoreXmlDomAttribute copy(*attribute);
    EXPECT_EQ(attribute->GetValueId(), StrId(text.c_str()));
    EXPECT_EQ(copy.GetValueId(), StrId(text.c_str()));
    LateTextWord::PutCopy(TreeAccess::Value(*attribute), "2");
    attribute->SetValue("3");
    EXPECT_STREQ(attribute->GetValue(), "3");
    LateTextWord::PutCopy(TreeAccess::Value(*attribute), "");
    EXPECT_EQ(attribute->GetValueId(), kNoName);
}

/// Writes its tag down when it is destroyed.
class Mortal : public CCoreXmlDomElement {
 public:
    Mortal(const char* tag, std::string& deaths) : CCoreXmlDomElement(tag), m_deaths(deaths) {}
    ~Mortal() override { m_deaths += GetTagName(); }

 private:
    std::string& m_deaths;
};

TEST(DomElement, DeletesFromTheLastChildToTheFirstBottomUp) {
    std::string deaths;
    CCoreXmlDomElement top("top");
    auto* a = new Mortal("a", deaths);
    auto* b = new Mortal("b", deaths);
    top.AddChildElement(a);
    top.AddChildElement(b);
    top.AddChildElement(nullptr);
    top.AddChildElement(&top);
    a->AddChildElement(new Mortal("c", deaths));
    a->AddChildElement(new Mortal("d", deaths));
    EXPECT_EQ(top.GetChildElementCount(), 2);
    EXPECT_EQ(a->GetParent(), &top);

    top.RemoveChildElement(b);
    top.RemoveChildElement(b);
    EXPECT_EQ(b->GetParent(), &top) << "as it was";
    top.DeleteChildElement(b);
    EXPECT_EQ(deaths, "") << "no child any more";
    top.AddChildElement(b);
    top.DeleteChildren();
    EXPECT_EQ(deaths, "bdca");
    top.AddChildElement(new Mortal("e", deaths));
    top.DeleteChildElement(*top.GetFirstChild().Get());
    EXPECT_EQ(deaths, "bdcae");
}

TEST(DomElement, CopiesDeeplyAlsoFromBelow) {
    CCoreXmlDomElement top = Tree();
    top.SetInnerText("text");
    top.SetFlag(true);
    CCoreXmlDomElement copy("old");
    copy.CreateChildElement("gone");
    copy = top;
    top.DeleteChildren();
    EXPECT_STREQ(copy.GetInnerText(), "text");
    EXPECT_TRUE(copy.GetFlag());
    EXPECT_EQ(Id(copy.FindElement("d", "k", "y", true)), 4);
    EXPECT_EQ(copy.GetChildElementCount(), 3);

    copy = *copy.FindElement("c", true);
    EXPECT_EQ(Id(&copy), 3);
    EXPECT_EQ((*copy.GetFirstChild().Get())->GetParent(), &copy);
    copy = *&copy;
    EXPECT_EQ(copy.GetChildElementCount(), 1);

    CCoreXmlDom document;
    document.AddElement(new CCoreXmlDomElement(copy));
    CCoreXmlDom second(document);
    second = document;
    EXPECT_EQ(second.GetElementCount(), 1);
    CCoreXmlDomElement* kept = *second.GetFirstElement().Get();
    second.RemoveDom();
    EXPECT_EQ(second.GetElementCount(), 0);
    EXPECT_EQ(Id(kept), 3);
    delete kept;
}

TEST(DomElement, DepthCostsNoStack) {
    OnStackOf(1, [] {
        CCoreXmlDomElement top("top");
        CCoreXmlDomElement* bottom = &top;
        for (int i = 0; i < 1'000'000; ++i)
            bottom = bottom->CreateChildElement("e");
        bottom->SetTagName(StrId("bottom"));
        EXPECT_EQ(top.FindElement("bottom", true), bottom);
        EXPECT_EQ(top.FindElement("e", "none", "", true), nullptr);
        const CCoreXmlDomElement copy(top);
        TOrderedList<CCoreXmlDomElement*> all;
        top.FindAllElements(StrId("e"), all, true);
        EXPECT_EQ(all.GetCount(), 999'999);
        top.DeleteChildren();
    });
}

}  // namespace
}  // namespace brenta::test
