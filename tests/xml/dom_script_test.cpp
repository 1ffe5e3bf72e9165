// The requests of the three scriptable classes, as scripts make them.
#include "brenta/xml.h"
#include "script/run_script.h"

namespace brenta::test {
namespace {

/// d is <a k="1"><b k="2"/><b k="3"><c/></b></a>; A() finds its element a, K() the attribute of a.
const char* const kModule =
    "function Doc() { var d as CCoreXmlDom; var a = d.CreateElement(\"a\"); a.AddAttribute(\"k\", \"1\");"
    "  var b = a.CreateChild(\"b\"); b.AddAttribute(\"k\", \"2\"); b = a.CreateChild(\"b\");"
    "  b.AddAttribute(\"k\", \"3\"); b.CreateChild(\"c\"); return d; }"
    "var d = Doc();"
    "function A() { return d.FindElement(\"a\"); }"
    "function K() { var a = A(); foreach (k in a.AttrList) { return k; } }"
    "function Tags(list) { var t = \"\"; foreach (e in list) { t = t + e.Name; } return t; }";

/// What an engine says of a call that is refused.
#define REFUSED(method) "!Function call '" method "' failed. failed"

TEST(DomScript, Requests) {
    const ScriptRow rows[] = {
        {"var k = K(); k.Name + k.Value", "=\"k1\""},
        {"var k = K(); k.Name = \"q\"; var a = A(); a.GetAttributeValue(\"q\")", "=\"1\""},
        {"var k as CCoreXmlDomAttribute; k.Name + \"|\" + k.Value", "=\"|\""},
        {"var k = K(); k.Value = 9", "failed"},
        {"var k = K(); k.Other", "failed"},
        {"var k = K(); k.Other = \"x\"", "failed"},
        {"var k = K(); k.Name()", REFUSED("Name")},
        // Properties of elements.
        {"var a = A(); a.Name = \"q\"; a.Name", "=\"q\""},
        {"var a = A(); a.InnerText = \"t\"; a.InnerText", "=\"t\""},
        {"var b = A().FindElement(\"b\"); b.Parent.Name", "=\"a\""},
        {"var e as CCoreXmlDomElement; e.Name + e.InnerText", "=\"\""},
        {"var a = A(); a.Name = 1", "failed"},
        {"var a = A(); a.ChildList = \"x\"", "failed"},
        {"A().Nothing", "failed"},
        // Searches.
        {"A().FindElement(\"c\") == A().Parent", "=true"},  // both are null
        {"A().FindElement(\"b\", \"k\", \"3\", false).GetAttributeValue(\"k\")", "=\"3\""},
        {"A().FindElement(\"b\", \"k\", \"\", \"true\", 5).GetAttributeValue(\"k\")", "=\"2\""},
        {"A().FindElement()", REFUSED("FindElement")},
        {"A().FindElement(1)", REFUSED("FindElement")},
        {"A().FindElement(\"b\", \"k\")", REFUSED("FindElement")},
        {"A().FindElement(\"b\", \"k\", \"3\", null)", REFUSED("FindElement")},
        {"A().GetAttributeValue(\"none\")", "=\"\""},
        // Children.
        {"var a = A(); var e as CCoreXmlDomElement; e.Name = \"e\"; a.AddChild(e); Tags(a.ChildList)",
         "=\"bbe\""},
        {"var a = A(); a.CreateChild(\"e\").Parent.Name + Tags(a.ChildList)", "=\"abbe\""},
        {"var a = A(); a.DeleteChild(a.FindElement(\"b\")); Tags(a.ChildList)", "=\"b\""},
        {"var a = A(); var b = a.FindElement(\"b\"); a.RemoveChild(b); a.RemoveChild(b); b.Name + "
         "Tags(a.ChildList)",
         "=\"bb\""},
        {"var a = A(); a.AddChild(a)", REFUSED("AddChild")},
        {"var a = A(); a.AddChild(d)", REFUSED("AddChild")},
        {"var a = A(); a.AddChild(a.FindElement(\"none\"))", REFUSED("AddChild")},
        {"var a = A(); a.AddChild(\"b\")", REFUSED("AddChild")},
        {"var a = A(); a.AddChild(A)", REFUSED("AddChild")},
        {"var a = A(); a.DeleteChild(K())", REFUSED("DeleteChild")},
        {"var a = A(); a.CreateChild(null)", REFUSED("CreateChild")},
        // Attributes of elements.
        {"var a = A(); a.AddAttribute(\"k\", \"2\"); a.GetAttributeValue(\"k\")", "=\"2\""},
        {"var a = A(); var k as CCoreXmlDomAttribute; k.Name = \"k\"; a.AddAttribute(k); Tags(a.AttrList)",
         "=\"kk\""},
        {"var a = A(); a.AddAttribute(\"k\")", REFUSED("AddAttribute")},
        {"var a = A(); a.AddAttribute(\"k\", 2)", REFUSED("AddAttribute")},
        {"var a = A(); a.DeleteAttribute(\"k\"); a.GetAttributeValue(\"k\")", "=\"\""},
        {"var a = A(); var k = K(); a.DeleteAttribute(k); k.Value + Tags(a.AttrList)", "=\"1\""},
        {"var a = A(); a.AddAttribute(\"5\", \"v\"); a.DeleteAttribute(5); Tags(a.AttrList)", "=\"k\""},
        {"var a = A(); a.DeleteAttribute(null); Tags(a.AttrList)", "=\"k\""},
        {"var a = A(); var k = K(); k.Name = \"\"; a.DeleteAttribute(\"\"); a.AttrList", "={}"},
        {"var a = A(); a.DeleteAttribute(a)", REFUSED("DeleteAttribute")},
        {"var a = A(); a.DeleteAttribute()", REFUSED("DeleteAttribute")},
        {"var a = A(); a.DeleteAttributes(); a.AttrList", "={}"},
        // Documents.
        {"d.CreateElement(\"q\"); var e as CCoreXmlDomElement; e.Name = \"e\"; d.AddElement(e); "
         "Tags(d.ElementList)",
         "=\"aqe\""},
        {"d.FindElement(\"b\") == A().Parent", "=true"},
        {"d.FindElement(\"b\", \"K\", \"3\", 0).GetAttributeValue(\"k\")", "=\"3\""},
        {"d.LoadString(\"<r><s/></r>\")", "=true"},
        {"d.LoadString(\"<r>\")", "=false"},
        {"d.LoadDocument(\"/none\", 0)", "=false"},
        {"d.SaveDocument(\"/none/file\", \"schema\", \"sheet\")", "=true"},
        {"d.SaveDocument(\"/none/file\", 1)", REFUSED("SaveDocument")},
        {"d.LoadDocument(\"/none\")", REFUSED("LoadDocument")},
        {"d.LoadDocument(1, true)", REFUSED("LoadDocument")},
        {"d.TransformDocument(\"/none\")", REFUSED("TransformDocument")},
        {"d.AddElement(K())", REFUSED("AddElement")},
        {"d.GetString()", REFUSED("GetString")},
        {"d.ResetComState()", REFUSED("ResetComState")},
        {"d.ElementList = \"x\"", "failed"},
        {"d.Other", "failed"},
    };
    CheckRows(rows, kModule);
}

/// "Name(a, b) Name() ..." of the lists that describe what an object has.
std::string Outline(const Var& list) {
    std::string text;
    for (const Var& entry : list.GetList()) {
        text += (text.empty() ? "" : " ") + std::string(StrPtr(entry.GetName()));
        if (entry.GetKind() == VarKind::List) text += '(' + Outline(entry) + ')';
    }
    return text;
}

std::string DescriptionOf(CCoreScriptable& object) {
    Var result;
    CCoreScriptable::IOB request;
    request.action = CCoreScriptable::kDescribe;
    request.result = &result;
    if (!object.ScriptAction(request)) return "refused";
    return StrPtr(result.GetName()) + (": " + Outline(result));
}

TEST(DomScript, Descriptions) {
    CCoreXmlDomAttribute attribute;
    CCoreXmlDomElement element;
    CCoreXmlDom document;
    EXPECT_EQ(DescriptionOf(attribute), "CCoreXmlDomAttribute: Data(Name Value) Methods()");
    EXPECT_EQ(
        DescriptionOf(element),
        "CCoreXmlDomElement: Data(Name InnerText ChildList AttrList Parent) "
        "Methods(FindElement(elemName) FindElement(elemName attrName attrValue bRecurse) AddChild(pElem) "
        "CreateChild(elemName) DeleteChild(pElem) RemoveChild(pElem) AddAttribute(pAttr) "
        "AddAttribute(attrName attrValue) DeleteAttribute(attrNameOrRef) DeleteAttributes() "
        "GetAttribute(attrName))");
    EXPECT_EQ(DescriptionOf(document),
              "CCoreXmlDom: Data(ElementList) "
              "Methods(AddElement(pElem) CreateElement(elemName) FindElement(elemName) "
              "FindElement(elemName attrName attrValue bRecurse) LoadDocument(xmlName bQuickLoad) "
              "SaveDocument(xmlName) SaveDocument(xmlName schemaName) "
              "SaveDocument(xmlName schemaName xslName) TransformDocument(xslName) LoadString(strData) "
              "GetString())");
}

}  // namespace
}  // namespace brenta::test
