// Any bytes as a text for the quick reader, which must agree with its model.
#include "brenta/xml_readers.h"
#include "reader_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using brenta::fuzz::QuickModel;
    brenta::fuzz::CompareWithModel<QuickModel>(
        data, size, false, [](const std::string& text, std::string& tree) {
            brenta::CCoreXMLQuickReader reader;
            const bool success = reader.ParseStream(text.c_str());
            tree = brenta::test::TreeText(reader.GetFirstElement());
            for (brenta::CCoreXmlDomElement* element : reader.TakeElements())
                delete element;
            return success;
        });
    return 0;
}
