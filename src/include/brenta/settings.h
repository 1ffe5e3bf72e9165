/// @file
/// The application's identity, its places and its settings: name, folder, where its data files stand, and the
/// values that it keeps from one run to the next.
///
/// The host executable's file name is the application's name. Its data live in one folder of that name below
/// the platform's application-data folder, which a host can replace through the services of brenta/host.h.
///
///     CoreString title = GetAppName(false, false);                          // brenta
///     CoreString scripts = AppendPaths(GetAppPath(), "Scripts");            // beside the executable
///     CoreString recent = GetAppDataFileName("State", "recent", "txt");     // ...\State\recent.txt
///     std::FILE* file = std::fopen(CoreNativePath(recent), "r");            // "\" is "/" on Linux
///     int step = 0;
///     if (!GetAppValue("Grid", "Step", step)) SetAppValue("Grid", "Step", step = 100000);
///
/// Settings have three homes. A few values of one program go to its initialisation file, which a person can
/// read and edit: GetAppValue. What programs share, and trees of values, go to the registry
/// (brenta/registry.h). What the host application keeps in its own way is reached by GetRegValue.
///
/// Nothing is created by asking. The functions may be called from any thread; the results are new strings.
#pragma once

#include "brenta/containers.h"
#include "brenta/export.h"
#include "brenta/string.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// The host executable

/// The host executable's file name, with its whole path if `fullPath`; an extension is removed unless
/// `keepExtension`. A dot in a folder's name is never taken for an extension's. "" when the platform does not
/// tell the name.
BRENTA_API CoreString GetAppName(bool fullPath, bool keepExtension);

/// The folder of the host executable, without a separator at the end except for a root. "" when unknown.
BRENTA_API CoreString GetAppPath();

// ---------------------------------------------------------------------------------------------------------
// The application's data

/// The application's own folder below the platform's application-data folder: that folder, "\" and the
/// application's name. "" when the platform folder is unknown. The folder need not exist.
BRENTA_API CoreString GetAppDataFolder();

/// The path of a data file: GetAppDataFolder(), the sub-folder, and the file name built from name and
/// extension by the rules of AppendPaths and BuildFilename. Any argument may be null to be left out.
BRENTA_API CoreString GetAppDataFileName(const char* subFolder, const char* name, const char* extension);

// ---------------------------------------------------------------------------------------------------------
// The initialisation file
//
// GetAppDataFileName(nullptr, <application's name>.ini, nullptr): sections "[Grid]" of lines "Step=100000".
// Case does not matter in sections and keys. Of sections and keys that occur twice the first counts. Blanks
// around a value are lost in reading, as is one pair of equal quotes around it: text that needs its blanks is
// stored in quotes. A ";" begins a comment at the start of a line only.
//
// A write replaces the file as a whole and keeps all its other lines byte for byte; a process that is killed
// or a disk that is full leaves the old file. Any number of processes and threads may read and write at once.
// A read costs a microsecond or two while the file stays as it is, a write some milliseconds.

/// Reads a value, at most 259 bytes of it. True if it is not empty. Otherwise `value` is "": an empty value,
/// no such file, section or key, a null argument, or an unknown data folder.
BRENTA_API bool GetAppValue(const char* section, const char* key, CoreString& value);

/// The same as an integer: the number at the start of the text, 0 if there is none. True if the text is not
/// empty, so that a stored "0", or "none", gives 0 and true. Numbers out of range become INT_MIN or INT_MAX.
BRENTA_API bool GetAppValue(const char* section, const char* key, int& value);

/// Writes a value; null removes the key, "" keeps it without a value. The file and its folder are created for
/// the user alone where they are missing. False, and the file unchanged, if it cannot be read or written,
/// others keep it locked for 5 seconds, or the setting would not be one line that is read back: a null or
/// empty section or key, a line break anywhere, a "=" in the key, or a key that begins with ";" or "[".
BRENTA_API bool SetAppValue(const char* section, const char* key, const char* value);

/// Writes a number in decimal digits.
BRENTA_API bool SetAppValue(const char* section, const char* key, int value);

/// Replaces `names` by the keys of a section, or, if that is null, by all sections, each once and in the
/// file's order. True if there are any.
BRENTA_API bool GetAppNames(const char* section, TOrderedList<CoreString>& names);

// ---------------------------------------------------------------------------------------------------------
// The host application's settings
//
// These go through the services readProfile and writeProfile of brenta/host.h. A host that leaves them to the
// library has them in the registry, as texts in the key "Software\Orvane Works\Brenta V4\Settings\<section>"
// of the current user.

/// Reads a setting. True if it is not empty; otherwise `value` is "", also for a null section or key.
BRENTA_API bool GetRegValue(const char* section, const char* key, CoreString& value);

/// The same as an integer, by the rules of GetAppValue.
BRENTA_API bool GetRegValue(const char* section, const char* key, int& value);

/// Writes a setting; null removes it. False if that fails, or the section or key is null or empty.
BRENTA_API bool SetRegValue(const char* section, const char* key, const char* value);

/// Writes a number in decimal digits.
BRENTA_API bool SetRegValue(const char* section, const char* key, int value);

}  // namespace brenta
