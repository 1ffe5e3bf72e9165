// What the library makes of random work, told as text. The builds for all platforms are to tell the same:
// `./dev agree` runs this program's twins and compares what they wrote.
#pragma once

#include <string>

namespace brenta::test {

/// Script programs with their values, prints, messages and requests to a host object.
std::string TellOfPrograms();

/// Dimension texts: lengths, and how they are shown in all units.
std::string TellOfLengths();

/// Initialisation files that are read, changed and read again.
std::string TellOfSettings();

/// Sequences of operations on the registry.
std::string TellOfRegistry();

/// XML documents, well-formed and not, through all readers; saved, and read again.
std::string TellOfDocuments();

}  // namespace brenta::test
