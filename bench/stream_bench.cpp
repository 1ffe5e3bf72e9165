// Streams: reading records and writing elements, without a tree.
#include <expat.h>
#include <libxml/xmlwriter.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "brenta/xml_emitter.h"
#include "brenta/xml_stream.h"
#include "families.h"
#include "input_files.h"
#include "tree_peers.h"
#include "workload.h"

namespace brenta::bench {
namespace {

std::string Board() {
    return InputFile("board.xml", [] { return MakeBoard(10000); });
}

void Add(const char* name, const char* peer, double limit, ContenderMaker ours, ContenderMaker theirs) {
    Workloads().push_back({"documents", name, peer, limit, std::move(ours), std::move(theirs)});
}

// ---------------------------------------------------------------------------------------------------------
// Counting

std::string CountOurs() {
    CXMLReader reader(nullptr, nullptr);
    CString path(Board().c_str()), error;
    int total = 0, components = 0, footprints = 0, symbols = 0;
    reader.CountElements(path, error, total, components, footprints, symbols);
    return std::to_string(total);
}

/// Feeds a file to a parser of the peer in pieces of the usual size.
void ParseWithExpat(XML_Parser parser) {
    constexpr int kPiece = 65536;
    std::FILE* const file = std::fopen(Board().c_str(), "rb");
    for (bool last = file == nullptr; !last;) {
        void* const buffer = XML_GetBuffer(parser, kPiece);
        const std::size_t count = std::fread(buffer, 1, kPiece, file);
        last = count < kPiece;
        XML_ParseBuffer(parser, static_cast<int>(count), last);
    }
    if (file != nullptr) std::fclose(file);
    XML_ParserFree(parser);
}

void ParseEmpty() {
    const XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetElementHandler(
        parser, [](void*, const char*, const char**) {}, [](void*, const char*) {});
    XML_SetCharacterDataHandler(parser, [](void*, const char*, int) {});
    ParseWithExpat(parser);
}

std::string CountTheirs() {
    long count = 0;
    const XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &count);
    XML_SetStartElementHandler(
        parser, [](void* counter, const char*, const char**) { ++*static_cast<long*>(counter); });
    ParseWithExpat(parser);
    return std::to_string(count);
}

// ---------------------------------------------------------------------------------------------------------
// Records

class Records : public CCmdTarget {
 public:
    bool OnCmdMsg(unsigned int, int, void* extra, AFX_CMDHANDLERINFO*) override {
        const auto* const record = static_cast<const CCoreXmlDomElement*>(extra);
        for (auto child = record->GetFirstChild(); child.Get(); child.Next())
            m_bytes += std::string_view((*child.Get())->GetFirstAttribute().Get()[0]->PeekValue()).size();
        return true;
    }
    std::string Text() const { return std::to_string(m_bytes); }

 private:
    std::size_t m_bytes = 0;
};

std::string DeliverOurs() {
    Records records;
    CXMLReader reader(nullptr, &records);
    CString path(Board().c_str()), error;
    reader.ParseDocument(path, error);
    return records.Text();
}

/// A record as a program makes it that has nothing but the peer.
struct Record {
    std::string tag;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<std::unique_ptr<Record>> children;
};

struct RecordBuilder {
    std::vector<std::unique_ptr<Record>> open;
    std::size_t bytes = 0;

    void Start(const char* tag, const char** attributes) {
        auto record = std::make_unique<Record>();
        record->tag = tag;
        for (; *attributes != nullptr; attributes += 2)
            record->attributes.emplace_back(attributes[0], attributes[1]);
        open.push_back(std::move(record));
    }
    void End() {
        std::unique_ptr<Record> record = std::move(open.back());
        open.pop_back();
        if (open.size() > 1) {
            open.back()->children.push_back(std::move(record));
        } else {
            for (const auto& child : record->children)
                bytes += child->attributes[0].second.size();
        }
    }
};

std::string DeliverTheirs() {
    RecordBuilder builder;
    const XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &builder);
    XML_SetElementHandler(
        parser,
        [](void* data, const char* tag, const char** attributes) {
            static_cast<RecordBuilder*>(data)->Start(tag, attributes);
        },
        [](void* data, const char*) { static_cast<RecordBuilder*>(data)->End(); });
    ParseWithExpat(parser);
    return std::to_string(builder.bytes);
}

