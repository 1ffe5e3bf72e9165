// Reads an XML file record by record: what is in memory is one record, however long the file is.
//   stream_xml [FILE]         counts the records of the file; without one it makes a file of 100,000 parts
#include <brenta/xml_stream.h>

#include <cstdio>
#include <map>
#include <string>

// Gets each child of the file's root element as a small tree, which is gone after the call.
class PartCounter : public brenta::CCmdTarget {
 public:
    bool OnCmdMsg(unsigned int id, int, void* extra, brenta::AFX_CMDHANDLERINFO*) override {
        if (id != brenta::kXmlRecordCommand) return false;
        const auto& part = *static_cast<const brenta::CCoreXmlDomElement*>(extra);
        ++m_count;
        ++m_ofTag[part.GetTagName()];
        m_pins += part.GetChildElementCount();
        return true;
    }

    void Print() const {
        std::printf("%d records with %d elements\n", m_count, m_pins);
        for (const auto& [tag, count] : m_ofTag)
            std::printf("  %-10s %d\n", tag.c_str(), count);
    }

 private:
    int m_count = 0;
    int m_pins = 0;
    std::map<std::string, int> m_ofTag;
};

bool MakeFile(const char* path) {
    std::FILE* const file = std::fopen(path, "w");
    if (file == nullptr) return false;
    std::fputs("<parts>\n", file);
    for (int i = 1; i <= 100000; ++i) {
        const char* const tag = i % 4 == 0 ? "capacitor" : "resistor";
        std::fprintf(file, "<%s name=\"X%d\"><pin n=\"1\"/><pin n=\"2\"/></%s>\n", tag, i, tag);
    }
    std::fputs("</parts>\n", file);
    return std::fclose(file) == 0;
}

int main(int argc, char** argv) {
    const char* const path = argc > 1 ? argv[1] : "stream_xml_parts.xml";
    if (argc <= 1 && !MakeFile(path)) return 1;

    PartCounter counter;
    brenta::CXMLReader reader(nullptr, &counter);
    brenta::CString file(path), error;
    const bool isGood = reader.ParseDocument(file, error);
    counter.Print();
    if (argc <= 1) std::remove(path);
    if (!isGood) std::fprintf(stderr, "%s cannot be read, or is malformed behind these records\n", path);
    return isGood ? 0 : 1;
}
