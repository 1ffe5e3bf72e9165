// An XML tree as text, for comparing it in one piece: one line per element, two blanks per level, the
// attributes, and the inner text behind a "#" if there is one.
//
//     board width="80"
//       p #some text
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "brenta/xml.h"

namespace brenta::test {

/// Does not recurse, so that deep trees can be shown.
inline std::string TreeText(const CCoreXmlDomElement& root) {
    std::string text;
    std::vector<std::pair<const CCoreXmlDomElement*, std::size_t>> open{{&root, 0}};
    while (!open.empty()) {
        const auto [element, depth] = open.back();
        open.pop_back();
        text.append(2 * depth, ' ').append(element->GetTagName());
        for (auto attribute = element->GetFirstAttribute(); attribute.Get(); attribute.Next())
            text.append(" ")
                .append((*attribute.Get())->GetName())
                .append("=\"")
                .append((*attribute.Get())->GetValue())
                .append("\"");
        if (element->GetInnerTextId() != kNoName) text.append(" #").append(element->GetInnerText());
        text += '\n';
        const auto first = static_cast<std::ptrdiff_t>(open.size());
        for (auto child = element->GetFirstChild(); child.Get(); child.Next())
            open.emplace_back(*child.Get(), depth + 1);
        std::reverse(open.begin() + first, open.end());
    }
    return text;
}

/// The trees one after the other.
inline std::string TreeText(TIter<CCoreXmlDomElement*> element) {
    std::string text;
    for (; element.Get(); element.Next())
        text += TreeText(**element.Get());
    return text;
}

}  // namespace brenta::test