// ---------------------------------------------------------------------------------------------------------
// Writing

constexpr int kElements = 1000000;
constexpr const char* kNames[] = {"name", "x", "y", "drill"};

/// The values of a thousand vias, which are written a thousand times.
std::vector<std::string> Values() {
    std::vector<std::string> values;
    for (int i = 0; i < 1000; ++i) {
        const std::string number = std::to_string(i);
        values.insert(values.end(), {"V" + number, "12." + number, number + ".75", "0.3"});
    }
    return values;
}

std::string CountWritten(const char* file) {
    const PugiTree tree(PathOfInput(file));
    return tree.Digest();
}

void WriteOurs(const std::vector<TOrderedList<OneAttr>>& vias, const std::string& path) {
    CXmlEmitter emitter;
    emitter.CreateDocument(path.c_str(), "");
    emitter.BeginElement("board");
    for (int i = 0; i < kElements; ++i)
        emitter.Element("via", const_cast<TOrderedList<OneAttr>&>(vias[static_cast<std::size_t>(i % 1000)]),
                        nullptr);
    emitter.EndElement();
    emitter.CloseDocument();
}

ContenderMaker WritingOurs() {
    return [] {
        std::vector<TOrderedList<OneAttr>> vias(1000);
        const std::vector<std::string> values = Values();
        for (std::size_t i = 0; i < values.size(); ++i)
            vias[i / 4].Add(OneAttr(kNames[i % 4], values[i].c_str()));
        const auto work = [vias] { WriteOurs(vias, PathOfInput("written.xml")); };
        return Checked(work, [work] {
            work();
            return CountWritten("written.xml");
        })();
    };
}

void WriteTheirs(const std::vector<std::string>& values, const std::string& path) {
    const auto text = [](const std::string& s) { return reinterpret_cast<const xmlChar*>(s.c_str()); };
    const auto name = [](const char* s) { return reinterpret_cast<const xmlChar*>(s); };
    xmlTextWriter* const writer = xmlNewTextWriterFilename(path.c_str(), 0);
    xmlTextWriterStartDocument(writer, nullptr, "UTF-8", nullptr);
    xmlTextWriterStartElement(writer, name("board"));
    for (int i = 0; i < kElements; ++i) {
        xmlTextWriterStartElement(writer, name("via"));
        for (std::size_t k = 0; k < 4; ++k)
            xmlTextWriterWriteAttribute(writer, name(kNames[k]),
                                        text(values[static_cast<std::size_t>(i % 1000) * 4 + k]));
        xmlTextWriterEndElement(writer);
    }
    xmlTextWriterEndDocument(writer);
    xmlFreeTextWriter(writer);
}

ContenderMaker WritingTheirs() {
    return [] {
        const auto work = [values = Values()] { WriteTheirs(values, PathOfInput("their_written.xml")); };
        return Checked(work, [work] {
            work();
            return CountWritten("their_written.xml");
        })();
    };
}

/// What was written, as one piece that is ready.
ContenderMaker WritingReady() {
    return [] {
        WritingOurs()()->Run();
        const auto text = std::make_shared<const std::string>(ReadInput(PathOfInput("written.xml")));
        const auto work = [text] {
            std::FILE* const file = std::fopen(PathOfInput("ready.xml").c_str(), "wb");
            std::fwrite(text->data(), 1, text->size(), file);
            std::fclose(file);
        };
        return Checked(work, [work] {
            work();
            return CountWritten("ready.xml");
        })();
    };
}

}  // namespace

void AddStreamWorkloads() {
    Add("count elements", "expat", 0.7, Checked(CountOurs, CountOurs), Checked(ParseEmpty, CountTheirs));
    Add("deliver records", "expat", 1.0, Checked(DeliverOurs, DeliverOurs),
        Checked(DeliverTheirs, DeliverTheirs));
    Add("write 10^6 elements", "xmlTextWriter", 0.2, WritingOurs(), WritingTheirs());
    Add("write 10^6 elements", "fwrite", 3.0, WritingOurs(), WritingReady());
}

}  // namespace brenta::bench
