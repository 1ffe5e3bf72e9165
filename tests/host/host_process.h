// Runs the console host as a user would and returns what it printed.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace brenta::test {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

struct HostResult {
    int status = -1;
    Lines output;  // lines of standard output
    Lines errors;  // lines of standard error
};

/// The files that a program has for standard input, output and error.
struct StandardFiles {
    std::string input, output, errors;
};

/// Runs a program in a folder and returns its exit status; 128 and above for one that did not end by itself.
int RunProgram(const std::string& program, const Lines& words, const std::string& folder,
               const StandardFiles& files);

/// A file for output that takes none, and one for input that cannot be read.
extern const char* const kFullFile;
extern const char* const kNoInput;

/// A folder of this test program's own, removed at its end.
const fs::path& ScratchFolder();

/// Runs `brenta` with these words in the scratch folder. `input` is its standard input.
HostResult RunHost(const Lines& words, const std::string& input = "");

/// From now on the system names this proxy ("" for none), and else this configuration script.
void SetNetwork(const std::string& proxy, const std::string& script);

Lines SplitLines(const std::string& text);
std::string ReadText(const std::string& path);

}  // namespace brenta::test
