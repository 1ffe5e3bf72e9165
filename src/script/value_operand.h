// What the shared rules of the operators see of the two kinds of value.
#pragma once

#include "script/operand.h"
#include "script/value.h"

namespace brenta {

/// A function counts as a reference to its symbol.
Operand OperandOf(const Value& value);
Operand OperandOf(const Var& var);

}  // namespace brenta
