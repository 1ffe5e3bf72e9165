// The commands of the console host. Each returns the process's exit status: 0, or 1 when something failed.
#pragma once

#include <string>
#include <vector>

#include "brenta/units.h"

namespace brenta::host {

/// Evaluates dimension texts; a text that is "-" stands for the lines of standard input.
int EvalCommand(const std::vector<std::string>& texts, CoreUnits units);

/// Runs one command text in a fresh engine and prints its result.
int ExecCommand(const std::string& text, CoreUnits units);

struct RunOptions {
    std::string file;
    std::string function;  ///< empty: Main, if the module defines it
    std::vector<std::string> arguments;
    bool printResult = false;
};

/// Loads a module and calls one of its functions.
int RunCommand(const RunOptions& options);

/// Parses modules without running them; reports errors and likely mistakes.
int CheckCommand(const std::vector<std::string>& files);

/// The interactive prompt.
int ReplCommand();

/// Prints the tree that a reader makes of an XML file, one element a line: the platform's, or the quick one.
int XmlCommand(const std::string& file, bool quick);

/// The same for an HTML file.
int HtmlCommand(const std::string& file);

/// Lists and counts the records of an XML file of any size.
int RecordsCommand(const std::string& file);

/// Lists the packages of a part library.
int ReportCommand(const std::string& file);

/// Tells which proxy serves an address, and why.
int ProxyCommand(const std::string& url);

/// Downloads a file.
int FetchCommand(const std::string& url, const std::string& file);

struct ConfigOptions {
    std::string action;  ///< get, set, delete or list
    std::string section, key, value;
};

/// Reads and writes the host's initialisation file.
int ConfigCommand(const ConfigOptions& options);

struct RegistryOptions {
    std::string action;  ///< get, set, delete or list
    std::string path, name, value;
    bool hasName = false;         ///< whether a name was given, be it ""
    std::string type = "string";  ///< of the value to set: string, int, dword, bool or float
};

/// Reads and writes keys and values of the registry.
int RegistryCommand(const RegistryOptions& options);

struct ZipOptions {
    std::string action;  ///< list, test, add or extract
    std::string archive;
    std::vector<std::string> names;  ///< files to add, entries to extract
    std::string folder = ".";        ///< to extract to
    bool namesOnly = false;
    bool overwrite = false;
};

/// Lists, tests, fills and unpacks zip archives.
int ZipCommand(const ZipOptions& options);

/// Reads messages from standard input and shows the warnings and errors among them as a report.
int LogCommand(const std::string& title, const std::string& report);

}  // namespace brenta::host
