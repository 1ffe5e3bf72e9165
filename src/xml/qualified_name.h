// What XML takes for a name, as XML 1.0 has it since its fifth edition.
#pragma once

#include <string_view>

namespace brenta {

/// Name ::= Start (Start | Part)*, without a colon.
bool IsPlainName(std::u32string_view name);

/// QName ::= (Name ":")? Name
bool IsQualifiedName(std::u32string_view name);

}  // namespace brenta
