// The files that documents and archives are measured with. Each is made when it is first asked for, in a
// folder of the process that goes with it.
#pragma once

#include <functional>
#include <string>

namespace brenta::bench {

/// Names the folder of a parent process, whose files this one is to use.
inline constexpr char kInputFolderVariable[] = "BRENTA_BENCH_INPUTS";

/// A path in the folder, for a file that a workload writes itself.
std::string PathOfInput(const std::string& name);

/// The path of a file whose content `make` returns.
std::string InputFile(const std::string& name, const std::function<std::string()>& make);

/// The whole content of a file.
std::string ReadInput(const std::string& path);

// ---------------------------------------------------------------------------------------------------------
// Contents

/// A board: `nets` groups of 99 vias, each element with 4 attributes whose numbers are mostly distinct.
/// 10,000 of them are 10^6 elements in 65 MB.
std::string MakeBoard(int nets);
/// A part library whose names and numbers come again and again, 15 MB.
std::string MakeLibrary();
/// A page with a table of many rows, 15 MB.
std::string MakePage();
/// Elements inside each other.
std::string MakeDeep(int levels);
/// Children of one parent.
std::string MakeWide(int children);
/// One element with many attributes, whose names are numbered from `first` on.
std::string MakeManyAttributes(int first, int count);

/// The names that MakeBoard gives its groups.
std::string NetName(int net);

}  // namespace brenta::bench
