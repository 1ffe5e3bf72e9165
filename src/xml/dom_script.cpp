// What scripts can ask of documents, elements and attributes.
//
// A request is refused (false) when its name or kind is unknown, when an argument is missing or of the wrong
// kind, and when an object is not of the class that is asked for. Further arguments are not looked at.
#include "brenta/var.h"
#include "brenta/xml.h"
#include "script/created_objects.h"
#include "script/description.h"

namespace brenta {

namespace {

using IOB = CCoreScriptable::IOB;

// ---------------------------------------------------------------------------------------------------------
// Names, interned by the first request that a class gets. Those that are known and never answered are among
// them.

struct AttributeNames {
    STRID name = StrId("Name");
    STRID value = StrId("Value");
};

struct ElementNames {
    STRID name = StrId("Name");
    STRID innerText = StrId("InnerText");
    STRID parent = StrId("Parent");
    STRID childList = StrId("ChildList");
    STRID attrList = StrId("AttrList");
    STRID findElement = StrId("FindElement");
    STRID addChild = StrId("AddChild");
    STRID createChild = StrId("CreateChild");
    STRID deleteChild = StrId("DeleteChild");
    STRID removeChild = StrId("RemoveChild");
    STRID addAttribute = StrId("AddAttribute");
    STRID deleteAttribute = StrId("DeleteAttribute");
    STRID deleteAttributes = StrId("DeleteAttributes");
    STRID getAttributeValue = StrId("GetAttributeValue");
};

struct DocumentNames {
    STRID elementList = StrId("ElementList");
    STRID addElement = StrId("AddElement");
    STRID createElement = StrId("CreateElement");
    STRID findElement = StrId("FindElement");
    STRID loadDocument = StrId("LoadDocument");
    STRID saveDocument = StrId("SaveDocument");
    STRID transformDocument = StrId("TransformDocument");
    STRID loadString = StrId("LoadString");
    STRID getString = StrId("GetString");
    STRID resetComState = StrId("ResetComState");
};

template <class Names>
const Names& NamesOf() {
    static const Names names;
    return names;
}

// ---------------------------------------------------------------------------------------------------------
// Arguments

/// The arguments of a request; each reader answers whether the argument is there and of the right kind.
class Arguments {
 public:
    explicit Arguments(const IOB& request) {
        if (request.arguments == nullptr) return;
        for (const Var& argument : *request.arguments) {
            if (m_count < kMost) m_values[m_count] = &argument;
            ++m_count;
        }
    }

    std::size_t Count() const { return m_count; }

    bool GetText(std::size_t i, STRID& text) const {
        if (i >= m_count || m_values[i]->GetKind() != VarKind::String) return false;
        text = m_values[i]->GetString();
        return true;
    }

    bool GetFlag(std::size_t i, bool& flag) const {
        if (i >= m_count) return false;
        if (!m_values[i]->IsNumeric() && m_values[i]->GetKind() != VarKind::String) return false;
        flag = m_values[i]->GetBool();
        return true;
    }

    /// An object of class T, not null.
    template <class T>
    bool GetObject(std::size_t i, T*& object) const {
        if (!IsObject(i)) return false;
        object = dynamic_cast<T*>(static_cast<CCoreScriptable*>(m_values[i]->GetRef()));
        return object != nullptr;
    }

    /// Any value but an object, as text.
    bool GetAnyText(std::size_t i, STRID& text) const {
        if (i >= m_count || m_values[i]->GetKind() == VarKind::Reference) return false;
        text = m_values[i]->GetString();
        return true;
    }

    bool IsNull(std::size_t i) const { return i < m_count && m_values[i]->GetKind() == VarKind::Null; }

    /// A function is a reference, too, but to no object.
    bool IsObject(std::size_t i) const {
        return i < m_count && m_values[i]->GetKind() == VarKind::Reference &&
               m_values[i]->GetName() != kFunctionName;
    }

