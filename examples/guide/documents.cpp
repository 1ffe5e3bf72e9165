// A document built, saved, loaded, searched, changed and saved again.
#include <brenta/xml.h>

#include <cstdio>

namespace {

void Build(const char* path) {
    brenta::CCoreXmlDom document;
    brenta::CCoreXmlDomElement* board = document.CreateElement("board");
    board->AddAttribute("name", "panel");
    for (const char* ref : {"R1", "R2", "C1"}) {
        brenta::CCoreXmlDomElement* part = board->CreateChildElement("part");
        part->AddAttribute("ref", ref);
        part->AddAttribute("x", 25400);
    }
    document.SaveDocument(path, nullptr, nullptr);
}

void Change(const char* path) {
    brenta::CCoreXmlDom document;
    if (!document.LoadDocument(path, true)) return;  // the quick reader: a save puts out the tree
    brenta::CCoreXmlDomElement* board = document.FindElement("board");
    for (auto at = board->GetFirstChild(); at.Get() != nullptr; at.Next())
        std::printf("%s at %d\n", (*at.Get())->GetAttributeValue("ref", false),
                    (*at.Get())->GetIntAttributeValue("x", false));
    board->DeleteChildElement(document.FindElement("part", "ref", "R2", true));
    document.SaveDocument(path, nullptr, nullptr);
}

void Show(const char* path) {
    brenta::CCoreXmlDom document;
    if (!document.LoadDocument(path, false)) {
        int offset = 0;
        std::printf("%s\n", document.GetParseError(offset));  // the platform's own words
        return;
    }
    brenta::CCoreXmlDomElement* board = document.FindElement("board");
    std::printf("%d parts are left\n", board->GetChildElementCount());
    if (!document.LoadString("<board><part></board>")) std::printf("a text without its end is refused\n");
}

}  // namespace

int main() {
    const char* path = "guide_board.xml";
    Build(path);
    Change(path);
    Show(path);
    std::remove(path);
    return 0;
}
