#include <fstream>
#include <utility>

#include "agreement.h"
#include "brenta/xml.h"
#include "brenta/xml_document.h"
#include "brenta/xml_readers.h"
#include "brenta/xml_stream.h"
#include "chooser.h"
#include "test_support.h"
#include "xml/tree_text.h"

namespace brenta::test {

namespace {

constexpr const char* kTags[] = {"board", "part", "pad", "Net", "layer-1", "a.b", "_x"};

std::string Attributes(Chooser& choose) {
    static constexpr const char* kAttributes[] = {" x=\"1\"",           " y=\"-2.5mm\"",    " name=\"R1\"",
                                                  " note=\"a &lt; b\"", " empty=\"\"",      " on = \"true\"",
                                                  " c=\"&#65;\"",       " e=\"&amp;&gt;\"", " q='\"'"};
    std::string text;
    // Each at most once, in their order: what is done with twins is a matter of its own.
    for (const char* attribute : kAttributes)
        if (choose.Chance(attribute[2] == '=' ? 10 : 25)) text += attribute;
    return text;
}

std::string Element(Chooser& choose, int depth, bool hasText) {
    static constexpr const char* kTexts[] = {
        "text",   " padded ",      "a &amp; b", "two\nlines", "&lt;tag>", "<![CDATA[<raw>]]>",
        "&#x41;", "<!-- note -->", "<?do it?>", "\n  "};
    const std::string tag = choose.OneOf(kTags);
    std::string text = "<" + tag + Attributes(choose);
    if (choose.Chance(25)) return text + "/>";
    text += ">";
    for (int parts = choose.Below(5); parts > 0; --parts) {
        if (depth > 0 && choose.Chance(60))
            text += Element(choose, depth - 1, hasText);
        else
            text += hasText ? choose.OneOf(kTexts) : "\n ";
    }
    return text + "</" + tag + (choose.Chance(10) ? " >" : ">");
}

/// A document with what may stand before its root and behind it.
std::string Document(Chooser& choose) {
    static constexpr const char* kHeads[] = {"",
                                             "",
                                             "<?xml version=\"1.0\"?>\n",
                                             "<?xml version='1.0' encoding='UTF-8'?>\r\n",
                                             "<!-- head -->\n",
                                             "<?xml version=\"1.0\"?><!DOCTYPE board>\n"};
    std::string text = choose.OneOf(kHeads);
    text += Element(choose, 4, choose.Chance(60));
    if (choose.Chance(30)) text += "\n<!-- end -->\n";
    return text;
}

/// Somewhere a character too few, or one too many.
std::string Damaged(Chooser& choose, std::string text) {
    static constexpr const char* kIntruders[] = {"<", ">", "&", "\"", "/", "</x>", "]]>", "=", "<!"};
    const auto place = static_cast<std::size_t>(choose.Below(static_cast<int>(text.size())));
    return choose.Chance(50) ? text.erase(place, 1) : text.insert(place, choose.OneOf(kIntruders));
}

std::string ThroughDom(const std::string& path, bool quick) {
    CCoreXmlDom document;
    const bool good = document.LoadDocument(path.c_str(), quick);
    std::string told = (quick ? "quick " : "platform ") + std::to_string(good) + '\n';
    // What malformed text gave before its fault is the reader's own affair.
    if (!good) return told;
    told += TreeText(document.GetFirstElement());
    if (quick) return told;
    CCoreXmlDom again;
    const std::string copy = path + ".copy";
    told += "saved " + std::to_string(document.SaveDocument(copy.c_str(), "", ""));
    told += " read again " + std::to_string(again.LoadDocument(copy.c_str(), false)) + '\n';
    return told + TreeText(again.GetFirstElement());
}

std::string ThroughDocument(const std::string& path) {
    CXMLDocument document;
    CString name = path.c_str(), error;
    unsigned int count = 0;
    if (!document.LoadDocument(name, error)) return "document refused\n";
    const bool counted = document.GetElementCount(count);
    return "document " + std::to_string(counted) + " " + std::to_string(count) + '\n';
}

/// Writes down the records that the stream reader hands over.
class Records : public CCmdTarget {
 public:
    bool OnCmdMsg(unsigned int id, int, void* extra, AFX_CMDHANDLERINFO*) override {
        if (id == kXmlRecordCommand) told += TreeText(*static_cast<const CCoreXmlDomElement*>(extra));
        return id == kXmlRecordCommand;
    }
    std::string told;
};

std::string ThroughStream(const std::string& path) {
    Records records;
    CXMLReader reader(nullptr, &records);
    CString name = path.c_str(), error;
    const bool good = reader.ParseDocument(name, error);
    return "stream " + std::to_string(good) + '\n' + (good ? records.told : "");
}

}  // namespace

std::string TellOfDocuments() {
    constexpr int kDocuments = 300;
    const Scratch scratch;
    Chooser choose(4);
    RecordingHost host;
    std::string story;
    for (int i = 0; i < kDocuments; ++i) {
        std::string text = Document(choose);
        if (i % 3 == 2) text = Damaged(choose, text);
        const std::string path = scratch / (std::to_string(i) + ".xml").c_str();
        std::ofstream(path, std::ios::binary) << text;
        story += "-- " + std::to_string(i) + '\n' + text + '\n';
        story += ThroughDom(path, true) + ThroughDom(path, false) + ThroughStream(path);
        story += ThroughDocument(path);
        for (const std::string& message : std::exchange(host.shown, {}))
            story += message + '\n';
    }
    return story;
}

}  // namespace brenta::test
