// What tests of XML have to know of the service that stands behind it. The library's own is known to the
// letter. On Windows the system's is used, and much of what that does is the system's affair: its messages
// and positions, how deep a document may be, how it lays out what it writes, what it makes of rare encodings
// and declarations. Rows of cases about such things are for our own service alone.
#pragma once

#include "test_support.h"

namespace brenta::test {

extern const bool kOwnXmlService;

/// So deep may the elements of a file be.
extern const int kDeepestFile;

/// A text in UTF-8 in the library's encoding.
std::string Own(std::string_view utf8);

/// The text of a document without what the service chose in laying it out.
std::string Content(std::string text);

/// Paths that lead to something, but not to a regular file.
Texts NoFiles(const Scratch& scratch);

/// Gives a file access rights, or what is next to them, that new files do not have; whether it has them.
bool SetRights(const std::string& path);
bool HasRights(const std::string& path);

/// Bytes that the C library has handed out; 0 if it does not tell.
std::size_t AllocatedBytes();

}  // namespace brenta::test
