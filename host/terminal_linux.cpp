#include <unistd.h>

#include "terminal.h"

namespace brenta::host {

bool ErrorsGoToTerminal() {
    return isatty(STDERR_FILENO) != 0;
}

void PrepareStreams() {
    // They are as they should be.
}

}  // namespace brenta::host
