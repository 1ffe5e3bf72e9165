// How the time for documents grows with them: each beside ten of a tenth.
#include <memory>
#include <string>

#include "brenta/names.h"
#include "brenta/xml_readers.h"
#include "families.h"
#include "growth.h"
#include "input_files.h"
#include "workload.h"

namespace brenta::bench {
namespace {

CCoreXmlDomElement* Read(const std::string& text) {
    CCoreXMLQuickReader reader;
    reader.ParseStream(text.c_str());
    return *reader.GetFirstElement().Get();
}

/// Both sizes of a text are made before the clock runs.
template <class Make>
void AddParse(const char* name, int size, Make make) {
    AddGrowth("documents", name, size, [make](int count, int part) {
        return [text = std::make_shared<const std::string>(make(count, part))] { delete Read(*text); };
    });
}

void AddBuilt() {
    AddGrowth("documents", "delete 10^6 children", 100000, [](int count, int) {
        const auto parent = std::make_shared<CCoreXmlDomElement>("list");
        return [parent, count] {
            for (int i = 0; i < count; ++i)
                parent->CreateChildElement("item");
            parent->DeleteChildren();
        };
    });
    AddGrowth("documents", "miss in 10^6 elements", 100000, [](int count, int) {
        const std::shared_ptr<CCoreXmlDomElement> list(Read(MakeWide(count)));
        return [list] {
            list->FindElement("net", true);
            list->FindElement(StrId("item"), StrId("n"), "none", true);
        };
    });
}

}  // namespace

void AddDocumentGrowthWorkloads() {
    AddParse("board", 1000, [](int nets, int) { return MakeBoard(nets); });
    AddParse("50,000 attributes", 5000,
             [](int count, int part) { return MakeManyAttributes(part * count, count); });
    AddParse("10^6 children", 100000, [](int count, int) { return MakeWide(count); });
    AddParse("10^6 levels", 100000, [](int count, int) { return MakeDeep(count); });
    AddBuilt();
}

}  // namespace brenta::bench
