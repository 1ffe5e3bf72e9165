/// @file
/// Walking a whole XML document of the platform's XML service, for files that fit in memory and of which only
/// parts are wanted: no tree of the library (brenta/xml.h) is made, and a file that cannot be loaded says
/// why.
///
/// | Class                 | Use it for                                                          |
/// |-----------------------|---------------------------------------------------------------------|
/// | CXMLDocument          | loading a file, its root element, the number of its elements        |
/// | CXMLElementIterator   | stepping through the elements directly below a node                 |
/// | CXMLAttributeIterator | reading a node's attributes by name                                 |
///
///     CXMLDocument document;
///     CString path("Resistors.lbr"), error, text;
///     if (!document.LoadDocument(path, error)) AfxMessageBox(error);
///     IXMLDOMElement* library = document.GetRootElement();
///     CXMLElementIterator packages(library);
///     for (IXMLDOMNode* node = packages.GetFirstElement(); node; node = packages.GetNextElement()) {
///         char name[] = "name";
///         std::puts(CXMLAttributeIterator(node).GetValue(name, text));
///         packages.FreeElement(node);
///     }
///     document.FreeRootElement(library);
///
/// For very large files there is the reader that hands out one record after the other
/// (brenta/xml_stream.h); to keep, change and save what was read, load a CCoreXmlDom (brenta/xml.h).
///
/// Lifetime. Every node that is handed out is counted: give it back, with the function that its source names
/// or with Release, or it and its whole document stay in memory. A node that is kept stays valid when the
/// document loads another file or is gone.
///
/// Text is UTF-8, on Windows in the process's code page. Names are the names as written, with their prefix;
/// they compare exactly. A value has its references replaced. Nothing is fetched from a network, and no file
/// beside the given one is opened. On Windows the service is MSXML, and each document makes its thread ready
/// for COM (brenta/xml.h).
///
/// Cost. Loading takes the file's content several times over in memory. Depth costs memory only; no operation
/// recurses.
///
/// Threads. A document, its nodes and what walks them are used by one thread at a time.
#pragma once

#include <cstddef>
#include <memory>

#include "brenta/export.h"
#include "brenta/framework.h"
#include "brenta/names.h"

namespace brenta {

class PlatformDocument;

// ---------------------------------------------------------------------------------------------------------
// Nodes of the platform's document

/// What a node is; the values are those of the DOM standard.
enum DOMNodeType : int {
    NODE_ELEMENT = 1,
    NODE_TEXT = 3,
    NODE_CDATA_SECTION = 4,
    NODE_ENTITY_REFERENCE = 5,
    NODE_PROCESSING_INSTRUCTION = 7,
    NODE_COMMENT = 8,
    NODE_DOCUMENT = 9,
    NODE_DOCUMENT_TYPE = 10,
};

/// A node, counted by its users: whoever gets one from a function holds one count.
class BRENTA_API IXMLDOMNode {
 public:
    /// One more user. Returns the number of users.
    virtual unsigned long AddRef() = 0;
    /// One user less; the last one ends the node. Returns the number of users that are left.
    virtual unsigned long Release() = 0;

    virtual DOMNodeType GetNodeType() const = 0;
    /// Stores the name as written in `name`; "" for what has none.
    virtual void GetNodeName(CString& name) const = 0;

    /// The first node below this one; null if there is none, or no memory. What a reference to an entity
    /// stands for is not below it.
    virtual IXMLDOMNode* GetFirstChild() const = 0;
    /// The next node at this one's level; null at the end.
    virtual IXMLDOMNode* GetNextSibling() const = 0;

    /// Stores the value of an attribute, default ones and namespace declarations among them. False, and
    /// `value` as it was, if this node has none of that name; null is no name.
    virtual bool GetNamedItem(const char* name, CString& value) const = 0;

    /// Number of elements from this node on downward, the node itself among them if it is one. Stores it in
    /// `count`; false if memory ran out.
    virtual bool CountElements(unsigned int& count) const = 0;

