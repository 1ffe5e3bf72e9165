// The constants that code needs without a script having written them.
#pragma once

#include "script/value.h"

namespace brenta {

inline const Value kNullConstant;
inline const Value kZeroConstant = Value::OfInt(0);

}  // namespace brenta
