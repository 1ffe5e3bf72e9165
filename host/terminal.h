// Whether a person is there.
#pragma once

namespace brenta::host {

/// Whether what is written to standard error appears on a terminal.
bool ErrorsGoToTerminal();

}  // namespace brenta::host
