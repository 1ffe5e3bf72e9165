// Initialisation files on the disk. Any thread and any process may read and write one file at the same time:
// who reads finds a whole file, and who writes changes what the one before has left.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace brenta {

/// The value of a key; "" if there is no such file, section or key. The rules are those of IniText. The text
/// of a file is kept and used again as long as the file stays the same.
std::string ReadIniValue(const std::string& path, std::string_view section, std::string_view key);

/// The keys of a section, or, without one, all sections.
std::vector<std::string> ListIniNames(const std::string& path, const std::string_view* section);

/// Writes a value; null removes the key. All other lines stay as they are, byte for byte. The file is
/// replaced as a whole; a file and a folder that are not there are created for the user alone. False if the
/// value could not be read back as it is (see IniText::CanSet), or the file cannot be read or written, or
/// others keep it locked for 5 seconds.
bool WriteIniValue(const std::string& path, std::string_view section, std::string_view key,
                   const std::string_view* value);

/// The platform's part of WriteIniValue, for a value that can be set in a folder that is there. The caller
/// holds the lock.
bool ChangeIniFile(const std::string& path, std::string_view section, std::string_view key,
                   const std::string_view* value);

}  // namespace brenta
