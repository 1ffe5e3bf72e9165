/// @file
/// The library's own readers: a quick one for strict XML, and a forgiving one for HTML. Both make the tree of
/// brenta/xml.h without the platform's XML service.
///
///     CCoreXMLQuickReader reader;
///     if (reader.ParseStream("<board width=\"80mm\"/>"))
///         for (auto root = reader.GetFirstElement(); root.Get(); root.Next()) Use(*root.Get());
///
/// Threads. A reader is used by one thread at a time.
#pragma once

#include <cstddef>

#include "brenta/containers.h"
#include "brenta/export.h"
#include "brenta/heap.h"
#include "brenta/xml.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// The quick reader

class BRENTA_API CCoreXMLQuickReader {
 public:
    CCoreXMLQuickReader();
    CCoreXMLQuickReader(const CCoreXMLQuickReader& other);
    CCoreXMLQuickReader& operator=(const CCoreXMLQuickReader& other);
    virtual std::size_t SizeOf() const;
    virtual const char* GetClassName() const;
    virtual const char* GetBaseClassName() const;
    virtual ~CCoreXMLQuickReader();

    BRENTA_HEAP_OPERATORS

    bool LoadDocument(const char* path);
    bool ParseStream(const char* text);
    TIter<CCoreXmlDomElement*> GetFirstElement() const { return TIter(m_elements); }
    /// Hands the elements over: they belong to the caller, and the reader holds none.
    TOrderedList<CCoreXmlDomElement*> TakeElements();

 private:
    TOrderedList<CCoreXmlDomElement*> m_elements;
};

}  // namespace brenta
