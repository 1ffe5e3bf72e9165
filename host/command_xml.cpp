// brenta xml, brenta html: what a reader makes of a file, one element a line.
#include <algorithm>
#include <memory>
#include <vector>

#include "brenta/xml.h"
#include "brenta/xml_readers.h"
#include "command.h"
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

int PrintXml(const std::string& file, bool quick) {
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

int PrintHtml(const std::string& file) {
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

int Xml(const std::string& file, bool isQuick, bool isPlatform) {
    if (!isQuick || !isPlatform) return PrintXml(file, isQuick);
    Complain("--quick and --platform are two readers: one of them is enough");
    return 2;
}

void DefineXml(Command& command) {
    struct Options {
        std::string file;
        bool isQuick = false, isPlatform = false;
    };
    const auto options = std::make_shared<Options>();
    command.Word("FILE", options->file, WordKind::kXml, "The file");
    command.Flag("-q,--quick", options->isQuick,
                 "Read with the library's quick reader, which takes strict XML only");
    command.Flag("-p,--platform", options->isPlatform, "Read with the platform's reader (default)");
    command.Explain("Prints each element with its attributes and text, children indented below it.");
    command.Example("brenta xml small_parts.lbr | less");
    command.Run([options] { return Xml(options->file, options->isQuick, options->isPlatform); });
}

void DefineHtml(Command& command) {
    const auto file = std::make_shared<std::string>();
    command.Word("FILE", *file, WordKind::kHtml, "The file");
    command.Explain("The exit status is 1 if the page was read in part only; the tree so far is printed.");
    command.Example("brenta html page.html");
    command.Run([file] { return PrintHtml(*file); });
}

const CommandEntry xmlEntry("xml", CommandGroup::kDocuments, "Print the elements of an XML file, one a line",
                            &DefineXml);
const CommandEntry htmlEntry("html", CommandGroup::kDocuments,
                             "Print the elements of an HTML file, one a line", &DefineHtml);

}  // namespace

}  // namespace brenta::host
