// The platform's SAX parser as the library sees it: one side that parses, one side that is told what stands
// in the file. Backed by libxml2 (sax_libxml2.cpp) or by MSXML (sax_msxml.cpp), whichever CMake picks.
//
// Events answer whether the parse may go on. They may throw: the parser then stops, cleans up and lets the
// exception pass. Texts are in the library's encoding and live as long as the call.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace brenta {

/// Where in the file the event stands that is being told: for text the place at which it begins. From 1.
class ISAXLocator {
 public:
    virtual std::int64_t GetLineNumber() const = 0;
    virtual std::int64_t GetColumnNumber() const = 0;

 protected:
    ~ISAXLocator() = default;
};

/// An attribute without its prefix, its value decoded.
struct SaxAttribute {
    std::string_view name;
    std::string_view value;
};

class ISAXContentHandler {
 public:
    /// Comes before a parse; the locator lives until the parse is over.
    virtual void PutDocumentLocator(const ISAXLocator* locator) = 0;
    virtual bool StartDocument() = 0;
    /// Only told when the whole file was well-formed.
    virtual bool EndDocument() = 0;
    /// Namespace declarations are not among the attributes; defaults that the document declares are.
    virtual bool StartElement(std::string_view localName, std::span<const SaxAttribute> attributes) = 0;
    virtual bool EndElement() = 0;
    /// A run of text, white space too, from one tag, comment or instruction to the next; MSXML tells some in
    /// several pieces, each as one.
    virtual bool Characters() = 0;

 protected:
    ~ISAXContentHandler() = default;
};

class ISAXXMLReader {
 public:
    virtual ~ISAXXMLReader() = default;

    /// The handler, which must outlive the parses. False if it cannot be registered.
    virtual bool PutContentHandler(ISAXContentHandler* handler) = 0;
    /// Parses a regular file. False if it cannot be read, is malformed, or the handler stopped the parse.
    virtual bool ParseURL(const char* path) = 0;
};

/// A parser; null if the platform can make none.
using SaxReaderMaker = std::unique_ptr<ISAXXMLReader> (*)();
std::unique_ptr<ISAXXMLReader> MakeSaxReader();

/// What the library calls to make one; tests replace it.
extern SaxReaderMaker g_saxReaderMaker;

}  // namespace brenta
