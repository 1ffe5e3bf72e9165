// The library's own look at trees.
#pragma once

#include "brenta/xml.h"

namespace brenta {

/// Steps as the exported operations do, for code that hands nothing of what it sees out.
struct TreeAccess {
    static TIter<CCoreXmlDomAttribute*> Attributes(const CCoreXmlDomElement& element) {
        return TIter(element.m_attributes);
    }
};

}  // namespace brenta
