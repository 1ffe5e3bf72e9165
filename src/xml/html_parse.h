// The parse behind the HTML reader.
#pragma once

#include "brenta/xml.h"

namespace brenta {

/// Reads a terminated text into `root`, which has no children yet. `position` starts at the text and is left
/// where the parse ended, also by std::bad_alloc.
bool ParseHtml(const char*& position, CCoreXmlDomElement& root);

}  // namespace brenta
