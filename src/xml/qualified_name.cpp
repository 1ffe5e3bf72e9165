#include "xml/qualified_name.h"

#include <algorithm>
#include <cstddef>

namespace brenta {

namespace {

struct Range {
    char32_t first, last;
};
constexpr Range kNameStarts[] = {{'A', 'Z'},       {'_', '_'},       {'a', 'z'},        {0xC0, 0xD6},
                                 {0xD8, 0xF6},     {0xF8, 0x2FF},    {0x370, 0x37D},    {0x37F, 0x1FFF},
                                 {0x200C, 0x200D}, {0x2070, 0x218F}, {0x2C00, 0x2FEF},  {0x3001, 0xD7FF},
                                 {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF}};
constexpr Range kNameParts[] = {{'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}};

template <std::size_t kCount>
bool IsIn(const Range (&ranges)[kCount], char32_t code) {
    return std::any_of(ranges, ranges + kCount,
                       [code](Range range) { return range.first <= code && code <= range.last; });
}

}  // namespace

bool IsPlainName(std::u32string_view name) {
    return !name.empty() && IsIn(kNameStarts, name[0]) &&
           std::all_of(name.begin(), name.end(),
                       [](char32_t code) { return IsIn(kNameStarts, code) || IsIn(kNameParts, code); });
}

bool IsQualifiedName(std::u32string_view name) {
    const std::size_t colon = name.find(U':');
    if (colon == name.npos) return IsPlainName(name);
    return IsPlainName(name.substr(0, colon)) && IsPlainName(name.substr(colon + 1));
}

}  // namespace brenta
