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
void AddParse(const char* name, int size, std::string (*make)(int)) {
    AddGrowth("documents", name, size,
              [make](int count) { return [text = make(count)] { delete Read(text); }; });
}

void AddBuilt() {
    AddGrowth("documents", "delete 10^6 children", 100000, [](int count) {
        const auto parent = std::make_shared<CCoreXmlDomElement>("list");
        return [parent, count] {
            for (int i = 0; i < count; ++i)
                parent->CreateChildElement("item");
            parent->DeleteChildren();
        };
    });
    AddGrowth("documents", "miss in 10^6 elements", 100000, [](int count) {
        const std::shared_ptr<CCoreXmlDomElement> list(Read(MakeWide(count)));
        return [list] {
            list->FindElement("net", true);
            list->FindElement(StrId("item"), StrId("n"), "none", true);
        };
    });
}

}  // namespace

void AddDocumentGrowthWorkloads() {
    AddParse("board", 1000, MakeBoard);
    AddParse("50,000 attributes", 5000, MakeManyAttributes);
    AddParse("10^6 children", 100000, MakeWide);
    AddParse("10^6 levels", 100000, MakeDeep);
    AddBuilt();
}

}  // namespace brenta::bench
