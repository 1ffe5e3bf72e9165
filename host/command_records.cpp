// brenta records: the records of an XML file of any size, read as a stream.
#include <algorithm>
#include <memory>

#include "brenta/xml_stream.h"
#include "command.h"
#include "console.h"
#include "progress_bar.h"

namespace brenta::host {
namespace {

/// Moves a bar as the reader goes on.
class RecordsBar : public CMessageWindow {
 public:
    std::intptr_t OnMessage(unsigned int message, std::uintptr_t wParam, std::intptr_t) override {
        if (message == kXmlProgressMessage)
            m_bar.Show(static_cast<int>(std::min<std::uintptr_t>(wParam, 100)));
        return 0;
    }
    void Clear() { m_bar.Clear(); }

 private:
    ProgressBar m_bar;
};

/// Prints each record on a line: its tag, its attributes, and how many elements it has.
class RecordList : public CCmdTarget {
 public:
    explicit RecordList(RecordsBar& progress) : m_progress(progress) {}

    bool OnCmdMsg(unsigned int id, int, void* extra, AFX_CMDHANDLERINFO*) override {
        if (id != kXmlRecordCommand) return false;
        const auto& record = *static_cast<const CCoreXmlDomElement*>(extra);
        std::string line = std::to_string(++m_count) + '\t' + ElementText(record);
        if (const int children = record.GetChildElementCount(); children > 0)
            line += "  (" + std::to_string(children) + (children == 1 ? " child)" : " children)");
        m_progress.Clear();
        PrintLine(line);
        return true;
    }

    int Count() const { return m_count; }

 private:
    RecordsBar& m_progress;
    int m_count = 0;
};

int Records(const std::string& file) {
    if (!CheckFile(file)) return 1;
    RecordsBar progress;
    RecordList records(progress);
    CXMLReader reader(&progress, &records);
    CString path(file.c_str());
    CString error;
    const bool good = reader.ParseDocument(path, error);
    progress.Clear();
    PrintLine(std::to_string(records.Count()) + (records.Count() == 1 ? " record" : " records"));
    if (good) return 0;
    Complain(error.IsEmpty() ? "'" + file + "' is malformed behind these records"
                             : std::string(static_cast<const char*>(error)));
    return 1;
}

void Define(Command& command) {
    const auto file = std::make_shared<std::string>();
    command.Word("FILE", *file, WordKind::kXml, "The file; the children of its root are the records");
    command.Explain(
        "Prints each record's number, tag, attributes and number of children. Needs memory for one record "
        "at a time, so that a file may be larger than the machine's memory.");
    command.Example("brenta records board.xml");
    command.Run([file] { return Records(*file); });
}

const CommandEntry entry("records", CommandGroup::kDocuments,
                         "List and count the records of an XML file of any size", &Define);

}  // namespace

}  // namespace brenta::host
