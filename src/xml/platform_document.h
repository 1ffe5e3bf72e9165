// The document of the platform's XML service: what the library's tree is read from and put out through.
//
// It knows nothing of the tree's ownership; it parses, keeps, serialises and transforms. Backed by libxml2
// and libxslt (platform_document_libxml2.cpp) or by MSXML (platform_document_msxml.cpp), whichever CMake
// picks.
#pragma once

#include <memory>

#include "brenta/containers.h"
#include "brenta/string.h"

namespace brenta {

class CCoreXmlDomElement;
class IXMLDOMElement;

/// Why a load failed.
struct ParseFault {
    CoreString reason;     ///< the parser's first message; where it comes with a line end, that is there
    int offset = 0;        ///< in bytes; 0 if unknown
    bool refused = false;  ///< the parser did not get as far as reading
};

class PlatformDocument {
 public:
    virtual ~PlatformDocument() = default;

    /// Replaces the content by that of a file or text. When that fails, the document is empty and `fault`
    /// says why.
    virtual bool Load(const char* path, ParseFault& fault) = 0;
    virtual bool LoadXml(const char* text, ParseFault& fault) = 0;

    /// Makes a tree element of each element that was loaded at document level and appends it to `out`, the
    /// caller's. False if memory ran out; nothing is appended then.
    virtual bool ReadElements(TOrderedList<CCoreXmlDomElement*>& out) = 0;

    /// The document element that was loaded, to be given back with Release; null if there is none.
    virtual IXMLDOMElement* DocumentElement() = 0;

    /// Appends a node behind what is there. An "xml" declaration is only taken by an empty document, data
    /// that would end the node early by none.
    virtual void AppendInstruction(const char* target, const char* data) = 0;
    virtual void AppendComment(const char* text) = 0;
    /// Appends an element with its attributes and all that is below it; refused if there is a root already.
    /// What has no valid name is left out.
    virtual void AppendElement(const CCoreXmlDomElement& element) = 0;

    /// Writes the content to a file; if that fails, the old file is as it was.
    virtual bool Save(const char* path) = 0;
    /// The content as text.
    virtual CoreString GetXml() = 0;
    /// What a stylesheet makes of the content; "" if it fails.
    virtual CoreString Transform(PlatformDocument& stylesheet) = 0;
};

/// An empty document; null if the platform can make none.
using PlatformDocumentMaker = std::unique_ptr<PlatformDocument> (*)();
std::unique_ptr<PlatformDocument> MakePlatformDocument();

/// What the library calls to make one; tests replace it.
extern PlatformDocumentMaker g_platformDocumentMaker;

}  // namespace brenta
