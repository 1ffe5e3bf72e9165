// brenta xml, brenta html: what a reader makes of a file, one element a line.
#include <algorithm>
#include <vector>

#include "brenta/xml.h"
#include "brenta/xml_readers.h"
#include "commands.h"
#include "console.h"

namespace brenta::host {
namespace {

constexpr std::size_t kMaxIndent = 80;  // deeper than this a tree is nothing to look at

void PrintElement(const CCoreXmlDomElement& element, std::size_t depth) {
    PrintLine(std::string(std::min(2 * depth, kMaxIndent), ' ') + ElementText(element));
}

void PrintTree(const CCoreXmlDomElement& root) {
    std::vector<TIter<CCoreXmlDomElement*>> open;
    PrintElement(root, 0);
    open.push_back(root.GetFirstChild());
    while (!open.empty()) {
        CCoreXmlDomElement** const child = open.back().Get();
        if (child == nullptr) {
            open.pop_back();
            continue;
        }
        open.back().Next();
        PrintElement(**child, open.size());
        open.push_back((*child)->GetFirstChild());
    }
}

void ComplainOfXml(const std::string& file, const CCoreXmlDom& document, bool quick) {
    if (quick) {
        // The reader has said why. It takes strict XML only, and many files are more than that.
        Complain("'" + file + "' is nothing for the quick reader; 'brenta xml --platform' takes all XML");
    } else {
        ComplainOfFault(file, document);
    }
}

}  // namespace

int XmlCommand(const std::string& file, bool quick) {
    if (!CheckFile(file)) return 1;
    CCoreXmlDom document;
    if (!document.LoadDocument(file.c_str(), quick)) {
        ComplainOfXml(file, document, quick);
        return 1;
    }
    for (auto root = document.GetFirstElement(); root.Get() != nullptr; root.Next())
        PrintTree(**root.Get());
    return 0;
}

int HtmlCommand(const std::string& file) {
    if (!CheckFile(file)) return 1;
    CCoreHTMLReader reader;
    const bool good = reader.LoadDocument(file.c_str());
    CCoreXmlDomElement* const root = reader.GetRootElement();
    if (root != nullptr) PrintTree(*root);
    delete root;
    if (!good)
        Complain("'" + file +
                 "' was read in part: the page ends inside a tag, or has one that the reader does not take");
    return good ? 0 : 1;
}

}  // namespace brenta::host
