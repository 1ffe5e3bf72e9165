// Writes an XML file as a stream, element by element: the way for reports and for data that others are to
// read.
#include <brenta/xml_emitter.h>

#include <cstdio>
#include <string>

struct Pad {
    const char* name;
    const char* x;
    const char* note;
};

constexpr Pad kPads[] = {{"1", "-0.5", "ground"}, {"2", "0.5", "5 V & more"}};

bool WriteReport(const char* path) {
    brenta::CXmlEmitter report;
    if (!report.CreateDocument(path, "")) return false;
    report.BeginElement("package", brenta::OneAttr("name", "R0402"));
    for (const Pad& pad : kPads) {
        brenta::TOrderedList<brenta::OneAttr> attributes;
        attributes.Add(brenta::OneAttr("name", pad.name));
        attributes.Add(brenta::OneAttr("x", pad.x));
        report.Element("pad", attributes, pad.note);  // what must not stand in XML is written as it must
    }
    report.EndElement();
    report.CloseDocument();
    return true;
}

int main() {
    const char* const path = "write_xml_report.xml";
    if (!WriteReport(path)) {
        std::fprintf(stderr, "%s cannot be written\n", path);
        return 1;
    }
    std::FILE* const file = std::fopen(path, "r");
    if (file == nullptr) return 1;
    for (int c; (c = std::fgetc(file)) != EOF;)
        std::putchar(c);
    std::fclose(file);
    std::remove(path);
    return 0;
}
