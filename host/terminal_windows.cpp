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

}  // namespace brenta::host
