// The library's own look at trees.
#pragma once

#include "brenta/xml.h"

namespace brenta {

struct TreeAccess {
    /// Steps as GetFirstAttribute does, for code that hands nothing of what it sees out.
    static TIter<CCoreXmlDomAttribute*> Attributes(const CCoreXmlDomElement& element) {
        return TIter(element.m_attributes);
    }
    static CLateText& Value(CCoreXmlDomAttribute& attribute) { return attribute.m_value; }
};

}  // namespace brenta
