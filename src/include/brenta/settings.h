/// @file
/// The application's identity and its places: name, folder, and where its data files stand.
///
/// The host executable's file name is the application's name. Its data live in one folder of that name below
/// the platform's application-data folder, which a host can replace through the services of brenta/host.h.
///
///     CoreString title = GetAppName(false, false);                          // brenta
///     CoreString scripts = AppendPaths(GetAppPath(), "Scripts");            // beside the executable
///     CoreString recent = GetAppDataFileName("State", "recent", "txt");     // ...\State\recent.txt
///     std::FILE* file = std::fopen(CoreNativePath(recent), "r");            // "\" is "/" on Linux
///
/// Nothing is created by asking. The functions may be called from any thread; the results are new strings.
#pragma once

#include "brenta/export.h"
#include "brenta/string.h"

namespace brenta {

// ---------------------------------------------------------------------------------------------------------------------
// The host executable

/// The host executable's file name, with its whole path if `fullPath`; an extension is removed unless
/// `keepExtension`. A dot in a folder's name is never taken for an extension's. "" when the platform does not
/// tell the name.
BRENTA_API CoreString GetAppName(bool fullPath, bool keepExtension);

/// The folder of the host executable, without a separator at the end except for a root. "" when unknown.
BRENTA_API CoreString GetAppPath();

// ---------------------------------------------------------------------------------------------------------------------
// The application's data

/// The application's own folder below the platform's application-data folder: that folder, "\" and the
/// application's name. "" when the platform folder is unknown. The folder need not exist.
BRENTA_API CoreString GetAppDataFolder();

/// The path of a data file: GetAppDataFolder(), the sub-folder, and the file name built from name and
/// extension by the rules of AppendPaths and BuildFilename. Any argument may be null to be left out.
BRENTA_API CoreString GetAppDataFileName(const char* subFolder, const char* name, const char* extension);

}  // namespace brenta