 private:
    static constexpr std::size_t kMost = 4;  // no request has more

    const Var* m_values[kMost] = {};
    std::size_t m_count = 0;
};

// ---------------------------------------------------------------------------------------------------------
// Answers: each stores the result, if one is wanted, and is true.

template <class T>
bool Answer(const IOB& request, T value) {
    if (request.result != nullptr) *request.result = value;
    return true;
}

bool AnswerObject(const IOB& request, CCoreScriptable* object) {
    return Answer(request, object);
}

template <class T>
bool AnswerList(const IOB& request, TIter<T*> iter) {
    if (request.result == nullptr) return true;
    TOrderedList<Var> objects;
    for (; iter.Get(); iter.Next())
        objects.Add(Var(static_cast<CCoreScriptable*>(*iter.Get()), kNoName));
    *request.result = objects;
    return true;
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------
// Attributes

bool CCoreXmlDomAttribute::ScriptAction(IOB& request) {
    const auto& names = NamesOf<AttributeNames>();
    STRID text = kNoName;
    switch (request.action) {
        case kGet:
            if (request.name == names.name) return Answer(request, m_name);
            if (request.name == names.value) return Answer(request, GetValueId());
            return false;
        case kSet:
            if (!Arguments(request).GetText(0, text)) return false;
            if (request.name == names.name) return SetName(text), true;
            if (request.name == names.value) return SetValue(text), true;
            return false;
        case kDescribe:
            return AnswerDescription(request, "CCoreXmlDomAttribute", {"Name", "Value"}, {});
        default:
            return false;
    }
}

// ---------------------------------------------------------------------------------------------------------
// Elements

namespace {

bool GetElementProperty(const CCoreXmlDomElement& element, const IOB& request) {
    const auto& names = NamesOf<ElementNames>();
    if (request.name == names.name) return Answer(request, element.GetTagNameId());
    if (request.name == names.innerText) return Answer(request, element.GetInnerTextId());
    if (request.name == names.parent) return AnswerObject(request, element.GetParent());
    if (request.name == names.childList) return AnswerList(request, element.GetFirstChild());
    if (request.name == names.attrList) return AnswerList(request, element.GetFirstAttribute());
    return false;
}

bool SetElementProperty(CCoreXmlDomElement& element, const IOB& request) {
    const auto& names = NamesOf<ElementNames>();
    STRID text = kNoName;
    if (!Arguments(request).GetText(0, text)) return false;
    if (request.name == names.name) return element.SetTagName(text), true;
    if (request.name == names.innerText) return element.SetInnerText(StrPtr(text)), true;
    return false;
}

bool CallFindElement(CCoreXmlDomElement& element, const IOB& request, const Arguments& arguments) {
    STRID tag = kNoName;
    if (!arguments.GetText(0, tag)) return false;
    if (arguments.Count() == 1) return AnswerObject(request, element.FindElement(tag, false));
    STRID name = kNoName;
    STRID value = kNoName;
    bool recurse = false;
    if (!arguments.GetText(1, name) || !arguments.GetText(2, value) || !arguments.GetFlag(3, recurse))
        return false;
    return AnswerObject(request, element.FindElement(tag, name, StrPtr(value), recurse));
}

bool IsChild(const CCoreXmlDomElement& element, const CCoreXmlDomElement* child) {
    for (auto iter = element.GetFirstChild(); iter.Get(); iter.Next())
        if (*iter.Get() == child) return true;
    return false;
}

bool CallChildMethod(CCoreXmlDomElement& element, const IOB& request, const Arguments& arguments) {
    const auto& names = NamesOf<ElementNames>();
    CCoreXmlDomElement* child = nullptr;
    if (!arguments.GetObject(0, child)) return false;
    if (request.name == names.addChild) {
        if (child == &element) return false;
        element.AddChildElement(child);
    } else if (request.name == names.deleteChild) {
        element.DeleteChildElement(child);
    } else if (IsChild(element, child)) {
        // Nobody's from here on but the script's, like an object that it created.
        element.RemoveChildElement(child);
        TrackCreated(child);
    }
    return true;
}

bool CallAddAttribute(CCoreXmlDomElement& element, const Arguments& arguments) {
    if (arguments.Count() == 1) {
        CCoreXmlDomAttribute* attribute = nullptr;
        if (!arguments.GetObject(0, attribute)) return false;
        element.AddAttribute(attribute);
        return true;
    }
    STRID name = kNoName;
    STRID value = kNoName;
    if (!arguments.GetText(0, name) || !arguments.GetText(1, value)) return false;
    element.AddAttribute(name, value);
    return true;
}

/// The attribute leaves the element alive, and is nobody's then but the script's.
template <class Matches>
void ReleaseAttribute(CCoreXmlDomElement& element, const Matches& matches) {
    for (auto iter = element.GetFirstAttribute(); iter.Get(); iter.Next()) {
        CCoreXmlDomAttribute* const attribute = *iter.Get();
        if (!matches(*attribute)) continue;
        element.DeleteAttribute(attribute);
        TrackCreated(attribute);
        return;
    }
}

bool CallDeleteAttribute(CCoreXmlDomElement& element, const Arguments& arguments) {
    CCoreXmlDomAttribute* wanted = nullptr;
    if (arguments.GetObject(0, wanted)) {
        ReleaseAttribute(element,
                         [&](const CCoreXmlDomAttribute& attribute) { return &attribute == wanted; });
        return true;
    }
    STRID name = kNoName;
    if (!arguments.GetAnyText(0, name)) return false;
    if (!arguments.IsNull(0))
        ReleaseAttribute(
            element, [&](const CCoreXmlDomAttribute& attribute) { return attribute.GetNameId() == name; });
    return true;
}

bool CallElementMethod(CCoreXmlDomElement& element, const IOB& request) {
    const auto& names = NamesOf<ElementNames>();
    const Arguments arguments(request);
    const STRID method = request.name;
    if (method == names.findElement) return CallFindElement(element, request, arguments);
    if (method == names.addChild || method == names.deleteChild || method == names.removeChild)
        return CallChildMethod(element, request, arguments);
    if (method == names.addAttribute) return CallAddAttribute(element, arguments);
    if (method == names.deleteAttribute) return CallDeleteAttribute(element, arguments);
    if (method == names.deleteAttributes) return element.DeleteAttributes(), true;
    STRID name = kNoName;
    if (!arguments.GetText(0, name)) return false;
    if (method == names.createChild) return AnswerObject(request, element.CreateChildElement(name));
    if (method == names.getAttributeValue) return Answer(request, element.GetAttributeValueId(name));
    return false;
}

}  // namespace

bool CCoreXmlDomElement::ScriptAction(IOB& request) {
    switch (request.action) {
        case kGet:
            return GetElementProperty(*this, request);
        case kSet:
            return SetElementProperty(*this, request);
        case kCall:
            return CallElementMethod(*this, request);
        case kDescribe:
            // "GetAttribute" is what authors have always been shown; it is answered as "GetAttributeValue".
            return AnswerDescription(request, "CCoreXmlDomElement",
                                     {"Name", "InnerText", "ChildList", "AttrList", "Parent"},
                                     {{"FindElement", {"elemName"}},
                                      {"FindElement", {"elemName", "attrName", "attrValue", "bRecurse"}},
                                      {"AddChild", {"pElem"}},
                                      {"CreateChild", {"elemName"}},
                                      {"DeleteChild", {"pElem"}},
                                      {"RemoveChild", {"pElem"}},
                                      {"AddAttribute", {"pAttr"}},
                                      {"AddAttribute", {"attrName", "attrValue"}},
                                      {"DeleteAttribute", {"attrNameOrRef"}},
                                      {"DeleteAttributes", {}},
                                      {"GetAttribute", {"attrName"}}});
        default:
            return false;
    }
}

// ---------------------------------------------------------------------------------------------------------
// Documents

namespace {

bool CallFindElement(CCoreXmlDom& document, const IOB& request, const Arguments& arguments) {
    STRID tag = kNoName;
    if (!arguments.GetText(0, tag)) return false;
    if (arguments.Count() == 1) return AnswerObject(request, document.FindElement(StrPtr(tag)));
    STRID name = kNoName;
    STRID value = kNoName;
    bool recurse = false;
    if (!arguments.GetText(1, name) || !arguments.GetText(2, value) || !arguments.GetFlag(3, recurse))
        return false;
    return AnswerObject(request, document.FindElement(StrPtr(tag), StrPtr(name), StrPtr(value), recurse));
}

bool CallSaveDocument(CCoreXmlDom& document, const IOB& request, const Arguments& arguments) {
    STRID path = kNoName;
    STRID schema = kNoName;
    STRID stylesheet = kNoName;
    if (!arguments.GetText(0, path)) return false;
    if (arguments.Count() > 1 && !arguments.GetText(1, schema)) return false;
    if (arguments.Count() > 2 && !arguments.GetText(2, stylesheet)) return false;
    return Answer(request, document.SaveDocument(StrPtr(path), StrPtr(schema), StrPtr(stylesheet)));
}

bool CallTransformDocument(CCoreXmlDom& document, const IOB& request, STRID stylesheet) {
    CoreString text;
    if (!document.TransformDocument(StrPtr(stylesheet), text)) return false;
    return Answer<const char*>(request, text());
}

bool CallDocumentMethod(CCoreXmlDom& document, const IOB& request) {
    const auto& names = NamesOf<DocumentNames>();
    const Arguments arguments(request);
    const STRID method = request.name;
    if (method == names.addElement) {
        CCoreXmlDomElement* element = nullptr;
        if (!arguments.GetObject(0, element)) return false;
        document.AddElement(element);
        return true;
    }
    if (method == names.findElement) return CallFindElement(document, request, arguments);
    if (method == names.saveDocument) return CallSaveDocument(document, request, arguments);
    STRID text = kNoName;
    if (!arguments.GetText(0, text)) return false;
    if (method == names.createElement) return AnswerObject(request, document.CreateElement(text));
    if (method == names.loadString) return Answer(request, document.LoadString(StrPtr(text)));
    if (method == names.transformDocument) return CallTransformDocument(document, request, text);
    bool quickLoad = false;
    if (method != names.loadDocument || !arguments.GetFlag(1, quickLoad)) return false;
    return Answer(request, document.LoadDocument(StrPtr(text), quickLoad));
}

}  // namespace

bool CCoreXmlDom::ScriptAction(IOB& request) {
    switch (request.action) {
        case kGet:
            if (request.name != NamesOf<DocumentNames>().elementList) return false;
            return AnswerList(request, GetFirstElement());
        case kCall:
            return CallDocumentMethod(*this, request);
        case kDescribe:
            return AnswerDescription(request, "CCoreXmlDom", {"ElementList"},
                                     {{"AddElement", {"pElem"}},
                                      {"CreateElement", {"elemName"}},
                                      {"FindElement", {"elemName"}},
                                      {"FindElement", {"elemName", "attrName", "attrValue", "bRecurse"}},
                                      {"LoadDocument", {"xmlName", "bQuickLoad"}},
                                      {"SaveDocument", {"xmlName"}},
                                      {"SaveDocument", {"xmlName", "schemaName"}},
                                      {"SaveDocument", {"xmlName", "schemaName", "xslName"}},
                                      {"TransformDocument", {"xslName"}},
                                      {"LoadString", {"strData"}},
                                      {"GetString", {}}});
        default:
            return false;
    }
}

}  // namespace brenta
