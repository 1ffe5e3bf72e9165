/// @file
/// Writing an XML file as a stream, element by element, without a tree.
///
/// Use CXmlEmitter for reports and exchange files that are written once from data the application has; use
/// CCoreXmlDom (brenta/xml.h) for documents that are loaded, changed and saved.
///
///     CXmlEmitter file;
///     if (!file.CreateDocument("parts.xml", "")) return false;
///     file.BeginElement("parts", OneAttr("unit", "mil"));
///     file.Element("part", OneAttr("name", "R1"), "10k & 5%");
///     file.EndElement();
///     file.CloseDocument();
///
/// writes
///
///     <?xml version="1.0" encoding="UTF-8"?>
///     <parts unit="mil">
///     <part name="R1">
///     10k &amp; 5%</part>
///     </parts>
///
/// One tag to a line, without indentation. Data begins on the line behind its start tag and is followed at
/// once by what comes next.
///
/// Bytes that never reach the file. Of everything that is written - names, values, data, the prolog - only
/// the bytes 32 to 127 and the line feed are kept. Tabs, carriage returns and **every letter outside ASCII**
/// are dropped without notice: "3 µF" becomes "3 F". In values and data " & ' < > become entities; names and
/// the prolog are written as they are.
///
/// Names are kept, not copied. The name given to BeginElement must live, unchanged, until its EndElement: a
/// buffer that is used for one name after the other gives wrong end tags.
///
/// Errors. A file that cannot be opened makes CreateDocument false. What fails later, a full disk for one, is
/// not reported; the file then ends where it failed. Without an open document everything is accepted and
/// nothing written.
///
/// Cost. The file is written in pieces of 1 MB, and is complete only when it has been closed. An emitter is
/// used by one thread at a time.
#pragma once

#include <memory>

#include "brenta/containers.h"
#include "brenta/export.h"
#include "brenta/names.h"

namespace brenta {

class EmitterFile;

/// An attribute: a name and a value, both interned. Null texts count as "".
struct BRENTA_API OneAttr {
    OneAttr() = default;
    OneAttr(const char* attrName, const char* attrValue) : name(StrId(attrName)), value(StrId(attrValue)) {}
    OneAttr(const char* attrName, STRID attrValue) : name(StrId(attrName)), value(attrValue) {}
    /// The number in base 26, with the digits 0 to 9 and a to p: 9 is "9", 10 "a", 26 "10", 1000 "1cc". A
    /// negative one is written as the unsigned 32-bit number with its bits: -1 is "dnchbnl". For a decimal
    /// number give its text.
    OneAttr(const char* attrName, int attrValue);

    bool operator==(const OneAttr& other) const = default;

    STRID name = kNoName;
    STRID value = kNoName;
};

class BRENTA_API CXmlEmitter {
 public:
    CXmlEmitter();
    CXmlEmitter(const CXmlEmitter&) = delete;
    CXmlEmitter& operator=(const CXmlEmitter&) = delete;
    /// Writes the end tags of all open elements, innermost first, and closes the document.
    virtual ~CXmlEmitter();

    // ------------------------------------------------------------------------------------------------------
    // Documents

    /// Creates or empties the file, and writes the declaration and then `prolog`: a stylesheet instruction or
    /// a document type with a line feed at its end, or "" (null counts as that). `path` is kept, not copied,
    /// until CloseDocument.
    ///
    /// False if the file cannot be opened, or while a document is open, which then goes on undisturbed.
    bool CreateDocument(const char* path, const char* prolog);
    /// Completes the file. Elements that are open stay so: end them before, or their end tags come into the
    /// emitter's next document. Without a document nothing happens.
    void CloseDocument();
    /// The path of the open document as CreateDocument got it; null if there is none.
    const char* GetDocumentName() const { return m_pDocumentName; }

    // ------------------------------------------------------------------------------------------------------
    // Content. Everything here returns true. A null name or text counts as "", other than the text of
    // Element.

    /// Writes a start tag, with attributes in the order of the list.
    bool BeginElement(const char* name);
    bool BeginElement(const char* name, const OneAttr& attr);
    bool BeginElement(const char* name, TOrderedList<OneAttr>& attrs);
    /// Writes the end tag of the innermost open element. With none open: "Assertion failed! m_pHead";
    /// resumed, nothing is written.
    bool EndElement();

    /// Writes an element that holds `text`; with null an empty-element tag.
    bool Element(const char* name, const char* text);
    bool Element(const char* name, const OneAttr& attr, const char* text);
    bool Element(const char* name, TOrderedList<OneAttr>& attrs, const char* text);

    /// Writes character data.
    bool CData(const char* text);
    /// Writes a number in decimal.
    bool CData(int value);

 private:
    template <class Attributes>
    bool Begin(const char* name, const Attributes& attrs);
    template <class Attributes>
    bool Whole(const char* name, const Attributes& attrs, const char* text);

    const char* m_pDocumentName;
    std::unique_ptr<EmitterFile> m_pFile;  // null if no document is open
    TStack<const char*> m_openElements;
};

}  // namespace brenta
