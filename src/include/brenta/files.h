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
/// proportional to the lengths of its arguments, and may be called from any thread. Only the questions to the
/// file system and the searches look at it. Bytes of 128 and above are ordinary name characters. On Linux a
/// file whose name really holds a "\" cannot be reached through the library.
#pragma once

#include "brenta/containers.h"
#include "brenta/export.h"
#include "brenta/names.h"
#include "brenta/string.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Questions to the file system

/// Whether the path names an existing folder; a trailing separator does not matter. False for null and "".
BRENTA_API bool DirectoryExists(const char* path);

/// Whether the path names something that exists and is not a folder. On Windows a file marked offline counts
/// as absent. False for null and "".
BRENTA_API bool FileExists(const char* path);

// ---------------------------------------------------------------------------------------------------------
// Questions to the text

/// Whether a path is tied to a place: it contains a ":" anywhere or starts with a separator.
BRENTA_API bool IsQualifiedFilename(const char* path);

/// Whether the part behind the last separator can name a file on every platform: it is not empty, begins with
/// no "." and begins and ends with no blank or control character, holds none of < > | ? * " and ":", and is
/// no device name ("con", "aux", "nul", "com1" to "com9", "lpt1" to "lpt9", in any case). "prn" and a device
/// name with an extension pass.
BRENTA_API bool IsLegalFilename(const char* path);

// ---------------------------------------------------------------------------------------------------------
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

// ---------------------------------------------------------------------------------------------------------
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

// ---------------------------------------------------------------------------------------------------------
// Forms of a path

/// A copy of the path, in upper case (A to Z) if `upper`. Separators stay as they are.
BRENTA_API CoreString NormalizeFilename(const char* path, bool upper);

/// The path in the form that the platform's own calls take: on Linux every "\" becomes "/", on Windows it is
/// a copy.
BRENTA_API CoreString CoreNativePath(const char* path);

/// The path as seen from the folder `base`: "a\b\c" from "a\d" is "..\b\c", and from "a\b\c" it is ".". Both
/// are taken as texts: parts "." are left out, ".." takes the part before it away, and the file system is not
/// asked. Parts compare byte by byte, drives without regard to case. The path itself, unchanged, if the two
/// have different drives, network shares or roots, only one begins at a root, or the way would lead through a
/// ".." of the base.
BRENTA_API CoreString MakeRelativePath(const char* path, const char* base);

// ---------------------------------------------------------------------------------------------------------
// Searches
//
// In a pattern "*" stands for any number of bytes and "?" for one; letters match in either case, and "", "*"
// and "*.*" fit every name. Results are appended, each folder's sorted by their bytes and before those of the
// folders in it. Links to folders are found as folders and never entered, so that no loop is walked. A folder
// that cannot be read counts as empty, except the first, which makes the result false. Names that hold a "\"
// are left out: no path leads to them. A search takes time in proportion to all that the folders hold.

/// The files, and all else that is no folder, whose names fit: in the folder itself and, if
/// `inSubDirectories`, in all below it. With `fullPath` each is a path that begins with `folder`; without, a
/// file name only. An empty folder means the current one, and full paths then begin with the names in it.
BRENTA_API bool FindFiles(const char* folder, const char* pattern, TOrderedList<STRID>& out,
                          bool inSubDirectories, bool fullPath);

/// The paths of the folders in a folder, each beginning with `folder`; if `inSubDirectories`, of all below
/// it, each followed by those in it.
BRENTA_API bool FindSubDirectories(const char* folder, TOrderedList<STRID>& out, bool inSubDirectories);

/// The paths of the files that a path with wildcards behind its last separator stands for, each beginning as
/// the pattern does. A text without wildcards stands for itself, be there such a file or not. False if
/// nothing was found.
BRENTA_API bool ExpandFilename(const char* pattern, TOrderedList<STRID>& out);

/// Lets the person choose a folder through the host's service (brenta/host.h), which gets the folder so far
/// as a start, and stores it. False, and the folder as it was, if nothing was chosen.
BRENTA_API bool BrowseForDirectory(CoreString& folder);

}  // namespace brenta
