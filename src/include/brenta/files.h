/// @file
/// File names: taking path texts apart, putting them together, and asking whether they exist.
///
/// A path here is plain text in which "\" and "/" both separate. Functions that put paths together write "\",
/// the form that the application stores and shows, on every platform; the library translates such a path
/// wherever it opens one, and CoreNativePath does the same for a host that opens files itself.
///
///     CoreString path = BuildFilename("lib", "parts", "r0603", "brd");      // lib\parts\r0603.brd
///     CoreString name = GetFileName(path, false);                           // r0603
///     CoreString backup = ReplaceExt(name, "bak");                          // r0603.bak
///     if (!FileExists(path)) std::puts("no such part");
///     std::FILE* file = std::fopen(CoreNativePath(path), "rb");             // lib/parts/r0603.brd
///
/// Every function returns a new string, takes a null argument for "" unless it says otherwise, costs time
/// proportional to the lengths of its arguments, and may be called from any thread. Only DirectoryExists and
/// FileExists look at the file system. Bytes of 128 and above are ordinary name characters. On Linux a file
/// whose name really holds a "\" cannot be reached through the library.
#pragma once

#include "brenta/export.h"
#include "brenta/string.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------------------
// Questions to the file system

/// Whether the path names an existing folder; a trailing separator does not matter. False for null and "".
BRENTA_API bool DirectoryExists(const char* path);

/// Whether the path names something that exists and is not a folder. On Windows a file marked offline counts
/// as absent. False for null and "".
BRENTA_API bool FileExists(const char* path);

// ---------------------------------------------------------------------------------------------------------------------
// Questions to the text

/// Whether a path is tied to a place: it contains a ":" anywhere or starts with a separator.
BRENTA_API bool IsQualifiedFilename(const char* path);

/// Whether the part behind the last separator can name a file on every platform: it is not empty, begins with
/// no "." and begins and ends with no blank or control character, holds none of < > | ? * " and ":", and is
/// no device name ("con", "aux", "nul", "com1" to "com9", "lpt1" to "lpt9", in any case). "prn" and a device
/// name with an extension pass.
BRENTA_API bool IsLegalFilename(const char* path);

// ---------------------------------------------------------------------------------------------------------------------
// Taking paths apart

/// The text behind the last ".", wherever it stands; "" if there is none.
BRENTA_API CoreString GetExtName(const char* path);

/// The text before the last ".", wherever it stands; the whole text if there is none. A dot in a folder's
/// name counts: "rev.2/board" gives "rev". Apply it to a file name (GetFileName) where that matters.
BRENTA_API CoreString StripExtName(const char* path);

/// The text up to and including the last separator; "./" if there is none.
BRENTA_API CoreString GetPathName(const char* path);

/// The text behind the last separator; the whole text if there is none.
BRENTA_API CoreString StripPathName(const char* path);

/// The text behind the last separator, without its extension unless `keepExt`.
BRENTA_API CoreString GetFileName(const char* path, bool keepExt);

/// The path of the folder that holds the file, every "/" turned into "\" and without the last separator:
/// `a/b/c` gives `a\b`. A text without any separator is returned unchanged.
BRENTA_API CoreString StripFileName(const char* path);

/// The text up to and including the first ":", followed by "\": "D:folder" gives "D:\". "" if there is no
/// ":".
BRENTA_API CoreString GetDriveName(const char* path);

/// The text behind the first ":"; the whole text if there is none.
BRENTA_API CoreString StripDriveName(const char* path);

/// Scheme and host of a URL: the text up to the first of / # ? & behind "://", or all of it. The scheme and a
/// port stay: "ftp://srv:81/a" gives "ftp://srv:81". "" for a text without "://".
BRENTA_API CoreString GetUrlHostName(const char* url);

// ---------------------------------------------------------------------------------------------------------------------
// Putting paths together

/// The name with an extension added: "board" and ".brd", or "brd", give "board.brd". A name that holds a "."
/// anywhere is returned unchanged. An empty extension still adds the ".".
BRENTA_API CoreString AddExt(const char* name, const char* ext);

/// AddExt(StripExtName(name), ext): an extension is cut, then the new one added unless another dot is left,
/// so "a.b.c" and "d" give "a.b".
BRENTA_API CoreString ReplaceExt(const char* name, const char* ext);

/// Two paths joined by one "\". The separator is always there, also behind an empty first ("" and "b" give
/// "\b"); it is not doubled when `first` ends with one or, after a first without one, `second` begins with
/// one. A null second gives first, an empty one does not: "a" and "" give "a\".
BRENTA_API CoreString AppendPaths(const char* first, const char* second);

/// A path from its parts, any of which may be null or "" to be left out: root and folder get a "\" behind
/// them unless they end with a separator, name is taken as it is, and ext follows behind a ".", its own
/// leading "." dropped. A folder's leading separator is dropped only when it also ends with one; "a" and "\b"
/// give "a\\b\".
BRENTA_API CoreString BuildFilename(const char* root, const char* folder, const char* name, const char* ext);

// ---------------------------------------------------------------------------------------------------------------------
// Forms of a path

/// A copy of the path, in upper case (A to Z) if `upper`. Separators stay as they are.
BRENTA_API CoreString NormalizeFilename(const char* path, bool upper);

/// The path in the form that the platform's own calls take: on Linux every "\" becomes "/", on Windows it is
/// a copy.
BRENTA_API CoreString CoreNativePath(const char* path);

}  // namespace brenta
