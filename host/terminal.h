// Whether a person is there.
#pragma once

namespace brenta::host {

/// Whether what is read from standard input is typed at a terminal.
bool InputComesFromTerminal();

/// Whether what is written to standard output appears on a terminal.
bool OutputGoesToTerminal();

/// Whether what is written to standard error appears on a terminal.
bool ErrorsGoToTerminal();

}  // namespace brenta::host
