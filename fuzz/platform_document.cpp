// Any bytes as a document: what loads is read, put out, loaded again from what was put out, and transformed;
// and whatever tree it gave is saved as a document that was built.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "../tests/xml/tree_text.h"
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

/// The text of a document has no namespaces declared that its tree did not declare, so it is loaded as built.
void CheckBuilt(const brenta::CCoreXmlDom& loaded) {
    brenta::CCoreXmlDom built(loaded);
    brenta::CoreString text, result;
    Check(built.GetString(text));
    brenta::CCoreXmlDom again;
    Check(again.LoadString(text()));
    Check(brenta::test::TreeText(again.GetFirstElement()) == brenta::test::TreeText(built.GetFirstElement()));
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
        // As a stylesheet it is as good as any other text that is none.
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
