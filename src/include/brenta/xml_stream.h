/// @file
/// Reading XML files of any size as a stream of records.
///
/// A design file is one root element whose children are records: parts, nets, footprints. CXMLReader builds
/// one record at a time as a small tree (brenta/xml.h), hands it to the application and deletes it, so that
/// memory stays the same however long the file is. Use CCoreXmlDom (brenta/xml.h) for files that are small
/// enough to be kept and changed.
///
/// An application that prints the parts of a library and counts what it saw:
///
///     class Parts : public brenta::CCmdTarget {
///      public:
///         int count = 0;
///         bool OnCmdMsg(unsigned int id, int, void* extra, brenta::AFX_CMDHANDLERINFO*) override {
///             if (id != brenta::kXmlRecordCommand) return false;
///             const auto* record = static_cast<const brenta::CCoreXmlDomElement*>(extra);
///             std::printf("%s %s\n", record->GetTagName(), record->GetAttributeValue("name", false));
///             ++count;
///             return true;
///         }
///     };
///     Parts parts;
///     brenta::CXMLReader reader(nullptr, &parts);
///     brenta::CString path("Resistors.lbr"), error;
///     if (!reader.ParseDocument(path, error)) std::printf("stopped after %d records\n", parts.count);
///
/// What a record holds: its attributes, and the elements below it with theirs, all by their local names
/// (`x` of `p:x`). It holds no text: what stands between tags is not kept, and neither are comments,
/// instructions and namespace declarations. Attributes that the document type declares with a default are
/// there. A record's parent is the root, with the root's attributes.
///
/// What is read: regular files only, in every encoding that the platform's XML service knows. Nothing is
/// fetched from a network and no file beside the given one is opened, whatever the file asks for: external
/// entities are empty. Entities that multiply without bound end the parse, and so does what would keep it
/// busy for minutes: far more than 100000 attributes in one tag, more than 5000 alternatives in one
/// declaration, and default attributes by the thousand in one element after the other. On Windows, where
/// MSXML reads, such limits are its own; the reader makes its thread ready for COM.
///
/// Progress. While a file is read the window gets kXmlProgressMessage with whole percents: 0 at the start,
/// then growing values, none of them twice, and at last 100. The percents are an estimate that is close where
/// each element stands on a line of its own. It can pass 100, and then no 100 is sent any more; in a file
/// with very long lines it does so soon. Show at most 100.
///
/// Cost. Memory is proportional to the largest record, and to the number of different names, which are
/// interned (brenta/names.h). A value is interned when it is asked for with GetValue or GetValueId, not
/// before: a target that uses PeekValue, or reads numbers with GetIntAttributeValue, leaves nothing behind.
#pragma once

#include <cstdint>
#include <memory>

#include "brenta/export.h"
#include "brenta/framework.h"
#include "brenta/xml.h"

namespace brenta {

class CXMLContentHandler;
class ISAXXMLReader;

/// The message that tells a window how far a parse has come: wParam is the percentage, lParam 0. The answer
/// is not looked at.
inline constexpr unsigned int kXmlProgressMessage = 0x741C;

/// The command that hands a target a record: the code is 0, `extra` the CCoreXmlDomElement, the handler
/// information null. The answer is not looked at. The record is the reader's: it and all that is in it are
/// deleted after the call. Copy what is to be kept (CCoreXmlDomElement copies deeply).
inline constexpr unsigned int kXmlRecordCommand = 0xEA61;

/// Reads files as streams of records, and counts their elements.
///
/// One reader can parse any number of files, one after the other, on one thread at a time. Messages and
/// commands arrive on that thread during the call. While one is handled, the reader must not be destroyed,
/// and a further parse with it is false. An exception that the window or target throws ends the parse and
/// passes on to the caller; std::bad_alloc becomes false.
class BRENTA_API CXMLReader {
 public:
    /// Window and target may be null, then nobody is told; both must live as long as parses run. If the
    /// platform has no XML service, each parse reports that.
    CXMLReader(HWND progressWindow, CCmdTarget* target);
    CXMLReader(const CXMLReader&) = delete;
    CXMLReader& operator=(const CXMLReader&) = delete;
    virtual ~CXMLReader();

    /// Parses a file and delivers each record, in order, when its end tag is reached. False if the file
    /// cannot be read or is malformed; the records that were complete before the fault have been delivered
    /// then. `error` becomes "Failed to initialize XML reader." if there is no XML service, and is left as it
    /// was in every other case.
    bool ParseDocument(CString& path, CString& error);

    /// Counts the elements of a file, all of them and those whose local names are "component", "footprint"
    /// and "symbol" with the letters in any case. Sends progress, but delivers no records and interns
    /// nothing. When it returns false, with `error` as for ParseDocument, `total` and `components` are 0 and
    /// the other two are left as they were.
    bool CountElements(CString& path, CString& error, int& total, int& components, int& footprints,
                       int& symbols);

 private:
    friend class CXMLContentHandler;

    bool Parse(const char* path, bool counting);

    HWND m_progressWindow;
    CCmdTarget* m_pTarget;
    std::unique_ptr<ISAXXMLReader> m_pParser;  // null if there is no XML service
    std::unique_ptr<CXMLContentHandler> m_pHandler;
    std::uint64_t m_fileSize;
    bool m_parsing;
};

}  // namespace brenta
