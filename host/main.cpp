// brenta: the console host of Brenta Core. Each command is in a file of its own, command_*.cpp.
#include "command_line.h"
#include "terminal.h"

int main(int argc, char** argv) {
    brenta::host::PrepareStreams();
    return brenta::host::RunCommandLine(std::vector<std::string>(argv + 1, argv + argc));
}
