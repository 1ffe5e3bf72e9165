/// @file
/// Part of the platform seam (os.h): starting other programs.
#pragma once

namespace brenta::os {

/// The system's number for "no such file".
extern const int kErrorNoSuchFile;

/// Opens an existing file or folder, or a web address, with the program that the person at the desktop chose
/// for it, and does not wait. False if there is no such target or no such program. Linux: the programs that
/// $BROWSER names, else xdg-open; their input and output are nowhere.
bool OpenWithDesktop(const char* target);

/// Starts a program, looked for along the search path if its name has no separator, with `count` words, the
/// program first, and does not wait. It shares the console, and no other file, with this process, and belongs
/// to no waiting list of it. False if it could not be started; `error` is then the system's error number.
bool StartProgram(const char* const* arguments, int count, int& error);

}  // namespace brenta::os
