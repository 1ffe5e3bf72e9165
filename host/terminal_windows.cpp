#include <fcntl.h>
#include <io.h>

#include <cstdio>

#include "terminal.h"

namespace brenta::host {

bool InputComesFromTerminal() {
    return _isatty(_fileno(stdin)) != 0;
}

bool OutputGoesToTerminal() {
    return _isatty(_fileno(stdout)) != 0;
}

bool ErrorsGoToTerminal() {
    return _isatty(_fileno(stderr)) != 0;
}

void PrepareStreams() {
    // Line feeds stay what they are; input still may have either form of line ends.
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
}

}  // namespace brenta::host
