// Whether a person is there, and how texts reach them.
#pragma once

namespace brenta::host {

/// Whether what is read from standard input is typed at a terminal.
bool InputComesFromTerminal();

/// Whether what is written to standard output appears on a terminal.
bool OutputGoesToTerminal();

/// Whether what is written to standard error appears on a terminal.
bool ErrorsGoToTerminal();

/// Whether the terminal that texts appear on knows the escape sequences for colours.
bool TerminalKnowsColours();

/// To be called first: what is written has the same bytes on every platform, and a console shows the texts
/// that they stand for.
void PrepareStreams();

}  // namespace brenta::host
