// Any bytes as a file that is read as a stream: the memory goes back, records are whole, progress only grows,
// and counting agrees with building about the file.
#include <cstdint>
#include <cstdlib>

#include "brenta/heap.h"
#include "brenta/xml_stream.h"
#include "scratch_file.h"

namespace {

class Host : public brenta::CMessageWindow, public brenta::CCmdTarget {
 public:
    std::intptr_t OnMessage(unsigned int, std::uintptr_t percent, std::intptr_t) override {
        if (static_cast<int>(percent) <= m_percent) std::abort();
        m_percent = static_cast<int>(percent);
        return 0;
    }
    bool OnCmdMsg(unsigned int, int, void* extra, brenta::AFX_CMDHANDLERINFO*) override {
        const auto* record = static_cast<brenta::CCoreXmlDomElement*>(extra);
        if (*record->GetTagName() == '\0' || record->GetParent()->GetChildElementCount() != 1) std::abort();
        return true;
    }

 private:
    int m_percent = -1;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const brenta::fuzz::ScratchFile file("sax");
    brenta::CString path = file.Hold(data, size), error;
    Host building, again, counting;
    const bool built = brenta::CXMLReader(&building, &building).ParseDocument(path, error);
    const int used = brenta::CoreHeapUsed();
    if (brenta::CXMLReader(&again, &again).ParseDocument(path, error) != built) std::abort();
    if (brenta::CoreHeapUsed() != used) std::abort();
    int total, components, footprints, symbols;
    const bool counted = brenta::CXMLReader(&counting, &counting)
                             .CountElements(path, error, total, components, footprints, symbols);
    if (built != counted || (counted && total < 1)) std::abort();
    return 0;
}
