// Any bytes as a document: what loads is read, put out, loaded again from what was put out, and transformed;
// and whatever tree it gave is saved as a document that was built.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "brenta/xml.h"
#include "brenta/xml_document.h"
#include "xml/platform_document.h"

namespace {

constexpr std::size_t kMaxInput = 1 << 16;
constexpr char kSheet[] =
    "<x:stylesheet version='1.0' xmlns:x='http://www.w3.org/1999/XSL/Transform'><x:template "
    "match='@*|node()'>"
    "<x:copy><x:apply-templates select='@*|node()'/></x:copy></x:template></x:stylesheet>";

void Check(bool holds) {
    if (!holds) std::abort();
}

std::string BuiltText(const brenta::CCoreXmlDom& tree) {
    brenta::CCoreXmlDom built(tree);
    brenta::CoreString text;
    Check(built.GetString(text));
    return text();
}

/// What a tree is saved as can be loaded, and is saved as the same again.
void CheckBuilt(const brenta::CCoreXmlDom& tree) {
    const std::string text = BuiltText(tree);
    brenta::CCoreXmlDom again;
    Check(again.LoadString(text.c_str()));
    Check(BuiltText(again) == text);
}

void CheckTransform(brenta::PlatformDocument& document) {
    static const auto sheet = [] {
        auto made = brenta::MakePlatformDocument();
        brenta::ParseFault fault;
        Check(made->LoadXml(kSheet, fault));
        return made;
    }();
    document.Transform(*sheet);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > kMaxInput) return 0;
    const std::string text(reinterpret_cast<const char*>(data), size);
    const auto document = brenta::MakePlatformDocument();
    brenta::ParseFault fault;
    brenta::CCoreXmlDom tree, again;
    const bool good = document->LoadXml(text.c_str(), fault);
    Check(tree.LoadString(text.c_str()) == good);
    Check(good == fault.reason.IsEmpty());
    if (!good) {
        Check(document->DocumentElement() == nullptr);
        return 0;
    }
    brenta::CoreString xml;
    Check(tree.GetString(xml));
    CheckBuilt(tree);
    CheckTransform(*document);
    brenta::IXMLDOMElement* const root = document->DocumentElement();
    unsigned int count = 0;
    Check(root->CountElements(count) && count > 0);
    root->Release();
    return 0;
}
