#include <io.h>

#include <cstdio>

#include "terminal.h"

namespace brenta::host {

bool ErrorsGoToTerminal() {
    return _isatty(_fileno(stderr)) != 0;
}

}  // namespace brenta::host
