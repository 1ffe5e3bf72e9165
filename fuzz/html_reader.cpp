// Any bytes as a page, on which the HTML reader must agree with its model.
#include "reader_fuzz.h"
#include "xml/html_parse.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using brenta::fuzz::HtmlModel;
    brenta::fuzz::CompareWithModel<HtmlModel>(data, size, true,
                                              [](const std::string& text, std::string& tree) {
                                                  brenta::CCoreXmlDomElement root("Root");
                                                  const char* position = text.c_str();
                                                  const bool success = brenta::ParseHtml(position, root);
                                                  tree = brenta::test::TreeText(root);
                                                  return success;
                                              });
    return 0;
}
