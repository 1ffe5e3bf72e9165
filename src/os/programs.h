/// @file
/// Part of the platform seam (os.h): starting other programs.
#pragma once

#include <string_view>

namespace brenta::os {

/// The system's numbers for errors that the library meets by itself.
extern const int kErrorNoSuchFile;
extern const int kErrorBadArgument;
extern const int kErrorNoMemory;

/// Whether a text begins like an address: "scheme:", the scheme of at least two characters.
bool HasScheme(std::string_view text);

/// Opens an existing file or folder, or a web address, with the program that the person at the desktop chose
/// for it, and does not wait. False if there is no such target or no such program. Linux: the programs that
/// $BROWSER names, else xdg-open; their input and output are nowhere.
bool OpenWithDesktop(const char* target);

/// Starts a program, looked for along the search path if its name has no separator, with `count` words, the
/// program first, and does not wait. It shares the console, and no other file, with this process, and belongs
/// to no waiting list of it. False if it could not be started; `error` is then the system's error number.
/// Windows: a batch file, which a shell would read, gets no words with characters that mean something to it;
/// a line that the words were cut from is handed to the program as it is.
bool StartProgram(const char* const* arguments, int count, int& error, const char* line = nullptr);

}  // namespace brenta::os
