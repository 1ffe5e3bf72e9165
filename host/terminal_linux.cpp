#include <unistd.h>

#include "terminal.h"

namespace brenta::host {

bool InputComesFromTerminal() {
    return isatty(STDIN_FILENO) != 0;
}

bool OutputGoesToTerminal() {
    return isatty(STDOUT_FILENO) != 0;
}

bool ErrorsGoToTerminal() {
    return isatty(STDERR_FILENO) != 0;
}

void PrepareStreams() {
    // They are as they should be.
}

}  // namespace brenta::host
