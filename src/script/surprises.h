// The known surprises of the language, found in a module's tokens.
#pragma once

#include "brenta/containers.h"
#include "brenta/lexer.h"
#include "brenta/script.h"

namespace brenta {

/// Appends a warning for every place from `first` on that is legal but does not do what it looks like, in the
/// order of the text: what happens, and what to write instead.
///
/// Only what the tokens show for certain is reported, so that a warning is worth reading: a good script gets
/// none. The list need not be a well-formed script; what the parser refuses with a message that says little
/// (`x[1][2]`) is explained here as well.
void FindSurprises(const TIter<ScriptToken*>& first, TOrderedList<ScriptWarning>& warnings);

}  // namespace brenta
