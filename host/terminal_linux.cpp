#include <unistd.h>

#include <cstdlib>
#include <string_view>

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

bool TerminalKnowsColours() {
    const char* const kind = std::getenv("TERM");
    return kind != nullptr && kind != std::string_view("dumb");
}

void PrepareStreams() {
    // They are as they should be.
}

}  // namespace brenta::host
