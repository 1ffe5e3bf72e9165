// Any bytes as a file that a document loads, in every encoding, with the platform's reader and the quick one:
// what loads can be saved to a file and loaded again, and the quick reader reads a file like a text.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "brenta/host.h"
#include "brenta/xml.h"
#include "brenta/xml_readers.h"
#include "scratch_file.h"

namespace {

constexpr std::size_t kMaxInput = 1 << 16;

void Check(bool holds) {
    if (!holds) std::abort();
}

void LoadWithPlatform(const char* path) {
    static const brenta::fuzz::ScratchFile saved("saved");
    brenta::CCoreXmlDom document;
    if (!document.LoadDocument(path, false)) {
        int offset = 0;
        Check(*document.GetParseError(offset) != '\0' && offset >= 0);
        Check(document.GetElementCount() == 0);
        return;
    }
    Check(document.GetElementCount() == 1);
    Check(document.SaveDocument(saved.Path(), nullptr, nullptr));
    brenta::CCoreXmlDom again;
    Check(again.LoadDocument(saved.Path(), false));
}

int CountQuickly(bool loaded, brenta::CCoreXMLQuickReader& reader) {
    int count = 0;
    for (brenta::CCoreXmlDomElement* element : reader.TakeElements()) {
        ++count;
        delete element;
    }
    return loaded ? count : -1 - count;
}

void LoadQuickly(const char* path, const std::string& text) {
    brenta::CCoreXMLQuickReader fromFile, fromText;
    const bool file = fromFile.LoadDocument(path);
    Check(CountQuickly(file, fromFile) == CountQuickly(fromText.ParseStream(text.c_str()), fromText));
    brenta::CCoreXmlDom document;
    Check(document.LoadDocument(path, true) == file);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > kMaxInput) return 0;
    brenta::HostServices services;
    services.showMessage = [](void*, const char*, unsigned int) { return brenta::IDOK; };
    brenta::SetHostServices(services);
    static const brenta::fuzz::ScratchFile file("document");
    const brenta::CString path = file.Hold(data, size);
    LoadWithPlatform(path);
    LoadQuickly(path, std::string(reinterpret_cast<const char*>(data), size));
    return 0;
}
