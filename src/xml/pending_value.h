// Attribute values that nobody has asked for yet.
//
// A text in the string table stays there for ever. That is right for names and for the values that a program
// works with, but a stream of records brings millions of coordinates that are looked at as numbers, if at
// all, and dropped: interned, a file of some gigabytes would fill the memory and in the end the table. So a
// reader may give an attribute its value as a plain text, which the attribute owns. It becomes an identifier
// when somebody asks for it as one, or for a pointer that lives as long as the library; searches, comparisons
// and numbers read it where it is.
#pragma once

#include <string_view>

#include "brenta/xml.h"

namespace brenta {

/// The way to these texts for readers. One thread at a time, like all of a document.
class PendingValue {
 public:
    /// Replaces the value by a copy of a text that holds no NUL. Throws std::bad_alloc.
    static void Set(CCoreXmlDomAttribute& attribute, std::string_view text);

 private:
    friend class CCoreXmlDomAttribute;

    static char* Text(const CCoreXmlDomAttribute& attribute);
    /// The value becomes none.
    static void Drop(const CCoreXmlDomAttribute& attribute);
};

}  // namespace brenta