 protected:
    IXMLDOMNode() = default;
    IXMLDOMNode(const IXMLDOMNode&) = default;
    IXMLDOMNode& operator=(const IXMLDOMNode&) = default;
    virtual ~IXMLDOMNode();
};

/// A node that is an element.
class BRENTA_API IXMLDOMElement : public IXMLDOMNode {
 protected:
    ~IXMLDOMElement() override;
};

// ---------------------------------------------------------------------------------------------------------
// The document

/// A document that is loaded as a whole.
class BRENTA_API CXMLDocument {
 public:
    /// An empty document. Where the platform has no XML service every operation fails.
    CXMLDocument();
    CXMLDocument(const CXMLDocument&) = delete;
    CXMLDocument& operator=(const CXMLDocument&) = delete;
    virtual ~CXMLDocument();

    /// Loads a file in place of what was loaded. False if that fails: the document is empty then, and `error`
    /// is one of
    ///
    /// - "Failed to initialize XML document." where the platform has no XML service,
    /// - "Could not load xml file" if memory ran out or MSXML did not try,
    /// - "Failed to load xml file.", an empty line, the parser's first message, and on a line of its own
    ///   "Load failed at offset N in file.", N in bytes and 0 if unknown; also for a file that cannot be
    ///   read.
    ///
    /// On success `error` stays as it was.
    bool LoadDocument(CString& path, CString& error);

    /// The document element, to be given back with FreeRootElement; null if nothing is loaded.
    IXMLDOMElement* GetRootElement();
    /// Gives a root element back; null is ignored.
    void FreeRootElement(IXMLDOMElement* element);

    /// Stores the number of elements in `count`, the document element among them. Elements that stand in the
    /// text of an entity are not counted. False, and 0, if nothing is loaded.
    bool GetElementCount(unsigned int& count);

 private:
    std::unique_ptr<PlatformDocument> m_pDocument;
};

// ---------------------------------------------------------------------------------------------------------
// Walkers

/// Steps through the elements directly below a node; text, comments and the like are passed over.
class BRENTA_API CXMLElementIterator {
 public:
    /// Holds on to the parent. A null one has no elements.
    explicit CXMLElementIterator(IXMLDOMNode* parent);
    CXMLElementIterator(const CXMLElementIterator&) = delete;
    CXMLElementIterator& operator=(const CXMLElementIterator&) = delete;
    virtual ~CXMLElementIterator();

    /// The first element; null if there is none. Give each one back with FreeElement.
    IXMLDOMNode* GetFirstElement();
    /// The element behind the one that was handed out last, or the first; null at the end, and from then on.
    IXMLDOMNode* GetNextElement();
    /// Gives an element back; null is ignored.
    void FreeElement(IXMLDOMNode* element);

 private:
    IXMLDOMNode* ElementFrom(IXMLDOMNode* node);

    IXMLDOMNode* m_pParent;
    IXMLDOMNode* m_pCurrent;  ///< the element handed out last, counted; null before the first and at the end
    bool m_started;
};

/// Reads a node's attributes by name. A null name is the name of no attribute.
class BRENTA_API CXMLAttributeIterator {
 public:
    /// Holds on to the node. A null one has no attributes.
    explicit CXMLAttributeIterator(IXMLDOMNode* node);
    CXMLAttributeIterator(const CXMLAttributeIterator&) = delete;
    CXMLAttributeIterator& operator=(const CXMLAttributeIterator&) = delete;
    virtual ~CXMLAttributeIterator();

    /// Stores the value in `out`, "" if there is none, and returns `out`.
    CString& GetValue(char* name, CString& out);
    /// The integer at the start of the value, limited to 32 bits; 0 if there is none.
    long GetLongValue(char* name);
    /// Whether the value is "true" or "1", the letters in any case.
    bool GetBoolValue(char* name);
    /// The value, interned; kNoName for an empty one and if there is none.
    STRID GetValueId(char* name);

 private:
    IXMLDOMNode* m_pNode;
};

}  // namespace brenta
